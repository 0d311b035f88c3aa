#include "rawhost.h"
#include "tests/support/unittest.h"

using tests::RawHost;
using tests::Rig;

// The good dialogue, from the reset to the end.
class TestReceiverDialogue : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void answersTheBootRomsPart();
    void answersTheFirstAgentsPart();
    void answersTheSecondAgentsPart();
    void takesAPacketAndItsSum();
    void writesFourImagesByteForByte();
    void twoUpdatesInARow();
    void aRepeatedFirstByteThatCrossedIsNotAnsweredAgain();
    void theHostMaySynchroniseAgain();
    void finishLeavesItSilentUntilAReset_data();
    void finishLeavesItSilentUntilAReset();
    void theWatchdogEndsWithAReset();
};

// Every byte of the boot ROM's part, both directions.
void TestReceiverDialogue::answersTheBootRomsPart()
{
    Rig rig;
    rig.set([](auto &settings) {
        settings.hwCode = 0x1A2B;
        settings.hwSubcode = 0x3C4D;
    });
    RawHost &host = *rig.host;
    const struct
    {
        const char *sent;
        const char *answer;
    } exchanges[] = {
        {"a0", "5f"},
        {"0a", "f5"},
        {"50", "af"},
        {"05", "fa"},
        // read a register: address, count
        {"d0", "d0"},
        {"80000008", "80000008"},
        {"00000001", "00000001 0000 1a2b 0000"},
        {"d0", "d0"},
        {"8000000c", "8000000c"},
        {"00000001", "00000001 0000 3c4d 0000"},
        {"d1", "d1"},
        {"80000008", "80000008"},
        {"00000001", "00000001 0000 00001a2b 0000"},
        // two words, then the status
        {"d8", "d8 0000 0000 0000"},
        // the watchdog, both widths
        {"d4", "d4"},
        {"a2080000", "a2080000"},
        {"00000001", "00000001 0000"},
        {"00000010", "00000010 0000"},
        {"d2", "d2"},
        {"a2080000", "a2080000"},
        {"00000001", "00000001 0000"},
        {"0010", "0010 0000"},
        {"d0", "d0"},
        {"a2080000", "a2080000"},
        {"00000001", "00000001 0000 0010 0000"},
        // load: address, length, two words; the checksum is that of 01 02 03
        {"d9", "d9"},
        {"04204000", "04204000"},
        {"00000003", "00000003"},
        {"00000000", "00000000"},
        {"00000000", "00000000 0000"},
        {"01 02 03", "0202 0000"},
    };
    for (const auto &exchange : exchanges)
        QVERIFY2(host.ask(exchange.sent, exchange.answer), host.lastAnswer());
    QTRY_COMPARE(rig.phase(), QStringLiteral("stage-1"));
    QCOMPARE(rig.anomalies(), QStringList());
}

void TestReceiverDialogue::answersTheFirstAgentsPart()
{
    Rig rig;
    RawHost &host = *rig.host;
    QVERIFY(host.synchronise() && host.identify() && host.loadStage1(tests::pattern(100, 1)));
    QVERIFY(host.ask("5a", "5a 0000"));
    QVERIFY(host.ask("5a00", "5a00 0000"));
    QVERIFY(host.ask("5a", "5a 0000"));
    QVERIFY(host.ask("5a5a", "5a5a"));
    host.setBaud(921600);
    QVERIFY(host.ask("69 5a 0f 1e 2d 3c 4b 5a 69 78 87 96 a5 b4 c3 d2 e1 f0",
                     "69 5a 0f 1e 2d 3c 4b 5a 69 78 87 96 a5 b4 c3 d2 e1 f0 0000"));
    QVERIFY(host.ask("5a", "0000"));
    QVERIFY(host.ask("5a", "0000 0000 0000"));
    QVERIFY(host.ask("5a", "0000 0000 0000"));
    // load: address, length, one word
    QVERIFY(host.ask("d7", "d7"));
    QVERIFY(host.ask("04204000", "04204000"));
    QVERIFY(host.ask("00000004", "00000004"));
    QVERIFY(host.ask("00000000", "00000000 0000"));
    QVERIFY(host.ask("01 02 04 08", "0a05 0000"));
    QVERIFY(host.ask("d5", "d5"));
    QVERIFY(host.ask("04204000", "04204000 0000 c0")); // and the second agent begins
    QCOMPARE(rig.anomalies(), QStringList());
}

