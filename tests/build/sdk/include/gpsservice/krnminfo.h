#pragma once

#include <cstdint>

struct krnmSatellite
{
    int32_t number;
    int32_t inUse;
    int32_t elevation;
    int32_t azimuth;
    int32_t signal;
};

typedef struct _krnmINFO
{
    int32_t first;
    int32_t utcYear;
    int32_t utcMonth;
    int32_t utcDay;
    int32_t utcHour;
    int32_t utcMinute;
    int32_t utcSecond;
    uint8_t more[36];
    double latitude;
    double longitude;
    double another;
    double speed;
    uint8_t others[16];
    int32_t satellitesInUse;
    int32_t satellitesInView;
    krnmSatellite satellites[30];
    uint8_t rest[40];
} krnmINFO;

struct krnmDuration
{
    int32_t first[3];
    int32_t hours;
    int32_t minutes;
    int32_t seconds;
};
