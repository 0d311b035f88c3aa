#include "rawhost.h"
#include "tests/support/unittest.h"

#include <QDir>
#include <QElapsedTimer>

#include <sys/resource.h>

#include <thread>

using bench::Receiver;
using tests::RawHost;
using tests::Rig;

// The line: rates, its pace, flow control, reset and supply, opening and closing.
class TestReceiverLine : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void measuresTheRateOfTheFirstByte_data();
    void measuresTheRateOfTheFirstByte();
    void doesNotUnderstandAnotherRate_data();
    void doesNotUnderstandAnotherRate();
    void theDownloadRateMayBeMeasured();
    void anAnswerAtAnotherRateIsGarbled();
    void anUnknownRateIsTakenAsRight();
    void keepsToTheRateOfTheLine();
    void tellsAnswersThatFlowControlWouldEat();
    void runsItsApplicationWithoutAReset();
    void isDeafWhileHeldInReset();
    void followsTheUnitsResetLineFromAnotherThread();
    void isSilentAndOnTheLineWhileOff();
    void bytesBeforeTheSupplyWentMeetNobody();
    void aHostMayCloseAndOpenAgain();
    void opensOnceAndForgetsNothing();
    void fiftyLinesLeaveNothingBehind();
    void idleCostsNothing();
};

void TestReceiverLine::measuresTheRateOfTheFirstByte_data()
{
    QTest::addColumn<int>("baud");
    QTest::newRow("9600") << 9600;
    QTest::newRow("115200") << 115200;
    QTest::newRow("921600") << 921600;
}

void TestReceiverLine::measuresTheRateOfTheFirstByte()
{
    QFETCH(int, baud);
    Rig rig;
    QCOMPARE(rig.receiver.state().baud, 0);
    rig.host->setBaud(baud);
    QVERIFY(rig.host->synchronise());
    QCOMPARE(rig.receiver.state().baud, baud);
    QCOMPARE(rig.receiver.state().hostBaud, baud);
    QCOMPARE(rig.anomalies(), QStringList());
}

void TestReceiverLine::doesNotUnderstandAnotherRate_data()
{
    QTest::addColumn<QByteArray>("when");
    QTest::addColumn<int>("sentAt");
    QTest::addColumn<QString>("anomaly");
    QTest::newRow("switched too early") << QByteArray("early") << 921600
                                        << QStringLiteral("stage-1-greeting: bytes at 921600 baud, "
                                                          "expected 115200 baud");
    QTest::newRow("not switched") << QByteArray("never") << 115200
                                  << QStringLiteral("line-check: bytes at 115200 baud, "
                                                    "expected 921600 baud");
    QTest::newRow("switched to another") << QByteArray("other") << 9600
                                         << QStringLiteral("line-check: bytes at 9600 baud, "
                                                           "expected 921600 baud");
}

void TestReceiverLine::doesNotUnderstandAnotherRate()
{
    QFETCH(QByteArray, when);
    QFETCH(int, sentAt);
    QFETCH(QString, anomaly);
    Rig rig;
    RawHost &host = *rig.host;
    QVERIFY(host.synchronise() && host.identify() && host.loadStage1(tests::pattern(16, 1)));
    if (when == "early")
        host.setBaud(sentAt);
    else
        QVERIFY(host.greetStage1() && host.switchRate(sentAt));
    host.putHex("69");
    QTRY_COMPARE(rig.anomalies(), QStringList{anomaly});
    QCOMPARE(rig.receiver.dialogue().last().baud, sentAt);
    // more of the same is no further anomaly
    const int lines = rig.receiver.dialogue().size();
    host.putHex("5a");
    QTRY_COMPARE(rig.receiver.dialogue().size(), lines + 1);
    QCOMPARE(rig.anomalies(), QStringList{anomaly});
    QCOMPARE(host.pending(), 0);
    // at the right rate the dialogue goes on
    host.setBaud(when == "early" ? 115200 : 921600);
    QVERIFY(when == "early" ? host.greetStage1() : host.checkLine());
}

void TestReceiverLine::theDownloadRateMayBeMeasured()
{
    Rig rig;
    rig.set([](auto &settings) { settings.downloadRate = 0; });
    RawHost &host = *rig.host;
    QVERIFY(host.synchronise() && host.identify() && host.loadStage1(tests::pattern(16, 1)));
    QVERIFY(host.greetStage1() && host.switchRate(9600) && host.checkLine());
    QCOMPARE(rig.receiver.state().baud, 9600);
    // once measured it stays
    host.setBaud(921600);
    host.putHex("d7");
    QTRY_COMPARE(rig.anomalies(),
                 QStringList{QStringLiteral("stage-1-second: bytes at 921600 baud, "
                                            "expected 9600 baud")});
}