void TestReceiverDialogue::answersTheSecondAgentsPart()
{
    Rig rig;
    rig.set([](auto &settings) { settings.flashId = {0x0102, 0x0304, 0x0506}; });
    RawHost &host = *rig.host;
    QVERIFY(host.synchronise() && host.identify() && host.loadStage1(tests::pattern(100, 1))
            && host.greetStage1() && host.switchRate() && host.checkLine()
            && host.loadStage2(tests::pattern(100, 2)) && host.jump());
    QVERIFY(host.ask("", "c0"));
    QVERIFY(host.ask("3f", "0c"));
    QVERIFY(host.ask("f3", "3f"));
    QVERIFY(host.ask("c0", "f3"));
    QVERIFY(host.ask("0c", "5a"));
    QVERIFY(host.ask("01", "69"));
    QVERIFY(host.ask("00", "69"));
    QVERIFY(host.ask("5a", "0102 0304 0506"));
    QVERIFY(host.ask("24", "24"));
    QVERIFY(host.ask("16 01 00 00 50 c8 20 04 7c c5 20 04 d0 cb 20 04 01 00 ef 00 60 00 16 00 00 "
                     "00 00 00 18 cb 20 04 b8 cb 20 04",
                     "0000 0000 5a"));
    QVERIFY(host.ask("a5", "5a"));
    QVERIFY(host.ask("d9 00", "5a"));
    QCOMPARE(rig.anomalies(), QStringList());
}

void TestReceiverDialogue::takesAPacketAndItsSum()
{
    Rig rig;
    RawHost &host = *rig.host;
    QVERIFY(host.connectToAgent());
    host.putHex("5a"); // not answered: the command's two answers come next
    QVERIFY(host.ask("b2 08000000 00001000 00001000", "5a 5a"));
    // both answers of the packet, and that of the image
    QVERIFY(host.ask(QByteArray(4096, '\xFF').toHex(), "5a 69 5a"));
    QVERIFY(host.ask("000ff000", "5a"));
    QCOMPARE(host.pending(), 0);
    QCOMPARE(rig.anomalies(), QStringList());
}

void TestReceiverDialogue::writesFourImagesByteForByte()
{
    Rig rig;
    RawHost &host = *rig.host;
    const QVector<QPair<quint32, QByteArray>> images = {
        {0x08030000, tests::pattern(20481, 11)},
        {0x08000000, tests::pattern(4096, 12)},
        {0x08013000, tests::pattern(4097, 13)},
        {0x083FF000, tests::pattern(1, 14)},
    };
    QVERIFY(host.connectToAgent());
    for (const auto &image : images)
        QVERIFY(host.writeImage(image.first, image.second));
    QVERIFY(host.finish());
    QTRY_COMPARE(rig.phase(), QStringLiteral("finished"));

    // the flash holds the four and nothing else
    QByteArray expected(0x400000, '\xFF');
    for (const auto &image : images)
        expected.replace(static_cast<int>(image.first - 0x08000000U), image.second.size(),
                         image.second);
    QVERIFY(rig.receiver.flash(0x08000000, 0x400000) == expected);

    const auto state = rig.receiver.state();
    QCOMPARE(state.anomalies, QStringList());
    QCOMPARE(state.packets, 6 + 1 + 2 + 1);
    QCOMPARE(state.baud, 921600);
    QCOMPARE(state.hostBaud, 921600);
    QCOMPARE(state.images.size(), 4);
    const int lengths[] = {24576, 4096, 8192, 4096};
    for (int i = 0; i < 4; ++i) {
        QCOMPARE(state.images.at(i).address, images.at(i).first);
        QCOMPARE(state.images.at(i).length, lengths[i]);
        QCOMPARE(state.images.at(i).packets, lengths[i] / 4096);
        QVERIFY(state.images.at(i).complete);
    }
    QVERIFY(state.imageBytesPerSecond > 0.0);
    QVERIFY(state.bytesIn > 2458 + 39148 + 10 * 4096);
    QVERIFY(state.bytesOut > 0 && state.bytesOut < state.bytesIn);
}

