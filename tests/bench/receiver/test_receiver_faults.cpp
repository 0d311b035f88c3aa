#include "rawhost.h"
#include "tests/support/unittest.h"

#include <QElapsedTimer>
#include <QJsonDocument>

using bench::Fault;
using tests::RawHost;
using tests::Rig;

// Each kind of fault as the host sees it on the line, counted and listed; where, how often
// and with which seed.
class TestReceiverFaults : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void silenceLastsUntilTheReset();
    void silenceAfterSomeBytesOfAStep();
    void aStatusInPlaceOfTheRightOne();
    void theSecondStatusOfAStep();
    void aWrongChecksumOfAProgram();
    void aWrongSumOfAnImage();
    void aWrongAcknowledgement();
    void aRefusalThatMayBeRepeated();
    void theHostMayGiveUpAPacket();
    void aBusyRefusalHoldsTheHost();
    void anotherRefusalIsRepeatedAtOnce();
    void theRangeMayBeRefused();
    void theEndOfAnImageMayBeRefused();
    void aByteOfTheHost_data();
    void aByteOfTheHost();
    void aByteOfTheReceiver_data();
    void aByteOfTheReceiver();
    void aLateByteOfTheHost();
    void aLateByteOfTheReceiver();
    void aLonelyByteIsNotSwapped();
    void aCommandThatIsFlippedIsAnotherStep();
    void garbageBeforeTheSynchronisation();
    void aLostAnswerToTheFirstByteComesAgain();
    void aResetInTheMiddle();
    void resetsWithoutEndLeaveTimeBetween();
    void anAnswerTwice();
    void aFlashThatDoesNotWrite();
    void anotherRate();
    void flowControlStopsTheHost();
    void countsStepsImagesAndPackets();
    void strikesOnceOrSeveralTimesOrAlways();
    void theSameSeedBringsTheSameFaults();
    void faultsDoNotDisturbOneAnother();
    void clearedFaultsDoNotStrike();
    void deedsAreListedInTheDialogueToo();
};

namespace {

Fault fault(const char *json)
{
    QString error;
    const auto read = Fault::fromJson(QJsonDocument::fromJson(json).object(), &error);
    if (!read)
        qFatal("%s", qPrintable(error));
    return *read;
}

const char *const kReadRevision = "d0 80000004 00000001";
const char *const kRevision = "d0 80000004 00000001 0000 0001 0000";

// What the one fault that was set did.
QStringList deeds(const Rig &rig)
{
    const auto reports = rig.receiver.faultReports();
    return reports.size() == 1 && reports.first().done == reports.first().deeds.size()
        ? reports.first().deeds
        : QStringList{QStringLiteral("not one report, or not all deeds")};
}

} // namespace

void TestReceiverFaults::silenceLastsUntilTheReset()
{
    Rig rig;
    rig.receiver.setFaults({fault(R"({"kind":"silence","step":"read-16","count":2})")});
    QVERIFY(rig.host->synchronise());
    QVERIFY(rig.host->ask(kReadRevision, kRevision));
    rig.host->putHex(kReadRevision);
    QTRY_COMPARE(rig.phase(), QStringLiteral("silent"));
    QCOMPARE(deeds(rig), QStringList{QStringLiteral("read-16 2: silent from here on")});
    rig.host->putHex("a0 a5 d9 00");
    QTRY_COMPARE(rig.receiver.state().bytesIn, 4 + 9 + 9 + 4);
    QCOMPARE(rig.host->pending(), 0);
    QCOMPARE(rig.anomalies(), QStringList());

    tests::pulse(rig.receiver);
    QVERIFY(rig.host->connectToAgent()); // once means once
}

void TestReceiverFaults::silenceAfterSomeBytesOfAStep()
{
    Rig rig;
    rig.receiver.setFaults({fault(R"({"kind":"silence","step":"read-16","index":5})")});
    QVERIFY(rig.host->synchronise());
    QVERIFY(rig.host->ask("d0", "d0"));
    rig.host->putHex("80000004");
    QTRY_COMPARE(rig.phase(), QStringLiteral("silent"));
    QCOMPARE(rig.host->pending(), 0);
}

