#include "rawhost.h"
#include "tests/support/unittest.h"

#include <QFile>
#include <QTemporaryDir>

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <termios.h>
#include <unistd.h>

using bench::Receiver;
using tests::RawHost;
using tests::Rig;

namespace {

// Longer than the silence after which a first byte counts as a reset.
constexpr int kSilence = 200; // milliseconds

// The far end of a terminal that the receiver is given to serve.
class FarEnd
{
public:
    FarEnd() : master(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC))
    {
        if (master < 0 || ::grantpt(master) != 0 || ::unlockpt(master) != 0)
            qFatal("no pseudo-terminal");
        // Kept open and raw, it echoes nothing before the receiver has come.
        termios settings = {};
        slave = ::open(::ptsname(master), O_RDWR | O_NOCTTY | O_CLOEXEC);
        ::tcgetattr(slave, &settings);
        ::cfmakeraw(&settings);
        ::tcsetattr(slave, TCSANOW, &settings);
    }
    FarEnd(const FarEnd &) = delete;
    FarEnd &operator=(const FarEnd &) = delete;
    ~FarEnd() { pull(); }

    QString path() const { return QString::fromLocal8Bit(::ptsname(master)); }

    // What comes back for the bytes; empty when nothing does for ten seconds.
    QByteArray ask(const QByteArray &bytes)
    {
        char answer[64];
        pollfd waiting = {master, POLLIN, 0};
        if (::write(master, bytes.constData(), static_cast<size_t>(bytes.size())) != bytes.size()
            || ::poll(&waiting, 1, 10000) != 1)
            return QByteArray();
        const ssize_t count = ::read(master, answer, sizeof answer);
        return QByteArray(answer, count > 0 ? static_cast<int>(count) : 0).toHex(' ');
    }

    void pull()
    {
        if (master >= 0)
            ::close(master);
        master = -1;
        if (slave >= 0)
            ::close(slave);
        slave = -1;
    }

private:
    int master;
    int slave;
};

qint64 processorMicroseconds()
{
    rusage usage = {};
    ::getrusage(RUSAGE_SELF, &usage);
    return (usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * qint64(1000000)
        + usage.ru_utime.tv_usec + usage.ru_stime.tv_usec;
}

// Takes the receiver from its application to that phase.
bool reach(const QString &phase, Rig &rig)
{
    RawHost &host = *rig.host;
    if (phase == "application")
        return true;
    if (phase == "silent") {
        bench::Fault silence;
        silence.kind = bench::Fault::Kind::Silence;
        rig.receiver.setFaults({silence});
        host.putHex("a0");
        return QTest::qWaitFor([&] { return rig.phase() == phase; });
    }
    if (phase == "boot-rom")
        return host.ask("a0", "5f");
    bool good = host.synchronise();
    if (phase == "boot-rom-commands")
        return good && host.ask("d0", "d0") && host.ask("80000000", "80000000");
    good = good && host.identify() && host.loadStage1(tests::pattern(16, 1)) && host.greetStage1()
        && host.switchRate();
    if (phase == "stage-1-download-rate")
        return good;
    good = good && host.checkLine() && host.loadStage2(tests::pattern(16, 2)) && host.jump()
        && host.handshake() && host.learn();
    if (phase == "stage-2-writing") {
        good = good && host.announceImage(0x08000000, 4096);
        const qint64 heard = rig.receiver.state().bytesIn;
        host.put(QByteArray(1000, '\x33'));
        good =
            good && QTest::qWaitFor([&] { return rig.receiver.state().bytesIn == heard + 1000; });
    }
    return good && (phase != "finished" || host.finish());
}

} // namespace

// A receiver without a reset line, and one on a terminal that it did not make.
class TestReceiverAlone : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void firstByteAfterSilenceResets_data();
    void firstByteAfterSilenceResets();
    void firstByteIsHeardAfterTheReset();
    void otherwiseNothingResets_data();
    void otherwiseNothingResets();
    void goodDialogueIsNoReset();

    void servesATerminalThatIsThere();
    void terminalThatIsNoneIsRefused();
    void terminalThatWasPulledIsServedAgain();
    void pulledTerminalCostsNothing();
};

void TestReceiverAlone::firstByteAfterSilenceResets_data()
{
    QTest::addColumn<QString>("before");
    QTest::newRow("application") << "application";
    QTest::newRow("half a synchronisation, at another rate") << "boot-rom";
    QTest::newRow("half a command") << "boot-rom-commands";
    QTest::newRow("first agent") << "stage-1-download-rate";
    QTest::newRow("second agent") << "stage-2-ready";
    QTest::newRow("half an image") << "stage-2-writing";
    QTest::newRow("finished") << "finished";
    QTest::newRow("silent") << "silent";
}

void TestReceiverAlone::firstByteAfterSilenceResets()
{
    QFETCH(QString, before);
    Rig rig(false);
    RawHost &host = *rig.host;
    rig.set([](auto &settings) { settings.resetOnSync = true; });
    QVERIFY(reach(before, rig));
    QTRY_COMPARE(rig.phase(), before); // it answers first
    const int resets = rig.receiver.state().resets;
    const int found = rig.anomalies().size();

    QTest::qWait(kSilence);
    host.setBaud(before == "boot-rom" ? 921600 : 115200);
    QVERIFY(host.synchronise());
    QCOMPARE(rig.receiver.state().resets, resets + 1);
    QCOMPARE(rig.anomalies().size(), found);
    QVERIFY(host.identify());
}

