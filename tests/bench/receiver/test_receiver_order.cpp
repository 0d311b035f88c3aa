#include "rawhost.h"
#include "tests/support/unittest.h"

#include <QSignalSpy>

using tests::RawHost;
using tests::Rig;

// What the receiver makes of bytes that come out of order, of values that are none, and of
// ranges that it does not have.
class TestReceiverOrder : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void refusesWhatIsOutOfOrder_data();
    void refusesWhatIsOutOfOrder();
    void checksTheRangeOfAnImage_data();
    void checksTheRangeOfAnImage();
    void aProgramsChecksumIsTheReceiversOwn();
    void aWrongSumLeavesTheImageIncomplete();
    void anImageOverAnotherIsReportedOnce();
    void theSameImageAfterAResetIsNoOverlap();
    void theWatchdogBitesUnlessItIsDisabled();
    void aDisabledWatchdogStaysQuiet();
    void aResetInTheMiddleOfAPacketStartsOver();
    void anomaliesAreSignalled();
};

namespace {

// Takes the host to a place of the good dialogue.
bool reach(RawHost &host, const QString &place)
{
    const QVector<QPair<const char *, std::function<bool()>>> way = {
        {"boot ROM", [] { return true; }},
        {"second byte", [&host] { return host.ask("a0", "5f"); }},
        {"commands",
         [&host] { return host.ask("0a", "f5") && host.ask("50", "af") && host.ask("05", "fa"); }},
        {"stage 1", [&host] { return host.identify() && host.loadStage1(tests::pattern(64, 1)); }},
        {"announce", [&host] { return host.ask("5a", "5a 0000"); }},
        {"confirm", [&host] { return host.ask("5a00", "5a00 0000"); }},
        {"switch", [&host] { return host.ask("5a", "5a 0000"); }},
        {"line check", [&host] { return host.switchRate(); }},
        {"loader", [&host] { return host.checkLine(); }},
        {"loaded", [&host] { return host.loadStage2(tests::pattern(64, 2)); }},
        {"handshake", [&host] { return host.jump() && host.ask("", "c0"); }},
        {"logging",
         [&host] {
             return host.ask("3f", "0c") && host.ask("f3", "3f") && host.ask("c0", "f3")
                 && host.ask("0c", "5a");
         }},
        {"power key", [&host] { return host.ask("00", "69"); }},
        {"flash id", [&host] { return host.ask("00", "69"); }},
        {"parameters", [&host] { return host.ask("5a", "0057 0040 0016"); }},
        {"ready",
         [&host] {
             return host.ask("24", "24")
                 && host.ask("16 01 00 00 50 c8 20 04 7c c5 20 04 d0 cb 20 04 01 00 ef 00 60 00 "
                             "16 00 00 00 00 00 18 cb 20 04 b8 cb 20 04",
                             "0000 0000 5a");
         }},
        {"leaving", [&host] { return host.ask("a5", "5a"); }},
    };
    for (const auto &part : way) {
        if (!part.second())
            return false;
        if (place == QLatin1String(part.first))
            return true;
    }
    return false;
}

} // namespace