void TestReceiverLine::anAnswerAtAnotherRateIsGarbled()
{
    Rig rig;
    RawHost &host = *rig.host;
    QVERIFY(host.synchronise() && host.identify() && host.loadStage1(tests::pattern(16, 1))
            && host.greetStage1() && host.switchRate() && host.checkLine()
            && host.loadStage2(tests::pattern(16, 2)));
    // the agent speaks first, and its host has left the rate by then
    QVERIFY(host.ask("d5", "d5") && host.ask("04204000", "04204000 0000"));
    host.setBaud(9600);
    QCOMPARE(host.getHex(1), QByteArray("e0"));
    QCOMPARE(rig.anomalies(),
             QStringList{QStringLiteral("handshake: an answer at 921600 baud meets a host at 9600 "
                                        "baud, expected the host at 921600 baud")});
}

void TestReceiverLine::anUnknownRateIsTakenAsRight()
{
    Rig rig;
    RawHost &host = *rig.host;
    QVERIFY(host.synchronise() && host.identify() && host.loadStage1(tests::pattern(16, 1)));
    QVERIFY(host.greetStage1() && host.switchRate(0) && host.checkLine());
    QCOMPARE(rig.receiver.state().hostBaud, 0);
    QCOMPARE(rig.anomalies(), QStringList());
}

// Times of one load of 512 bytes: ten bits a byte at 9600 baud are 533 ms, at 115200 44 ms.
void TestReceiverLine::keepsToTheRateOfTheLine()
{
    const auto millisecondsOfLoad = [](bool keepLineRate, int baud) {
        Rig rig;
        rig.set([keepLineRate](auto &settings) { settings.keepLineRate = keepLineRate; });
        rig.host->setBaud(baud);
        QElapsedTimer clock;
        const bool ready = rig.host->synchronise() && rig.host->identify();
        clock.start();
        return ready && rig.host->loadStage1(tests::pattern(512, 1)) ? clock.elapsed() : -1;
    };
    const qint64 slow = millisecondsOfLoad(true, 9600);
    const qint64 fast = millisecondsOfLoad(true, 115200);
    const qint64 atOnce = millisecondsOfLoad(false, 9600);
    QVERIFY2(slow >= 533, qPrintable(QString::number(slow)));
    QVERIFY2(fast >= 44 && fast < slow, qPrintable(QString::number(fast)));
    QVERIFY2(atOnce >= 0 && atOnce < 533, qPrintable(QString::number(atOnce)));
}

void TestReceiverLine::tellsAnswersThatFlowControlWouldEat()
{
    Rig rig;
    rig.set([](auto &settings) { settings.hwCode = 0x2013; });
    RawHost &host = *rig.host;
    QVERIFY(host.synchronise());
    const QByteArray command = "d0 80000008 00000001";
    QVERIFY(host.ask(command, command + "0000 2013 0000"));
    QCOMPARE(rig.anomalies(), QStringList()); // this host takes them as bytes

    host.setSoftwareFlowControl();
    host.putHex(command);
    QCOMPARE(host.getHex(9 + 2 + 1 + 2), QByteArray("d0 80 00 00 08 00 00 00 01 00 00 20 00 00"));
    QCOMPARE(rig.anomalies(),
             QStringList{QStringLiteral("read-16: the answer 20 13 holds a byte of the host's flow "
                                        "control, expected none of 0x11 and 0x13")});
}

void TestReceiverLine::runsItsApplicationWithoutAReset()
{
    Receiver receiver;
    RawHost host(receiver.open());
    QTRY_COMPARE(receiver.state().phase, QStringLiteral("application"));
    host.putHex("a0");
    QTRY_COMPARE(receiver.state().anomalies,
                 QStringList{QStringLiteral("application: a0, expected a reset first")});
    host.putHex("a0");
    QTRY_COMPARE(receiver.dialogue().size(), 2);
    QCOMPARE(receiver.state().anomalies.size(), 1);
    QCOMPARE(host.pending(), 0);
}

void TestReceiverLine::isDeafWhileHeldInReset()
{
    Rig rig;
    rig.receiver.setReset(true);
    QCOMPARE(rig.phase(), QStringLiteral("reset"));
    rig.host->putHex("0a 50");
    QTRY_COMPARE(rig.receiver.state().bytesIn, 2);
    rig.receiver.setReset(false);
    QCOMPARE(rig.phase(), QStringLiteral("boot-rom"));
    QVERIFY(rig.host->synchronise());
    QCOMPARE(rig.anomalies(), QStringList());
    QCOMPARE(rig.receiver.state().resets, 2);
}

void TestReceiverLine::followsTheUnitsResetLineFromAnotherThread()
{
    Rig rig;
    const auto connection = connect(&bench::unit(), &bench::HeadUnit::gnssResetChanged,
                                    &rig.receiver, &Receiver::setReset, Qt::DirectConnection);
    QString held;
    for (int round = 1; round <= 20; ++round) {
        std::thread worker([&rig, &held] {
            bench::unit().setGnssReset(true);
            held = rig.phase();
            bench::unit().setGnssReset(false);
        });
        worker.join();
        QCOMPARE(held, QStringLiteral("reset"));
        QVERIFY(rig.host->synchronise());
        QCOMPARE(rig.receiver.state().resets, 1 + round);
    }
    disconnect(connection);
}

