#include "link.h"

#include "gnss_download/agent_images.h"
#include "gnss_download/bootrom_protocol.h"
#include "tests/support/clock/clockedtest.h"

using tests::Dialogue;
using tests::Link;

namespace {

// The four sync bytes, each answered; "" stands for no answer.
Dialogue synchronisation(const QStringList &answers)
{
    const QStringList sent = {"A0", "0A", "50", "05"};
    Dialogue dialogue;
    for (int i = 0; i < answers.size(); ++i) {
        dialogue.host(sent.at(i));
        if (!answers.at(i).isEmpty())
            dialogue.chip(answers.at(i), 5);
    }
    return dialogue;
}

Dialogue registerAccess(const QString &command)
{
    return Dialogue().echoed(command).echoed("80 00 00 08").echoed("00 00 00 01");
}

Dialogue stage1Load()
{
    return Dialogue()
        .echoed("D9")
        .echoed("04 20 40 00")
        .echoed("00 00 09 9A")
        .echoed("00 00 00 00")
        .echoed("00 00 00 00");
}

Dialogue stage1Image()
{
    return Dialogue().host("@da_array[0..2458)");
}

} // namespace

// The dialogue with the boot ROM, step by step.
class TestBootromProtocol : public tests::ClockedTest
{
    Q_OBJECT

private slots:
    void synchronisesInOnePass();
    void repeatsTheFirstByteUntilItIsAnswered();
    void wrongAnswerIsRetriedAfterTwoSeconds_data();
    void wrongAnswerIsRetriedAfterTwoSeconds();
    void fourWrongAnswersEndTheSync();
    void staleAnswerCountsInTheNextAttempt();
    void eventsOfTheWorkerAreProcessedWhileSynchronising();
    void firstByteIsRepeatedForFiveSeconds();
    void eventsAreProcessedForAtMostATenthOfASecond();
    void taskSendsFirstBytesUntilStopped();

    void echoIsLoggedAndNotCompared_data();
    void echoIsLoggedAndNotCompared();

    void registerAccessSucceeds_data();
    void registerAccessSucceeds();
    void registerAccessFails_data();
    void registerAccessFails();
    void statusBelow0x1000Succeeds_data();
    void statusBelow0x1000Succeeds();
    void refusedReadLeavesTheValue();
    void watchdogRegisterIsWritten();
    void silentChipFailsAtTheFirstStatus();
    void chipSilentAfterAGoodStatusPasses();

    void stage1GoesOutInBlocks();
    void stage2GoesOutInBlocks();
    void agentLoadFails_data();
    void agentLoadFails();
    void missingChecksumIsAMismatch();
    void missingChecksumOfAllOnesIsAMismatch();
    void jumpIsLogged_data();
    void jumpIsLogged();

    void xorChecksum_data();
    void xorChecksum();
    void simpleChecksum_data();
    void simpleChecksum();
    void checksumOfNothingIsZero();
};

void TestBootromProtocol::synchronisesInOnePass()
{
    Link link(synchronisation({"5F", "F5", "AF", "FA"}));
    QVERIFY(link.worker.hdl_brom_start());
    QCOMPARE(link.chip.verdict(), QString());
    QCOMPARE(tests::logTexts(trace().lines()),
             QStringList({"hdl_brom_start 0xA0<->0x5F", "hdl_brom_start 0x0A<->0xF5",
                          "hdl_brom_start 0x50<->0xAF", "hdl_brom_start 0x05<->0xFA",
                          "hdl_brom_start pass"}));
    QCOMPARE(g_brom_task_stop.load(), uint8_t(1));
}

void TestBootromProtocol::repeatsTheFirstByteUntilItIsAnswered()
{
    Link link(Dialogue().host("A0").host("A0").chip("00", 5).host("A0").add(
        synchronisation({"5F", "F5", "AF", "FA"})));
    QVERIFY(link.worker.hdl_brom_start());
    QCOMPARE(link.chip.verdict(), QString());
    QCOMPARE(link.chip.unansweredPolls(), QVector<quint32>({5, 5}));
}

