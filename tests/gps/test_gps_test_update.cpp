#include "bench/unit/clockstate.h"
#include "bench/unit/gnssstate.h"
#include "tests/support/unittest.h"

#include "shownpage.h"

#include <thread>

using gpsservice::GpsService;
using namespace tests;

// What a status record changes on the page of the GNSS receiver.
class TestGpsTestUpdate : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void callsOfAnUpdate();
    void updatesComeOncePerSignal();
    void updateOfAnotherThreadArrives();
    void speed_data();
    void speed();
    void position_data();
    void position();
    void countsInViewAndInUse();
    void updateShowsHiddenValuesAgain();
    void timesOfAnUpdate_data();
    void timesOfAnUpdate();
    void durationOfADayOrMoreIsNoTimeOfDay();
    void antennaLine();
    void installStatusDependsOnTheModule_data();
    void installStatusDependsOnTheModule();
    void listHoldsTheSatellites();
    void scrollBarFollowsTheLatestCountInView_data();
    void scrollBarFollowsTheLatestCountInView();
    void eachScrollBarTestLooksAtItsOwnCount_data();
    void eachScrollBarTestLooksAtItsOwnCount();
    void eachUpdateAsksAgainUntilAVersionHasArrived();
};

void TestGpsTestUpdate::callsOfAnUpdate()
{
    const ShownPage page;
    setSatellites(2);
    report(bench::unit().gnss.info);
    QCOMPARE(
        calls(),
        QStringList({"GpsService.getGPSSatelliteInView()",
                     "GpsService.getSatellitesListForIdx(0, false)",
                     "GpsService.getSatellitesListForIdx(1, false)", "GpsService.getNmeaInfo()",
                     "GpsService.getGNSSDataDuration()", "DateTimeManager.currentDateTime(1)",
                     "GpsService.getAntennaInfo()", "GpsService.getModualApatation()",
                     "GpsService.getGpsInstallStatusStr()", "GpsService.read_set_CMD_VERSION()"}));
}

void TestGpsTestUpdate::updatesComeOncePerSignal()
{
    const ShownPage page;
    report({});
    QCOMPARE(calls().count("GpsService.getNmeaInfo()"), 1);
    emit GpsService::instance()->gpsFirmwareVersion("V1");
    QCOMPARE(trace().payloads().count("\"V1\""), 1);
}

// The service may emit from any thread; the page is touched in the GUI thread only.
void TestGpsTestUpdate::updateOfAnotherThreadArrives()
{
    const ShownPage page;
    krnmINFO info = {};
    info.speed = 33.5;
    std::thread([info] { emit GpsService::instance()->krnmInfoRefresh(info); }).join();
    QVERIFY(page.text("speed_vol") != "33.5");
    QTRY_COMPARE(page.text("speed_vol"), QString("33.5"));
}

void TestGpsTestUpdate::speed_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<QString>("text");
    QTest::newRow("standing") << 0.0 << "0";
    QTest::newRow("six digits") << 12.3456789 << "12.3457";
    QTest::newRow("short") << 60.5 << "60.5";
    QTest::newRow("small") << 0.00001234567 << "1.23457e-05";
    QTest::newRow("large") << 1234567.0 << "1.23457e+06";
    QTest::newRow("backwards") << -3.25 << "-3.25";
}

void TestGpsTestUpdate::speed()
{
    QFETCH(double, value);
    QFETCH(QString, text);
    const ShownPage page;
    krnmINFO info = {};
    info.speed = value;
    report(info);
    QCOMPARE(page.text("speed_vol"), text);
}

void TestGpsTestUpdate::position_data()
{
    QTest::addColumn<double>("latitude");
    QTest::addColumn<double>("longitude");
    QTest::addColumn<QString>("latitudeText");
    QTest::addColumn<QString>("longitudeText");
    QTest::newRow("a hundredth, six digits") << 3150.1234 << 12109.8765 << "31.5012"
                                             << "121.099";
    QTest::newRow("none") << 0.0 << 0.0 << "0"
                          << "0";
    QTest::newRow("south and west") << -3354.5 << -1830.25 << "-33.545"
                                    << "-18.3025";
    QTest::newRow("sixty minutes stay") << 4559.9999 << 959.0 << "45.6"
                                        << "9.59";
}

