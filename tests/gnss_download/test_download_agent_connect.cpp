#include "link.h"

#include "tests/support/clock/clockedtest.h"
#include "tests/support/recorder.h"

#include <QSignalSpy>

#include <cstddef>

using tests::Dialogue;
using tests::Link;

namespace {

Dialogue goodDialogue()
{
    return Dialogue::read(tests::fixture("good_dialogue.txt"));
}

Dialogue handshake()
{
    return Dialogue()
        .chip("C0")
        .host("3F")
        .chip("0C")
        .host("F3")
        .chip("3F")
        .host("C0")
        .chip("F3")
        .host("0C");
}

Dialogue parameterBlock()
{
    return Dialogue().echoed("24").host(
        "16 01 00 00 50 C8 20 04 7C C5 20 04 D0 CB 20 04 01 00 EF 00 60 00 16 00 "
        "00 00 00 00 18 CB 20 04 B8 CB 20 04");
}

bool connectTo(Link *link, hdl_da_report_t *report)
{
    const hdl_da_info_t info = {0x00100000, 0x04204000, 2458};
    return link->worker.hdl_connect(&info, report);
}

} // namespace

// From reset to a running agent, and the way out.
class TestDownloadAgentConnect : public tests::ClockedTest
{
    Q_OBJECT

private slots:
    void recordsHoldTheirFieldsInOrder();

    void connectNeedsBothRecords();
    void connectGivesUpWhenThePortDoesNotOpen();
    void connectFillsTheReport();
    void connectLogsEachStep();
    void reportIsLoggedAsItStands();
    void resetLineIsPulsedAfterThePortIsOpen();
    void resetIsReportedOnlyAfterASync();

    void refusedStepEndsTheConnection_data();
    void refusedStepEndsTheConnection();
    void failedSyncGoesOnToTheNextStatus();
    void registersThatCannotBeReadAreIgnored();

    void baudRateIsSwitched_data();
    void baudRateIsSwitched();
    void baudSwitchRestsBeforeAndAfter();

    void handshakeAnswersEachByteByItsComplement();
    void handshakeEndsAtTheFirstWrongByte_data();
    void handshakeEndsAtTheFirstWrongByte();

    void syncFlagIsOneByte_data();
    void syncFlagIsOneByte();
    void syncStopsAtTheFirstRefusal_data();
    void syncStopsAtTheFirstRefusal();
    void syncKeepsTheLastAnswerWhenTheAgentFallsSilent();

    void disconnect_data();
    void disconnect();
    void watchdogArgumentIsAWord();
};

void TestDownloadAgentConnect::recordsHoldTheirFieldsInOrder()
{
    const hdl_da_info_t info = {1, 2, 3};
    QCOMPARE(info.aux_addr, uint32_t(1));
    QCOMPARE(info.da_addr, uint32_t(2));
    QCOMPARE(info.da_len, uint32_t(3));
    static_assert(sizeof(hdl_da_info_t) == 12);

    const hdl_da_report_t report = {1, 2, {3, 4, 5}, 6, 7};
    QCOMPARE(report.hw_code, uint16_t(1));
    QCOMPARE(report.hw_subcode, uint16_t(2));
    QCOMPARE(report.flash_id[0], uint16_t(3));
    QCOMPARE(report.flash_id[2], uint16_t(5));
    QCOMPARE(report.flash_base_addr, uint32_t(6));
    QCOMPARE(report.flash_size, uint32_t(7));
    static_assert(offsetof(hdl_da_report_t, flash_base_addr) == 12);
    static_assert(sizeof(hdl_da_report_t) == 20);

    _hdl_image_t last = {};
    const _hdl_image_t image = {1, 2, 3, "name", 4, 5, &last};
    QCOMPARE(image.image_region, uint32_t(1));
    QCOMPARE(image.flash_addr, uint32_t(2));
    QCOMPARE(image.length, uint32_t(3));
    QCOMPARE(image.name, "name");
    QCOMPARE(image.file_index, uint8_t(4));
    QCOMPARE(image.boot_flag, uint8_t(5));
    QCOMPARE(image.next, &last);

    static_assert(HDL_DISCONNECT_FINISH == 0);
    static_assert(HDL_DISCONNECT_FINISH_WITH_OPTION == 1);
    static_assert(HDL_DISCONNECT_WATCHDOG == 2);
    static_assert(sizeof(hal_uart_baudrate_t) == 4);
}