void TestBootromProtocol::wrongAnswerIsRetriedAfterTwoSeconds_data()
{
    QTest::addColumn<QStringList>("answers");
    QTest::addColumn<QStringList>("logged");
    QTest::newRow("second byte") << QStringList({"5F", "A7"})
                                 << QStringList({"hdl_brom_start 0xA0<->0x5F",
                                                 "hdl_brom_start 0x0A ->(error) 0xA7, retry"});
    QTest::newRow("third byte") << QStringList({"5F", "F5", "01"})
                                << QStringList({"hdl_brom_start 0xA0<->0x5F",
                                                "hdl_brom_start 0x0A<->0xF5",
                                                "hdl_brom_start 0x50 ->(error) 0x01, retry"});
    QTest::newRow("fourth byte, silent")
        << QStringList({"5F", "F5", "AF", ""})
        << QStringList({"hdl_brom_start 0xA0<->0x5F", "hdl_brom_start 0x0A<->0xF5",
                        "hdl_brom_start 0x50<->0xAF", "hdl_brom_start 0x05 ->(error) 0xAF, retry"});
}

void TestBootromProtocol::wrongAnswerIsRetriedAfterTwoSeconds()
{
    QFETCH(QStringList, answers);
    QFETCH(QStringList, logged);
    Link link(synchronisation(answers).add(synchronisation({"5F", "F5", "AF", "FA"})));
    QVERIFY(link.worker.hdl_brom_start());
    QCOMPARE(milliseconds(), 2000);
    QCOMPARE(link.chip.verdict(), QString());
    logged << "hdl_brom_start 0xA0<->0x5F"
           << "hdl_brom_start 0x0A<->0xF5"
           << "hdl_brom_start 0x50<->0xAF"
           << "hdl_brom_start 0x05<->0xFA"
           << "hdl_brom_start pass";
    QCOMPARE(tests::logTexts(trace().lines()), logged);
}

void TestBootromProtocol::fourWrongAnswersEndTheSync()
{
    Dialogue attempts;
    for (int i = 0; i < 4; ++i)
        attempts.add(synchronisation({"5F", "00"}));
    Link link(attempts);
    QList<int> flags; // of the alternative sender, at each first byte
    g_brom_task_stop = 1;
    connect(&link.worker, &ugrade_thread::hdl_uart_put_byte, this, [&flags](uint8_t byte) {
        if (byte == 0xA0)
            flags << g_brom_task_stop.load();
    });
    QVERIFY(!link.worker.hdl_brom_start());
    QCOMPARE(flags, QList<int>({0, 0, 0, 0}));
    QCOMPARE(milliseconds(), 4 * 2000); // one after the last attempt, too
    QCOMPARE(link.chip.verdict(), QString());
    QCOMPARE(trace().lines().filter("hdl_brom_start 0x0A ->(error) 0x00, retry").size(), 4);
}

void TestBootromProtocol::staleAnswerCountsInTheNextAttempt()
{
    // Silent after the first byte: what was read last stays, and passes for the next first answer.
    Link link(
        Dialogue().add(synchronisation({"5F", ""})).add(synchronisation({"", "F5", "AF", "FA"})));
    QVERIFY(link.worker.hdl_brom_start());
    QCOMPARE(link.chip.verdict(), QString());
    QVERIFY(trace().lines().contains("hdl_brom_start 0x0A ->(error) 0x5F, retry"));
}

void TestBootromProtocol::eventsOfTheWorkerAreProcessedWhileSynchronising()
{
    Link link(Dialogue().host("A0").host("A0").add(synchronisation({"5F", "F5", "AF", "FA"})));
    bool processed = false;
    QTimer::singleShot(0, this, [&processed] { processed = true; });
    QVERIFY(link.worker.hdl_brom_start());
    QVERIFY(processed);
}

// Every answer misses: each attempt sends the first byte for five seconds, then the second.
void TestBootromProtocol::firstByteIsRepeatedForFiveSeconds()
{
    Link link;
    link.chip.takesTime = true;
    QVERIFY(!link.worker.hdl_brom_start());
    QCOMPARE(link.chip.sent(), (QByteArray(1000, '\xA0') + '\x0A').repeated(4));
    QCOMPARE(milliseconds(), 4 * (5000 + 5 + 2000));
}

