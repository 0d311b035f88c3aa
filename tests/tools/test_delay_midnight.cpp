#include "tests/support/clock/clockedtest.h"

#include "tools/common.h"

#include <QDate>
#include <QTime>
#include <QTimer>

using tests::VirtualClock;

// The shared wait around midnight, with a time of day that is moved there.
class TestDelayMidnight : public tests::ClockedTest
{
    Q_OBJECT

private slots:
    void waitBeforeMidnightLastsItsTime();
    void waitAcrossMidnightEndsAtOnce_data();
    void waitAcrossMidnightEndsAtOnce();
    void waitThatMissesItsEndByMidnightEnds();
    void waitWhoseClockIsSetBackLastsLonger_data();
    void waitWhoseClockIsSetBackLastsLonger();
    void waitAcrossTheZonesChangeFollowsIt_data();
    void waitAcrossTheZonesChangeFollowsIt();
};

// Its last look at the clock comes before its end.
void TestDelayMidnight::waitBeforeMidnightLastsItsTime()
{
    VirtualClock::setTimeOfDay(QTime(23, 59, 59, 800));
    QCOMPARE(millisecondsOf([] { Delay_MSec(199); }), 199);
    QCOMPARE(QTime::currentTime(), QTime(23, 59, 59, 999));
}

void TestDelayMidnight::waitAcrossMidnightEndsAtOnce_data()
{
    QTest::addColumn<int>("asked");
    QTest::newRow("to midnight") << 200;
    QTest::newRow("to midnight and some") << 40000;
    QTest::newRow("an hour") << 3600000;
}

void TestDelayMidnight::waitAcrossMidnightEndsAtOnce()
{
    QFETCH(int, asked);
    VirtualClock::setTimeOfDay(QTime(23, 59, 59, 800));
    bool delivered = false;
    QTimer pending;
    connect(&pending, &QTimer::timeout, this, [&delivered] { delivered = true; });
    pending.start(0);
    QCOMPARE(millisecondsOf([asked] { Delay_MSec(asked); }), 0);
    QVERIFY(!delivered); // not one pass
}

// A wait that should have ended just before midnight and looks at the clock again only after it.
void TestDelayMidnight::waitThatMissesItsEndByMidnightEnds()
{
    VirtualClock::setTimeOfDay(QTime(23, 59, 0));
    QTimer::singleShot(0, this, [] { VirtualClock::setTimeOfDay(QTime(0, 0)); });
    QVERIFY(millisecondsOf([] { Delay_MSec(59000); }) <= 1);
}

void TestDelayMidnight::waitWhoseClockIsSetBackLastsLonger_data()
{
    // Milliseconds both. The clock is set back when the first one of the wait is over.
    QTest::addColumn<int>("setBack");
    QTest::addColumn<int>("lasts");
    QTest::newRow("a second") << 1000 << 2000;
    QTest::newRow("almost half a day") << 43200000 << 1000; // is put right in time
    QTest::newRow("half a day, which may be a new day") << 43200001 << 1;
}

void TestDelayMidnight::waitWhoseClockIsSetBackLastsLonger()
{
    QFETCH(int, setBack);
    QFETCH(int, lasts);
    VirtualClock::setTimeOfDay(QTime(13, 0));
    const auto moveBy = [](int milliseconds) {
        VirtualClock::setTimeOfDay(QTime::currentTime().addMSecs(milliseconds));
    };
    QTimer::singleShot(0, this, [&] { moveBy(-setBack); });
    QTimer rightAgain;
    connect(&rightAgain, &QTimer::timeout, this, [&] { moveBy(setBack); });
    rightAgain.setSingleShot(true);
    if (setBack > 1000)
        rightAgain.start(500);
    QCOMPARE(millisecondsOf([] { Delay_MSec(1000); }), qint64(lasts));
}

void TestDelayMidnight::waitAcrossTheZonesChangeFollowsIt_data()
{
    QTest::addColumn<QString>("summer"); // the zone's second time, behind Greenwich
    QTest::addColumn<int>("lasts");
    QTest::newRow("two seconds on") << "-0:00:02" << 200;
    QTest::newRow("two seconds back") << "0:00:02" << 3000;
}

// In the zone itself, as where summer begins or ends.
void TestDelayMidnight::waitAcrossTheZonesChangeFollowsIt()
{
    QFETCH(QString, summer);
    QFETCH(int, lasts);
    const QByteArray zoneBefore = qgetenv("TZ");
    qputenv("TZ", "AAA0");
    const int today = QDate::currentDate().dayOfYear() - 1;
    const QString zone =
        QString("AAA0BBB%1,%2/13,%3").arg(summer).arg(today).arg((today + 1) % 365);
    qputenv("TZ", zone.toLatin1());
    VirtualClock::setTimeOfDay(QTime(12, 59, 59, 800));
    const qint64 lasted = millisecondsOf([] { Delay_MSec(1000); });
    zoneBefore.isNull() ? qunsetenv("TZ") : qputenv("TZ", zoneBefore);
    QCOMPARE(lasted, qint64(lasts));
}

TESTMODE_TEST_MAIN(TestDelayMidnight)
#include "test_delay_midnight.moc"
