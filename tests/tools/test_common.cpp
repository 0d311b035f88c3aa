#include "tests/support/clock/clockedtest.h"

#include "tools/common.h"

#include <QTimer>

#include <functional>

#include <dlfcn.h>

namespace {

QEventLoop::ProcessEventsFlags processed; // last
int passes = 0;

} // namespace

// In the place of Qt's, for the plug-in's objects in this program.
void QCoreApplication::processEvents(QEventLoop::ProcessEventsFlags flags, int milliseconds)
{
    using Process = void (*)(QEventLoop::ProcessEventsFlags, int);
    static const auto qtsOwn = reinterpret_cast<Process>(::dlsym(
        RTLD_NEXT,
        "_ZN16QCoreApplication13processEventsE6QFlagsIN10QEventLoop17ProcessEventsFlagEEi"));
    processed = flags;
    ++passes;
    qtsOwn(flags, milliseconds);
}

// The shared wait, the printf-style trace and the settings of the firmware update.
class TestCommon : public tests::ClockedTest
{
    Q_OBJECT

private slots:
    void updateSettingsAreTheirFirstAtTheStart();
    void logFormatsWithoutPrefix();
    void logNamesNoPlaceButItsOwn();
    void delayLastsItsTime_data();
    void delayLastsItsTime();
    void delayDeliversEventsMeanwhile();
    void delayDeliversEveryKindOfEvent();
    void delayDeliversWhatCameInItsLastRest();
    void delayLooksOnceAMillisecond();
    void delayDeliversEventsForAtMostATenthOfASecondAtOnce();
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

void TestCommon::delayLastsItsTime_data()
{
    QTest::addColumn<int>("asked");
    QTest::newRow("nothing") << 0;
    QTest::newRow("a poll") << 1;
    QTest::newRow("between packets") << 3;
    QTest::newRow("around the switch of the rate") << 100;
    QTest::newRow("after a failed sync") << 2000;
}

void TestCommon::delayLastsItsTime()
{
    QFETCH(int, asked);
    QCOMPARE(millisecondsOf([asked] { Delay_MSec(asked); }), qint64(asked));
}

void TestCommon::delayDeliversEventsMeanwhile()
{
    int ticks = 0;
    QTimer timer;
    connect(&timer, &QTimer::timeout, this, [&ticks] { ++ticks; });
    timer.start(1);
    QCOMPARE(millisecondsOf([] { Delay_MSec(100); }), 100);
    QVERIFY2(ticks >= 99, qPrintable(QString::number(ticks))); // no rest is longer than a poll
}

// The window system's input too.
void TestCommon::delayDeliversEveryKindOfEvent()
{
    processed = QEventLoop::ExcludeUserInputEvents;
    Delay_MSec(1);
    QCOMPARE(processed, QEventLoop::ProcessEventsFlags(QEventLoop::AllEvents));
}

// What comes in during a rest is taken in before the wait ends, not by the next one.
void TestCommon::delayDeliversWhatCameInItsLastRest()
{
    bool delivered = false;
    QTimer::singleShot(1, Qt::PreciseTimer, this, [&delivered] { delivered = true; });
    QCOMPARE(millisecondsOf([] { Delay_MSec(1); }), 1);
    QVERIFY(delivered);
}

// Looks when a millisecond of the day has begun, and no more often than that.
void TestCommon::delayLooksOnceAMillisecond()
{
    passes = 0;
    Delay_MSec(50);
    QCOMPARE(passes, 50);
}

// Events that bring the next one each, a millisecond long, after a rest of one: a pass ends when
// more than 100 have gone.
void TestCommon::delayDeliversEventsForAtMostATenthOfASecondAtOnce()
{
    bool done = false;
    const std::function<void()> next = [this, &done, &next] {
        QThread::msleep(1);
        if (!done)
            QMetaObject::invokeMethod(this, next, Qt::QueuedConnection);
    };
    QMetaObject::invokeMethod(this, next, Qt::QueuedConnection);
    QCOMPARE(millisecondsOf([] { Delay_MSec(1); }), 102);
    done = true;
    QCoreApplication::processEvents();
}

TESTMODE_TEST_MAIN(TestCommon)
#include "test_common.moc"