void TestDownloadAgentConnect::connectNeedsBothRecords()
{
    Link link;
    hdl_da_info_t info = {};
    hdl_da_report_t report = {};
    QVERIFY(!link.worker.hdl_connect(nullptr, &report));
    QVERIFY(!link.worker.hdl_connect(&info, nullptr));
    QCOMPARE(tests::logTexts(trace().lines()),
             QStringList(
                 {"hdl_connect fail, invalid parameter", "hdl_connect fail, invalid parameter"}));
    QVERIFY(link.chip.lineEvents().isEmpty());
}

void TestDownloadAgentConnect::connectGivesUpWhenThePortDoesNotOpen()
{
    Link link;
    link.chip.opens = false;
    hdl_da_report_t report = {};
    QVERIFY(!connectTo(&link, &report));
    QCOMPARE(link.chip.lineEvents(), QStringList({"open"}));
    QVERIFY(link.chip.sent().isEmpty());
    QVERIFY(bench::journal().texts().isEmpty());
}

void TestDownloadAgentConnect::connectFillsTheReport()
{
    Link link(goodDialogue().before("bootloader.bin"));
    hdl_da_report_t report = {};
    QVERIFY(connectTo(&link, &report));
    QCOMPARE(link.chip.verdict(), QString());
    QCOMPARE(report.hw_code, uint16_t(0x1234));
    QCOMPARE(report.hw_subcode, uint16_t(0x5678));
    QCOMPARE(report.flash_id[0], uint16_t(0x000A));
    QCOMPARE(report.flash_id[1], uint16_t(0x000B));
    QCOMPARE(report.flash_id[2], uint16_t(0x000C));
    QCOMPARE(report.flash_base_addr, 0u);
    QCOMPARE(report.flash_size, 0u);
}

void TestDownloadAgentConnect::connectLogsEachStep()
{
    Link link(goodDialogue().before("bootloader.bin"));
    hdl_da_report_t report = {};
    QVERIFY(connectTo(&link, &report));

    QStringList steps = tests::logTexts(trace().lines());
    for (const char *detail : {"_echo 0x", "hdl_brom_start", " sent "}) {
        for (const QString &line : steps.filter(detail))
            steps.removeOne(line);
    }
    QStringList expected;
    for (int i = 0; i < 10; ++i) // five registers, two statuses each
        expected << "hdl_brom_read16 success";
    expected << "hdl_brom_read16 success"
             << "hdl_connect, hw_code 0x1234 0x5678"
             << "hdl_brom_write16 success"
             << "hdl_brom_write16 success"
             << "hdl_brom_send_da success"
             // stage 1
             << "hdl_brom_send_da 0x00100000 0x04204000 2458"
             << "hdl_brom_send_da success"
             << "hdl_brom_send_da, local_check_sum=4662 brom_check_sum=4662"
             << "hdl_brom_send_da, checksum success"
             << "hdl_brom_send_da success"
             << "hdl_brom_send_da success"
             << "hdl_brom_read16 success"
             << "hdl_brom_read16 success"
             << "hdl_brom_read16 success"
             // at the download's rate
             << "=========================== success"
             << "=========================== success"
             << "=========================== success"
             << "=========================== success"
             // stage 2
             << "hdl_brom_send_da 0x00100000 0x04204000 39148"
             << "hdl_brom_send_da1 success"
             << "hdl_brom_send_da1, local_check_sum=20575 brom_check_sum=20575"
             << "hdl_brom_send_da1, checksum success"
             << "hdl_brom_send_da1 success"
             << "hdl_brom_send_da success"
             << "hdl_brom_jump_da 0x04204000"
             << "hdl_brom_jump_da success"
             // the running agent
             << "hdl_da_handshake start"
             << "hdl_da_handshake success"
             << "Init_logging success"
             << "DA Disable Long Press Power Key success"
             << "DA Flash ID: 0x000A 0x000B 0x000C"
             << "unknow_array success"
             << "##################################################"
             << "DA_Report HW_Code=0x1234-0x5678, Flash ID=0x000A 0x000B 0x000C, "
                "Flash Base Addr=0x00000000, Flash Size=0x00000000"
             << "##################################################";
    QCOMPARE(steps, expected);
}

