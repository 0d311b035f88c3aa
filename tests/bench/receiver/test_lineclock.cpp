#include "bench/receiver/line.h"
#include "tests/support/unittest.h"

using bench::chip::LineClock;
using namespace std::chrono_literals;

// Ten bits a byte, counted in time points that the test chooses.
class TestLineClock : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void bytesReadAtOnceArriveOneBehindTheOther();
    void anIdleLineBeginsWithTheNextByte();
    void anAnswerBeginsWhenItMay();
    void anAnswerWaitsForTheOneBefore();
    void anUnknownRateTakesNoTime();
};

namespace {

const bench::chip::Clock::time_point kNow = bench::chip::Clock::time_point(10s);

} // namespace

void TestLineClock::bytesReadAtOnceArriveOneBehindTheOther()
{
    LineClock clock;
    QVERIFY(clock.arrival(kNow, 10000) == kNow + 1ms);
    QVERIFY(clock.arrival(kNow, 10000) == kNow + 2ms);
    QVERIFY(clock.arrival(kNow + 1ms, 10000) == kNow + 3ms);
}

void TestLineClock::anIdleLineBeginsWithTheNextByte()
{
    LineClock clock;
    clock.arrival(kNow, 10000);
    QVERIFY(clock.arrival(kNow + 5ms, 10000) == kNow + 6ms);
}

void TestLineClock::anAnswerBeginsWhenItMay()
{
    LineClock clock;
    QVERIFY(clock.departure(kNow, 4, 10000) == kNow + 4ms);
}

void TestLineClock::anAnswerWaitsForTheOneBefore()
{
    LineClock clock;
    clock.departure(kNow, 4, 10000);
    QVERIFY(clock.departure(kNow, 2, 10000) == kNow + 6ms);
    QVERIFY(clock.departure(kNow + 10ms, 2, 20000) == kNow + 11ms);
}

void TestLineClock::anUnknownRateTakesNoTime()
{
    LineClock clock;
    QVERIFY(clock.arrival(kNow, 0) == kNow);
    QVERIFY(clock.departure(kNow, 4096, 0) == kNow);
}

TESTMODE_TEST_MAIN(TestLineClock)
#include "test_lineclock.moc"