void TestGpsTestUpdate::position()
{
    QFETCH(double, latitude);
    QFETCH(double, longitude);
    QFETCH(QString, latitudeText);
    QFETCH(QString, longitudeText);
    const ShownPage page;
    krnmINFO info = {};
    info.latitude = latitude;
    info.longitude = longitude;
    report(info);
    QCOMPARE(page.text("latitude_vol"), latitudeText);
    QCOMPARE(page.text("longitude_vol"), longitudeText);
}

void TestGpsTestUpdate::countsInViewAndInUse()
{
    const ShownPage page;
    krnmINFO info = {};
    info.satellitesInView = 13;
    info.satellitesInUse = 9;
    report(info);
    QCOMPARE(page.text("numInView_vol"), QString("13"));
    QCOMPARE(page.text("numInUse_vol"), QString("9"));
}

void TestGpsTestUpdate::updateShowsHiddenValuesAgain()
{
    const ShownPage page;
    const char *const names[] = {"numInView_vol", "numInUse_vol", "speed_vol"};
    for (const char *name : names)
        page.child(name)->hide();
    report({});
    for (const char *name : names)
        QVERIFY2(page.child(name)->isVisible(), name);
}

void TestGpsTestUpdate::timesOfAnUpdate_data()
{
    QTest::addColumn<QDateTime>("receiver");
    QTest::addColumn<QString>("receiverText");
    QTest::addColumn<QTime>("system");
    QTest::addColumn<QString>("systemText");
    QTest::addColumn<QTime>("duration");
    QTest::addColumn<QString>("durationText");
    QTest::newRow("the receiver's time is not padded")
        << QDateTime(QDate(2024, 5, 3), QTime(7, 8, 9)) << "GPS Time: 2024 Y 5 M 3 D 7:8:9"
        << QTime(4, 5, 6) << "System time: 04:05:06" << QTime(0, 1, 2)
        << "GPS Duration time: 00:01:02";
    QTest::newRow("last second of a year")
        << QDateTime(QDate(2023, 12, 31), QTime(23, 59, 59))
        << "GPS Time: 2023 Y 12 M 31 D 23:59:59" << QTime(23, 59, 59) << "System time: 23:59:59"
        << QTime(23, 59, 59) << "GPS Duration time: 23:59:59";
}

void TestGpsTestUpdate::timesOfAnUpdate()
{
    QFETCH(QDateTime, receiver);
    QFETCH(QString, receiverText);
    QFETCH(QTime, system);
    QFETCH(QString, systemText);
    QFETCH(QTime, duration);
    QFETCH(QString, durationText);

    const ShownPage page;
    bench::unit().change()->clock.standsAt = QDateTime(QDate(2024, 1, 1), system);
    bench::unit().change()->gnss.duration = {
        {91, 92, 93}, duration.hour(), duration.minute(), duration.second()};
    krnmINFO info = {};
    info.utcYear = receiver.date().year();
    info.utcMonth = receiver.date().month();
    info.utcDay = receiver.date().day();
    info.utcHour = receiver.time().hour();
    info.utcMinute = receiver.time().minute();
    info.utcSecond = receiver.time().second();
    report(info);
    QCOMPARE(page.text("time_gps"), receiverText);
    QCOMPARE(page.text("time_system"), systemText);
    QCOMPARE(page.text("time_duration"), durationText);
}

void TestGpsTestUpdate::durationOfADayOrMoreIsNoTimeOfDay()
{
    const ShownPage page;
    bench::unit().change()->gnss.duration = {{0, 0, 0}, 24, 0, 0};
    report({});
    QCOMPARE(page.text("time_duration"), QString("GPS Duration time: "));
}

void TestGpsTestUpdate::antennaLine()
{
    const ShownPage page;
    bench::unit().change()->gnss.antenna = "SHORT";
    report({});
    QCOMPARE(page.text("antenna"), QString("AntennaState: SHORT"));
}

void TestGpsTestUpdate::installStatusDependsOnTheModule_data()
{
    QTest::addColumn<int>("module");
    QTest::addColumn<QString>("text");
    QTest::newRow("kind 0") << 0 << "Install status(CC is ok): CA";
    QTest::newRow("kind 1") << 1 << "Install status(3 is ok): CA";
    QTest::newRow("kind 2") << 2 << "(null)";
    QTest::newRow("kind -1") << -1 << "(null)";
}

