#include "bench/unit/systemstate.h"
#include "faultyreads.h"
#include "tests/support/unittest.h"

#include "gps/firmwarepackage.h"
#include "gps/gpsupdate.h"
#include "tools/common.h"

#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTextBrowser>
#include <QTextCodec>

#include <cerrno>
#include <cstdio>
#include <functional>
#include <memory>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using bench::journal;
using testmode::gpsupdate;
using tests::FaultyReads;

namespace {

const QString kFolder = QStringLiteral("/run/unit/package");

// The files of a package in the order in which they are read, and what the user is told.
struct PackageFile
{
    const char *name;
    const char *complaint;
    const char *traced;
};

const PackageFile kFiles[] = {
    {"flash_download.cfg", "Not open cfg_file!", ""},
    {"partition_table.bin", "Not open partition_file!", "partition_binfile: "},
    {"bootloader.bin", "Not open bootloader_file!", "bootloader_binfile: "},
    {"gnss_demo.bin", "Not open app_file!", "app_binfile: "},
    {"gnss_config.bin", "Not open cfg_path!", "config_binfile: "},
};

// What a reading replaces, in the same order.
QList<QByteArray> held()
{
    return {filevalues, downloadfile.partition_bin, downloadfile.bootloader_bin,
            downloadfile.app_bin, downloadfile.config_bin};
}

QByteArray contentOf(int file)
{
    return QByteArray("what stands in ") + kFiles[file].name;
}

void writeFile(const QString &path, const QByteArray &content)
{
    QFile target(path);
    QVERIFY2(target.open(QIODevice::WriteOnly), qPrintable(path));
    QCOMPARE(target.write(content), qint64(content.size()));
}

void writePackage(const QString &folder)
{
    QVERIFY(QDir().mkpath(folder));
    for (int i = 0; i < 5; ++i)
        writeFile(folder + "/" + kFiles[i].name, contentOf(i));
}

// What lasts while the package is read.
using Guard = std::shared_ptr<void>;

Guard undoneBy(std::function<void()> undo)
{
    return Guard(nullptr, [undo](void *) { undo(); });
}

Guard linkTo(const QByteArray &path, const char *target)
{
    std::remove(path.constData());
    if (::symlink(target, path.constData()) != 0)
        qFatal("no link");
    return nullptr;
}

Guard stretch(const QByteArray &path, off_t bytes)
{
    if (::truncate(path.constData(), bytes) != 0)
        qFatal("no file of that length");
    return nullptr;
}

Guard faultyReads(const QByteArray &path, off_t bytes, int error)
{
    auto reads = std::make_shared<FaultyReads>(path, bytes, error);
    return undoneBy([reads] { QVERIFY(reads->met() > 0); });
}

// For the superuser no file is without permission: another user reads it.
Guard withoutPermission(const QByteArray &path)
{
    constexpr uid_t kNobody = 65534;
    if (::chmod(path.constData(), 0) != 0)
        qFatal("no mode");
    if (::geteuid() != 0)
        return nullptr;
    if (::seteuid(kNobody) != 0)
        qFatal("the user stays");
    return undoneBy([] { QCOMPARE(::seteuid(0), 0); });
}

// Room for 256 MiB more than the process has.
Guard underAMemoryLimit()
{
    rlimit before = {};
    unsigned long pages = 0;
    std::FILE *status = std::fopen("/proc/self/statm", "r");
    if (status == nullptr || std::fscanf(status, "%lu", &pages) != 1
        || ::getrlimit(RLIMIT_AS, &before) != 0)
        qFatal("no limit");
    std::fclose(status);
    rlimit limit = before;
    limit.rlim_cur = pages * static_cast<unsigned long>(::sysconf(_SC_PAGESIZE)) + (256UL << 20);
    if (::setrlimit(RLIMIT_AS, &limit) != 0)
        qFatal("no limit");
    return undoneBy([before] { QCOMPARE(::setrlimit(RLIMIT_AS, &before), 0); });
}

struct Damage
{
    const char *what;
    std::function<Guard(const QByteArray &path)> inflict;
};

const Damage kDamages[] = {
    {"missing",
     [](const QByteArray &path) -> Guard {
         std::remove(path.constData());
         return nullptr;
     }},
    {"a link to nowhere", [](const QByteArray &path) { return linkTo(path, "/media/nowhere"); }},
    {"a link to itself", [](const QByteArray &path) { return linkTo(path, path.constData()); }},
    {"a folder",
     [](const QByteArray &path) -> Guard {
         std::remove(path.constData());
         if (::mkdir(path.constData(), 0755) != 0)
             qFatal("no folder");
         return nullptr;
     }},
    {"a device without an end", [](const QByteArray &path) { return linkTo(path, "/dev/zero"); }},
    {"a device without content", [](const QByteArray &path) { return linkTo(path, "/dev/null"); }},
    {"a pipe that nobody writes to",
     [](const QByteArray &path) -> Guard {
         std::remove(path.constData());
         if (::mkfifo(path.constData(), 0644) != 0)
             qFatal("no pipe");
         return nullptr;
     }},
    {"without permission", withoutPermission},
    {"not to be read at all",
     [](const QByteArray &path) {
         return linkTo(path, "/proc/self/mem"); // its first page: EIO
     }},
    {"gone with its stick after some bytes",
     [](const QByteArray &path) { return faultyReads(path, 5, EIO); }},
    {"gone with its stick after some blocks",
     [](const QByteArray &path) {
         stretch(path, 3 << 20);
         return faultyReads(path, 1 << 20, ENODEV);
     }},
    {"cut short while it is read", [](const QByteArray &path) { return faultyReads(path, 5, 0); }},
    {"sparse, of 3 GiB", [](const QByteArray &path) { return stretch(path, off_t(3) << 30); }},
    {"of 1 GiB where memory is short",
     [](const QByteArray &path) {
         stretch(path, 1 << 30);
         return underAMemoryLimit();
     }},
    {"a byte beyond what is read", [](const QByteArray &path) { return stretch(path, 33554433); }},
};

} // namespace

