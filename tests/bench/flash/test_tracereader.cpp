#include "bench/flash/tracereader.h"

#include "tests/gps/updateunit.h"
#include "tests/support/unittest.h"

#include <QJsonDocument>

using bench::Event;
using bench::Fault;
using bench::TraceReader;
using tests::UpdateUnit;

namespace {

constexpr int kUpdateMilliseconds = 200000;

QList<Event> ofKind(const QString &kind, const QList<Event> &events)
{
    QList<Event> found;
    for (const Event &event : events) {
        if (event.value("kind") == kind)
            found << event;
    }
    return found;
}

} // namespace

// What is read out of the traces of whole updates, good ones and failing ones.
class TestTraceReader : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void goodUpdateIsToldToItsEnd();
    void failedStepIsSaidInWords_data();
    void failedStepIsSaidInWords();
    void whatDecidesNothingIsNoFailure_data();
    void whatDecidesNothingIsNoFailure();
    void packetThatIsRefusedWithoutEndIsToldOnce();
    void portThatDoesNotOpen();
    void imageThatIsNotBegun();
    void attemptBeginsWithoutThePast();
    void failureWithoutAStepIsTold();

private:
    // What is told of an update with the faults.
    void update(const QByteArray &faults);

    QList<Event> events;
    QString page; // its last line
};

void TestTraceReader::update(const QByteArray &faults)
{
    events.clear();
    const QJsonArray list = QJsonDocument::fromJson('[' + faults + ']').array();
    QVector<Fault> set;
    for (const QJsonValue &value : list) {
        QString error;
        const auto fault = Fault::fromJson(value.toObject(), &error);
        QVERIFY2(fault, qPrintable(error));
        set << *fault;
    }
    UpdateUnit unit;
    unit.openUpdatePage();
    unit.receiver.setFaults(set);
    unit.press("pushButton_3");
    QTRY_VERIFY_WITH_TIMEOUT(!unit.updateRuns(), kUpdateMilliseconds);
    page = unit.lines().last();

    TraceReader reader([this](const Event &event) { events << event; });
    for (const QString &line : trace().lines())
        reader.read(line);
    QVERIFY(!page.isEmpty());
    if (page.endsWith("failed"))
        reader.tellFailure();
}

void TestTraceReader::goodUpdateIsToldToItsEnd()
{
    update({});
    QCOMPARE(page, QString("/dev/ttyS4: succed"));
    QStringList told;
    for (const Event &phase : ofKind("phase", events))
        told << phase.value("phase").toString() + ": " + phase.value("text").toString();
    QCOMPARE(
        told,
        QStringList({"open: opening the port",
                     "reset: port open at 115200 baud; the receiver is reset",
                     "sync: waiting for the boot ROM", "identify: the boot ROM answers",
                     "watchdog: the chip is 0x2C40, 0x8A02",
                     "load-stage-1: loading the stage-1 agent, 2458 bytes",
                     "greet-stage-1: the stage-1 agent runs",
                     "check-line: checking the line at the download's rate",
                     "load-stage-2: loading the stage-2 agent, 39148 bytes",
                     "start-stage-2: starting the stage-2 agent",
                     "prepare-stage-2: the stage-2 agent is greeted",
                     "write: writing bootloader.bin, 131073 bytes",
                     "write: writing partition_table.bin, 4095 bytes",
                     "write: writing gnss_demo.bin, 118783 bytes",
                     "write: writing gnss_config.bin, 3001 bytes", "end: ending the connection"}));
    const QList<Event> progress = ofKind("progress", events);
    QCOMPARE(progress.size(), 33 + 1 + 29 + 1); // packets
    int bytes = 0;
    for (const Event &event : progress) {
        QVERIFY(event.value("bytes").toInt() > bytes);
        bytes = event.value("bytes").toInt();
        QCOMPARE(event.value("percent").toInt(), bytes * 100LL / 256952);
    }
    QCOMPARE(bytes, 256952);
    QCOMPARE(events.size(), told.size() + progress.size());
}