// Events that bring the next one each, a millisecond long: they hold up the next byte no longer.
void TestBootromProtocol::eventsAreProcessedForAtMostATenthOfASecond()
{
    Link link(Dialogue().host("A0").host("A0").add(synchronisation({"5F", "F5", "AF", "FA"})));
    QList<qint64> sent;
    connect(&link.worker, &ugrade_thread::hdl_uart_put_byte, this,
            [this, &sent] { sent << milliseconds(); });
    const std::function<void()> next = [this, &sent, &next] {
        QThread::msleep(1);
        if (sent.size() < 6)
            QMetaObject::invokeMethod(this, next, Qt::QueuedConnection);
    };
    QMetaObject::invokeMethod(this, next, Qt::QueuedConnection);
    QVERIFY(link.worker.hdl_brom_start());
    QCOMPARE(sent, (QList<qint64>{0, 101, 202, 202, 202, 202}));
    QCoreApplication::processEvents();
}

void TestBootromProtocol::taskSendsFirstBytesUntilStopped()
{
    Link link(Dialogue().host("A0 A0 A0"));
    g_brom_task_stop = 0;
    connect(&link.worker, &ugrade_thread::hdl_uart_put_byte, this, [&link] {
        if (link.chip.sent().size() == 3)
            g_brom_task_stop = 1;
    });
    link.worker.brom_start_task();
    QCOMPARE(milliseconds(), 3 * 50);
    QCOMPARE(link.chip.verdict(), QString());
    QCOMPARE(tests::logTexts(trace().lines()),
             QStringList({"brom_start_task put_char 0xA0", "brom_start_task put_char 0xA0",
                          "brom_start_task put_char 0xA0"}));

    link.worker.brom_start_task();
    QCOMPARE(link.chip.sent().size(), 3);
}

void TestBootromProtocol::echoIsLoggedAndNotCompared_data()
{
    QTest::addColumn<int>("bits");
    QTest::addColumn<QString>("sent");
    QTest::addColumn<QString>("echo");
    QTest::addColumn<QStringList>("logged");
    QTest::newRow("byte") << 8 << "5A"
                          << "5A"
                          << QStringList({"brom_write8_echo 0x5A", "brom_write8_echo 0x5A - 0x5A"});
    QTest::newRow("byte, wrong echo")
        << 8 << "5A"
        << "A5" << QStringList({"brom_write8_echo 0x5A", "brom_write8_echo 0x5A - 0xA5"});
    QTest::newRow("byte, no echo")
        << 8 << "5A"
        << "" << QStringList({"brom_write8_echo 0x5A", "brom_write8_echo 0x5A - 0xFF"});
    QTest::newRow("half-word") << 16 << "12 34"
                               << "12 34"
                               << QStringList({"brom_write16_echo 0x1234",
                                               "brom_write16_echo 0x1234 - 0x1234"});
    QTest::newRow("half-word, wrong echo")
        << 16 << "12 34"
        << "43 21"
        << QStringList({"brom_write16_echo 0x1234", "brom_write16_echo 0x1234 - 0x4321"});
    QTest::newRow("half-word, no echo")
        << 16 << "12 34"
        << "" << QStringList({"brom_write16_echo 0x1234", "brom_write16_echo 0x1234 - 0xFFFF"});
    QTest::newRow("word") << 32 << "12 34 56 78"
                          << "12 34 56 78"
                          << QStringList({"brom_write32_echo 0x12345678",
                                          "brom_write32_echo 0x12345678 - 0x12345678"});
    QTest::newRow("word, wrong echo") << 32 << "12 34 56 78"
                                      << "00 00 00 0F"
                                      << QStringList({"brom_write32_echo 0x12345678",
                                                      "brom_write32_echo 0x12345678 - 0x0000000F"});
    QTest::newRow("word, no echo") << 32 << "12 34 56 78"
                                   << ""
                                   << QStringList({"brom_write32_echo 0x12345678",
                                                   "brom_write32_echo 0x12345678 - 0xFFFFFFFF"});
}