void TestReceiverFaults::aStatusInPlaceOfTheRightOne()
{
    Rig rig;
    rig.receiver.setFaults({fault(R"({"kind":"status","step":"read-16","value":7000})")});
    QVERIFY(rig.host->synchronise());
    // refused: no value follows
    QVERIFY(rig.host->ask(kReadRevision, "d0 80000004 00000001 1b58"));
    QCOMPARE(deeds(rig), QStringList{QStringLiteral("read-16 1: status 0x0000 sent as 0x1B58")});
    QVERIFY(rig.host->ask(kReadRevision, kRevision));
    QCOMPARE(rig.host->pending(), 0);
}

void TestReceiverFaults::theSecondStatusOfAStep()
{
    Rig rig;
    rig.receiver.setFaults({fault(R"({"kind":"status","step":"load-stage-1","index":1})")});
    QVERIFY(rig.host->synchronise() && rig.host->identify());
    QVERIFY(rig.host->ask("d9 04204000 00000003 00000000 00000000",
                          "d9 04204000 00000003 00000000 00000000 0000"));
    QVERIFY(rig.host->ask("01 02 03", "0202 1000"));
    QCOMPARE(rig.phase(), QStringLiteral("boot-rom-commands")); // and takes the load again
    QVERIFY(rig.host->loadStage1(tests::pattern(10, 1)));
}

void TestReceiverFaults::aWrongChecksumOfAProgram()
{
    Rig rig;
    rig.receiver.setFaults({fault(R"({"kind":"checksum","step":"load-stage-1"})"),
                            fault(R"({"kind":"checksum","step":"load-stage-2","value":48879})")});
    QVERIFY(rig.host->synchronise() && rig.host->identify());
    QVERIFY(rig.host->ask("d9 04204000 00000003 00000000 00000000 01 02 03",
                          "d9 04204000 00000003 00000000 00000000 0000 0203 0000"));
    QVERIFY(rig.host->greetStage1() && rig.host->switchRate() && rig.host->checkLine());
    QVERIFY(rig.host->ask("d7 04204000 00000003 00000000 01 02 03",
                          "d7 04204000 00000003 00000000 0000 beef 0000"));
    const auto reports = rig.receiver.faultReports();
    QCOMPARE(reports.at(0).deeds,
             QStringList{QStringLiteral("load-stage-1 1: checksum 0x0202 sent as 0x0203")});
    QCOMPARE(reports.at(1).deeds,
             QStringList{QStringLiteral("load-stage-2 1: checksum 0x0202 sent as 0xBEEF")});
}

void TestReceiverFaults::aWrongSumOfAnImage()
{
    Rig rig;
    rig.receiver.setFaults({fault(R"({"kind":"checksum","image":2,"value":5})")});
    QVERIFY(rig.host->connectToAgent());
    QVERIFY(rig.host->writeImage(0x08000000, tests::pattern(10, 1)));
    QVERIFY(rig.host->announceImage(0x08001000, 4096));
    QVERIFY(rig.host->sendPacket(QByteArray(4096, '\x01')));
    QVERIFY(rig.host->ask("", "5a"));
    QVERIFY(rig.host->ask("00001000", "a5 00000005"));
    QCOMPARE(deeds(rig),
             QStringList{QStringLiteral("image-sum 2 (image 2): sum 0x00001000 sent as "
                                        "0x00000005")});
    QCOMPARE(rig.anomalies(), QStringList()); // the host was right
    QVERIFY(!rig.receiver.state().images.last().complete);
}

