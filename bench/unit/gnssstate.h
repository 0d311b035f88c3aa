#pragma once

#include "gpsservice/krnminfo.h"
#include "sky.h"

#include <QString>
#include <QVector>

namespace bench {

// What the simulated GNSS service knows of its receiver.
struct GnssState
{
    int moduleKind = 1;
    QString antenna = QStringLiteral("OK");
    QString installStatus = QStringLiteral("3");
    QString version = QStringLiteral("SIM-GNSS 1.0");
    int versionDelay = 300; // milliseconds from the query to the answer
    krnmINFO info = {};
    krnmDuration duration = {};
    QVector<krnmSatellite> satellites; // in view

    // While the sky is followed, it fills info, duration and satellites once a second.
    // HeadUnit::followSky() switches it.
    bool followsSky = false;
    Scene scene; // that the sky is seen in
    Sky sky;
};

} // namespace bench
