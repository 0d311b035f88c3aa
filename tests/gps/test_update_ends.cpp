#include "tests/support/unittest.h"
#include "updateunit.h"

#include <QJsonDocument>

using bench::Fault;
using tests::UpdateUnit;

namespace {

constexpr int kLongestMilliseconds = 200000;

const char kSucceeded[] = "/dev/ttyS4: succed";
const char kFailed[] = "/dev/ttyS4: failed";

} // namespace

// The process is told to end while an update runs.
class TestUpdateEnds : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void silentReceiverIsNotWaitedFor_data();
    void silentReceiverIsNotWaitedFor();
    void updateGoesAsFarAsItMust_data();
    void updateGoesAsFarAsItMust();
    void goneLineEndsAtOnce();

private:
    void setFault(UpdateUnit &unit, const QByteArray &text);
    qint64 endTakes(UpdateUnit &unit);
    void checkResult(UpdateUnit &unit, bool succeeds, const QStringList &written);
};

void TestUpdateEnds::setFault(UpdateUnit &unit, const QByteArray &text)
{
    if (text.isEmpty())
        return;
    QString error;
    const auto fault = Fault::fromJson(QJsonDocument::fromJson(text).object(), &error);
    QVERIFY2(fault, qPrintable(error));
    unit.receiver.setFaults({*fault});
}

// As the application does when its event loop has ended.
qint64 TestUpdateEnds::endTakes(UpdateUnit &unit)
{
    const qint64 before = unit.clock.milliseconds();
    unit.endProcess();
    return unit.clock.milliseconds() - before;
}

void TestUpdateEnds::checkResult(UpdateUnit &unit, bool succeeds, const QStringList &written)
{
    QTRY_VERIFY(!unit.updateRuns()); // its report was under way
    QCOMPARE(unit.lines().last(), QString(succeeds ? kSucceeded : kFailed));
    QVERIFY(unit.flash() == UpdateUnit::flashWith(written));
}

void TestUpdateEnds::silentReceiverIsNotWaitedFor_data()
{
    QTest::addColumn<QByteArray>("step");
    QTest::addColumn<int>("limit"); // milliseconds
    QTest::addColumn<bool>("succeeds");
    for (const char *step : {"sync", "read-16", "write-16", "load-stage-1", "stage-1-greeting",
                             "line-check", "load-stage-2", "jump", "handshake", "parameters"})
        QTest::newRow(step) << QByteArray(step) << 2000 << false;
    for (const char *step : {"image-start", "download", "packet", "image-end", "image-sum"})
        QTest::newRow(step) << QByteArray(step) << 10000 << false;
    for (const char *step : {"disconnect", "finish"})
        QTest::newRow(step) << QByteArray(step) << 10000 << true;
}

void TestUpdateEnds::silentReceiverIsNotWaitedFor()
{
    QFETCH(QByteArray, step);
    QFETCH(int, limit);
    QFETCH(bool, succeeds);
    for (const int asked : {0, 100, 2500}) { // milliseconds after the last byte
        UpdateUnit unit;
        unit.openUpdatePage();
        setFault(unit, R"({"kind":"silence","step":")" + step + R"("})");
        unit.press("pushButton_3");
        QTRY_COMPARE_WITH_TIMEOUT(unit.receiver.faultReports().first().done, 1,
                                  kLongestMilliseconds);
        QTest::qWait(asked);
        const qint64 took = endTakes(unit);
        QVERIFY2(took < limit, qPrintable(QString::number(took)));
        checkResult(unit, succeeds,
                    succeeds                                         ? UpdateUnit::allImages()
                        : step == "image-end" || step == "image-sum" ? QStringList{"bootloader.bin"}
                                                                     : QStringList());
    }
}

