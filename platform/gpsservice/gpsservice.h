#pragma once

#include "gpsservice/krnminfo.h"
#include "platform_api.h"

#include <QObject>
#include <QString>

namespace gpsservice {

// Client of the GNSS service. Called in the GUI thread; may emit in one of its own.
class PLATFORM_API GpsService : public QObject
{
    Q_OBJECT

public:
    static GpsService *instance();

    // Kind of GNSS module fitted: 1 is the one that a test mode flashes over the
    // UART itself; every other kind is flashed by the unit's own updater.
    int getModualApatation();

    // The latest status record.
    krnmINFO getNmeaInfo();
    krnmDuration getGNSSDataDuration();

    // Antenna state and installation (calibration) status, in words.
    QString getAntennaInfo();
    QString getGpsInstallStatusStr();

    // Satellites in view, and one of them by index from 0. The list asks with false; what true
    // would give is the service's.
    int getGPSSatelliteInView();
    krnmSatellite getSatellitesListForIdx(int index, bool flag);

    // Receiver commands; none waits. The version comes as gpsFirmwareVersion.
    void read_set_CMD_VERSION();
    void read_set_CMD_COLD_START();
    void read_set_CMD_RESET_CALIBRATION();
    void read_set_CMD_RESET_REBOOT();

    // Copies the recorded receiver sentences to a USB disk.
    void saveNmeaData2USB();

signals:
    // The kind of module has been found out.
    void modualApatationCompelete(int kind);
    void krnmInfoRefresh(krnmINFO info);
    void gpsFirmwareVersion(QString version);

private:
    GpsService() = default;
};

} // namespace gpsservice