// Nothing fills the flash's place and size: they are the caller's.
void TestDownloadAgentConnect::reportIsLoggedAsItStands()
{
    Link link(goodDialogue().before("bootloader.bin"));
    hdl_da_report_t report = {};
    report.flash_base_addr = 0x08000000;
    report.flash_size = 0x00400000;
    QVERIFY(connectTo(&link, &report));
    const QStringList logged = tests::logTexts(trace().lines());
    QCOMPARE(logged.at(logged.size() - 2),
             QString("DA_Report HW_Code=0x1234-0x5678, Flash ID=0x000A 0x000B 0x000C, "
                     "Flash Base Addr=0x08000000, Flash Size=0x00400000"));
}

void TestDownloadAgentConnect::resetLineIsPulsedAfterThePortIsOpen()
{
    Link link(goodDialogue().before("identify"));
    QStringList order;
    QElapsedTimer pulse;
    qint64 held = 0;
    connect(&link.worker, &ugrade_thread::hdl_uart_init, this, [&] { order << "open"; });
    connect(&link.worker, &ugrade_thread::hdl_uart_put_byte, this, [&](uint8_t byte) {
        if (byte == 0xA0)
            order << "sync";
    });
    QObject scope; // ends the connection with this case
    connect(&trace(), &bench::TraceLog::added, &scope, [&](const QString &line) {
        if (line.endsWith("fffffffffff11111111111111"))
            order << "trace";
    });
    connect(&bench::unit(), &bench::HeadUnit::gnssResetChanged, &scope, [&](bool asserted) {
        order << (asserted ? "reset" : "release");
        if (asserted)
            pulse.start();
        else
            held = pulse.elapsed();
    });
    hdl_da_report_t report = {};
    connectTo(&link, &report);
    QCOMPARE(order, QStringList({"open", "trace", "reset", "release", "trace", "sync"}));
    QCOMPARE(held, 100);
    QCOMPARE(bench::journal().texts(),
             QStringList({"PlatformService.setGPSResetGPIO(true)",
                          "PlatformService.setGPSResetGPIO(false)"}));
}

void TestDownloadAgentConnect::resetIsReportedOnlyAfterASync()
{
    Link link(goodDialogue().before("identify"));
    QSignalSpy reported(&link.worker, &ugrade_thread::signals_reset_success);
    QByteArray sentBefore;
    connect(&link.worker, &ugrade_thread::signals_reset_success, this,
            [&] { sentBefore = link.chip.sent(); });
    hdl_da_report_t report = {};
    connectTo(&link, &report);
    QCOMPARE(reported.size(), 1);
    QCOMPARE(reported.first(), QVariantList({"/dev/ttyS4"}));
    QCOMPARE(sentBefore, tests::bytesOf("A0 0A 50 05")); // no register yet
}

void TestDownloadAgentConnect::refusedStepEndsTheConnection_data()
{
    QTest::addColumn<QString>("step");
    QTest::addColumn<QString>("answer");
    QTest::addColumn<bool>("result"); // the last stored one
    QTest::addColumn<QString>("logged");
    QTest::newRow("identify: the sync's result") << "identify status"
                                                 << "10 00" << true << "hdl_brom_read16 fail";
    QTest::newRow("watchdog, first status") << "watchdog status"
                                            << "10 00" << false << "hdl_brom_send_da fail";
    QTest::newRow("watchdog, second status") << "watchdog end"
                                             << "10 00" << false << "hdl_brom_send_da fail";
    QTest::newRow("stage 1 refused") << "stage 1 status"
                                     << "10 00" << false << "hdl_brom_send_da fail";
    QTest::newRow("stage 1 checksum") << "stage 1 checksum"
                                      << "12 37" << false << "hdl_brom_send_da fail";
    QTest::newRow("stage 1 final status") << "stage 1 end"
                                          << "10 00" << false << "hdl_brom_send_da fail";
    QTest::newRow("greeting 1: stage 1's result") << "greeting 1 status"
                                                  << "10 00" << true << "hdl_brom_read16 fail";
    QTest::newRow("greeting 2: stage 1's result") << "greeting 2 status"
                                                  << "10 00" << true << "hdl_brom_read16 fail";
    QTest::newRow("greeting 3: stage 1's result") << "greeting 3 status"
                                                  << "10 00" << true << "hdl_brom_read16 fail";
    QTest::newRow("line check: stage 1's result")
        << "line check status"
        << "10 00" << true << "=========================== fail";
    QTest::newRow("proceed 1: stage 1's result")
        << "proceed 1 status"
        << "10 00" << true << "=========================== fail";
    QTest::newRow("proceed 2: stage 1's result")
        << "proceed 2 status"
        << "10 00" << true << "=========================== fail";
    QTest::newRow("proceed 3: stage 1's result")
        << "proceed 3 status"
        << "10 00" << true << "=========================== fail";
    QTest::newRow("stage 2 refused") << "stage 2 status"
                                     << "10 00" << false << "hdl_brom_send_da fail";
    QTest::newRow("stage 2 checksum") << "stage 2 checksum"
                                      << "50 5E" << false << "hdl_brom_send_da fail";
    QTest::newRow("stage 2 final status") << "stage 2 end"
                                          << "10 00" << false << "hdl_brom_send_da fail";
    QTest::newRow("jump") << "jump status"
                          << "10 00" << false << "hdl_brom_jump_da fail";
}

