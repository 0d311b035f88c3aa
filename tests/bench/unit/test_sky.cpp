#include "tests/support/unittest.h"

#include "bench/unit/clockstate.h"
#include "bench/unit/gnssstate.h"
#include "bench/unit/sky.h"
#include "bench/unit/unitdocument.h"
#include "bench/unit/unitpaths.h"
#include "gpsservice/gpsservice.h"

#include <QSet>

#include <algorithm>
#include <cstring>

Q_DECLARE_METATYPE(krnmINFO)

using bench::Antenna;
using bench::Sky;
using gpsservice::GpsService;

// The simulated satellites, the receiver under them, and the service that follows them.
class TestSky : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void initTestCase();

    void oneSeedGivesOneSky();
    void anotherSeedGivesAnotherSky();
    void stepsDoNotDependOnHowTheyAreTaken();
    void startsWithAFix();
    void recordAgreesWithTheList();
    void satellitesRiseAndSet();
    void highSatellitesAreHeardBetter();
    void coldStartLosesAndRegainsTheFix();
    void coldStartForgetsTheTimeUntilASatelliteIsFound();
    void restartLosesTheFixForSeconds();
    void heldSatelliteStaysWhereItWasPut();
    void coveredSectorIsNotHeard();
    void speedIsWhatWasAskedFor();
    void antennaDecidesTheFix_data();
    void antennaDecidesTheFix();
    void carMovesAndReportsItsSpeed();
    void positionIsInNmeaForm();
    void clockRunsWithTheSky();
    void durationCountsFromTheLastStart();
    void calibrationComesBackWhileDrivingWithAFix();

    void serviceIsSilentWhileTheSkyIsOff();
    void serviceReportsOnceASecond();
    void serviceStopsWhenTheUnitIsSwitchedOn();
    void antennaWordsReachTheSky();
    void receiverCommandsReachTheSky();
    void unitDocumentSwitchesAndSeedsTheSky();
    void versionAnswersAfterAWhile();
    void versionAskedBeforePowerOnNeverComes();
};

namespace {

// As the bytes that the service hands over.
QByteArray bytes(const krnmINFO &info)
{
    return QByteArray(reinterpret_cast<const char *>(&info), sizeof info);
}

bool equal(const krnmINFO &a, const krnmINFO &b)
{
    return bytes(a) == bytes(b);
}

QSet<int> numbersOf(const Sky &sky)
{
    QSet<int> numbers;
    const QVector<krnmSatellite> satellites = sky.satellites();
    for (const krnmSatellite &satellite : satellites)
        numbers << satellite.number;
    return numbers;
}

// Degrees of an NMEA angle.
double degrees(double nmea)
{
    const int whole = int(nmea) / 100;
    return whole + (nmea - whole * 100) / 60;
}

} // namespace

// A spy keeps the signal's arguments.
void TestSky::initTestCase()
{
    qRegisterMetaType<krnmINFO>("krnmINFO");
}

void TestSky::oneSeedGivesOneSky()
{
    Sky first(7);
    Sky second(7);
    for (Sky *sky : {&first, &second}) {
        sky->advance(500);
        sky->coldStart();
        sky->advance(100);
    }
    QVERIFY(equal(first.info(), second.info()));
}

void TestSky::anotherSeedGivesAnotherSky()
{
    QVERIFY(!equal(Sky(1).info(), Sky(2).info()));
}

void TestSky::stepsDoNotDependOnHowTheyAreTaken()
{
    Sky atOnce(3);
    Sky singly(3);
    atOnce.advance(120);
    for (int i = 0; i < 120; ++i)
        singly.advance(1);
    QVERIFY(equal(atOnce.info(), singly.info()));
}

void TestSky::startsWithAFix()
{
    for (quint32 seed = 1; seed <= 50; ++seed) {
        const Sky sky(seed);
        QVERIFY2(sky.hasFix(), qPrintable(QString::number(seed)));
        QVERIFY(sky.info().satellitesInUse >= 4);
        QVERIFY(sky.info().satellitesInView >= 6);
    }
}

