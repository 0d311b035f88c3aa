#include "tests/support/unittest.h"

#include "tools/common.h"

#include <QElapsedTimer>
#include <QTime>
#include <QTimer>

#include <atomic>
#include <ctime>

#include <sys/time.h>

namespace {

// What this program's time of day is ahead of the machine's.
std::atomic<qint64> aheadMicroseconds{0};

} // namespace

// In the place of the C library's, for all of the program: Qt's time of day is made of it.
extern "C" __attribute__((visibility("default"))) int gettimeofday(timeval *now, void *) noexcept
{
    timespec machine = {};
    if (::clock_gettime(CLOCK_REALTIME, &machine) != 0)
        return -1;
    const qint64 microseconds =
        qint64(machine.tv_sec) * 1000000 + machine.tv_nsec / 1000 + aheadMicroseconds;
    now->tv_sec = static_cast<time_t>(microseconds / 1000000);
    now->tv_usec = static_cast<suseconds_t>(microseconds % 1000000);
    return 0;
}

// The shared wait around midnight, with a time of day that is moved there.
class TestDelayMidnight : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void cleanup();

    void waitAtNoonLastsItsTime();
    void waitAcrossMidnightEndsAtOnce_data();
    void waitAcrossMidnightEndsAtOnce();
    void waitThatMissesItsEndByMidnightEnds();
};

namespace {

void setTimeOfDay(const QTime &time)
{
    aheadMicroseconds += qint64(QTime::currentTime().msecsTo(time)) * 1000;
    const int off = time.msecsTo(QTime::currentTime());
    if (off < 0 || off > 5000)
        qFatal("the time of day does not follow");
}

} // namespace

void TestDelayMidnight::cleanup()
{
    aheadMicroseconds = 0;
    UnitTest::cleanup();
}

void TestDelayMidnight::waitAtNoonLastsItsTime()
{
    setTimeOfDay(QTime(12, 0));
    QElapsedTimer clock;
    clock.start();
    Delay_MSec(100);
    QVERIFY(clock.elapsed() >= 99);
}

void TestDelayMidnight::waitAcrossMidnightEndsAtOnce_data()
{
    QTest::addColumn<int>("milliseconds");
    QTest::newRow("to midnight and some") << 40000;
    QTest::newRow("an hour") << 3600000;
}

void TestDelayMidnight::waitAcrossMidnightEndsAtOnce()
{
    QFETCH(int, milliseconds);
    setTimeOfDay(QTime(23, 59, 30));
    bool delivered = false;
    QTimer pending;
    connect(&pending, &QTimer::timeout, this, [&delivered] { delivered = true; });
    pending.start(0);
    QElapsedTimer clock;
    clock.start();
    Delay_MSec(milliseconds);
    QVERIFY2(clock.elapsed() < 20000, qPrintable(QString::number(clock.elapsed())));
    QVERIFY(QTime::currentTime() > QTime(23, 59));
    QVERIFY(!delivered); // not one pass
}

// A wait that should have ended just before midnight and looks at the clock again only after it.
void TestDelayMidnight::waitThatMissesItsEndByMidnightEnds()
{
    setTimeOfDay(QTime(23, 59, 0));
    QTimer::singleShot(0, this, [] { setTimeOfDay(QTime(0, 0)); });
    QElapsedTimer clock;
    clock.start();
    Delay_MSec(59000);
    QVERIFY2(clock.elapsed() < 20000, qPrintable(QString::number(clock.elapsed())));
    QVERIFY(QTime::currentTime() < QTime(0, 1));
}

TESTMODE_TEST_MAIN(TestDelayMidnight)
#include "test_delay_midnight.moc"
