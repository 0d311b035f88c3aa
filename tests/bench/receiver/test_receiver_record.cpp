#include "rawhost.h"
#include "tests/support/unittest.h"

using bench::DialogueLine;
using bench::Receiver;
using tests::RawHost;
using tests::Rig;

// What the receiver tells of the dialogue: its phases, and the frames in words.
class TestReceiverRecord : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void tellsItsPhasesInOrder();
    void tellsTheDialogueInWords();
    void tellsEveryStepInWords();
    void showsTheBeginningOfLongFrames();
    void theRecordIsClearedButNumbersGoOn();
};

void TestReceiverRecord::tellsItsPhasesInOrder()
{
    Receiver receiver;
    QStringList told;
    connect(&receiver, &Receiver::phaseChanged, this,
            [&told](const QString &phase) { told << phase; });
    RawHost host(receiver.open());
    tests::pulse(receiver);
    QVERIFY(host.connectToAgent());
    QVERIFY(host.writeImage(0x08000000, tests::pattern(10, 1)));
    QVERIFY(host.finish());
    const QStringList sinceReset = {
        QStringLiteral("reset"),
        QStringLiteral("boot-rom"),
        QStringLiteral("boot-rom-commands"),
        QStringLiteral("stage-1"),
        QStringLiteral("stage-1-download-rate"),
        QStringLiteral("stage-2-handshake"),
        QStringLiteral("stage-2-sync"),
        QStringLiteral("stage-2-ready"),
        QStringLiteral("stage-2-writing"),
        QStringLiteral("stage-2-ready"),
        QStringLiteral("finished"),
    };
    QTRY_COMPARE(told, QStringList{QStringLiteral("application")} + sinceReset);

    // the same, each with its time, one behind the other
    const auto phases = receiver.state().phases;
    QStringList names;
    for (int i = 0; i < phases.size(); ++i) {
        names << phases.at(i).phase;
        if (i + 1 < phases.size())
            QCOMPARE(phases.at(i).began + phases.at(i).milliseconds, phases.at(i + 1).began);
    }
    QCOMPARE(names, sinceReset);
}

void TestReceiverRecord::tellsTheDialogueInWords()
{
    Rig rig;
    QVERIFY(rig.host->synchronise());
    QVERIFY(rig.host->ask("d0 80000004 00000001", "d0 80000004 00000001 0000 0001 0000"));
    QTRY_COMPARE(rig.receiver.dialogue().size(), 19);
    QStringList texts;
    const auto lines = rig.receiver.dialogue();
    for (int i = 0; i < lines.size(); ++i) {
        QCOMPARE(lines.at(i).number, i + 1);
        QString text = lines.at(i).text();
        text.remove(QRegularExpression(QStringLiteral("^\\d+ \\d+ ms "))); // number and time
        texts << text;
    }
    const QStringList expected = {
        QStringLiteral("event: the reset line is asserted"),
        QStringLiteral("event: the reset line is released"),
        QStringLiteral("host -> receiver 115200 baud sync: synchronise [a0]"),
        QStringLiteral("receiver -> host 115200 baud sync: in step [5f]"),
        QStringLiteral("host -> receiver 115200 baud sync: synchronise [0a]"),
        QStringLiteral("receiver -> host 115200 baud sync: in step [f5]"),
        QStringLiteral("host -> receiver 115200 baud sync: synchronise [50]"),
        QStringLiteral("receiver -> host 115200 baud sync: in step [af]"),
        QStringLiteral("host -> receiver 115200 baud sync: synchronise [05]"),
        QStringLiteral("receiver -> host 115200 baud sync: in step [fa]"),
        QStringLiteral("host -> receiver 115200 baud read-16: read a register [d0]"),
        QStringLiteral("receiver -> host 115200 baud read-16: echo [d0]"),
        QStringLiteral("host -> receiver 115200 baud read-16: address 0x80000004 [80 00 00 04]"),
        QStringLiteral("receiver -> host 115200 baud read-16: echo [80 00 00 04]"),
        QStringLiteral("host -> receiver 115200 baud read-16: count 0x00000001 [00 00 00 01]"),
        QStringLiteral("receiver -> host 115200 baud read-16: echo [00 00 00 01]"),
        QStringLiteral("receiver -> host 115200 baud read-16: status 0x0000, good [00 00]"),
        QStringLiteral("receiver -> host 115200 baud read-16: value 0x0001 [00 01]"),
        QStringLiteral("receiver -> host 115200 baud read-16: status 0x0000, good [00 00]"),
    };
    QCOMPARE(texts, expected);
    QCOMPARE(rig.receiver.dialogue(17).size(), 2);
    QCOMPARE(rig.receiver.dialogue(17).first().number, 18);
}