void TestReceiverFaults::aWrongAcknowledgement()
{
    Rig rig;
    rig.receiver.setFaults(
        {fault(R"({"kind":"acknowledge","step":"sync","index":2})"),
         fault(R"({"kind":"acknowledge","step":"packet","index":1,"value":150})")});
    QVERIFY(rig.host->ask("a0", "5f"));
    QVERIFY(rig.host->ask("0a", "f5"));
    QVERIFY(rig.host->ask("50", "00"));
    QVERIFY(rig.host->connectToAgent());
    QVERIFY(rig.host->announceImage(0x08000000, 4096));
    rig.host->put(QByteArray(4096, 'x'));
    QVERIFY(rig.host->ask("", "5a 96"));
    QCOMPARE(rig.receiver.faultReports().at(0).deeds,
             QStringList{QStringLiteral("sync 1: acknowledgement 0xAF sent as 0x00")});
    QCOMPARE(rig.receiver.faultReports().at(1).deeds,
             QStringList{QStringLiteral("packet 1 (image 1, packet 1): acknowledgement 0x69 sent "
                                        "as 0x96")});
}

void TestReceiverFaults::aRefusalThatMayBeRepeated()
{
    Rig rig;
    rig.receiver.setFaults({fault(R"({"kind":"nack","packet":2,"times":3,"value":3062})")});
    QVERIFY(rig.host->connectToAgent());
    const QByteArray image = tests::pattern(3 * 4096, 1);
    QVERIFY(rig.host->announceImage(0x08000000, 3 * 4096));
    QVERIFY(rig.host->sendPacket(image.left(4096)));
    for (int round = 0; round < 3; ++round) {
        rig.host->put(image.mid(4096, 4096));
        QVERIFY(rig.host->ask("", "5a a5 00000bf6 5a"));
        rig.host->putHex("69");
    }
    QVERIFY(rig.host->sendPacket(image.mid(4096, 4096)));
    QVERIFY(rig.host->sendPacket(image.mid(2 * 4096)));
    QVERIFY(rig.host->ask("", "5a"));
    QCOMPARE(rig.receiver.flash(0x08000000, 3 * 4096), image);
    QCOMPARE(rig.receiver.state().packets, 3);
    QCOMPARE(rig.anomalies(), QStringList());
    QCOMPARE(deeds(rig),
             (QStringList{
                 QStringLiteral("packet 2 (image 1, packet 2): refused with code 3062"),
                 QStringLiteral("packet 3 (image 1, packet 2): refused with code 3062"),
                 QStringLiteral("packet 4 (image 1, packet 2): refused with code 3062"),
             }));
}

void TestReceiverFaults::theHostMayGiveUpAPacket()
{
    Rig rig;
    rig.receiver.setFaults({fault(R"({"kind":"nack"})")});
    QVERIFY(rig.host->connectToAgent());
    QVERIFY(rig.host->announceImage(0x08000000, 4096));
    rig.host->put(QByteArray(4096, 'x'));
    QVERIFY(rig.host->ask("", "5a a5 00000bf5 5a"));
    rig.host->putHex("a5"); // given up
    QTRY_COMPARE(rig.phase(), QStringLiteral("stage-2-ready"));
    QVERIFY(rig.host->finish());
    QCOMPARE(rig.receiver.flash(0x08000000, 4096), QByteArray(4096, '\xFF'));
    QCOMPARE(rig.anomalies(), QStringList());
}

void TestReceiverFaults::aBusyRefusalHoldsTheHost()
{
    Rig rig;
    rig.receiver.setFaults({fault(R"({"kind":"nack","value":3065})")});
    QVERIFY(rig.host->connectToAgent());
    QVERIFY(rig.host->announceImage(0x08000000, 4096));
    rig.host->put(QByteArray(4096, 'x'));
    QVERIFY(rig.host->ask("", "5a a5 00000bf9 e1 e1 e1 e0 5a"));
    rig.host->putHex("69");
    QVERIFY(rig.host->sendPacket(QByteArray(4096, 'x')));
}

void TestReceiverFaults::anotherRefusalIsRepeatedAtOnce()
{
    Rig rig;
    rig.receiver.setFaults({fault(R"({"kind":"nack","value":3060,"times":"always"})")});
    QVERIFY(rig.host->connectToAgent());
    QVERIFY(rig.host->announceImage(0x08000000, 4096));
    for (int round = 0; round < 10; ++round) {
        rig.host->put(QByteArray(4096, 'x'));
        QVERIFY(rig.host->ask("", "5a a5 00000bf4"));
    }
    rig.receiver.clearFaults();
    QVERIFY(rig.host->sendPacket(QByteArray(4096, 'x')));
}

