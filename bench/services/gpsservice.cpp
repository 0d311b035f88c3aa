#include "gpsservice/gpsservice.h"

#include "bench/unit/gnssstate.h"
#include "bench/unit/headunit.h"
#include "bench/unit/journal.h"
#include "gnssreceiver.h"

namespace gpsservice {

using bench::journal;
using bench::unit;

namespace {

void record(const char *call, const QJsonArray &arguments = {})
{
    journal().call(QStringLiteral("GpsService"), QString::fromLatin1(call), arguments);
}

bench::GnssReceiver &gnssReceiver()
{
    static bench::GnssReceiver receiver;
    return receiver;
}

// What the status shows after the calibration has been cleared.
const QString kNotCalibrated = QStringLiteral("0");

} // namespace

GpsService *GpsService::instance()
{
    static GpsService service;
    gnssReceiver(); // reports from the first use of the service on
    return &service;
}

int GpsService::getModualApatation()
{
    record("getModualApatation");
    return unit().gnss.moduleKind;
}

krnmINFO GpsService::getNmeaInfo()
{
    record("getNmeaInfo");
    return unit().gnss.info;
}

krnmDuration GpsService::getGNSSDataDuration()
{
    record("getGNSSDataDuration");
    return unit().gnss.duration;
}

QString GpsService::getAntennaInfo()
{
    record("getAntennaInfo");
    return unit().gnss.antenna;
}

QString GpsService::getGpsInstallStatusStr()
{
    record("getGpsInstallStatusStr");
    return unit().gnss.installStatus;
}

int GpsService::getGPSSatelliteInView()
{
    record("getGPSSatelliteInView");
    return unit().gnss.satellites.size();
}

krnmSatellite GpsService::getSatellitesListForIdx(int index, bool flag)
{
    record("getSatellitesListForIdx", {index, flag});
    return unit().gnss.satellites.value(index);
}

void GpsService::read_set_CMD_VERSION()
{
    record("read_set_CMD_VERSION");
    gnssReceiver().queryVersion();
}

void GpsService::read_set_CMD_COLD_START()
{
    record("read_set_CMD_COLD_START");
    unit().change()->gnss.sky.coldStart();
}

void GpsService::read_set_CMD_RESET_CALIBRATION()
{
    record("read_set_CMD_RESET_CALIBRATION");
    unit().change()->gnss.installStatus = kNotCalibrated;
    unit().change()->gnss.sky.clearCalibration();
}

void GpsService::read_set_CMD_RESET_REBOOT()
{
    record("read_set_CMD_RESET_REBOOT");
    unit().change()->gnss.sky.restart();
}

void GpsService::saveNmeaData2USB()
{
    record("saveNmeaData2USB");
}

} // namespace gpsservice