// "选择" with a package that is not as it should be: what the user is told, what is kept of the
// package before, and that nothing else happens.
class TestBadPackages : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void damagedFileEndsTheReading_data();
    void damagedFileEndsTheReading();
    void oddFileIsTakenAsItIs_data();
    void oddFileIsTakenAsItIs();
    void folderOfAnyNameIsRead_data();
    void folderOfAnyNameIsRead();
    void folderIsNamedInUtf8WhateverTheLocale();
    void folderThatNoTextNamesIsReported();
    void packageThatIsNotFoundIsReported();
    void packageReadAfterABadOneIsWhole();

private:
    void choose(gpsupdate *page);
    void verifyNothingElse(const gpsupdate &page, const QStringList &traced);
    QStringList sizesTraced(int files) const;

    QList<QByteArray> before;
};

void TestBadPackages::init()
{
    UnitTest::init();
    writePackage(kFolder);
    bench::unit().change()->system.updateFolder = kFolder;
    com_set = config();
    br = QStringLiteral("921600");
    downloadfile = {"old boot", "old partition", "old app", "old config"};
    filevalues = "old configuration";
    save_path = QStringLiteral("/old/");
    before = held();
}

void TestBadPackages::cleanup()
{
    QDir(kFolder).removeRecursively();
    UnitTest::cleanup();
}

void TestBadPackages::choose(gpsupdate *page)
{
    page->show();
    journal().clear();
    trace().clear();
    QTest::mouseClick(page->findChild<QPushButton *>("pushButton_2"), Qt::LeftButton);
}