void TestBootromProtocol::echoIsLoggedAndNotCompared()
{
    QFETCH(int, bits);
    QFETCH(QString, sent);
    QFETCH(QString, echo);
    QFETCH(QStringList, logged);
    Dialogue dialogue;
    dialogue.host(sent);
    if (!echo.isEmpty())
        dialogue.chip(echo);
    Link link(dialogue);
    if (bits == 8)
        link.worker.brom_write8_echo(0x5A);
    else if (bits == 16)
        link.worker.brom_write16_echo(0x1234);
    else
        link.worker.brom_write32_echo(0x12345678);
    QCOMPARE(link.chip.verdict(), QString());
    QCOMPARE(tests::logTexts(trace().lines()), logged);
    if (echo.isEmpty())
        QCOMPARE(link.chip.unansweredPolls(), QVector<quint32>({3000}));
}

namespace {

// Runs one of the four operations on the register at 0x80000008.
bool access(ugrade_thread *worker, const QString &operation, uint32_t *value)
{
    if (operation == "hdl_brom_read16") {
        uint16_t half = 0;
        const bool ok = worker->hdl_brom_read16(0x80000008, &half);
        *value = half;
        return ok;
    }
    if (operation == "hdl_brom_read32")
        return worker->hdl_brom_read32(0x80000008, value);
    if (operation == "hdl_brom_write16")
        return worker->hdl_brom_write16(0x80000008, static_cast<uint16_t>(*value));
    return worker->hdl_brom_write32(0x80000008, *value);
}

} // namespace

void TestBootromProtocol::registerAccessSucceeds_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<bool>("reads");
    QTest::addColumn<QString>("onTheWire");
    QTest::addColumn<uint32_t>("value");
    QTest::newRow("hdl_brom_read16") << "D0" << true << "AB CD" << 0xABCDu;
    QTest::newRow("hdl_brom_read32") << "D1" << true << "12 34 56 78" << 0x12345678u;
    QTest::newRow("hdl_brom_write16") << "D2" << false << "AB CD" << 0xABCDu;
    QTest::newRow("hdl_brom_write32") << "D4" << false << "12 34 56 78" << 0x12345678u;
}

void TestBootromProtocol::registerAccessSucceeds()
{
    QFETCH(QString, command);
    QFETCH(bool, reads);
    QFETCH(QString, onTheWire);
    QFETCH(uint32_t, value);
    const QString operation = QTest::currentDataTag();
    Dialogue dialogue = registerAccess(command).chip("00 00");
    if (reads)
        dialogue.chip(onTheWire);
    else
        dialogue.echoed(onTheWire);
    Link link(dialogue.chip("00 00"));

    uint32_t handed = reads ? 0 : value;
    QVERIFY(access(&link.worker, operation, &handed));
    QCOMPARE(handed, value);
    QCOMPARE(link.chip.verdict(), QString());
    QCOMPARE(trace().lines().filter(QRegularExpression("success|fail")),
             QStringList({operation + " success", operation + " success"}));
}

void TestBootromProtocol::registerAccessFails_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("value"); // "<" read, ">" written
    QTest::newRow("hdl_brom_read16") << "D0"
                                     << "< AB CD";
    QTest::newRow("hdl_brom_read32") << "D1"
                                     << "< 12 34 56 78";
    QTest::newRow("hdl_brom_write16") << "D2"
                                      << "> AB CD";
    QTest::newRow("hdl_brom_write32") << "D4"
                                      << "> 12 34 56 78";
}

void TestBootromProtocol::registerAccessFails()
{
    QFETCH(QString, command);
    QFETCH(QString, value);
    const QString operation = QTest::currentDataTag();
    uint32_t handed = value.size() > 8 ? 0x12345678 : 0xABCD;

    // first status: no value phase
    {
        Link link(registerAccess(command).chip("10 00"));
        QVERIFY(!access(&link.worker, operation, &handed));
        QCOMPARE(link.chip.verdict(), QString());
        QVERIFY(link.chip.unansweredPolls().isEmpty());
    }
    // second status
    {
        Dialogue dialogue = registerAccess(command).chip("00 00");
        if (value.startsWith("<"))
            dialogue.chip(value.mid(2));
        else
            dialogue.echoed(value.mid(2));
        Link link(dialogue.chip("20 01"));
        handed = value.size() > 8 ? 0x12345678 : 0xABCD;
        QVERIFY(!access(&link.worker, operation, &handed));
        QCOMPARE(link.chip.verdict(), QString());
    }
    QCOMPARE(trace().lines().filter(QRegularExpression("success|fail")),
             QStringList({operation + " fail", operation + " success", operation + " fail"}));
}