void TestReceiverDialogue::twoUpdatesInARow()
{
    Rig rig;
    for (quint32 round = 1; round <= 2; ++round) {
        tests::pulse(rig.receiver);
        rig.host->setBaud(115200);
        QVERIFY(rig.host->connectToAgent());
        QVERIFY(rig.host->writeImage(0x08000000, tests::pattern(5000, round)));
        QVERIFY(rig.host->finish());
        QCOMPARE(rig.receiver.flash(0x08000000, 5000), tests::pattern(5000, round));
        QCOMPARE(rig.receiver.state().images.size(), 1);
        QCOMPARE(rig.receiver.state().packets, 2);
    }
    QCOMPARE(rig.anomalies(), QStringList());
}

void TestReceiverDialogue::aRepeatedFirstByteThatCrossedIsNotAnsweredAgain()
{
    Rig rig;
    QVERIFY(rig.host->ask("a0 a0 a0", "5f"));
    QVERIFY(rig.host->ask("0a", "f5"));
    QVERIFY(rig.host->ask("50", "af"));
    QVERIFY(rig.host->ask("05", "fa"));
    QCOMPARE(rig.host->pending(), 0);
    QCOMPARE(rig.anomalies(), QStringList());
}

// A host that missed an answer, the last one or one before, begins again.
void TestReceiverDialogue::theHostMaySynchroniseAgain()
{
    Rig rig;
    QVERIFY(rig.host->ask("a0", "5f"));
    QVERIFY(rig.host->ask("0a", "f5"));
    QVERIFY(rig.host->synchronise());
    QTRY_COMPARE(rig.phase(), QStringLiteral("boot-rom-commands"));
    QVERIFY(rig.host->ask("a0", "5f"));
    QTRY_COMPARE(rig.phase(), QStringLiteral("boot-rom"));
    QVERIFY(rig.host->ask("0a", "f5"));
    QVERIFY(rig.host->ask("50", "af"));
    QVERIFY(rig.host->ask("05", "fa"));
    QVERIFY(rig.host->identify());
    QCOMPARE(rig.anomalies(), QStringList());
    QCOMPARE(rig.receiver.state().resets, 1);
}

void TestReceiverDialogue::finishLeavesItSilentUntilAReset_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::newRow("without the option") << QByteArray("d9 00");
    QTest::newRow("with the option") << QByteArray("d9 01");
}

void TestReceiverDialogue::finishLeavesItSilentUntilAReset()
{
    QFETCH(QByteArray, command);
    Rig rig;
    QVERIFY(rig.host->connectToAgent());
    QVERIFY(rig.host->ask("a5", "5a"));
    QVERIFY(rig.host->ask(command, "5a"));
    QTRY_COMPARE(rig.phase(), QStringLiteral("finished"));
    rig.host->putHex("a0");
    QTRY_COMPARE(rig.anomalies(),
                 QStringList{QStringLiteral("finished: a0, expected a reset first")});
    QCOMPARE(rig.host->pending(), 0);
    tests::pulse(rig.receiver);
    QVERIFY(rig.host->synchronise());
}

void TestReceiverDialogue::theWatchdogEndsWithAReset()
{
    Rig rig;
    QVERIFY(rig.host->connectToAgent());
    QVERIFY(rig.host->ask("a5", "5a"));
    QVERIFY(rig.host->ask("db 0001", "5a")); // one second
    QTRY_COMPARE(rig.phase(), QStringLiteral("watchdog"));
    QTRY_COMPARE(rig.phase(), QStringLiteral("boot-rom"));
    QCOMPARE(rig.receiver.state().watchdogResets, 1);
    rig.host->setBaud(115200);
    QVERIFY(rig.host->synchronise());
    QCOMPARE(rig.anomalies(), QStringList());
}

TESTMODE_TEST_MAIN(TestReceiverDialogue)
#include "test_receiver_dialogue.moc"