void TestDownloadAgentConnect::refusedStepEndsTheConnection()
{
    QFETCH(QString, step);
    QFETCH(QString, answer);
    QFETCH(bool, result);
    QFETCH(QString, logged);
    Link link(goodDialogue().before(step).step(step).chip(answer));
    hdl_da_report_t report = {};
    QCOMPARE(connectTo(&link, &report), result);
    QCOMPARE(link.chip.verdict(), QString());
    QVERIFY(link.chip.unansweredPolls().isEmpty());
    QCOMPARE(tests::logTexts(trace().lines()).last(), logged);
    // The codes are stored once the chip has been identified.
    const bool identified = step != "identify status";
    QCOMPARE(report.hw_code, uint16_t(identified ? 0x1234 : 0));
    QCOMPARE(report.hw_subcode, uint16_t(identified ? 0x5678 : 0));
}

void TestDownloadAgentConnect::failedSyncGoesOnToTheNextStatus()
{
    // The second sync byte is never answered right; the registers are read all the same.
    Dialogue attempts = goodDialogue().before("sync 1");
    for (int i = 0; i < 4; ++i)
        attempts.host("A0").chip("5F", 5).host("0A").chip("00", 5);
    Link link(attempts);
    QSignalSpy reported(&link.worker, &ugrade_thread::signals_reset_success);
    hdl_da_report_t report = {};
    QVERIFY(!connectTo(&link, &report));
    QVERIFY(link.chip.sent().contains(tests::bytesOf("D0 80 00 00 00 00 00 00 01")));
    QVERIFY(link.chip.sent().endsWith(tests::bytesOf("D8")));
    QVERIFY(reported.isEmpty());
    QCOMPARE(tests::logTexts(trace().lines()).last(), QString("hdl_brom_read16 fail"));
}

void TestDownloadAgentConnect::registersThatCannotBeReadAreIgnored()
{
    Dialogue dialogue = goodDialogue().before("register 1");
    for (const char *address : {"00", "08", "0C", "00", "04"})
        dialogue.echoed("D0")
            .echoed(QString("80 00 00 ") + address)
            .echoed("00 00 00 01")
            .chip("10 00");
    dialogue.echoed("D8").chip("00 00 00 00 00 00");
    dialogue.echoed("D2").echoed("A2 08 00 00").echoed("00 00 00 01").chip("10 00");
    Link link(dialogue);
    hdl_da_report_t report = {};
    QVERIFY(!connectTo(&link, &report));
    QCOMPARE(link.chip.verdict(), QString());
    QCOMPARE(report.hw_code, uint16_t(0));
    QVERIFY(trace().lines().contains("hdl_connect, hw_code 0x0000 0x0000"));
}

void TestDownloadAgentConnect::baudRateIsSwitched_data()
{
    QTest::addColumn<QString>("rate");
    QTest::addColumn<QString>("event");
    QTest::newRow("921600") << "921600"
                            << "baud 921600";
    QTest::newRow("115200") << "115200"
                            << "baud 115200";
    QTest::newRow("no number") << "fast"
                               << "baud 0";
    QTest::newRow("nothing") << ""
                             << "baud 0";
}

void TestDownloadAgentConnect::baudRateIsSwitched()
{
    QFETCH(QString, rate);
    QFETCH(QString, event);
    Link link(goodDialogue().before("line check"));
    link.chip.goSilentAt("greeting 1 status");
    br = rate;
    // Silent after good statuses: those still count, so the switch is reached.
    hdl_da_report_t report = {};
    connectTo(&link, &report);
    QCOMPARE(link.chip.lineEvents(), QStringList({"open", event}));
}