void TestBootromProtocol::statusBelow0x1000Succeeds_data()
{
    QTest::addColumn<QString>("status");
    QTest::addColumn<bool>("succeeds");
    QTest::newRow("0x0000") << "00 00" << true;
    QTest::newRow("0x0FFF") << "0F FF" << true;
    QTest::newRow("0x1000") << "10 00" << false;
    QTest::newRow("0x1001") << "10 01" << false;
    QTest::newRow("0x8000") << "80 00" << false;
    QTest::newRow("0xFFFF") << "FF FF" << false;
}

void TestBootromProtocol::statusBelow0x1000Succeeds()
{
    QFETCH(QString, status);
    QFETCH(bool, succeeds);
    Dialogue read = registerAccess("D0").chip(status);
    if (succeeds)
        read.chip("00 01").chip(status);
    uint16_t value = 0;
    Link reading(read);
    QCOMPARE(reading.worker.hdl_brom_read16(0x80000008, &value), succeeds);
    QCOMPARE(reading.chip.verdict(), QString());

    Link jumping(Dialogue().echoed("D5").echoed("04 20 40 00").chip(status));
    QCOMPARE(jumping.worker.hdl_brom_jump_da(0x04204000), succeeds);
    QCOMPARE(jumping.chip.verdict(), QString());
}

void TestBootromProtocol::refusedReadLeavesTheValue()
{
    Link link(registerAccess("D0").chip("10 00"));
    uint16_t value = 0x7777;
    QVERIFY(!link.worker.hdl_brom_read16(0x80000008, &value));
    QCOMPARE(value, uint16_t(0x7777));
    QCOMPARE(trace().lines().filter("hdl_brom_read16 fail").size(), 1);
    QCOMPARE(trace().lines().filter("success").size(), 0);
}

void TestBootromProtocol::watchdogRegisterIsWritten()
{
    Link link(Dialogue()
                  .echoed("D2")
                  .echoed("A2 08 00 00")
                  .echoed("00 00 00 01")
                  .chip("00 00")
                  .echoed("00 10")
                  .chip("00 00"));
    QVERIFY(link.worker.hdl_brom_disable_wdt());
    QCOMPARE(link.chip.verdict(), QString());
}

void TestBootromProtocol::silentChipFailsAtTheFirstStatus()
{
    Link link;
    uint16_t value = 0x7777;
    QVERIFY(!link.worker.hdl_brom_read16(0x80000008, &value));
    QCOMPARE(link.chip.sent(), tests::bytesOf("D0 80 00 00 08 00 00 00 01"));
    QCOMPARE(link.chip.unansweredPolls(), QVector<quint32>({3000, 3000, 3000, 3000}));
}

void TestBootromProtocol::chipSilentAfterAGoodStatusPasses()
{
    Link link(registerAccess("D2").chip("00 01").host("00 10"));
    QVERIFY(link.worker.hdl_brom_write16(0x80000008, 0x0010));
    QCOMPARE(link.chip.verdict(), QString());
}

void TestBootromProtocol::stage1GoesOutInBlocks()
{
    Link link(stage1Load().chip("00 00").add(stage1Image()).chip("12 36").chip("00 00"));
    QList<uint32_t> blocks;
    connect(&link.worker, &ugrade_thread::hdl_uart_put_byte_buffer, this,
            [&blocks](uint8_t *, uint32_t length) { blocks << length; });
    QVERIFY(link.worker.hdl_brom_send_da(0x00100000, 0x04204000, 2458));
    QCOMPARE(link.chip.verdict(), QString());
    QCOMPARE(blocks, QList<uint32_t>({1024, 1024, 410}));
    QCOMPARE(trace().lines().filter("hdl_brom_send_da"),
             QStringList({"hdl_brom_send_da 0x00100000 0x04204000 2458", "hdl_brom_send_da success",
                          "hdl_brom_send_da, 1024 sent 1024", "hdl_brom_send_da, 1024 sent 1024",
                          "hdl_brom_send_da, 410 sent 410",
                          "hdl_brom_send_da, local_check_sum=4662 brom_check_sum=4662",
                          "hdl_brom_send_da, checksum success", "hdl_brom_send_da success"}));
}