void TestTraceReader::failedStepIsSaidInWords_data()
{
    QTest::addColumn<QByteArray>("fault");
    QTest::addColumn<QString>("phase");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("said");
    const auto row = [](const char *fault, const char *phase, const char *text, const char *said) {
        QTest::newRow(fault) << QByteArray(fault) << QString(phase) << QString(text)
                             << QString(said);
    };

    row(R"({"kind":"silence","step":"sync"})", "sync", "the boot ROM does not answer",
        "nothing, or 0x00");
    row(R"({"kind":"status","step":"configuration","value":7437})", "identify",
        "the chip does not identify itself", "0x1D0D");
    row(R"({"kind":"status","step":"write-16"})", "watchdog",
        "the chip's watchdog could not be switched off", "0x1000");
    row(R"({"kind":"status","step":"load-stage-1"})", "load-stage-1",
        "the stage-1 agent was refused before it was sent", "0x1000");
    row(R"({"kind":"checksum","step":"load-stage-1","value":7})", "load-stage-1",
        "the stage-1 agent did not arrive as it was sent", "checksum 7 in place of 4662");
    row(R"({"kind":"status","step":"load-stage-1","index":1})", "load-stage-1",
        "the stage-1 agent was sent and not accepted", "0x1000");
    row(R"({"kind":"status","step":"stage-1-greeting"})", "greet-stage-1",
        "the stage-1 agent does not greet back (greeting 1 of 3)", "0x1000");
    row(R"({"kind":"status","step":"stage-1-announce"})", "greet-stage-1",
        "the stage-1 agent does not greet back (greeting 2 of 3)", "0x1000");
    row(R"({"kind":"status","step":"stage-1-confirm"})", "greet-stage-1",
        "the stage-1 agent does not greet back (greeting 3 of 3)", "0x1000");
    row(R"({"kind":"silence","step":"line-check"})", "check-line",
        "the line does not carry the download's rate", "nothing");
    row(R"({"kind":"status","step":"line-check"})", "check-line",
        "the line does not carry the download's rate", "0x1000");
    row(R"({"kind":"status","step":"stage-1-ready"})", "check-line",
        "the stage-1 agent does not get ready (report 1 of 3)", "0x1000");
    row(R"({"kind":"status","step":"stage-1-second"})", "check-line",
        "the stage-1 agent does not get ready (report 3 of 3)", "0x1000");
    row(R"({"kind":"status","step":"load-stage-2"})", "load-stage-2",
        "the stage-2 agent was refused before it was sent", "0x1000");
    row(R"({"kind":"checksum","step":"load-stage-2","value":7})", "load-stage-2",
        "the stage-2 agent did not arrive as it was sent", "checksum 7 in place of 20575");
    row(R"({"kind":"status","step":"jump"})", "start-stage-2", "the stage-2 agent was not started",
        "0x1000");
    row(R"({"kind":"acknowledge","step":"handshake","value":9})", "prepare-stage-2",
        "the stage-2 agent does not complete its handshake", "0x09");
    row(R"({"kind":"silence","step":"handshake"})", "prepare-stage-2",
        "the stage-2 agent does not complete its handshake", "nothing, or 0x00");
    row(R"({"kind":"acknowledge","step":"logging","value":9})", "prepare-stage-2",
        "the stage-2 agent does not take the setting of its log", "0x09");
    row(R"({"kind":"acknowledge","step":"power-key","value":9})", "prepare-stage-2",
        "the stage-2 agent does not take the setting of the power key", "0x09");
    row(R"({"kind":"status","step":"parameters"})", "prepare-stage-2",
        "the stage-2 agent does not take its parameters", "0x1000");
    row(R"({"kind":"nack","step":"download","value":3012})", "write",
        "the command to write bootloader.bin was not taken", "refused with code 3012");
    row(R"({"kind":"nack","step":"download","index":1,"image":2,"value":3012})", "write",
        "the place of partition_table.bin in the flash was refused", "refused with code 3012");
    row(R"({"kind":"nack","value":3061,"image":3,"packet":7,"times":4})", "write",
        "packet 7 of 29 of gnss_demo.bin was not taken", "refused with code 3061, 4 times");
    row(R"({"kind":"acknowledge","step":"packet","index":1,"value":150})", "write",
        "packet 1 of 33 of bootloader.bin was not taken", "0x5A 0x96");
    row(R"({"kind":"silence","step":"packet","image":2})", "write",
        "packet 1 of 1 of partition_table.bin was not taken", "nothing, or 0x00");
    row(R"({"kind":"late","direction":"to-host","step":"packet","index":0,"value":450})", "write",
        "packet 1 of 33 of bootloader.bin was not taken", "0x5A, too late");
    row(R"({"kind":"acknowledge","step":"image-end","value":7})", "write",
        "the end of bootloader.bin was not confirmed", "0x07");
    row(R"({"kind":"checksum","step":"image-sum","image":4,"value":7})", "write",
        "gnss_config.bin was written and its sum is another at the receiver",
        "sum 0x00000007 in place of 0x00081DF9");
}