void TestSky::recordAgreesWithTheList()
{
    Sky sky;
    for (int minute = 0; minute < 120; ++minute) {
        sky.advance(60);
        const krnmINFO info = sky.info();
        const QVector<krnmSatellite> list = sky.satellites();
        QCOMPARE(info.satellitesInView, list.size());
        QVERIFY(list.size() <= 30);
        int inUse = 0;
        for (int i = 0; i < list.size(); ++i) {
            QVERIFY(std::memcmp(&list.at(i), &info.satellites[i], sizeof(krnmSatellite)) == 0);
            QVERIFY(list.at(i).number >= 1 && list.at(i).number <= 30);
            QVERIFY(list.at(i).elevation >= 5 && list.at(i).elevation <= 90);
            QVERIFY(list.at(i).azimuth >= 0 && list.at(i).azimuth < 360);
            inUse += list.at(i).inUse;
        }
        QCOMPARE(info.satellitesInUse, inUse);
        QCOMPARE(info.satellites[29].signal, 0); // never all thirty at once
    }
}

void TestSky::satellitesRiseAndSet()
{
    Sky sky;
    const QSet<int> before = numbersOf(sky);
    sky.advance(2 * 3600);
    const QSet<int> after = numbersOf(sky);
    QVERIFY(!(before - after).isEmpty());
    QVERIFY(!(after - before).isEmpty());
    QVERIFY(!(before & after).isEmpty());
}

void TestSky::highSatellitesAreHeardBetter()
{
    Sky sky;
    int highest = 0;
    int lowest = 90;
    int atHighest = 0;
    int atLowest = 0;
    for (int minute = 0; minute < 600; ++minute) {
        sky.advance(60);
        const QVector<krnmSatellite> satellites = sky.satellites();
        for (const krnmSatellite &satellite : satellites) {
            if (satellite.elevation > highest) {
                highest = satellite.elevation;
                atHighest = satellite.signal;
            }
            if (satellite.elevation < lowest) {
                lowest = satellite.elevation;
                atLowest = satellite.signal;
            }
        }
    }
    QVERIFY(highest > 70);
    QVERIFY(lowest < 10);
    QVERIFY2(atHighest > atLowest + 10, qPrintable(QString("%1 %2").arg(atHighest).arg(atLowest)));
}

void TestSky::coldStartLosesAndRegainsTheFix()
{
    for (quint32 seed = 1; seed <= 20; ++seed) {
        Sky sky(seed);
        sky.coldStart();
        QVERIFY(!sky.hasFix());
        QCOMPARE(sky.info().satellitesInView, 0);
        QCOMPARE(sky.info().satellitesInUse, 0);
        QCOMPARE(sky.info().latitude, 0.0);
        QCOMPARE(sky.info().speed, 0.0);

        sky.advance(5);
        QVERIFY(!sky.hasFix());
        sky.advance(30);
        QVERIFY2(sky.hasFix(), qPrintable(QString::number(seed)));
        QVERIFY(sky.info().satellitesInUse >= 4);
        QVERIFY(sky.info().latitude > 3000);
    }
}

void TestSky::coldStartForgetsTheTimeUntilASatelliteIsFound()
{
    Sky sky;
    sky.setClock(QDateTime(QDate(2024, 5, 6), QTime(7, 8, 9), Qt::UTC));
    sky.coldStart();
    QCOMPARE(sky.info().utcYear, 0);
    while (sky.info().satellitesInView == 0)
        sky.advance(1);
    QCOMPARE(sky.info().utcYear, 2024);
}

void TestSky::restartLosesTheFixForSeconds()
{
    Sky sky;
    sky.advance(100);
    const int inView = sky.info().satellitesInView;
    sky.restart();
    QVERIFY(!sky.hasFix());
    QCOMPARE(sky.info().satellitesInView, inView);
    sky.advance(2);
    QVERIFY(!sky.hasFix());
    sky.advance(1);
    QVERIFY(sky.hasFix());
}