void TestReceiverFaults::theRangeMayBeRefused()
{
    Rig rig;
    rig.receiver.setFaults({fault(R"({"kind":"nack","step":"download","index":1,"value":7})")});
    QVERIFY(rig.host->connectToAgent());
    rig.host->putHex("5a");
    QVERIFY(rig.host->ask("b2 08000000 00001000 00001000", "5a a5 00000007"));
    QVERIFY(rig.host->writeImage(0x08000000, tests::pattern(1, 1)));
}

void TestReceiverFaults::theEndOfAnImageMayBeRefused()
{
    Rig rig;
    rig.receiver.setFaults({fault(R"({"kind":"nack","step":"image-end","value":9})")});
    QVERIFY(rig.host->connectToAgent());
    QVERIFY(rig.host->announceImage(0x08000000, 4096));
    QVERIFY(rig.host->sendPacket(QByteArray(4096, 'x')));
    QVERIFY(rig.host->ask("", "a5 00000009"));
    QTRY_COMPARE(rig.phase(), QStringLiteral("stage-2-ready"));
    QVERIFY(!rig.receiver.state().images.first().complete);
}

// Byte 2 of "80 00 0a 04", an address of the host's, on its way to the receiver; the echo
// shows what arrived.
void TestReceiverFaults::aByteOfTheHost_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QByteArray>("sent"); // address and what else it takes to fill a word
    QTest::addColumn<QByteArray>("echo");
    QTest::addColumn<QString>("deed");
    QTest::newRow("dropped") << QByteArray(R"({"kind":"drop","step":"read-16","index":3})")
                             << QByteArray("80 00 0a 04 77") << QByteArray("80 00 04 77")
                             << QStringLiteral("byte 3 from the host, 0x0A dropped");
    QTest::newRow("doubled") << QByteArray(R"({"kind":"double","step":"read-16","index":3})")
                             << QByteArray("80 00 0a") << QByteArray("80 00 0a 0a")
                             << QStringLiteral("byte 3 from the host, 0x0A doubled");
    QTest::newRow("flipped") << QByteArray(
        R"({"kind":"flip","step":"read-16","index":3,"value":129})")
                             << QByteArray("80 00 0a 04") << QByteArray("80 00 8b 04")
                             << QStringLiteral("byte 3 from the host, 0x0A became 0x8B");
    QTest::newRow("swapped") << QByteArray(R"({"kind":"swap","step":"read-16","index":3})")
                             << QByteArray("80 00 0a 04") << QByteArray("80 00 04 0a")
                             << QStringLiteral("byte 3 from the host, 0x0A came after 0x04");
}

void TestReceiverFaults::aByteOfTheHost()
{
    QFETCH(QByteArray, json);
    QFETCH(QByteArray, sent);
    QFETCH(QByteArray, echo);
    QFETCH(QString, deed);
    Rig rig;
    rig.receiver.setFaults({fault(json.constData())});
    QVERIFY(rig.host->synchronise());
    QVERIFY(rig.host->ask("d0", "d0"));
    QVERIFY(rig.host->ask(sent, echo));
    QCOMPARE(deeds(rig), QStringList{QStringLiteral("read-16 1: ") + deed});
}

// Byte 2 of the echo "80 00 0a 04" on its way to the host.
void TestReceiverFaults::aByteOfTheReceiver_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QByteArray>("echo");
    QTest::addColumn<QString>("deed");
    const QByteArray place = R"("step":"read-16","index":3,"direction":"to-host")";
    QTest::newRow("dropped") << QByteArray(R"({"kind":"drop",)" + place + "}")
                             << QByteArray("80 00 04")
                             << QStringLiteral("byte 3 to the host, 0x0A dropped");
    QTest::newRow("doubled") << QByteArray(R"({"kind":"double",)" + place + "}")
                             << QByteArray("80 00 0a 0a 04")
                             << QStringLiteral("byte 3 to the host, 0x0A doubled");
    QTest::newRow("flipped") << QByteArray(R"({"kind":"flip","value":1,)" + place + "}")
                             << QByteArray("80 00 0b 04")
                             << QStringLiteral("byte 3 to the host, 0x0A became 0x0B");
    QTest::newRow("swapped") << QByteArray(R"({"kind":"swap",)" + place + "}")
                             << QByteArray("80 00 04 0a")
                             << QStringLiteral("byte 3 to the host, 0x0A came after 0x04");
}