void TestTraceReader::failedStepIsSaidInWords()
{
    QFETCH(QByteArray, fault);
    update(fault);
    QCOMPARE(page, QString("/dev/ttyS4: failed"));
    const QList<Event> failures = ofKind("failure", events);
    QCOMPARE(failures.size(), 1);
    QTEST(failures.first().value("text").toString(), "text");
    QTEST(failures.first().value("said").toString(), "said");
    QTEST(failures.first().value("phase").toString(), "phase");
    const bool silentAtAnEcho = fault.contains("silence") && fault.contains("line-check");
    if (silentAtAnEcho)
        QCOMPARE(ofKind("silent", events).size(), 1);
}

void TestTraceReader::whatDecidesNothingIsNoFailure_data()
{
    QTest::addColumn<QByteArray>("fault");
    QTest::newRow("register that cannot be read")
        << QByteArray(R"({"kind":"status","step":"read-16"})");
    QTest::newRow("echo that is another")
        << QByteArray(R"({"kind":"flip","direction":"to-host","step":"line-check","index":3})");
    QTest::newRow("packet that is taken the second time")
        << QByteArray(R"({"kind":"nack","value":3061,"image":1,"packet":2})");
}

void TestTraceReader::whatDecidesNothingIsNoFailure()
{
    QFETCH(QByteArray, fault);
    update(fault);
    QCOMPARE(page, QString("/dev/ttyS4: succed"));
    QCOMPARE(ofKind("failure", events), QList<Event>());
    QCOMPARE(ofKind("progress", events).last().value("percent").toInt(), 100);
}

void TestTraceReader::packetThatIsRefusedWithoutEndIsToldOnce()
{
    update(R"({"kind":"nack","value":4711,"image":3,"packet":7,"times":20})");
    QCOMPARE(page, QString("/dev/ttyS4: succed"));
    const QList<Event> refused = ofKind("refused", events);
    QCOMPARE(refused.size(), 1);
    QCOMPARE(refused.first().value("code").toInt(), 4711);
    QCOMPARE(refused.first().value("text").toString(),
             QString("packet 7 of gnss_demo.bin was refused with code 4711 and is sent again"));
}

void TestTraceReader::portThatDoesNotOpen()
{
    TraceReader reader([this](const Event &event) { events << event; });
    events.clear();
    reader.read("[DBG] 7 void serial_thread::serial_init(uint8_t*, uint8_t, uint8_t*) 86 -- "
                "InitSerial: \"/dev/ttyS4\" 0x7f62");
    reader.read("hdl_connect fail");
    reader.read("hdl_disconnect disconnect_type=0");
    reader.tellFailure();
    const QList<Event> failures = ofKind("failure", events);
    QCOMPARE(failures.size(), 1);
    QCOMPARE(failures.first().value("phase").toString(), QString("open"));
    QCOMPARE(failures.first().value("text").toString(), QString("the port could not be opened"));
    QCOMPARE(failures.first().value("said").toString(), QString());
}

void TestTraceReader::imageThatIsNotBegun()
{
    TraceReader reader([this](const Event &event) { events << event; });
    events.clear();
    reader.read("Start Download Image (gnss_demo.bin)");
    reader.read("hdl_da_download fail, invalid parameter");
    reader.read("hdl_da_download fail");
    reader.tellFailure();
    QCOMPARE(ofKind("failure", events).first().value("text").toString(),
             QString("gnss_demo.bin was not written"));
}

void TestTraceReader::attemptBeginsWithoutThePast()
{
    TraceReader reader([this](const Event &event) { events << event; });
    events.clear();
    reader.read("[DBG] 2 void testmode::gpsupdate::GetBinfile(QString, file*) 71 -- "
                "app_binfile:  100");
    const auto attempt = [&reader] {
        reader.beginAttempt();
        reader.read("Start Download Image (gnss_demo.bin)");
        reader.read("hdl_da_download (gnss_demo.bin) packet 1/1 100");
        reader.read("hdl_wirte_packet success");
        reader.read("DA Write Image Packets fail");
        reader.tellFailure();
    };
    attempt();
    const QList<Event> first = events;
    events.clear();
    attempt();
    QCOMPARE(events, first);
    QCOMPARE(ofKind("progress", events).first().value("percent").toInt(), 100);
    QCOMPARE(ofKind("failure", events).size(), 1);
}

void TestTraceReader::failureWithoutAStepIsTold()
{
    TraceReader reader([this](const Event &event) { events << event; });
    events.clear();
    reader.read("hdl_disconnect disconnect_type=0");
    reader.tellFailure();
    reader.tellFailure();
    QCOMPARE(ofKind("failure", events).size(), 1);
    QCOMPARE(ofKind("failure", events).first().value("text").toString(),
             QString("the update failed"));
}

TESTMODE_TEST_MAIN(TestTraceReader)
#include "test_tracereader.moc"
