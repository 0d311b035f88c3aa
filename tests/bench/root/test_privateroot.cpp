#include "tests/support/unittest.h"

#include "bench/root/privateroot.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <cerrno>
#include <csignal>
#include <cstdlib>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

// What the plug-in finds in the private root, and that nothing leads out of it.
class TestPrivateRoot : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void deviceFilesAreThere_data();
    void deviceFilesAreThere();
    void registerPageCanBeMapped();
    void workingDirectoryHoldsTheUnitsFiles();
    void restOfTheMachineIsReadOnly();
    void foldersOfTheUnitAreWritable_data();
    void foldersOfTheUnitAreWritable();
    void markServesOnce();
    void benchInsideMakesARootOfItsOwn();

    void shellIsJournalledWithItsStatus_data();
    void shellIsJournalledWithItsStatus();
    void commandsOfTheUnitKeepWhatTheySet();
    void rebootIsTheUnits();
};

namespace {

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("cannot be read");
}

} // namespace

void TestPrivateRoot::deviceFilesAreThere_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("content");
    for (const char *controller : {"1", "2", "3"})
        QTest::newRow(controller)
            << QString("/sys/devices/platform/ehci-platform.%1/usb_speed_switch").arg(controller)
            << QByteArray("1\n");
    QTest::newRow("logo test") << "/sys/module/usbcore/parameters/usb_logo_test_start"
                               << QByteArray("0\n");
}

void TestPrivateRoot::deviceFilesAreThere()
{
    QFETCH(QString, path);
    QTEST(contentOf(path), "content");
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadWrite));
}

void TestPrivateRoot::registerPageCanBeMapped()
{
    const int memory = ::open("/dev/mem", O_RDWR | O_SYNC | O_CLOEXEC);
    QVERIFY(memory >= 0);
    void *page = ::mmap(nullptr, 0x1000, PROT_READ | PROT_WRITE, MAP_SHARED, memory, 0x9C005000);
    ::close(memory);
    QVERIFY(page != MAP_FAILED);
    auto *word = static_cast<volatile quint32 *>(page);
    word[1023] = 0x12345678;
    QCOMPARE(word[1023], 0x12345678u);
    word[1023] = 0;
    ::munmap(page, 0x1000);
}

void TestPrivateRoot::workingDirectoryHoldsTheUnitsFiles()
{
    QCOMPARE(QDir::currentPath(), QString("/run/unit"));
    QVERIFY(QFile::exists("ICO/green.png"));
    QVERIFY(QFile::exists("ICO/red.png"));
    QVERIFY(QFileInfo("ICO").isWritable());
}

void TestPrivateRoot::restOfTheMachineIsReadOnly()
{
    for (const char *path : {"/usr/from-the-bench", "/etc/from-the-bench"}) {
        QCOMPARE(::open(path, O_WRONLY | O_CREAT | O_CLOEXEC, 0600), -1);
        QCOMPARE(errno, EROFS);
    }
}

void TestPrivateRoot::foldersOfTheUnitAreWritable_data()
{
    QTest::addColumn<QString>("folder");
    for (const char *folder : {"/media/flash/nvm", "/media/update", "/media/usb0", "/media/usb1",
                               "/var", "/var/lock", "/run/lock", "/tmp", "/run/unit", "/dev"})
        QTest::newRow(folder) << folder;
}

void TestPrivateRoot::foldersOfTheUnitAreWritable()
{
    QFETCH(QString, folder);
    QFile file(folder + "/probe");
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(file.remove());
}

void TestPrivateRoot::markServesOnce()
{
    QVERIFY(bench::insidePrivateRoot());
    QVERIFY(!qEnvironmentVariableIsSet("HEADUNIT_PRIVATE_ROOT"));
    QCOMPARE(QDir("/run/unit").entryList(QDir::Files | QDir::Hidden), QStringList());
}

// It sees a fresh root, not this one: the file that this one wrote is not there.
void TestPrivateRoot::benchInsideMakesARootOfItsOwn()
{
    QTemporaryDir folder;
    QProcess process;
    process.start(TESTMODE_BENCH, {"--trace", "--monitor", folder.filePath("socket")});
    QVERIFY(process.waitForStarted());
    QByteArray said;
    const auto isShown = [&said, &process] {
        return (said += process.readAllStandardError()).contains("-- onShow");
    };
    QTRY_VERIFY2_WITH_TIMEOUT(isShown() || process.state() == QProcess::NotRunning,
                              said.constData(), 20000);
    QVERIFY2(isShown(), said.constData());

    QStringList roots;
    const QStringList numbers = QDir("/proc").entryList(QDir::Dirs);
    for (const QString &number : numbers) {
        if (contentOf("/proc/" + number + "/cmdline").startsWith(TESTMODE_BENCH))
            roots << QFile::symLinkTarget("/proc/" + number + "/ns/mnt");
    }
    roots.removeDuplicates();
    QCOMPARE(roots.size(), 2); // the one outside shares this program's, the other has its own

    process.terminate();
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), 0);
}

void TestPrivateRoot::shellIsJournalledWithItsStatus_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<int>("status");
    QTest::newRow("success") << QByteArray("true") << 0;
    QTest::newRow("failure") << QByteArray("exit 3") << 3;
    QTest::newRow("text is kept as it is") << QByteArray("logset NAND_FILE_OUTPUT y\n") << 0;
    QTest::newRow("unknown command") << QByteArray("no-such-command 2>/dev/null") << 127;
    QTest::newRow("bad value for the log settings")
        << QByteArray("logset NAND_FILE_OUTPUT x 2>/dev/null") << 2;
    QTest::newRow("bad role") << QByteArray("usb_control --uphy_role 2 2>/dev/null") << 2;
    QTest::newRow("killed") << QByteArray("kill -9 $$") << -1;
}

void TestPrivateRoot::shellIsJournalledWithItsStatus()
{
    QFETCH(QByteArray, command);
    QFETCH(int, status);
    const int result = std::system(command.constData());
    if (status >= 0)
        QCOMPARE(WEXITSTATUS(result), status);

    const QVector<bench::JournalEntry> entries = bench::journal().entries();
    QCOMPARE(entries.size(), 1);
    QCOMPARE(entries.first().service, QString("shell"));
    QCOMPARE(entries.first().call, QString::fromLatin1(command));
    QCOMPARE(entries.first().arguments, QJsonArray{status});
}

void TestPrivateRoot::commandsOfTheUnitKeepWhatTheySet()
{
    QCOMPARE(std::system("logset NAND_FILE_OUTPUT n\n"), 0);
    QCOMPARE(contentOf("/run/unit/nand_file_output"), QByteArray("n\n"));
    QCOMPARE(std::system("usb_control --uphy_role 1"), 0);
    QCOMPARE(contentOf("/run/unit/uphy_role"), QByteArray("1\n"));
    QFile::remove("/run/unit/nand_file_output");
    QFile::remove("/run/unit/uphy_role");
}

void TestPrivateRoot::rebootIsTheUnits()
{
    QSignalSpy requested(&bench::unit(), &bench::HeadUnit::rebootRequested);
    QCOMPARE(std::system("reboot"), 0);
    QCOMPARE(requested.size(), 1);
    QCOMPARE(std::system("true"), 0);
    QCOMPARE(requested.size(), 1); // asked for once
}

TESTMODE_TEST_MAIN(TestPrivateRoot)
#include "test_privateroot.moc"
