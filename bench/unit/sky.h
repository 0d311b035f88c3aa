#pragma once

#include "gpsservice/krnminfo.h"
#include "platform_api.h"

#include <QDateTime>
#include <QVector>

#include <array>
#include <random>

namespace bench {

// What hangs on the receiver's antenna input.
enum class Antenna {
    Good,
    Open,  // weak signals only: enough to hear some satellites, not for a fix
    Short, // no signal at all
};

// A building: satellites behind it, between two azimuths clockwise and below an elevation, are
// not heard. In degrees.
struct CoveredSector
{
    int from = 0;
    int to = 0;
    int elevation = 0;
};

// A satellite that stands where somebody has put it. In degrees.
struct HeldSatellite
{
    int number = 1;
    int elevation = 0;
    int azimuth = 0;
};

// What somebody has changed about the sky and the drive below it.
struct Scene
{
    QVector<CoveredSector> covered;
    QVector<HeldSatellite> held;
    double speed = -1; // in km/h; negative: as the town lets the car go
};

// Satellites over a car that drives, and the receiver in it, second by second. Two
// skies with one seed and the same calls are the same. Plain value, no thread of its own.
class PLATFORM_API Sky
{
public:
    // Starts with a receiver that has been on for a while: it knows the satellites.
    explicit Sky(quint32 seed = 1);

    quint32 seed() const { return firstSeed; }

    // What the receiver takes for the time from now on; the satellites' places do not depend on it.
    void setClock(const QDateTime &time);

    void setAntenna(Antenna state) { antenna = state; }
    void setScene(const Scene &given) { scene = given; }

    // The receiver forgets satellites, position and time.
    void coldStart();

    // The receiver starts anew with what it knows: it has the fix again after seconds.
    void restart();

    // The receiver must learn anew how it is installed; it does so while it drives with a fix.
    void clearCalibration() { drivenWithFix = 0; }
    bool isCalibrated() const;

    void advance(int seconds);

    bool hasFix() const;

    // What the receiver reports now.
    krnmINFO info() const;
    QVector<krnmSatellite> satellites() const; // in view, by number
    krnmDuration duration() const;

private:
    // One satellite of the constellation, and what the receiver knows of it.
    struct Satellite
    {
        double node;  // where its orbit crosses the equator at the start, in radians
        double phase; // its place on the orbit at the start, in radians
        int elevation;
        int azimuth;
        int signal;
        int searchSeconds; // that the receiver still needs to find it, once it can be heard
    };

    static constexpr int kSatellites = 30;

    void step();
    void drive();
    void place(Satellite &satellite) const;
    void putWhereHeld();
    void receive(Satellite &satellite);
    void updateFix();
    bool isCovered(const Satellite &satellite) const;
    bool isInView(const Satellite &satellite) const;
    bool isUsable(const Satellite &satellite) const;
    double random(); // from 0 to below 1

    quint32 firstSeed;
    std::mt19937 generator;
    std::array<Satellite, kSatellites> constellation = {};
    Antenna antenna = Antenna::Good;
    Scene scene;
    QDateTime clockAtStart; // so that clockAtStart + elapsed is now; invalid: not set
    int elapsed = 0;        // seconds since the sky began

    // where the car is, in degrees, how fast in km/h and where to in radians from north
    double latitude;
    double longitude;
    double speed = 0;
    double heading = 0;

    // the receiver
    int secondsOn = 0;
    int usableSeconds; // in a row with satellites enough for a fix
    bool knowsTime = true;
    double reportedLatitude = 0; // of the last fix, in degrees
    double reportedLongitude = 0;
    int drivenWithFix; // seconds, since the calibration was cleared
};

} // namespace bench