void TestSky::heldSatelliteStaysWhereItWasPut()
{
    Sky sky;
    bench::Scene scene;
    scene.held = {{30, 77, 123}};
    sky.setScene(scene);
    for (int hour = 0; hour < 12; ++hour) {
        sky.advance(3600);
        const QVector<krnmSatellite> satellites = sky.satellites();
        QCOMPARE(satellites.last().number, 30);
        QCOMPARE(satellites.last().elevation, 77);
        QCOMPARE(satellites.last().azimuth, 123);
        QVERIFY(satellites.last().signal > 40);
    }
}

// A building across north hides what stands behind it, and nothing else.
void TestSky::coveredSectorIsNotHeard()
{
    Sky open;
    Sky covered;
    bench::Scene scene;
    scene.covered = {{300, 60, 50}};
    covered.setScene(scene);
    int hidden = 0;
    for (int minute = 0; minute < 600; ++minute) {
        open.advance(60);
        covered.advance(60);
        const QVector<krnmSatellite> all = open.satellites();
        const QVector<krnmSatellite> some = covered.satellites();
        QCOMPARE(some.size(), all.size());
        for (int i = 0; i < all.size(); ++i) {
            const bool behind =
                (all[i].azimuth >= 300 || all[i].azimuth <= 60) && all[i].elevation < 50;
            hidden += behind ? 1 : 0;
            QCOMPARE(some[i].signal, behind ? 0 : all[i].signal);
            QVERIFY(!behind || some[i].inUse == 0);
        }
    }
    QVERIFY(hidden > 600);
}

void TestSky::speedIsWhatWasAskedFor()
{
    Sky sky;
    bench::Scene scene;
    scene.speed = 0;
    sky.setScene(scene);
    sky.advance(10);
    const krnmINFO parked = sky.info();
    QCOMPARE(parked.speed, 0.0);
    sky.advance(10);
    QCOMPARE(sky.info().latitude, parked.latitude);
    scene.speed = 130;
    sky.setScene(scene);
    sky.advance(10);
    QCOMPARE(sky.info().speed, 130.0);
    const double kilometres =
        111.2 * std::abs(degrees(sky.info().latitude) - degrees(parked.latitude));
    QVERIFY(kilometres > 0 && kilometres < 0.37);
}

void TestSky::antennaDecidesTheFix_data()
{
    QTest::addColumn<int>("antenna");
    QTest::addColumn<bool>("fix");
    QTest::addColumn<bool>("heard");
    QTest::newRow("good") << int(Antenna::Good) << true << true;
    QTest::newRow("open") << int(Antenna::Open) << false << true;
    QTest::newRow("short") << int(Antenna::Short) << false << false;
}

void TestSky::antennaDecidesTheFix()
{
    QFETCH(int, antenna);
    QFETCH(bool, fix);
    QFETCH(bool, heard);

    Sky sky;
    sky.setAntenna(static_cast<Antenna>(antenna));
    sky.advance(10);
    const QVector<krnmSatellite> satellites = sky.satellites();
    QVERIFY(!satellites.isEmpty());
    QCOMPARE(sky.hasFix(), fix);
    QCOMPARE(sky.info().satellitesInUse > 0, fix);
    QCOMPARE(std::any_of(satellites.cbegin(), satellites.cend(),
                         [](const krnmSatellite &satellite) { return satellite.signal > 0; }),
             heard);

    sky.setAntenna(Antenna::Good);
    sky.advance(3);
    QVERIFY(sky.hasFix());
}

void TestSky::carMovesAndReportsItsSpeed()
{
    Sky sky;
    sky.advance(1);
    const krnmINFO before = sky.info();
    sky.advance(60);
    const krnmINFO after = sky.info();
    QVERIFY(after.speed > 25 && after.speed < 65);

    // a minute at that speed, in kilometres
    const double north = (degrees(after.latitude) - degrees(before.latitude)) * 111.2;
    const double east = (degrees(after.longitude) - degrees(before.longitude)) * 94.5;
    const double way = std::sqrt(north * north + east * east);
    QVERIFY2(way > 0.1 && way < 1.1, qPrintable(QString::number(way)));
}

void TestSky::positionIsInNmeaForm()
{
    const krnmINFO info = Sky().info();
    QCOMPARE(int(info.latitude), 3150);   // 31 degrees 50 minutes
    QCOMPARE(int(info.longitude), 11709); // 117 degrees 9 minutes
}