// No command, no reset, no other service, no other line; the page as before but for the path.
void TestBadPackages::verifyNothingElse(const gpsupdate &page, const QStringList &traced)
{
    const QString path = bench::unit().system.updateFolder + "/flash_download.cfg";
    QCOMPARE(journal().texts(), QStringList{"McuManager.findUpdateFile(7)"});
    QCOMPARE(bench::unit().system.systemResets, 0);
    QCOMPARE(trace().payloads().mid(1), traced);
    const QStringList functions = tracedFunctions();
    QCOMPARE(functions.value(0),
             QStringLiteral("void testmode::gpsupdate::on_pushButton_2_clicked()"));
    for (int i = 1; i < functions.size(); ++i)
        QCOMPARE(functions.at(i),
                 QStringLiteral("void testmode::gpsupdate::GetBinfile(QString, file*)"));
    QCOMPARE(page.findChild<QLineEdit *>("lineEdit")->text(), path);
    QCOMPARE(save_path, bench::unit().system.updateFolder + "/");
    QVERIFY(filevalues_list.isEmpty());
    QVERIFY(page.findChild<QPushButton *>("pushButton_3")->isEnabled());
    QCOMPARE(page.findChild<QProgressBar *>("progressBar")->value(), -1);
    QCOMPARE(page.findChild<QTextBrowser *>("textBrowser")->toPlainText(), QString());
    QCOMPARE(page.findChild<QLineEdit *>("lineEdit_2")->text(), QString());
    QCOMPARE(com_set.baudRate, 921600);
    QCOMPARE(br, QStringLiteral("921600"));
}

// Of the first files of the package, the configuration among them.
QStringList TestBadPackages::sizesTraced(int files) const
{
    QStringList lines;
    for (int i = 1; i < files; ++i)
        lines << QStringLiteral("%1 %2").arg(kFiles[i].traced).arg(held().at(i).size());
    return lines;
}

void TestBadPackages::damagedFileEndsTheReading_data()
{
    QTest::addColumn<int>("victim");
    QTest::addColumn<int>("damage");
    for (int victim = 0; victim < 5; ++victim) {
        for (int damage = 0; damage < static_cast<int>(std::size(kDamages)); ++damage)
            QTest::addRow("%s: %s", kFiles[victim].name, kDamages[damage].what) << victim << damage;
    }
}

void TestBadPackages::damagedFileEndsTheReading()
{
    QFETCH(int, victim);
    QFETCH(int, damage);
    gpsupdate page;
    boxes().expect("Error", kFiles[victim].complaint);
    {
        const QString path = kFolder + "/" + kFiles[victim].name;
        const Guard guard = kDamages[damage].inflict(path.toUtf8());
        choose(&page);
    }
    QCOMPARE(boxes().seen().size(), 1);
    QCOMPARE(boxes().seen().first().buttons, QStringList{"Close"});
    for (int i = 0; i < 5; ++i)
        QCOMPARE(held().at(i), i < victim ? contentOf(i) : before.at(i));
    verifyNothingElse(page, sizesTraced(victim));
}

void TestBadPackages::oddFileIsTakenAsItIs_data()
{
    QTest::addColumn<int>("victim");
    QTest::addColumn<qint64>("bytes");
    for (int victim = 0; victim < 5; ++victim) {
        QTest::addRow("%s: empty", kFiles[victim].name) << victim << qint64(0);
        QTest::addRow("%s: one byte", kFiles[victim].name) << victim << qint64(1);
        QTest::addRow("%s: larger than the flash", kFiles[victim].name)
            << victim << qint64(5 << 20);
        QTest::addRow("%s: as large as is read", kFiles[victim].name) << victim << qint64(33554432);
    }
}