void TestGpsTestUpdate::installStatusDependsOnTheModule()
{
    QFETCH(int, module);
    QFETCH(QString, text);
    const ShownPage page;
    bench::unit().change()->gnss.moduleKind = module;
    bench::unit().change()->gnss.installStatus = "CA";
    report({});
    QCOMPARE(page.text("install_mode"), text);
}

void TestGpsTestUpdate::listHoldsTheSatellites()
{
    const ShownPage page;
    setSatellites(3);
    report(bench::unit().gnss.info);
    const QAbstractItemModel *model = page.list()->model();
    QCOMPARE(model->rowCount(), 3);
    QCOMPARE(model->index(2, 0).data().toString(), QString("ID: 3, Sig: 32dB"));
}

void TestGpsTestUpdate::scrollBarFollowsTheLatestCountInView_data()
{
    QTest::addColumn<int>("inUse");
    QTest::addColumn<int>("inView");
    QTest::addColumn<bool>("visible");
    for (const int inUse : {0, 5, 6, 30}) {
        for (const int inView : {0, 1, 5, 6, 7, 30})
            QTest::newRow(qPrintable(QString("%1 in use, %2 in view").arg(inUse).arg(inView)))
                << inUse << inView << (inView >= 6);
    }
}

void TestGpsTestUpdate::scrollBarFollowsTheLatestCountInView()
{
    QFETCH(int, inUse);
    QFETCH(int, inView);
    QFETCH(bool, visible);

    const ShownPage page;
    setSatellites(inView); // the service's latest record
    krnmINFO delivered = {};
    delivered.satellitesInUse = inUse;
    delivered.satellitesInView = 30 - inView; // an older one
    for (const bool before : {false, true}) {
        page.bar()->setVisible(before);
        emit GpsService::instance()->krnmInfoRefresh(delivered);
        QCOMPARE(page.bar()->isVisible(), visible);
    }
}

void TestGpsTestUpdate::eachScrollBarTestLooksAtItsOwnCount_data()
{
    QTest::addColumn<int>("inUse");
    QTest::addColumn<int>("inView");
    QTest::addColumn<QList<bool>>("turns");
    QTest::newRow("few, few") << 5 << 5 << QList<bool>{};
    QTest::newRow("few, many") << 5 << 6 << QList<bool>{true};
    QTest::newRow("many, few") << 6 << 5 << QList<bool>{true, false};
    QTest::newRow("many, many") << 6 << 6 << QList<bool>{true};
}

// The bar was hidden before; its turns show both tests, in their order.
void TestGpsTestUpdate::eachScrollBarTestLooksAtItsOwnCount()
{
    QFETCH(int, inUse);
    QFETCH(int, inView);
    QFETCH(QList<bool>, turns);

    struct Turns : QObject
    {
        bool eventFilter(QObject *, QEvent *event) override
        {
            if (event->type() == QEvent::ShowToParent)
                seen << true;
            if (event->type() == QEvent::HideToParent)
                seen << false;
            return false;
        }
        QList<bool> seen;
    } watch;

    const ShownPage page;
    page.bar()->installEventFilter(&watch);
    krnmINFO delivered = {};
    delivered.satellitesInUse = inUse;
    delivered.satellitesInView = 99;
    bench::unit().change()->gnss.info.satellitesInUse = 99;
    bench::unit().change()->gnss.info.satellitesInView = inView;
    emit GpsService::instance()->krnmInfoRefresh(delivered);
    QCOMPARE(watch.seen, turns);
}

void TestGpsTestUpdate::eachUpdateAsksAgainUntilAVersionHasArrived()
{
    const ShownPage page;
    for (int update = 1; update <= 3; ++update) {
        report({});
        QCOMPARE(versionQueries(), update);
    }
    emit GpsService::instance()->gpsFirmwareVersion("");
    report({});
    QCOMPARE(versionQueries(), 4);
    emit GpsService::instance()->gpsFirmwareVersion("V1");
    report({});
    QCOMPARE(versionQueries(), 4);
}

TESTMODE_TEST_MAIN(TestGpsTestUpdate)
#include "test_gps_test_update.moc"