void TestReceiverFaults::aByteOfTheReceiver()
{
    QFETCH(QByteArray, json);
    QFETCH(QByteArray, echo);
    QFETCH(QString, deed);
    Rig rig;
    rig.receiver.setFaults({fault(json.constData())});
    QVERIFY(rig.host->synchronise());
    QVERIFY(rig.host->ask("d0", "d0"));
    QVERIFY(rig.host->ask("80 00 0a 04", echo));
    QVERIFY(rig.host->ask("00000001", "00000001 1002")); // no such register; and in step again
    QCOMPARE(deeds(rig), QStringList{QStringLiteral("read-16 1: ") + deed});
}

void TestReceiverFaults::aLateByteOfTheHost()
{
    Rig rig;
    rig.receiver.setFaults({fault(R"({"kind":"late","step":"read-16","index":0,"value":200})")});
    QVERIFY(rig.host->synchronise());
    QElapsedTimer clock;
    clock.start();
    QVERIFY(rig.host->ask(kReadRevision, kRevision));
    QVERIFY(clock.elapsed() >= 200);
    QCOMPARE(deeds(rig),
             QStringList{QStringLiteral("read-16 1: byte 0 from the host, 0xD0 200 ms late")});
}

void TestReceiverFaults::aLateByteOfTheReceiver()
{
    Rig rig;
    rig.receiver.setFaults(
        {fault(R"({"kind":"late","step":"read-16","index":2,"value":200,"direction":"to-host"})")});
    QVERIFY(rig.host->synchronise());
    QVERIFY(rig.host->ask("d0", "d0"));
    QElapsedTimer clock;
    clock.start();
    QVERIFY(rig.host->ask("80000004", "80"));
    QVERIFY(rig.host->ask("", "000004"));
    QVERIFY(clock.elapsed() >= 200);
    QCOMPARE(deeds(rig),
             QStringList{QStringLiteral("read-16 1: byte 2 to the host, 0x00 200 ms late")});
}

void TestReceiverFaults::aLonelyByteIsNotSwapped()
{
    Rig rig;
    rig.receiver.setFaults({fault(R"({"kind":"swap","step":"sync","times":"always"})"),
                            fault(R"({"kind":"swap","step":"sync","times":"always",)"
                                  R"("direction":"to-host"})")});
    QVERIFY(rig.host->synchronise());
    QCOMPARE(rig.receiver.faultReports().at(0).done, 0);
    QCOMPARE(rig.receiver.faultReports().at(1).done, 0);
}

void TestReceiverFaults::aCommandThatIsFlippedIsAnotherStep()
{
    Rig rig;
    rig.receiver.setFaults({fault(R"({"kind":"flip","step":"read-16","index":0,"value":1})")});
    QVERIFY(rig.host->synchronise());
    QVERIFY(rig.host->ask("d0", "d1"));
    QCOMPARE(rig.receiver.state().step, QStringLiteral("read-32"));
    QVERIFY(rig.host->ask("80000004 00000001", "80000004 00000001 0000 00000001 0000"));
}

void TestReceiverFaults::garbageBeforeTheSynchronisation()
{
    QByteArray first;
    for (int round = 0; round < 2; ++round) {
        Rig rig(false);
        rig.receiver.setFaults({fault(R"({"kind":"garbage","value":40})")}, 7);
        tests::pulse(rig.receiver);
        const QByteArray noise = rig.host->get(40);
        QCOMPARE(noise.size(), 40);
        QVERIFY(!noise.contains('\x11') && !noise.contains('\x13'));
        QVERIFY(round == 0 || noise == first);
        first = noise;
        QVERIFY(rig.host->synchronise());
        QCOMPARE(
            deeds(rig),
            QStringList{QStringLiteral("sync 1: noise ") + QString::fromLatin1(noise.toHex(' '))});
    }
}