void TestSky::clockRunsWithTheSky()
{
    Sky sky;
    QCOMPARE(sky.info().utcYear, 0);
    sky.advance(10);
    sky.setClock(QDateTime(QDate(2024, 12, 31), QTime(23, 59, 58), Qt::UTC));
    QCOMPARE(sky.info().utcSecond, 58);
    sky.advance(3);
    const krnmINFO info = sky.info();
    const int words[6] = {info.utcYear, info.utcMonth,  info.utcDay,
                          info.utcHour, info.utcMinute, info.utcSecond};
    const int expected[6] = {2025, 1, 1, 0, 0, 1};
    QVERIFY(std::equal(std::begin(words), std::end(words), std::begin(expected)));
}

void TestSky::durationCountsFromTheLastStart()
{
    Sky sky;
    QCOMPARE(sky.duration().seconds, 0);
    sky.advance(2 * 3600 + 3 * 60 + 4);
    QCOMPARE(sky.duration().hours, 2);
    QCOMPARE(sky.duration().minutes, 3);
    QCOMPARE(sky.duration().seconds, 4);
    sky.restart();
    sky.advance(5);
    QCOMPARE(sky.duration().hours, 0);
    QCOMPARE(sky.duration().minutes, 0);
    QCOMPARE(sky.duration().seconds, 5);
}

void TestSky::calibrationComesBackWhileDrivingWithAFix()
{
    Sky sky;
    QVERIFY(sky.isCalibrated());
    sky.clearCalibration();
    sky.setAntenna(Antenna::Short);
    sky.advance(100);
    QVERIFY(!sky.isCalibrated());
    sky.setAntenna(Antenna::Good);
    sky.advance(61);
    QVERIFY(!sky.isCalibrated()); // the fix itself took three seconds, the third one counts
    sky.advance(1);
    QVERIFY(sky.isCalibrated());
}

void TestSky::serviceIsSilentWhileTheSkyIsOff()
{
    QSignalSpy refreshed(GpsService::instance(), SIGNAL(krnmInfoRefresh(krnmINFO)));
    bench::unit().change()->gnss.info.satellitesInView = 3;
    QVERIFY(!refreshed.wait(1300));
    QCOMPARE(GpsService::instance()->getNmeaInfo().satellitesInView, 3);
}

void TestSky::serviceReportsOnceASecond()
{
    bench::unit().change()->clock.standsAt = QDateTime(QDate(2024, 5, 6), QTime(7, 8, 9), Qt::UTC);
    QSignalSpy refreshed(GpsService::instance(), SIGNAL(krnmInfoRefresh(krnmINFO)));
    bench::unit().followSky(true);
    QElapsedTimer clock;
    clock.start();
    QTRY_COMPARE(refreshed.count(), 2);
    QVERIFY2(clock.elapsed() >= 1850, qPrintable(QString::number(clock.elapsed())));

    Sky same;
    same.setClock(QDateTime(QDate(2024, 5, 6), QTime(7, 8, 9), Qt::UTC));
    same.advance(2);
    QVERIFY(equal(GpsService::instance()->getNmeaInfo(), same.info()));
    QCOMPARE(GpsService::instance()->getGPSSatelliteInView(), same.satellites().size());
    QCOMPARE(GpsService::instance()->getSatellitesListForIdx(1, false).number,
             same.satellites().at(1).number);
    QCOMPARE(GpsService::instance()->getGNSSDataDuration().seconds, 2);

    bench::unit().followSky(false);
    QVERIFY(!refreshed.wait(1300));
}

void TestSky::serviceStopsWhenTheUnitIsSwitchedOn()
{
    QSignalSpy refreshed(GpsService::instance(), SIGNAL(krnmInfoRefresh(krnmINFO)));
    bench::unit().followSky(true);
    bench::unit().powerOn();
    QVERIFY(!refreshed.wait(1300));
}

