#pragma once

#include "gpsservice/krnminfo.h"

#include <QObject>
#include <QString>

namespace gpsservice {

class GpsService : public QObject
{
    Q_OBJECT

public:
    static GpsService *instance();

    int getModualApatation();
    krnmINFO getNmeaInfo();
    krnmDuration getGNSSDataDuration();
    QString getAntennaInfo();
    QString getGpsInstallStatusStr();
    int getGPSSatelliteInView();
    krnmSatellite getSatellitesListForIdx(int, bool);
    void read_set_CMD_VERSION();
    void read_set_CMD_COLD_START();
    void read_set_CMD_RESET_CALIBRATION();
    void read_set_CMD_RESET_REBOOT();
    void saveNmeaData2USB();

signals:
    void modualApatationCompelete(int);
    void krnmInfoRefresh(krnmINFO);
    void gpsFirmwareVersion(QString);
};

} // namespace gpsservice