void TestReceiverFaults::aLostAnswerToTheFirstByteComesAgain()
{
    Rig rig;
    rig.receiver.setFaults({fault(R"({"kind":"drop","step":"sync","direction":"to-host"})")});
    // A host that repeats its first byte until it sees the answer.
    QElapsedTimer clock;
    clock.start();
    QByteArray answer;
    while (answer.isEmpty() && clock.elapsed() < 3000) {
        rig.host->putHex("a0");
        answer = rig.host->getHex(1, 5);
    }
    QCOMPARE(answer, QByteArray("5f"));
    QVERIFY(rig.host->ask("0a", "f5"));
    QVERIFY(rig.host->ask("50", "af"));
    QVERIFY(rig.host->ask("05", "fa"));
    QCOMPARE(rig.anomalies(), QStringList());
}

void TestReceiverFaults::aResetInTheMiddle()
{
    Rig rig;
    rig.receiver.setFaults({fault(R"({"kind":"reset","step":"packet","packet":2,"index":100})")});
    QVERIFY(rig.host->connectToAgent());
    QVERIFY(rig.host->announceImage(0x08000000, 8192));
    QVERIFY(rig.host->sendPacket(tests::pattern(4096, 1)));
    rig.host->put(tests::pattern(4096, 2));
    QTRY_COMPARE(rig.phase(), QStringLiteral("boot-rom"));
    QCOMPARE(
        deeds(rig),
        QStringList{QStringLiteral("packet 2 (image 1, packet 2): the receiver resets itself")});
    QCOMPARE(rig.receiver.state().resets, 2);
    QCOMPARE(rig.host->pending(), 0);
}

// Before the first byte nothing is waited for: it would reset itself as fast as a core can.
void TestReceiverFaults::resetsWithoutEndLeaveTimeBetween()
{
    Rig rig;
    QElapsedTimer clock;
    clock.start();
    rig.receiver.setFaults({fault(R"({"kind":"reset","step":"sync","times":"always"})")});
    tests::pulse(rig.receiver);
    QTRY_VERIFY(rig.receiver.state().resets > 5);
    const int resets = rig.receiver.faultReports().first().done;
    QVERIFY2(resets <= clock.elapsed() / 10 + 3, qPrintable(QString::number(resets)));

    rig.receiver.clearFaults();
    tests::pulse(rig.receiver);
    QVERIFY(rig.host->connectToAgent());
}

void TestReceiverFaults::anAnswerTwice()
{
    Rig rig;
    // answers of the step: three echoes, the status, the value, the status
    rig.receiver.setFaults({fault(R"({"kind":"repeat","step":"read-16","index":4})")});
    QVERIFY(rig.host->synchronise());
    QVERIFY(rig.host->ask(kReadRevision, "d0 80000004 00000001 0000 0001 0001 0000"));
    QCOMPARE(deeds(rig), QStringList{QStringLiteral("read-16 1: the answer is sent twice")});
}

void TestReceiverFaults::aFlashThatDoesNotWrite()
{
    Rig rig;
    rig.receiver.setFaults({fault(R"({"kind":"no-write","image":2,"packet":1})")});
    QVERIFY(rig.host->connectToAgent());
    QVERIFY(rig.host->writeImage(0x08000000, tests::pattern(8192, 1)));
    QVERIFY(rig.host->writeImage(0x08010000, tests::pattern(8192, 2))); // acknowledged all the same
    QCOMPARE(rig.receiver.flash(0x08000000, 8192), tests::pattern(8192, 1));
    QCOMPARE(rig.receiver.flash(0x08010000, 8192),
             QByteArray(4096, '\xFF') + tests::pattern(8192, 2).mid(4096));
    QCOMPARE(
        deeds(rig),
        QStringList{QStringLiteral("packet 3 (image 2, packet 1): acknowledged and not written")});
}