void TestSky::antennaWordsReachTheSky()
{
    QSignalSpy refreshed(GpsService::instance(), SIGNAL(krnmInfoRefresh(krnmINFO)));
    bench::unit().followSky(true);
    QVERIFY(refreshed.wait());
    QVERIFY(bench::unit().gnss.info.satellitesInUse > 0);
    bench::unit().change()->gnss.antenna = "OPEN";
    QVERIFY(refreshed.wait());
    QCOMPARE(bench::unit().gnss.info.satellitesInUse, 0);
    QVERIFY(bench::unit().gnss.info.satellites[0].number > 0);
    bench::unit().change()->gnss.antenna = "SHORT";
    QVERIFY(refreshed.wait());
    for (const krnmSatellite &satellite : bench::unit().gnss.info.satellites)
        QCOMPARE(satellite.signal, 0);
}

void TestSky::receiverCommandsReachTheSky()
{
    GpsService *service = GpsService::instance();
    const bench::GnssState &gnss = bench::unit().gnss;
    QSignalSpy refreshed(service, SIGNAL(krnmInfoRefresh(krnmINFO)));

    service->read_set_CMD_COLD_START();
    QCOMPARE(gnss.sky.info().satellitesInView, 0);
    QVERIFY(!gnss.sky.hasFix());

    bench::unit().change()->gnss.sky.advance(100);
    service->read_set_CMD_RESET_CALIBRATION();
    QCOMPARE(service->getGpsInstallStatusStr(), QString("0"));
    bench::unit().change()->gnss.sky.advance(59);
    bench::unit().change()->gnss.moduleKind = 0;
    bench::unit().followSky(true);
    QVERIFY(refreshed.wait());
    QCOMPARE(service->getGpsInstallStatusStr(), QString("CC"));

    service->read_set_CMD_RESET_REBOOT();
    QVERIFY(!gnss.sky.hasFix());
    QCOMPARE(gnss.sky.duration().minutes, 0);
}

void TestSky::unitDocumentSwitchesAndSeedsTheSky()
{
    QSignalSpy refreshed(GpsService::instance(), SIGNAL(krnmInfoRefresh(krnmINFO)));
    bench::UnitDocument document(bench::pathsOf(&bench::unit()));
    QCOMPARE(document.value("gnss.sky").value(), QJsonValue(false));
    QCOMPARE(document.value("gnss.sky_seed").value(), QJsonValue(1));

    QCOMPARE(document.setValue("gnss.sky_seed", 7).message, QString());
    QCOMPARE(bench::unit().gnss.sky.info().satellites[0].azimuth,
             Sky(7).info().satellites[0].azimuth);
    QVERIFY(Sky(7).info().satellites[0].azimuth != Sky(1).info().satellites[0].azimuth);
    QCOMPARE(document.value("gnss.sky_seed").value(), QJsonValue(7));
    QVERIFY(!refreshed.wait(1300));

    QCOMPARE(document.setValue("gnss.sky", true).message, QString());
    QVERIFY(refreshed.wait());
    QCOMPARE(document.value("gnss.satellites_in_view").value(),
             QJsonValue(bench::unit().gnss.sky.info().satellitesInView));
    QCOMPARE(document.setValue("gnss.sky", false).message, QString());
    QVERIFY(!bench::unit().gnss.followsSky);
}

void TestSky::versionAnswersAfterAWhile()
{
    bench::unit().change()->gnss.version = "V9";
    bench::unit().change()->gnss.versionDelay = 50;
    QSignalSpy answered(GpsService::instance(), SIGNAL(gpsFirmwareVersion(QString)));
    GpsService::instance()->read_set_CMD_VERSION();
    QCOMPARE(answered.count(), 0);
    QVERIFY(answered.wait());
    QCOMPARE(answered, QList<QVariantList>({{"V9"}}));
}

void TestSky::versionAskedBeforePowerOnNeverComes()
{
    bench::unit().change()->gnss.versionDelay = 50;
    QSignalSpy answered(GpsService::instance(), SIGNAL(gpsFirmwareVersion(QString)));
    GpsService::instance()->read_set_CMD_VERSION();
    bench::unit().powerOn();
    QVERIFY(!answered.wait(200));
}

TESTMODE_TEST_MAIN(TestSky)
#include "test_sky.moc"