void TestBootromProtocol::stage2GoesOutInBlocks()
{
    Link link(Dialogue()
                  .echoed("D7")
                  .echoed("04 20 40 00")
                  .echoed("00 00 98 EC")
                  .echoed("00 00 00 00")
                  .chip("00 00")
                  .host("@da_array1[0..39148)")
                  .chip("50 5F")
                  .chip("00 00"));
    QVERIFY(link.worker.hdl_brom_send_da1(0x00100000, 0x04204000, 39148));
    QCOMPARE(link.chip.verdict(), QString());
    const QStringList logged = trace().lines().filter("hdl_brom_send_da");
    QCOMPARE(logged.first(), QString("hdl_brom_send_da 0x00100000 0x04204000 39148"));
    QCOMPARE(logged.at(1), QString("hdl_brom_send_da1 success"));
    QCOMPARE(logged.filter("hdl_brom_send_da1, 1024 sent 1024").size(), 38);
    QCOMPARE(logged.mid(40),
             QStringList({"hdl_brom_send_da1, 236 sent 236",
                          "hdl_brom_send_da1, local_check_sum=20575 brom_check_sum=20575",
                          "hdl_brom_send_da1, checksum success", "hdl_brom_send_da1 success"}));
}

void TestBootromProtocol::agentLoadFails_data()
{
    QTest::addColumn<QStringList>("answers"); // status, checksum, status
    QTest::addColumn<QStringList>("logged");
    QTest::newRow("refused") << QStringList({"10 00"}) << QStringList({"hdl_brom_send_da fail"});
    QTest::newRow("other checksum")
        << QStringList({"00 00", "36 12"})
        << QStringList({"hdl_brom_send_da success", "hdl_brom_send_da, checksum fail"});
    QTest::newRow("final status") << QStringList({"00 00", "12 36", "1F FF"})
                                  << QStringList({"hdl_brom_send_da success",
                                                  "hdl_brom_send_da, checksum success",
                                                  "hdl_brom_send_da fail"});
}

void TestBootromProtocol::agentLoadFails()
{
    QFETCH(QStringList, answers);
    QFETCH(QStringList, logged);
    Dialogue dialogue = stage1Load().chip(answers.takeFirst());
    if (!answers.isEmpty())
        dialogue.add(stage1Image());
    for (const QString &answer : qAsConst(answers))
        dialogue.chip(answer);
    Link link(dialogue);
    QVERIFY(!link.worker.hdl_brom_send_da(0x00100000, 0x04204000, 2458));
    QCOMPARE(link.chip.verdict(), QString());
    QVERIFY(link.chip.unansweredPolls().isEmpty());
    QCOMPARE(trace().lines().filter(QRegularExpression("success|fail")), logged);
}

void TestBootromProtocol::missingChecksumIsAMismatch()
{
    Link link(stage1Load().chip("00 00").add(stage1Image()));
    QVERIFY(!link.worker.hdl_brom_send_da(0x00100000, 0x04204000, 2458));
    QCOMPARE(link.chip.verdict(), QString());
    QVERIFY(
        trace().lines().contains("hdl_brom_send_da, local_check_sum=4662 brom_check_sum=65535"));
    QVERIFY(trace().lines().contains("hdl_brom_send_da, checksum fail"));
}

// What a read leaves where nothing came must not be that sum.
void TestBootromProtocol::missingChecksumOfAllOnesIsAMismatch()
{
    const auto changeSum = [](auto *image) {
        image[0] ^= 0xC9;
        image[1] ^= 0xED;
    };
    QByteArray image = tests::agentFile("da_array");
    changeSum(image.data());
    Link link(stage1Load().chip("00 00").host(image.toHex(' ')));
    changeSum(da_array);
    const bool loaded = link.worker.hdl_brom_send_da(0x00100000, 0x04204000, 2458);
    changeSum(da_array);
    QVERIFY(!loaded);
    QCOMPARE(link.chip.verdict(), QString());
    QVERIFY(trace().lines().contains("hdl_brom_send_da, local_check_sum=65535 brom_check_sum=0"));
    QVERIFY(trace().lines().contains("hdl_brom_send_da, checksum fail"));
}