void TestReceiverOrder::refusesWhatIsOutOfOrder_data()
{
    QTest::addColumn<QString>("place");
    QTest::addColumn<QByteArray>("sent");
    QTest::addColumn<QByteArray>("answer"); // empty: silence
    QTest::addColumn<QString>("anomaly");
    const auto row = [](const char *name, const char *place, const char *sent, const char *answer,
                        const char *anomaly) {
        QTest::newRow(name) << QString::fromLatin1(place) << QByteArray(sent) << QByteArray(answer)
                            << QString::fromLatin1(anomaly);
    };
    row("no first byte", "boot ROM", "0a", "", "sync: 0x0A, expected 0xA0");
    row("a command first", "boot ROM", "d0", "", "sync: 0xD0, expected 0xA0");
    row("third byte second", "second byte", "50", "", "sync: 0x50, expected 0x0A");

    row("no command", "commands", "5a", "", "command: 0x5A, expected a command of the boot ROM");
    row("two registers at once", "commands", "d0 80000008 00000002", "d0 80000008 00000002 1003",
        "read-16: count 2, expected count 1");
    row("no such register", "commands", "d1 80000010 00000001", "d1 80000010 00000001 1002",
        "read-32: register 0x80000010, expected a register of the receiver");
    row("a register to read only", "commands", "d2 80000008 00000001 0001",
        "d2 80000008 00000001 0000 0001 1002",
        "write-16: a value for register 0x80000008, expected the watchdog's register");
    row("watchdog not off", "commands", "d4 a2080000 00000001 00000020",
        "d4 a2080000 00000001 0000 00000020 0000", "write-32: watchdog 0x0020, expected 0x0010");
    row("second agent first", "commands", "d7 04204000 00000004 00000000",
        "d7 04204000 00000004 00000000 1001",
        "load-stage-2: the second agent, expected the first agent");
    row("jump without an agent", "commands", "d5 04204000", "d5 04204000 1001",
        "jump: a jump, expected the first agent");
    row("program for nowhere", "commands", "d9 041ffff0 00000010 00000000 00000000",
        "d9 041ffff0 00000010 00000000 00000000 1002",
        "load-stage-1: 16 bytes for 0x041FFFF0, expected a range of the memory at 0x04200000");
    row("program past the memory", "commands", "d9 0423fff0 00000011 00000000 00000000",
        "d9 0423fff0 00000011 00000000 00000000 1002",
        "load-stage-1: 17 bytes for 0x0423FFF0, expected a range of the memory at 0x04200000");
    row("program of no length", "commands", "d9 04204000 00000000 00000000 00000000",
        "d9 04204000 00000000 00000000 00000000 1002",
        "load-stage-1: 0 bytes for 0x04204000, expected a range of the memory at 0x04200000");
    row("further word", "commands", "d9 04204000 00000010 00000000 00000007",
        "d9 04204000 00000010 00000000 00000007 0000",
        "load-stage-1: further word 0x00000007, expected 0x00000000");

    row("no greeting", "stage 1", "69", "", "stage-1-greeting: 0x69, expected 0x5A");
    row("other announcement", "announce", "5a01", "5a01 1003",
        "stage-1-announce: 0x5A01, expected 0x5A00");
    row("no confirmation", "confirm", "5b", "", "stage-1-confirm: 0x5B, expected 0x5A");
    row("other switch", "switch", "5a5b", "5a5b 1003", "stage-1-switch: 0x5A5B, expected 0x5A5A");
    row("line check out of step", "line check",
        "5a 69 0f 1e 2d 3c 4b 5a 69 78 87 96 a5 b4 c3 d2 e1 f0",
        "5a 69 0f 1e 2d 3c 4b 5a 69 78 87 96 a5 b4 c3 d2 e1 f0 1003",
        "line-check: 0x5A, expected 0x69|line-check: 0x69, expected 0x5A");
    row("jump before the load", "loader", "d5 04204000", "d5 04204000 1001",
        "jump: a jump to 0x04204000, expected the second agent first");
    row("first agent again", "loader", "d9", "", "command: 0xD9, expected 0xD7");
    row("jump to elsewhere", "loaded", "d5 04204004", "d5 04204004 1002",
        "jump: a jump to 0x04204004, expected a jump to 0x04204000");
    row("register after the load", "loaded", "d0", "", "command: 0xD0, expected 0xD5");

    row("handshake wrong", "handshake", "3e", "", "handshake: 0x3E, expected 0x3F");
    row("logging neither off nor on", "logging", "02", "", "logging: 0x02, expected 0x00 or 0x01");
    row("power key", "power key", "01", "", "power-key: 0x01, expected 0x00");
    row("flash id", "flash id", "24", "", "flash-id: 0x24, expected 0x5A");
    row("no parameters", "parameters", "b2", "", "parameters: 0xB2, expected 0x24");
    row("other parameters", "parameters",
        "24 16 01 00 00 50 c8 20 04 7c c5 20 04 d0 cb 20 04 01 00 ef 00 60 00 16 00 00 00 00 00 18 "
        "cb 20 04 b8 cb 20 05",
        "24 0000 1003 5a", "parameters: 0x05 as byte 35, expected 0x04");

    row("no agent command", "ready", "77", "",
        "command: 0x77, expected a command of the second agent");
    row("download not announced", "ready", "b2 08000000 00001000 00001000", "a5 00000bc5",
        "download: a download, expected 0x5A first");
    row("finish not announced", "ready", "d9 00", "96", "finish: 0xD9, expected 0xA5 first");
    row("watchdog not announced", "ready", "db 0005", "96", "watchdog: 0xDB, expected 0xA5 first");
    row("no option", "leaving", "d9 02", "5a", "finish: option 2, expected 0 or 1");
}

