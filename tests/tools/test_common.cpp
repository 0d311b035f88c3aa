#include "tests/support/unittest.h"

#include "tools/common.h"

#include <QElapsedTimer>
#include <QTimer>

// The shared wait, the printf-style trace and the settings of the firmware update.
class TestCommon : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void updateSettingsAreTheirFirstAtTheStart();
    void logFormatsWithoutPrefix();
    void logNamesNoPlaceButItsOwn();
    void delayOfZeroReturnsAtOnce();
    void delayDeliversEventsMeanwhile();
};

void TestCommon::updateSettingsAreTheirFirstAtTheStart()
{
    QVERIFY(com.isEmpty());
    QVERIFY(br.isEmpty());
    QVERIFY(rodata.isEmpty());
    QCOMPARE(com_set.baudRate, 921600);
    QCOMPARE(com_set.dataBits, 8);
    QCOMPARE(com_set.parity, QString("None"));
    QCOMPARE(com_set.stopBits, 1.0F);
    QCOMPARE(com_set.flowControl, QString("None"));
    QVERIFY(sendstr.data.isEmpty());
    QCOMPARE(sendstr.length, 0u);
}

void TestCommon::logFormatsWithoutPrefix()
{
    Log("%d-%s", 5, "a");
    QCOMPARE(trace().lines(), QStringList{"5-a"});
}

namespace {

QString seenPlace;

void keepPlace(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    seenPlace = QString("%1 %2:%3 %4: %5")
                    .arg(type)
                    .arg(context.file)
                    .arg(context.line)
                    .arg(context.function, text);
}

} // namespace

void TestCommon::logNamesNoPlaceButItsOwn()
{
    const QtMessageHandler previous = qInstallMessageHandler(keepPlace);
    Log("%s fail", "a step");
    qInstallMessageHandler(previous);
    QCOMPARE(seenPlace,
             QString("%1 common:23 void Log(const char*, ...): a step fail").arg(QtDebugMsg));
}

void TestCommon::delayOfZeroReturnsAtOnce()
{
    QElapsedTimer clock;
    clock.start();
    Delay_MSec(0);
    QVERIFY(clock.elapsed() < 1000);
}

void TestCommon::delayDeliversEventsMeanwhile()
{
    int ticks = 0;
    QTimer timer;
    connect(&timer, &QTimer::timeout, this, [&ticks] { ++ticks; });
    timer.start(10);
    QElapsedTimer clock;
    clock.start();
    Delay_MSec(100);
    QVERIFY(clock.elapsed() >= 99);
    QVERIFY(ticks >= 3);
}

TESTMODE_TEST_MAIN(TestCommon)
#include "test_common.moc"