void TestBootromProtocol::jumpIsLogged_data()
{
    QTest::addColumn<QString>("status");
    QTest::addColumn<bool>("succeeds");
    QTest::newRow("taken") << "00 00" << true;
    QTest::newRow("refused") << "10 00" << false;
}

void TestBootromProtocol::jumpIsLogged()
{
    QFETCH(QString, status);
    QFETCH(bool, succeeds);
    Link link(Dialogue().echoed("D5").echoed("04 20 40 00").chip(status));
    QCOMPARE(link.worker.hdl_brom_jump_da(0x04204000), succeeds);
    QCOMPARE(tests::logTexts(trace().lines()),
             QStringList({"hdl_brom_jump_da 0x04204000", "brom_write8_echo 0xD5",
                          "brom_write8_echo 0xD5 - 0xD5", "brom_write32_echo 0x04204000",
                          "brom_write32_echo 0x04204000 - 0x04204000"}));
}

void TestBootromProtocol::xorChecksum_data()
{
    QTest::addColumn<QString>("bytes");
    QTest::addColumn<uint16_t>("checksum");
    QTest::newRow("one byte") << "7F" << uint16_t(0x007F);
    QTest::newRow("one word") << "01 02" << uint16_t(0x0201);
    QTest::newRow("odd") << "01 02 03" << uint16_t(0x0202);
    QTest::newRow("two words") << "01 02 03 04" << uint16_t(0x0602);
    QTest::newRow("equal words cancel") << "AA 55 AA 55" << uint16_t(0);
    QTest::newRow("all ones") << "FF*1023" << uint16_t(0xFF00);
}

void TestBootromProtocol::xorChecksum()
{
    QFETCH(QString, bytes);
    QFETCH(uint16_t, checksum);
    QByteArray data = tests::bytesOf(bytes);
    Link link;
    QCOMPARE(link.worker.hdl_compute_checksum(reinterpret_cast<uint8_t *>(data.data()),
                                              static_cast<uint32_t>(data.size())),
             checksum);
}

void TestBootromProtocol::simpleChecksum_data()
{
    QTest::addColumn<QString>("bytes");
    QTest::addColumn<uint32_t>("checksum");
    QTest::newRow("one byte") << "80" << 0x80u;
    QTest::newRow("three bytes") << "01 02 03" << 6u;
    QTest::newRow("a packet of 0xFF") << "FF*4096" << 0x000FF000u;
    QTest::newRow("beyond 32 bits") << "FF*16843010" << 0xFEu;
}

void TestBootromProtocol::simpleChecksum()
{
    QFETCH(QString, bytes);
    QFETCH(uint32_t, checksum);
    QByteArray data = tests::bytesOf(bytes);
    Link link;
    QCOMPARE(link.worker.hdl_compute_simple_checksum(reinterpret_cast<uint8_t *>(data.data()),
                                                     static_cast<uint32_t>(data.size())),
             checksum);
}

void TestBootromProtocol::checksumOfNothingIsZero()
{
    uint8_t byte = 0x55;
    Link link;
    QCOMPARE(link.worker.hdl_compute_checksum(nullptr, 2), uint16_t(0));
    QCOMPARE(link.worker.hdl_compute_checksum(&byte, 0), uint16_t(0));
    QCOMPARE(link.worker.hdl_compute_simple_checksum(nullptr, 2), 0u);
    QCOMPARE(link.worker.hdl_compute_simple_checksum(&byte, 0), 0u);
    QCOMPARE(tests::logTexts(trace().lines()),
             QStringList({"hdl_compute_checksum, invalid arg", "hdl_compute_checksum, invalid arg",
                          "hdl_compute_simple_checksum, invalid arg",
                          "hdl_compute_simple_checksum, invalid arg"}));
}

TESTMODE_TEST_MAIN(TestBootromProtocol)
#include "test_bootrom_protocol.moc"
