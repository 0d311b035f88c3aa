#include "gnssreceiver.h"

#include "bench/unit/gnssstate.h"
#include "bench/unit/headunit.h"
#include "gpsservice/gpsservice.h"

namespace bench {

namespace {

constexpr int kReportMilliseconds = 1000;

Antenna antennaOf(const QString &words)
{
    if (words.compare(QLatin1String("open"), Qt::CaseInsensitive) == 0)
        return Antenna::Open;
    if (words.compare(QLatin1String("short"), Qt::CaseInsensitive) == 0)
        return Antenna::Short;
    return Antenna::Good;
}

// The code of a good installation differs between the modules.
QString goodInstallStatus(int moduleKind)
{
    return moduleKind == 0 ? QStringLiteral("CC") : QStringLiteral("3");
}

} // namespace

GnssReceiver::GnssReceiver()
{
    seconds.setInterval(kReportMilliseconds);
    connect(&seconds, &QTimer::timeout, this, &GnssReceiver::report);
    connect(&unit(), &HeadUnit::skyFollowed, this, &GnssReceiver::follow);
    connect(&unit(), &HeadUnit::poweredOn, this, [this] {
        follow(unit().gnss.followsSky);
        forgetQueries();
    });
    follow(unit().gnss.followsSky);
    forgetQueries();
}

void GnssReceiver::follow(bool on)
{
    if (on)
        seconds.start();
    else
        seconds.stop();
}

void GnssReceiver::forgetQueries()
{
    delete queries;
    queries = new QObject(this);
}

void GnssReceiver::queryVersion()
{
    QTimer::singleShot(unit().gnss.versionDelay, queries, [] {
        emit gpsservice::GpsService::instance()->gpsFirmwareVersion(unit().gnss.version);
    });
}

void GnssReceiver::report()
{
    UnitChange change = unit().change();
    GnssState &gnss = change->gnss;
    const bool wasCalibrated = gnss.sky.isCalibrated();
    gnss.sky.setAntenna(antennaOf(gnss.antenna));
    gnss.sky.setScene(gnss.scene);
    gnss.sky.advance(1);
    gnss.info = gnss.sky.info();
    gnss.satellites = gnss.sky.satellites();
    gnss.duration = gnss.sky.duration();
    if (!wasCalibrated && gnss.sky.isCalibrated())
        gnss.installStatus = goodInstallStatus(gnss.moduleKind);
    emit gpsservice::GpsService::instance()->krnmInfoRefresh(gnss.info);
}

} // namespace bench
