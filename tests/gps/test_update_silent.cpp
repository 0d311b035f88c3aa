#include "tests/support/unittest.h"
#include "updateunit.h"

#include <QElapsedTimer>

using bench::Fault;
using bench::ReceiverStep;
using tests::UpdateUnit;

// Updates of a receiver that falls silent: nothing but time-outs, so they take long.
class TestUpdateSilent : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void silentReceiverEndsInAFailure_data();
    void silentReceiverEndsInAFailure();
};

void TestUpdateSilent::silentReceiverEndsInAFailure_data()
{
    QTest::addColumn<int>("step");
    QTest::addColumn<bool>("resetSeen");
    QTest::addColumn<QStringList>("traced"); // failed steps, in order
    QTest::newRow("from the beginning")
        << static_cast<int>(ReceiverStep::Sync) << false
        << QStringList{"hdl_brom_read16 fail", "hdl_brom_read16 fail", "hdl_brom_read16 fail",
                       "hdl_brom_read16 fail", "hdl_brom_read16 fail", "hdl_brom_read16 fail",
                       "hdl_connect fail"};
    QTest::newRow("while stage 2 is loaded")
        << static_cast<int>(ReceiverStep::LoadStage2) << true
        << QStringList{"hdl_brom_send_da1 fail", "hdl_brom_send_da fail", "hdl_connect fail"};
    QTest::newRow("from the handshake on")
        << static_cast<int>(ReceiverStep::Handshake) << true
        << QStringList{"hdl_da_handshake fail", "hdl_connect fail"};
    QTest::newRow("from the end of the images on")
        << static_cast<int>(ReceiverStep::ImageEnd) << true
        << QStringList{"DA Write Image Packets fail", "hdl_da_download fail", "hdl_download fail"};
}

void TestUpdateSilent::silentReceiverEndsInAFailure()
{
    QFETCH(int, step);
    QFETCH(bool, resetSeen);
    QFETCH(QStringList, traced);
    UpdateUnit unit;
    unit.openUpdatePage();
    Fault silence;
    silence.step = static_cast<ReceiverStep>(step);
    unit.receiver.setFaults({silence});
    unit.press("pushButton_3");
    QVERIFY(unit.updateRuns());
    QTRY_VERIFY_WITH_TIMEOUT(!unit.updateRuns(), 200000);

    QStringList wanted{"/dev/ttyS4: started"};
    if (resetSeen)
        wanted << "/dev/ttyS4: reset succed";
    QCOMPARE(unit.lines(), wanted + QStringList{"/dev/ttyS4: failed"});
    QCOMPARE(unit.icon(), QColor("red"));
    QStringList failed;
    const QStringList payloads = trace().payloads();
    for (const QString &line : payloads) {
        if (line.endsWith(" fail"))
            failed << line;
    }
    QCOMPARE(failed, traced);
    QVERIFY(payloads.contains("hdl_disconnect disconnect_type=0"));

    // and a healthy receiver is flashed as if nothing had been
    unit.receiver.clearFaults();
    unit.press("pushButton_3");
    QTRY_VERIFY_WITH_TIMEOUT(!unit.updateRuns(), 60000);
    QCOMPARE(unit.lines().last(), QStringLiteral("/dev/ttyS4: succed"));
}

TESTMODE_TEST_MAIN(TestUpdateSilent)
#include "test_update_silent.moc"