void TestUpdateEnds::updateGoesAsFarAsItMust_data()
{
    QTest::addColumn<QByteArray>("fault");
    QTest::addColumn<QString>("phase"); // of the receiver, when the end is asked for
    QTest::addColumn<int>("packets");   // written by then
    QTest::addColumn<bool>("succeeds");
    QTest::addColumn<int>("limit"); // milliseconds
    const int whole = 60000;

    QTest::newRow("nothing loaded yet")
        << QByteArray() << "boot-rom-commands" << 0 << false << 2000;
    QTest::newRow("stage 1 loaded")
        << QByteArray() << "stage-1-download-rate" << 0 << true << whole;
    QTest::newRow("first image") << QByteArray() << "stage-2-writing" << 1 << true << whole;
    QTest::newRow("third image") << QByteArray() << "stage-2-writing" << 40 << true << whole;

    QTest::newRow("a later packet refused, unlisted")
        << QByteArray(R"({"kind":"nack","value":7,"times":9,"image":3,"packet":2})")
        << "stage-2-writing" << 2 << true << whole;
    QTest::newRow("a later packet refused, listed")
        << QByteArray(R"({"kind":"nack","value":3061,"times":3,"image":3,"packet":2})")
        << "stage-2-writing" << 2 << true << whole;
    QTest::newRow("a later packet refused, busy")
        << QByteArray(R"({"kind":"nack","value":3065,"image":3,"packet":2})") << "stage-2-writing"
        << 2 << true << whole;
    QTest::newRow("every packet refused once, unlisted")
        << QByteArray(R"({"kind":"nack","value":7,"times":"always","probability":0.5})")
        << "stage-2-writing" << 2 << true << whole;
    QTest::newRow("refused for ever")
        << QByteArray(R"({"kind":"nack","value":7,"times":"always","image":3,"packet":3})")
        << "stage-2-writing" << 2 << false << 10000;

    QTest::newRow("stopped for a while")
        << QByteArray(R"({"kind":"flow-byte","resume_ms":800,"step":"load-stage-2","index":2000})")
        << "stage-1-download-rate" << 0 << true << whole;
    QTest::newRow("stopped for ever")
        << QByteArray(R"({"kind":"flow-byte","step":"load-stage-2","index":2000})")
        << "stage-1-download-rate" << 0 << false << 10000;
}

void TestUpdateEnds::updateGoesAsFarAsItMust()
{
    QFETCH(QByteArray, fault);
    QFETCH(QString, phase);
    QFETCH(int, packets);
    QFETCH(bool, succeeds);
    QFETCH(int, limit);
    UpdateUnit unit;
    unit.keepLineRate();
    unit.openUpdatePage();
    setFault(unit, fault);
    unit.press("pushButton_3");
    QTRY_VERIFY_WITH_TIMEOUT(unit.receiver.state().phase == phase
                                 && unit.receiver.state().packets >= packets,
                             kLongestMilliseconds);
    const qint64 took = endTakes(unit);
    QVERIFY2(took < limit, qPrintable(QString::number(took)));
    const bool someWritten = !succeeds && packets > 0;
    QTRY_VERIFY(!unit.updateRuns());
    QCOMPARE(unit.lines().last(), QString(succeeds ? kSucceeded : kFailed));
    if (!someWritten)
        checkResult(unit, succeeds, succeeds ? UpdateUnit::allImages() : QStringList());
}

void TestUpdateEnds::goneLineEndsAtOnce()
{
    UpdateUnit unit;
    unit.keepLineRate();
    unit.openUpdatePage();
    unit.press("pushButton_3");
    QTRY_COMPARE_WITH_TIMEOUT(unit.receiver.state().packets, 3, kLongestMilliseconds);
    unit.pullLine();
    QTest::qWait(100);
    const qint64 took = endTakes(unit);
    QVERIFY2(took < 2000, qPrintable(QString::number(took)));
    QTRY_VERIFY(!unit.updateRuns());
    QCOMPARE(unit.lines().last(), QString(kFailed));
}

TESTMODE_TEST_MAIN(TestUpdateEnds)
#include "test_update_ends.moc"