void TestReceiverAlone::firstByteIsHeardAfterTheReset()
{
    Rig rig(false);
    rig.set([](auto &settings) { settings.resetOnSync = true; });
    QVERIFY(rig.host->ask("a0", "5f"));
    QVERIFY(rig.host->ask("0a", "f5"));
    const QVector<bench::DialogueLine> lines = rig.receiver.dialogue();
    QVERIFY2(lines.first().text().contains("a synchronisation after silence resets the receiver"),
             qPrintable(lines.first().text()));
}

void TestReceiverAlone::otherwiseNothingResets_data()
{
    QTest::addColumn<bool>("resetOnSync");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("phase");
    QTest::newRow("not asked for") << false << QByteArray("a0") << "application";
    QTest::newRow("another byte") << true << QByteArray("5a") << "application";
    QTest::newRow("more than the one byte") << true << QByteArray("a0 0a") << "application";
    QTest::newRow("held in reset") << true << QByteArray("a0") << "reset";
    QTest::newRow("without supply") << true << QByteArray("a0") << "off";
}

void TestReceiverAlone::otherwiseNothingResets()
{
    QFETCH(bool, resetOnSync);
    QFETCH(QByteArray, bytes);
    QFETCH(QString, phase);
    Rig rig(false);
    rig.set([&](auto &settings) {
        settings.resetOnSync = resetOnSync;
        settings.powered = phase != "off";
    });
    if (phase == "reset")
        rig.receiver.setReset(true);
    const int resets = rig.receiver.state().resets;
    rig.host->putHex(bytes);
    const auto heard = [&rig] {
        const QVector<bench::DialogueLine> lines = rig.receiver.dialogue();
        return !lines.isEmpty() && lines.last().meaning.startsWith("not heard");
    };
    QTRY_VERIFY(heard());
    QCOMPARE(rig.phase(), phase);
    QCOMPARE(rig.receiver.state().resets, resets);
    QCOMPARE(rig.host->pending(), 0);
}

void TestReceiverAlone::goodDialogueIsNoReset()
{
    Rig rig(false);
    RawHost &host = *rig.host;
    rig.set([](auto &settings) { settings.resetOnSync = true; });
    QVERIFY(host.connectToAgent());
    // packets that begin with the synchronisation's byte, after a rest
    QVERIFY(host.announceImage(0x08000000, 8192));
    QTest::qWait(kSilence);
    QVERIFY(host.sendPacket(QByteArray("\xA0\x0A") + QByteArray(4094, '\x55')));
    QTest::qWait(kSilence);
    QVERIFY(host.sendPacket(QByteArray("\xA0") + QByteArray(4095, '\x66')));
    QCOMPARE(rig.receiver.state().resets, 1);
    QCOMPARE(rig.anomalies(), QStringList());
}

void TestReceiverAlone::servesATerminalThatIsThere()
{
    FarEnd far;
    Receiver receiver;
    QString error;
    QCOMPARE(receiver.openDevice(far.path(), &error), far.path());
    QCOMPARE(error, QString());
    receiver.pulseReset();
    QCOMPARE(far.ask("\xA0"), QByteArray("5f"));
    QCOMPARE(far.ask("\x0A"), QByteArray("f5"));
    QCOMPARE(receiver.state().hostBaud, 0); // its own end does not tell
}

void TestReceiverAlone::terminalThatIsNoneIsRefused()
{
    QTemporaryDir folder;
    QFile file(folder.filePath("file"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    Receiver receiver;
    QString error;
    QCOMPARE(receiver.openDevice(file.fileName(), &error), QString());
    QVERIFY2(error.contains(file.fileName()), qPrintable(error));
    QCOMPARE(receiver.path(), QString());
    QVERIFY(!receiver.open(&error).isEmpty());
}

void TestReceiverAlone::terminalThatWasPulledIsServedAgain()
{
    const QTemporaryDir folder;
    const QString device = folder.filePath("ttyGS0");
    FarEnd first;
    QVERIFY(QFile::link(first.path(), device));
    Receiver receiver;
    QVERIFY(!receiver.openDevice(device).isEmpty());
    receiver.pulseReset();
    QCOMPARE(first.ask("\xA0"), QByteArray("5f"));

    FarEnd second;
    QVERIFY(QFile::remove(device));
    first.pull();
    QVERIFY(QFile::link(second.path(), device));
    receiver.pulseReset();
    // the byte waits in the terminal until somebody serves it
    QCOMPARE(second.ask("\xA0"), QByteArray("5f"));
    QCOMPARE(second.ask("\x0A"), QByteArray("f5"));
}

void TestReceiverAlone::pulledTerminalCostsNothing()
{
    const QTemporaryDir folder;
    const QString device = folder.filePath("ttyGS0");
    FarEnd far;
    QVERIFY(QFile::link(far.path(), device));
    Receiver receiver;
    QVERIFY(!receiver.openDevice(device).isEmpty());
    QVERIFY(QFile::remove(device));
    far.pull();
    const qint64 before = processorMicroseconds();
    QThread::msleep(500);
    QVERIFY2(processorMicroseconds() - before < 50000,
             qPrintable(QString::number(processorMicroseconds() - before)));
}

TESTMODE_TEST_MAIN(TestReceiverAlone)
#include "test_receiver_alone.moc"