void TestDownloadAgentConnect::baudSwitchRestsBeforeAndAfter()
{
    Link link(goodDialogue().before("bootloader.bin"));
    QElapsedTimer clock;
    qint64 before = 0;
    qint64 after = 0;
    bool switched = false;
    connect(&link.worker, &ugrade_thread::hdl_uart_put_data16, this, [&](uint16_t value) {
        if (value == 0x5A5A)
            clock.start();
    });
    connect(&link.worker, &ugrade_thread::hdl_uart_set_baudrate, this, [&] {
        before = clock.restart();
        switched = true;
    });
    connect(&link.worker, &ugrade_thread::hdl_uart_put_byte, this, [&] {
        if (switched && after == 0)
            after = clock.elapsed();
    });
    hdl_da_report_t report = {};
    QVERIFY(connectTo(&link, &report));
    QCOMPARE(before, 100);
    QCOMPARE(after, 100);
}

void TestDownloadAgentConnect::handshakeAnswersEachByteByItsComplement()
{
    Link link(handshake().chip("5A"));
    QVERIFY(link.worker.hdl_da_handshake());
    QCOMPARE(link.chip.verdict(), QString());
    QCOMPARE(tests::logTexts(trace().lines()), QStringList({"hdl_da_handshake start"}));
}

void TestDownloadAgentConnect::handshakeEndsAtTheFirstWrongByte_data()
{
    QTest::addColumn<QStringList>("said");
    QTest::addColumn<QString>("answered");
    QTest::newRow("first") << QStringList({"C1"}) << "";
    QTest::newRow("second") << QStringList({"C0", "C0"}) << "3F";
    QTest::newRow("third") << QStringList({"C0", "0C", "F3"}) << "3F F3";
    QTest::newRow("fourth") << QStringList({"C0", "0C", "3F", "00"}) << "3F F3 C0";
    QTest::newRow("last") << QStringList({"C0", "0C", "3F", "F3", "69"}) << "3F F3 C0 0C";
    QTest::newRow("last, silent") << QStringList({"C0", "0C", "3F", "F3"}) << "3F F3 C0 0C";
    QTest::newRow("silent") << QStringList() << "";
}

void TestDownloadAgentConnect::handshakeEndsAtTheFirstWrongByte()
{
    QFETCH(QStringList, said);
    QFETCH(QString, answered);
    const QStringList answers = answered.split(' ', Qt::SkipEmptyParts);
    Dialogue dialogue;
    for (int i = 0; i < said.size(); ++i) {
        dialogue.chip(said.at(i));
        if (i < answers.size())
            dialogue.host(answers.at(i));
    }
    Link link(dialogue);
    QVERIFY(!link.worker.hdl_da_handshake());
    QCOMPARE(link.chip.verdict(), QString());
    QCOMPARE(link.chip.sent(), tests::bytesOf(answered));
}

void TestDownloadAgentConnect::syncFlagIsOneByte_data()
{
    QTest::addColumn<bool>("flag");
    QTest::addColumn<QString>("sent");
    QTest::newRow("off") << false << "00";
    QTest::newRow("on") << true << "01";
}

void TestDownloadAgentConnect::syncFlagIsOneByte()
{
    QFETCH(bool, flag);
    QFETCH(QString, sent);
    Link link(handshake()
                  .chip("5A")
                  .host(sent)
                  .chip("69")
                  .host("00")
                  .chip("69")
                  .host("5A")
                  .chip("00 01 00 02 00 03")
                  .add(parameterBlock())
                  .chip("FF FF 0F FF 00"));
    hdl_da_report_t report = {};
    QVERIFY(link.worker.hdl_sync_with_da(flag, &report));
    QCOMPARE(link.chip.verdict(), QString());
    QCOMPARE(report.flash_id[2], uint16_t(3));
}

void TestDownloadAgentConnect::syncStopsAtTheFirstRefusal_data()
{
    QTest::addColumn<QString>("step");
    QTest::addColumn<QString>("answer");
    QTest::addColumn<QString>("logged");
    QTest::newRow("handshake") << "handshake 3"
                               << "00"
                               << "hdl_da_handshake fail";
    QTest::newRow("logging") << "logging"
                             << "5A"
                             << "Init_logging fail";
    QTest::newRow("power key") << "power key"
                               << "96"
                               << "DA Disable Long Press Power Key fail";
    QTest::newRow("parameters") << "parameters status"
                                << "10 00 5A"
                                << "unknow_array fail";
}