void TestReceiverLine::isSilentAndOnTheLineWhileOff()
{
    Rig rig;
    QVERIFY(rig.host->synchronise());
    rig.set([](auto &settings) { settings.powered = false; });
    QCOMPARE(rig.phase(), QStringLiteral("off"));
    rig.host->putHex("a0");
    QTRY_VERIFY(rig.receiver.dialogue().last().meaning.endsWith(QStringLiteral("phase off")));
    QCOMPARE(rig.host->pending(), 0);
    tests::pulse(rig.receiver);
    QCOMPARE(rig.phase(), QStringLiteral("off"));

    // the host's port is still the same line
    rig.set([](auto &settings) { settings.powered = true; });
    QCOMPARE(rig.phase(), QStringLiteral("application"));
    tests::pulse(rig.receiver);
    QVERIFY(rig.host->synchronise());
    QCOMPARE(rig.anomalies(), QStringList());
}

void TestReceiverLine::bytesBeforeTheSupplyWentMeetNobody()
{
    Rig rig;
    bench::Fault late;
    late.kind = bench::Fault::Kind::Late;
    late.direction = bench::Fault::Direction::ToHost;
    late.step = bench::ReceiverStep::Sync;
    late.value = 60000; // until then it does not read the line
    rig.receiver.setFaults({late});
    rig.host->putHex("a0");
    QTRY_COMPARE(rig.receiver.faultReports().first().done, 1);
    rig.host->putHex("a0 0a");
    QTest::qWait(100); // they lie on the line
    rig.set([](auto &settings) { settings.powered = false; });
    QCOMPARE(rig.phase(), QStringLiteral("off"));

    // What comes later is the first that the receiver does not hear.
    rig.host->putHex("77");
    const auto notHeard = [&rig] {
        QByteArray bytes;
        const auto lines = rig.receiver.dialogue();
        for (const bench::DialogueLine &line : lines) {
            if (line.meaning.startsWith(QStringLiteral("not heard")))
                bytes += line.bytes;
        }
        return bytes;
    };
    QTRY_VERIFY(!notHeard().isEmpty());
    QCOMPARE(notHeard(), QByteArray("\x77"));
}

void TestReceiverLine::aHostMayCloseAndOpenAgain()
{
    Rig rig;
    QVERIFY(rig.host->connectToAgent());
    rig.host.reset();
    RawHost again(rig.receiver.path(), 921600);
    QVERIFY(again.writeImage(0x08000000, tests::pattern(100, 1)));
    QVERIFY(again.finish());
    QCOMPARE(rig.anomalies(), QStringList());
}

void TestReceiverLine::opensOnceAndForgetsNothing()
{
    Rig rig;
    QCOMPARE(rig.receiver.open(), rig.receiver.path());
    QVERIFY(rig.host->connectToAgent());
    QVERIFY(rig.host->writeImage(0x08000000, tests::pattern(100, 1)));
    rig.host.reset();
    rig.receiver.close();
    QCOMPARE(rig.receiver.path(), QString());
    rig.receiver.close();
    tests::pulse(rig.receiver); // nobody is there, and nobody is waited for

    RawHost again(rig.receiver.open());
    QTRY_COMPARE(rig.phase(), QStringLiteral("boot-rom")); // the pulse came while it was closed
    QVERIFY(again.synchronise());
    QCOMPARE(rig.receiver.flash(0x08000000, 100), tests::pattern(100, 1));
}

void TestReceiverLine::fiftyLinesLeaveNothingBehind()
{
    const auto entries = [](const char *folder) {
        return QDir(QString::fromLatin1(folder)).entryList(QDir::AllEntries | QDir::System).size();
    };
    const int descriptors = entries("/proc/self/fd");
    const int threads = entries("/proc/self/task");
    Receiver again;
    for (int round = 0; round < 50; ++round) {
        Receiver receiver;
        QVERIFY(!receiver.open().isEmpty());
        QVERIFY(!again.open().isEmpty());
        again.close();
    }
    QCOMPARE(entries("/proc/self/fd"), descriptors + 1); // the wake-up of the one that is left
    // Fewer is right as well: a thread of the case before may only now have gone.
    QTRY_VERIFY(entries("/proc/self/task") <= threads);
}

void TestReceiverLine::idleCostsNothing()
{
    Rig rig;
    QVERIFY(rig.host->synchronise() && rig.host->identify());
    const auto processorMilliseconds = [] {
        rusage usage = {};
        ::getrusage(RUSAGE_SELF, &usage);
        return (usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1000
            + (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1000;
    };
    const auto before = processorMilliseconds();
    QCOMPARE(rig.host->get(1, 500).size(), 0); // half a second of nothing
    QVERIFY2(processorMilliseconds() - before < 50, "the receiver does not rest");
}

TESTMODE_TEST_MAIN(TestReceiverLine)
#include "test_receiver_line.moc"