void TestReceiverOrder::refusesWhatIsOutOfOrder()
{
    QFETCH(QString, place);
    QFETCH(QByteArray, sent);
    QFETCH(QByteArray, answer);
    QFETCH(QString, anomaly);
    Rig rig;
    QVERIFY(reach(*rig.host, place));
    QCOMPARE(rig.anomalies(), QStringList());
    QVERIFY(rig.host->ask(sent, answer));
    QTRY_COMPARE(rig.anomalies(), anomaly.split('|'));
    QCOMPARE(rig.host->pending(), 0);
}

void TestReceiverOrder::checksTheRangeOfAnImage_data()
{
    QTest::addColumn<QByteArray>("arguments"); // address, length, packet size
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("anomaly");
    const auto row = [](const char *name, const char *arguments, const char *answer,
                        const char *anomaly) {
        QTest::newRow(name) << QByteArray(arguments) << QByteArray(answer)
                            << QString::fromLatin1(anomaly);
    };
    row("first sector", "08000000 00001000 00001000", "5a 5a", "");
    row("last sector", "083ff000 00001000 00001000", "5a 5a", "");
    row("all of it", "08000000 00400000 00001000", "5a 5a", "");
    row("one packet too many", "083ff000 00002000 00001000", "5a a5 00000bc4",
        "8192 bytes for 0x083FF000, expected a range of the flash, 0x08000000 to 0x083FFFFF");
    row("before the flash", "07fff000 00002000 00001000", "5a a5 00000bc4",
        "8192 bytes for 0x07FFF000, expected a range of the flash, 0x08000000 to 0x083FFFFF");
    row("behind the flash", "08400000 00001000 00001000", "5a a5 00000bc4",
        "4096 bytes for 0x08400000, expected a range of the flash, 0x08000000 to 0x083FFFFF");
    row("not at a sector", "08000800 00001000 00001000", "5a a5 00000bc3",
        "an image for 0x08000800, expected a multiple of 4096");
    row("no length", "08000000 00000000 00001000", "a5 00000bc2",
        "an image of 0 bytes, expected whole packets");
    row("half a packet", "08000000 00000800 00001000", "a5 00000bc2",
        "an image of 2048 bytes, expected whole packets");
    row("small packets", "08000000 00001000 00000800", "a5 00000bc2",
        "packets of 2048 bytes, expected packets of 4096 bytes");
}

void TestReceiverOrder::checksTheRangeOfAnImage()
{
    QFETCH(QByteArray, arguments);
    QFETCH(QByteArray, answer);
    QFETCH(QString, anomaly);
    Rig rig;
    QVERIFY(rig.host->connectToAgent());
    rig.host->putHex("5a");
    QVERIFY(rig.host->ask("b2" + arguments, answer));
    if (anomaly.isEmpty()) {
        QTRY_COMPARE(rig.phase(), QStringLiteral("stage-2-writing"));
        QCOMPARE(rig.anomalies(), QStringList());
        return;
    }
    QCOMPARE(rig.anomalies(), QStringList{"download: " + anomaly});
    // the agent is ready for the next image
    QVERIFY(rig.host->writeImage(0x08000000, tests::pattern(10, 1)));
}

void TestReceiverOrder::aProgramsChecksumIsTheReceiversOwn()
{
    Rig rig;
    QVERIFY(rig.host->synchronise() && rig.host->identify());
    QVERIFY(rig.host->ask("d9 04204000 00000005 00000000 00000000",
                          "d9 04204000 00000005 00000000 00000000 0000"));
    QVERIFY(rig.host->ask("ff 00 12 34 56", "34bb 0000"));
}

void TestReceiverOrder::aWrongSumLeavesTheImageIncomplete()
{
    Rig rig;
    QVERIFY(rig.host->connectToAgent());
    QVERIFY(rig.host->announceImage(0x08000000, 4096));
    QVERIFY(rig.host->sendPacket(QByteArray(4096, '\x01')));
    QVERIFY(rig.host->ask("", "5a"));
    QVERIFY(rig.host->ask("00001001", "a5 00001000"));
    QCOMPARE(rig.anomalies(),
             QStringList{QStringLiteral("image-sum: sum 0x00001001, expected 0x00001000")});
    QVERIFY(!rig.receiver.state().images.first().complete);
    QVERIFY(rig.host->finish());
}