void TestReceiverFaults::anotherRate()
{
    Rig rig(false);
    rig.receiver.setFaults({fault(R"({"kind":"baud","step":"sync","value":9600})")});
    tests::pulse(rig.receiver);
    rig.host->putHex("a0 a0");
    QTRY_COMPARE(rig.anomalies(),
                 QStringList{QStringLiteral("sync: bytes at 115200 baud, expected 9600 baud")});
    QCOMPARE(rig.host->pending(), 0);
    rig.host->setBaud(9600);
    QVERIFY(rig.host->synchronise());
    QCOMPARE(deeds(rig), QStringList{QStringLiteral("sync 1: now at 9600 baud")});
    // until the next reset
    tests::pulse(rig.receiver);
    rig.host->setBaud(115200);
    QVERIFY(rig.host->synchronise());
}

void TestReceiverFaults::flowControlStopsTheHost()
{
    Rig rig;
    rig.receiver.setFaults(
        {fault(R"({"kind":"flow-byte","step":"sync","index":1,"resume_ms":300})")});
    rig.host->setSoftwareFlowControl();
    QElapsedTimer clock;
    clock.start();
    // XOFF comes before the answer to the first byte, XON after it; neither reaches the program.
    QVERIFY(rig.host->ask("a0", "5f"));
    QVERIFY(clock.elapsed() >= 300);
    QVERIFY(rig.host->ask("0a", "f5"));
    QCOMPARE(deeds(rig), QStringList{QStringLiteral("sync 1: sent 0x13")});

    // A host without flow control gets the byte.
    Rig other;
    other.receiver.setFaults({fault(R"({"kind":"flow-byte","step":"sync","index":1,"value":17})")});
    QVERIFY(other.host->ask("a0", "11 5f"));
}

void TestReceiverFaults::countsStepsImagesAndPackets()
{
    Rig rig(false);
    rig.receiver.setFaults({fault(R"({"kind":"no-write","times":"always","image":2,"packet":2})"),
                            fault(R"({"kind":"no-write","times":"always","count":1})"),
                            fault(R"({"kind":"no-write","times":"always","packet":3})")});
    for (int round = 1; round <= 2; ++round) { // counted from the reset
        tests::pulse(rig.receiver);
        rig.host->setBaud(115200);
        QVERIFY(rig.host->connectToAgent());
        QVERIFY(rig.host->writeImage(0x08000000, tests::pattern(3 * 4096, 1)));
        QVERIFY(rig.host->writeImage(0x08010000, tests::pattern(3 * 4096, 2)));
        const auto reports = rig.receiver.faultReports();
        QCOMPARE(reports.at(0).done, round);
        QCOMPARE(reports.at(0).deeds.last(),
                 QStringLiteral("packet 5 (image 2, packet 2): "
                                "acknowledged and not written"));
        QCOMPARE(reports.at(1).done, round);
        QCOMPARE(reports.at(1).deeds.last(),
                 QStringLiteral("packet 1 (image 1, packet 1): "
                                "acknowledged and not written"));
        QCOMPARE(reports.at(2).done, 2 * round);
    }
}

void TestReceiverFaults::strikesOnceOrSeveralTimesOrAlways()
{
    Rig rig;
    rig.receiver.setFaults({fault(R"({"kind":"status","step":"read-16","times":2})"),
                            fault(R"({"kind":"repeat","step":"configuration","index":0,)"
                                  R"("times":"always"})")});
    QVERIFY(rig.host->synchronise());
    QVERIFY(rig.host->ask(kReadRevision, "d0 80000004 00000001 1000"));
    QVERIFY(rig.host->ask(kReadRevision, "d0 80000004 00000001 1000"));
    QVERIFY(rig.host->ask(kReadRevision, kRevision));
    for (int round = 0; round < 4; ++round)
        QVERIFY(rig.host->ask("d8", "d8 d8 0000 0000 0000"));
    QCOMPARE(rig.receiver.faultReports().at(0).done, 2);
    QCOMPARE(rig.receiver.faultReports().at(1).done, 4);
}

