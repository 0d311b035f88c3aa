#pragma once

#include <cstddef>
#include <cstdint>

// One satellite of a status record: 20 bytes.
struct krnmSatellite
{
    int32_t number;
    int32_t inUse;     // 1 while the fix uses it
    int32_t elevation; // degrees above the horizon
    int32_t azimuth;   // degrees from north, clockwise
    int32_t signal;    // dB; 0: the entry is empty
};

// The receiver's status record, delivered by value: 760 bytes, little-endian.
// The reserved bytes are the service's; they are carried, not read.
typedef struct _krnmINFO
{
    int32_t reserved0;
    int32_t utcYear;
    int32_t utcMonth;
    int32_t utcDay;
    int32_t utcHour;
    int32_t utcMinute;
    int32_t utcSecond;
    uint8_t reserved28[36];
    double latitude;  // NMEA form ddmm.mmmm
    double longitude; // NMEA form dddmm.mmmm
    double reserved80;
    double speed; // over ground, in the service's unit
    uint8_t reserved96[16];
    int32_t satellitesInUse;
    int32_t satellitesInView;
    krnmSatellite satellites[30];
    uint8_t reserved720[40];
} krnmINFO;

static_assert(sizeof(krnmSatellite) == 20, "satellite entry of the status record");
static_assert(sizeof(krnmINFO) == 760, "status record");
static_assert(offsetof(krnmINFO, utcYear) == 4, "status record");
static_assert(offsetof(krnmINFO, utcMonth) == 8, "status record");
static_assert(offsetof(krnmINFO, utcDay) == 12, "status record");
static_assert(offsetof(krnmINFO, utcHour) == 16, "status record");
static_assert(offsetof(krnmINFO, utcMinute) == 20, "status record");
static_assert(offsetof(krnmINFO, utcSecond) == 24, "status record");
static_assert(offsetof(krnmINFO, latitude) == 64, "status record");
static_assert(offsetof(krnmINFO, longitude) == 72, "status record");
static_assert(offsetof(krnmINFO, speed) == 88, "status record");
static_assert(offsetof(krnmINFO, satellitesInUse) == 112, "status record");
static_assert(offsetof(krnmINFO, satellitesInView) == 116, "status record");
static_assert(offsetof(krnmINFO, satellites) == 120, "status record");
static_assert(offsetof(krnmSatellite, signal) == 16, "satellite entry of the status record");

// How long the receiver has delivered data; the first three words are the service's.
struct krnmDuration
{
    int32_t reserved[3];
    int32_t hours;
    int32_t minutes;
    int32_t seconds;
};

static_assert(offsetof(krnmDuration, hours) == 12, "data duration");
static_assert(offsetof(krnmDuration, minutes) == 16, "data duration");
static_assert(offsetof(krnmDuration, seconds) == 20, "data duration");