// Neither sizes nor contents are looked at.
void TestBadPackages::oddFileIsTakenAsItIs()
{
    QFETCH(int, victim);
    QFETCH(qint64, bytes);
    stretch((kFolder + "/" + kFiles[victim].name).toUtf8(), bytes);
    gpsupdate page;
    choose(&page);
    for (int i = 0; i < 5; ++i) {
        const QByteArray wanted = i == victim
            ? contentOf(i).leftJustified(static_cast<int>(bytes), '\0', true)
            : contentOf(i);
        QVERIFY2(held().at(i) == wanted, kFiles[i].name);
    }
    verifyNothingElse(page, sizesTraced(5));
}

void TestBadPackages::folderOfAnyNameIsRead_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("blanks") << " two  words ";
    QTest::newRow("quotes") << "\"double\" 'single'";
    QTest::newRow("dollar") << "$HOME $(touch ran) `touch ran`";
    QTest::newRow("shell") << "; touch ran; #&|<>*?[]\\";
    QTest::newRow("place holders") << "%1 %2 %s";
    QTest::newRow("line end") << "two\nlines";
    QTest::newRow("beyond ASCII") << "固件 é";
    QTest::newRow("long") << QString(255, 'x');
    QTest::newRow("dots") << "..package..";
}

void TestBadPackages::folderOfAnyNameIsRead()
{
    QFETCH(QString, name);
    const QString folder = "/run/unit/named/" + name;
    writePackage(folder);
    bench::unit().change()->system.updateFolder = folder;
    gpsupdate page;
    choose(&page);
    for (int i = 0; i < 5; ++i)
        QCOMPARE(held().at(i), contentOf(i));
    QCOMPARE(save_path, folder + "/");
    QCOMPARE(journal().texts(), QStringList{"McuManager.findUpdateFile(7)"});
    QVERIFY(!QFile::exists("ran"));
    QDir("/run/unit/named").removeRecursively();
}

void TestBadPackages::folderIsNamedInUtf8WhateverTheLocale()
{
    const QString folder = "/run/unit/固件 é";
    writePackage(folder);
    bench::unit().change()->system.updateFolder = folder;
    gpsupdate page;
    QTextCodec *codec = QTextCodec::codecForLocale();
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
    choose(&page);
    QTextCodec::setCodecForLocale(codec);
    for (int i = 0; i < 5; ++i)
        QCOMPARE(held().at(i), contentOf(i));
    QDir(folder).removeRecursively();
}

// The bytes of its name are no UTF-8: what the framework can say of it names another.
void TestBadPackages::folderThatNoTextNamesIsReported()
{
    writePackage("/run/unit/named");
    QCOMPARE(std::rename("/run/unit/named", "/run/unit/M\xfcller"), 0);
    bench::unit().change()->system.updateFolder = QString::fromUtf8("/run/unit/M\xfcller");
    gpsupdate page;
    boxes().expect("Error", "Not open cfg_file!");
    choose(&page);
    QCOMPARE(held(), before);
    verifyNothingElse(page, {});
    QCOMPARE(std::rename("/run/unit/M\xfcller", "/run/unit/named"), 0);
    QDir("/run/unit/named").removeRecursively();
}

void TestBadPackages::packageThatIsNotFoundIsReported()
{
    bench::unit().change()->system.updateFolder.clear();
    gpsupdate page;
    boxes().expect("Error", "Not open cfg_file!");
    choose(&page);
    QCOMPARE(held(), before);
    verifyNothingElse(page, {});
}

// The stick is put back.
void TestBadPackages::packageReadAfterABadOneIsWhole()
{
    gpsupdate page;
    const QByteArray application = (kFolder + "/gnss_demo.bin").toUtf8();
    boxes().expect("Error", "Not open app_file!");
    {
        const Guard guard = faultyReads(application, 5, EIO);
        choose(&page);
    }
    choose(&page);
    for (int i = 0; i < 5; ++i)
        QCOMPARE(held().at(i), contentOf(i));
    verifyNothingElse(page, sizesTraced(5));
}

TESTMODE_TEST_MAIN(TestBadPackages)
#include "test_badpackages.moc"