void TestDownloadAgentConnect::syncStopsAtTheFirstRefusal()
{
    QFETCH(QString, step);
    QFETCH(QString, answer);
    QFETCH(QString, logged);
    Dialogue dialogue = goodDialogue().before(step).step(step);
    if (step == "logging" || step == "power key")
        dialogue.host("00");
    Link link(dialogue.chip(answer));
    hdl_da_report_t report = {};
    QVERIFY(!connectTo(&link, &report));
    QCOMPARE(link.chip.verdict(), QString());
    const QStringList texts = tests::logTexts(trace().lines());
    QVERIFY(texts.contains(logged));
    // The report is printed however the sync has ended.
    QCOMPARE(texts.mid(texts.indexOf(logged) + 1).size(), 3);
    QVERIFY(texts.at(texts.size() - 2).startsWith("DA_Report HW_Code=0x1234-0x5678"));
}

void TestDownloadAgentConnect::syncKeepsTheLastAnswerWhenTheAgentFallsSilent()
{
    Link link(handshake().chip("5A").host("00").chip("69").host("00").host("5A").host("24"));
    hdl_da_report_t report = {0, 0, {0x0101, 0x0202, 0x0303}, 0, 0};
    QVERIFY(!link.worker.hdl_sync_with_da(false, &report));
    QVERIFY(trace().lines().contains("DA Disable Long Press Power Key success"));
    QVERIFY(trace().lines().contains("DA Flash ID: 0x0101 0x0202 0x0303"));
    QVERIFY(trace().lines().contains("unknow_array fail"));
}

void TestDownloadAgentConnect::disconnect_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("sent");
    QTest::addColumn<QString>("answer");
    QTest::addColumn<bool>("result");
    QTest::newRow("finish") << 0 << "D9 00"
                            << "5A" << true;
    QTest::newRow("finish with option") << 1 << "D9 01"
                                        << "5A" << true;
    QTest::newRow("watchdog") << 2 << "DB 00 05"
                              << "5A" << true;
    QTest::newRow("unknown type") << 3 << "D9 00"
                                  << "5A" << true;
    QTest::newRow("negative type") << -1 << "D9 00"
                                   << "5A" << true;
    QTest::newRow("finish refused") << 0 << "D9 00"
                                    << "A5" << false;
    QTest::newRow("watchdog refused") << 2 << "DB 00 05"
                                      << "00" << false;
    QTest::newRow("finish, silent") << 0 << "D9 00"
                                    << "" << false;
    QTest::newRow("watchdog, silent") << 2 << "DB 00 05"
                                      << "" << false;
}

void TestDownloadAgentConnect::disconnect()
{
    QFETCH(int, type);
    QFETCH(QString, sent);
    QFETCH(QString, answer);
    QFETCH(bool, result);
    Dialogue dialogue;
    dialogue.host("A5").chip("77").host(sent); // the first answer is not looked at
    if (!answer.isEmpty())
        dialogue.chip(answer);
    Link link(dialogue.line("close"));
    tests::Recorder recorder(trace());
    for (const char *signal : {SIGNAL(hdl_uart_get_byte(uint8_t *, uint32_t)),
                               SIGNAL(hdl_uart_deinit(uint8_t *, uint8_t))})
        recorder.watchSignal(&link.worker, signal);
    QCOMPARE(link.worker.hdl_disconnect(static_cast<HDL_DISCONNECT_TYPE>(type)), result);
    QCOMPARE(link.chip.verdict(), QString());
    QCOMPARE(recorder.entries(),
             QStringList({"signal hdl_uart_get_byte(, 3000)",
                          QString("hdl_disconnect disconnect_type=%1").arg(type),
                          "signal hdl_uart_get_byte(, 3000)", "signal hdl_uart_deinit(, 0)"}));
    if (answer.isEmpty())
        QCOMPARE(link.chip.unansweredValues(), QStringList("00"));
}

void TestDownloadAgentConnect::watchdogArgumentIsAWord()
{
    Link link(Dialogue().host("DB 12 34").chip("5A"));
    QVERIFY(link.worker.hdl_da_enable_wdt(0x1234));
    QCOMPARE(link.chip.verdict(), QString());
}

TESTMODE_TEST_MAIN(TestDownloadAgentConnect)
#include "test_download_agent_connect.moc"
