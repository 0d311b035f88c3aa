#include "bench/unit/systemstate.h"
#include "tests/support/unittest.h"

#include "logs/outputlogsusb.h"

// The log service records what it is asked and shows its messages on the unit.
class TestOutputLogsUsb : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void messageAppearsOnTheUnit();
    void requestsAreRecordedInOrder();
};

void TestOutputLogsUsb::messageAppearsOnTheUnit()
{
    QSignalSpy shown(&bench::unit(), &bench::HeadUnit::popupShown);
    logs::OutputLogsUsb::instance()->tipsMessagePopup("Error: No USB Device");
    QCOMPARE(shown.size(), 1);
    QCOMPARE(shown.first().first().toString(), QString("Error: No USB Device"));
    QCOMPARE(bench::unit().system.lastPopup, QString("Error: No USB Device"));
    QCOMPARE(bench::journal().texts(),
             QStringList{"OutputLogsUsb.tipsMessagePopup(\"Error: No USB Device\")"});
}

void TestOutputLogsUsb::requestsAreRecordedInOrder()
{
    auto *service = logs::OutputLogsUsb::instance();
    service->startDumpsys(true);
    service->updateLogToUsb(true);
    service->endDumpsys(false);
    QCOMPARE(bench::journal().texts(),
             QStringList({"OutputLogsUsb.startDumpsys(true)", "OutputLogsUsb.updateLogToUsb(true)",
                          "OutputLogsUsb.endDumpsys(false)"}));
}

TESTMODE_TEST_MAIN(TestOutputLogsUsb)
#include "test_outputlogsusb.moc"