void TestReceiverFaults::theSameSeedBringsTheSameFaults()
{
    const auto deedsWith = [](quint32 seed) {
        Rig rig;
        rig.receiver.setFaults(
            {fault(R"({"kind":"flip","step":"packet","times":"always","probability":0.01})")},
            seed);
        QByteArray flash;
        if (rig.host->connectToAgent() && rig.host->announceImage(0x08000000, 4096)
            && rig.host->sendPacket(QByteArray(4096, '\x55')))
            flash = rig.receiver.flash(0x08000000, 4096);
        return qMakePair(rig.receiver.faultReports().first(), flash);
    };
    const auto one = deedsWith(1);
    const auto again = deedsWith(1);
    const auto other = deedsWith(2);
    QCOMPARE(one.second.size(), 4096);
    QVERIFY2(one.first.done > 10 && one.first.done < 100,
             qPrintable(QString::number(one.first.done))); // of 4096, one in a hundred
    QCOMPARE(again.first.deeds, one.first.deeds);
    QCOMPARE(again.second, one.second);
    QVERIFY(other.first.deeds != one.first.deeds);

    // what was counted is what the flash shows
    int changed = 0;
    for (const char byte : one.second)
        changed += byte == '\x55' ? 0 : 1;
    QCOMPARE(one.first.done, changed);
    QCOMPARE(one.first.deeds.size(), changed);
}

void TestReceiverFaults::faultsDoNotDisturbOneAnother()
{
    const char *const dropped = R"({"kind":"repeat","step":"read-16","times":"always",)"
                                R"("probability":0.5})";
    const auto deedsAmong = [](const QVector<Fault> &faults) {
        Rig rig;
        rig.receiver.setFaults(faults, 3);
        bool good = rig.host->synchronise();
        qint64 bytes = 4;
        const auto send = [&rig, &bytes](const QByteArray &hex) {
            rig.host->putHex(hex);
            bytes += QByteArray::fromHex(hex).size();
            return QTest::qWaitFor(
                [&rig, &bytes] { return rig.receiver.state().bytesIn == bytes; });
        };
        for (int round = 0; good && round < 20; ++round)
            good = send(kReadRevision);
        good = good && send("d8"); // taken once the last answer has gone out
        return good ? rig.receiver.faultReports().first().deeds : QStringList();
    };
    const QStringList alone = deedsAmong({fault(dropped)});
    QVERIFY(alone.size() > 20);
    const QStringList amongOthers =
        deedsAmong({fault(dropped),
                    fault(R"({"kind":"flip","direction":"to-host","step":"read-16",)"
                          R"("times":"always","probability":0.5})")});
    QCOMPARE(amongOthers, alone);
}

void TestReceiverFaults::clearedFaultsDoNotStrike()
{
    Rig rig;
    rig.receiver.setFaults({fault(R"({"kind":"status","times":"always"})")});
    rig.receiver.clearFaults();
    QCOMPARE(rig.receiver.faultReports().size(), 0);
    QVERIFY(rig.host->connectToAgent());
}

void TestReceiverFaults::deedsAreListedInTheDialogueToo()
{
    Rig rig;
    rig.receiver.setFaults({fault(R"({"kind":"drop","step":"sync","direction":"to-host"})")});
    rig.host->putHex("a0");
    QTRY_COMPARE(rig.receiver.dialogue().size(), 5);
    const auto lines = rig.receiver.dialogue(3);
    QCOMPARE(lines.at(0).direction, bench::DialogueLine::Event);
    QCOMPARE(lines.at(0).step, QStringLiteral("sync"));
    QCOMPARE(lines.at(0).meaning, QStringLiteral("fault: byte 0 to the host, 0x5F dropped"));
    QCOMPARE(lines.at(1).length, 0); // what of the answer went out
}

TESTMODE_TEST_MAIN(TestReceiverFaults)
#include "test_receiver_faults.moc"