// From the configuration to the end; what comes again in the same words is left out.
void TestReceiverRecord::tellsEveryStepInWords()
{
    Rig rig;
    QVERIFY(rig.host->connectToAgent());
    QVERIFY(rig.host->writeImage(0x08000000, QByteArray(5000, 'x')));
    QVERIFY(rig.host->finish());
    QTRY_COMPARE(rig.phase(), QStringLiteral("finished"));
    QStringList told;
    bool begun = false;
    for (const DialogueLine &line : rig.receiver.dialogue()) {
        begun = begun || line.step == QStringLiteral("configuration");
        const QString words = QStringLiteral("%1 %2 %3: %4")
                                  .arg(line.direction == DialogueLine::ToReceiver ? '>' : '<')
                                  .arg(line.baud)
                                  .arg(line.step, line.meaning);
        if (begun && !told.contains(words))
            told << words;
    }
    const QStringList expected = {
        "> 115200 configuration: report the configuration",
        "< 115200 configuration: echo",
        "< 115200 configuration: configuration",
        "< 115200 configuration: status 0x0000, good",
        "> 115200 write-16: write a register",
        "< 115200 write-16: echo",
        "> 115200 write-16: address 0xA2080000",
        "> 115200 write-16: count 0x00000001",
        "< 115200 write-16: status 0x0000, good",
        "> 115200 write-16: value 0x0010",
        "> 115200 load-stage-1: load a program",
        "< 115200 load-stage-1: echo",
        "> 115200 load-stage-1: address 0x04204000",
        "> 115200 load-stage-1: length 0x0000099A",
        "> 115200 load-stage-1: further word 0x00000000",
        "< 115200 load-stage-1: status 0x0000, good",
        "> 115200 load-stage-1: program of 2458 bytes",
        "< 115200 load-stage-1: checksum 0xA03C",
        "> 115200 stage-1-greeting: greeting",
        "< 115200 stage-1-greeting: echo",
        "< 115200 stage-1-greeting: status 0x0000, good",
        "> 115200 stage-1-announce: announcement 0x5A00",
        "< 115200 stage-1-announce: echo",
        "< 115200 stage-1-announce: status 0x0000, good",
        "> 115200 stage-1-confirm: confirmation",
        "< 115200 stage-1-confirm: echo",
        "< 115200 stage-1-confirm: status 0x0000, good",
        "> 115200 stage-1-switch: switch the rate 0x5A5A",
        "< 115200 stage-1-switch: echo",
        "> 921600 line-check: line check",
        "< 921600 line-check: echo",
        "< 921600 line-check: status 0x0000, good",
        "> 921600 stage-1-ready: is the line good",
        "< 921600 stage-1-ready: status 0x0000, good",
        "> 921600 stage-1-first: report",
        "< 921600 stage-1-first: report",
        "< 921600 stage-1-first: status 0x0000, good",
        "> 921600 stage-1-second: report",
        "< 921600 stage-1-second: report",
        "< 921600 stage-1-second: status 0x0000, good",
        "> 921600 load-stage-2: load a program",
        "< 921600 load-stage-2: echo",
        "> 921600 load-stage-2: address 0x04204000",
        "> 921600 load-stage-2: length 0x000098EC",
        "> 921600 load-stage-2: further word 0x00000000",
        "< 921600 load-stage-2: status 0x0000, good",
        "> 921600 load-stage-2: program of 39148 bytes",
        "< 921600 load-stage-2: checksum 0x5D5C",
        "> 921600 jump: jump",
        "< 921600 jump: echo",
        "> 921600 jump: address 0x04204000",
        "< 921600 jump: status 0x0000, good",
        "< 921600 handshake: handshake",
        "> 921600 handshake: handshake",
        "< 921600 handshake: handshake complete",
        "> 921600 logging: logging off or on",
        "< 921600 logging: yes",
        "> 921600 power-key: no long press of the power key",
        "< 921600 power-key: yes",
        "> 921600 flash-id: identify the flash",
        "< 921600 flash-id: identity of the flash",
        "> 921600 parameters: parameters",
        "< 921600 parameters: echo",
        "< 921600 parameters: parameters taken",
        "< 921600 parameters: status 0x0000, good",
        "< 921600 parameters: end of the parameters",
        "> 921600 image-start: an image follows",
        "> 921600 download: image of 8192 bytes for 0x08000000 in packets of 4096",
        "< 921600 download: command good",
        "< 921600 download: range good",
        "> 921600 packet: packet 1 of 2 of image 1",
        "< 921600 packet: packet received",
        "< 921600 packet: packet written",
        "> 921600 packet: packet 2 of 2 of image 1",
        "< 921600 image-end: all packets written",
        "> 921600 image-sum: sum 0x00159348",
        "< 921600 image-sum: sums equal",
        "> 921600 disconnect: the end comes",
        "< 921600 disconnect: yes",
        "> 921600 finish: finish, option 0",
        "< 921600 finish: yes",
    };
    QCOMPARE(told, expected);
}

void TestReceiverRecord::showsTheBeginningOfLongFrames()
{
    Rig rig;
    QVERIFY(rig.host->connectToAgent());
    QVERIFY(rig.host->writeImage(0x08000000, QByteArray(4096, 'x')));
    for (const DialogueLine &line : rig.receiver.dialogue()) {
        if (line.step != QStringLiteral("packet"))
            continue;
        QCOMPARE(line.direction, DialogueLine::ToReceiver);
        QCOMPARE(line.meaning, QStringLiteral("packet 1 of 1 of image 1"));
        QCOMPARE(line.length, 4096);
        QCOMPARE(line.bytes, QByteArray(64, 'x'));
        QVERIFY(line.text().endsWith(QStringLiteral("78 ... 4096 bytes]")));
        return;
    }
    QFAIL("no line of the packet");
}

void TestReceiverRecord::theRecordIsClearedButNumbersGoOn()
{
    Rig rig;
    rig.host->putHex("77");
    QTRY_COMPARE(rig.anomalies().size(), 1);
    QTRY_COMPARE(rig.receiver.dialogue().size(), 3);
    rig.receiver.clearRecord();
    QCOMPARE(rig.anomalies(), QStringList());
    QCOMPARE(rig.receiver.dialogue().size(), 0);
    QVERIFY(rig.host->ask("a0", "5f"));
    QTRY_COMPARE(rig.receiver.dialogue().size(), 2);
    QCOMPARE(rig.receiver.dialogue().first().number, 4);
}

TESTMODE_TEST_MAIN(TestReceiverRecord)
#include "test_receiver_record.moc"