void TestReceiverOrder::anImageOverAnotherIsReportedOnce()
{
    Rig rig;
    QVERIFY(rig.host->connectToAgent());
    QVERIFY(rig.host->writeImage(0x08002000, tests::pattern(3 * 4096, 1)));
    QVERIFY(rig.host->writeImage(0x08000000, tests::pattern(4 * 4096, 2)));
    QCOMPARE(rig.anomalies(),
             QStringList{QStringLiteral("packet: image 2 overwrites image 1 at 0x08002000, "
                                        "expected images that do not overlap")});
    QCOMPARE(rig.receiver.flash(0x08000000, 4 * 4096), tests::pattern(4 * 4096, 2));
}

void TestReceiverOrder::theSameImageAfterAResetIsNoOverlap()
{
    Rig rig;
    for (int round = 0; round < 2; ++round) {
        tests::pulse(rig.receiver);
        rig.host->setBaud(115200);
        QVERIFY(rig.host->connectToAgent());
        // the other way round the second time: each sector gets an image of another number
        QVERIFY(rig.host->writeImage(round == 0 ? 0x08030000 : 0x08000000, tests::pattern(9, 1)));
        QVERIFY(rig.host->writeImage(round == 0 ? 0x08000000 : 0x08030000, tests::pattern(9, 2)));
    }
    QCOMPARE(rig.anomalies(), QStringList());
}

void TestReceiverOrder::theWatchdogBitesUnlessItIsDisabled()
{
    Rig rig;
    rig.set([](auto &settings) { settings.watchdogTime = 50; });
    QVERIFY(rig.host->synchronise());
    QTRY_COMPARE(rig.receiver.state().watchdogResets, 1);
    QTRY_COMPARE(rig.phase(), QStringLiteral("boot-rom"));
    QCOMPARE(rig.receiver.state().resets, 2);
    QCOMPARE(rig.anomalies(),
             QStringList{QStringLiteral("sync: the watchdog reset the receiver, expected 0x0010 "
                                        "written to 0xA2080000 in time")});
    QVERIFY(rig.host->synchronise());
}

void TestReceiverOrder::aDisabledWatchdogStaysQuiet()
{
    Rig rig;
    rig.set([](auto &settings) { settings.watchdogTime = 500; });
    QVERIFY(rig.host->synchronise() && rig.host->identify());
    QCOMPARE(rig.host->get(1, 700).size(), 0); // longer than the watchdog's time
    QCOMPARE(rig.phase(), QStringLiteral("boot-rom-commands"));
    QCOMPARE(rig.receiver.state().watchdogResets, 0);
    QCOMPARE(rig.anomalies(), QStringList());
}

void TestReceiverOrder::aResetInTheMiddleOfAPacketStartsOver()
{
    Rig rig;
    QVERIFY(rig.host->connectToAgent());
    QVERIFY(rig.host->announceImage(0x08000000, 8192));
    QVERIFY(rig.host->sendPacket(tests::pattern(4096, 1)));
    rig.host->put(tests::pattern(2000, 2));
    QTRY_COMPARE(rig.receiver.state().step, QStringLiteral("packet"));
    tests::pulse(rig.receiver);
    QCOMPARE(rig.receiver.state().packets, 0);
    QCOMPARE(rig.receiver.state().images.size(), 0);
    QCOMPARE(rig.receiver.flash(0x08000000, 4096), tests::pattern(4096, 1));
    rig.host->setBaud(115200);
    QVERIFY(rig.host->connectToAgent());
    QVERIFY(rig.host->writeImage(0x08000000, tests::pattern(8192, 3)));
    QCOMPARE(rig.receiver.flash(0x08000000, 8192), tests::pattern(8192, 3));
    QCOMPARE(rig.anomalies(), QStringList());
}

void TestReceiverOrder::anomaliesAreSignalled()
{
    Rig rig;
    QStringList told;
    connect(&rig.receiver, &bench::Receiver::anomalyFound, this,
            [&told](const QString &text) { told << text; });
    rig.host->putHex("0a");
    QTRY_COMPARE(told, QStringList{QStringLiteral("sync: 0x0A, expected 0xA0")});
}

TESTMODE_TEST_MAIN(TestReceiverOrder)
#include "test_receiver_order.moc"
