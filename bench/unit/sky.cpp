#include "sky.h"

#include <QtMath>

#include <algorithm>
#include <iterator>

namespace bench {

namespace {

// The constellation: six planes of five satellites, about two turns a day.
constexpr int kPlanes = 6;
constexpr double kInclination = 55.0 * M_PI / 180.0;
constexpr double kOrbitRadius = 26560.0; // kilometres
constexpr double kEarthRadius = 6371.0;
constexpr double kOrbitSeconds = 43082.0;
constexpr double kEarthSeconds = 86164.0;

// Below this elevation, in degrees, houses and hills hide a satellite.
constexpr int kMask = 5;

// Signals in dB: at the horizon, what the zenith adds, what a missing antenna takes away.
constexpr double kSignalAtHorizon = 28.0;
constexpr double kSignalGain = 20.0;
constexpr double kOpenAntennaLoss = 25.0;
constexpr int kFaintestSignal = 15; // that the receiver can hear
constexpr int kUsableSignal = 25;   // that a fix can use

constexpr int kSatellitesForFix = 4;
constexpr int kSecondsToFix = 3;
constexpr int kSecondsToCalibrate = 60;

// The drive begins here, in degrees.
constexpr double kStartLatitude = 31.835390;
constexpr double kStartLongitude = 117.164608;
constexpr double kKilometresPerDegree = 111.2;

struct Vector
{
    double x, y, z;
};

double dot(const Vector &a, const Vector &b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

// NMEA writes degrees and minutes in one number: ddmm.mmmm.
double nmeaAngle(double degrees)
{
    const double whole = std::trunc(degrees);
    return whole * 100 + (degrees - whole) * 60;
}

} // namespace

Sky::Sky(quint32 seed)
    : firstSeed(seed), generator(seed), latitude(kStartLatitude), longitude(kStartLongitude),
      usableSeconds(kSecondsToFix), drivenWithFix(kSecondsToCalibrate)
{
    for (int i = 0; i < kSatellites; ++i) {
        const int plane = i % kPlanes;
        const int place = i / kPlanes;
        const int places = kSatellites / kPlanes;
        constellation[i].node = 2 * M_PI * plane / kPlanes;
        constellation[i].phase =
            2 * M_PI * (place + plane / double(kPlanes) + 0.3 * random()) / places;
    }
    step();
    elapsed = 0;
    secondsOn = 0;
}

void Sky::setClock(const QDateTime &time)
{
    clockAtStart = time.toUTC().addSecs(-elapsed);
}

void Sky::coldStart()
{
    restart();
    knowsTime = false;
    reportedLatitude = 0;
    reportedLongitude = 0;
    for (Satellite &satellite : constellation)
        satellite.searchSeconds = 5 + int(25 * random());
}

void Sky::restart()
{
    secondsOn = 0;
    usableSeconds = 0;
}

bool Sky::isCalibrated() const
{
    return drivenWithFix >= kSecondsToCalibrate;
}

bool Sky::hasFix() const
{
    return usableSeconds >= kSecondsToFix;
}

void Sky::advance(int seconds)
{
    for (int i = 0; i < seconds; ++i)
        step();
}

void Sky::step()
{
    ++elapsed;
    ++secondsOn;
    drive();
    for (Satellite &satellite : constellation)
        place(satellite);
    putWhereHeld();
    for (Satellite &satellite : constellation)
        receive(satellite);
    updateFix();
}

// Through a town: never quite straight, never quite at one speed.
void Sky::drive()
{
    heading += (random() - 0.48) * 0.2;
    const double inTown = 45 + 15 * std::sin(elapsed / 40.0) + 2 * random();
    speed = scene.speed >= 0 ? scene.speed : inTown;
    const double degrees = speed / 3600 / kKilometresPerDegree;
    latitude += degrees * std::cos(heading);
    longitude += degrees * std::sin(heading) / std::cos(qDegreesToRadians(latitude));
}

// Elevation and azimuth as the car sees them.
void Sky::place(Satellite &satellite) const
{
    const double along = satellite.phase + 2 * M_PI * elapsed / kOrbitSeconds;
    const double node = satellite.node - 2 * M_PI * elapsed / kEarthSeconds;
    const double inPlane = std::sin(along) * std::cos(kInclination);
    const Vector orbit{kOrbitRadius * (std::cos(along) * std::cos(node) - inPlane * std::sin(node)),
                       kOrbitRadius * (std::cos(along) * std::sin(node) + inPlane * std::cos(node)),
                       kOrbitRadius * std::sin(along) * std::sin(kInclination)};

    const double phi = qDegreesToRadians(latitude);
    const double lambda = qDegreesToRadians(longitude);
    const Vector up{std::cos(phi) * std::cos(lambda), std::cos(phi) * std::sin(lambda),
                    std::sin(phi)};
    const Vector east{-std::sin(lambda), std::cos(lambda), 0};
    const Vector north{-std::sin(phi) * std::cos(lambda), -std::sin(phi) * std::sin(lambda),
                       std::cos(phi)};
    const Vector sight{orbit.x - kEarthRadius * up.x, orbit.y - kEarthRadius * up.y,
                       orbit.z - kEarthRadius * up.z};

    const double distance = std::sqrt(dot(sight, sight));
    const double azimuth = qRadiansToDegrees(std::atan2(dot(sight, east), dot(sight, north)));
    satellite.elevation = qRound(qRadiansToDegrees(std::asin(dot(sight, up) / distance)));
    satellite.azimuth = (qRound(azimuth) + 360) % 360;
}

void Sky::putWhereHeld()
{
    for (const HeldSatellite &held : qAsConst(scene.held)) {
        if (held.number < 1 || held.number > kSatellites)
            continue;
        Satellite &satellite = constellation[size_t(held.number - 1)];
        satellite.elevation = held.elevation;
        satellite.azimuth = held.azimuth;
    }
}

bool Sky::isCovered(const Satellite &satellite) const
{
    return std::any_of(scene.covered.cbegin(), scene.covered.cend(),
                       [&](const CoveredSector &sector) {
                           const int width = (sector.to - sector.from + 360) % 360;
                           const int within = (satellite.azimuth - sector.from + 360) % 360;
                           return satellite.elevation < sector.elevation && within <= width;
                       });
}

// The higher a satellite stands, the better it is heard; what is heard long enough is found.
void Sky::receive(Satellite &satellite)
{
    const double noise = 4 * random() - 2; // drawn for every satellite: one seed, one sky
    double strength = kSignalAtHorizon + noise
        + kSignalGain * std::sin(qDegreesToRadians(double(satellite.elevation)));
    if (antenna == Antenna::Open)
        strength -= kOpenAntennaLoss;
    const bool heard = antenna != Antenna::Short && satellite.elevation >= kMask
        && !isCovered(satellite) && strength >= kFaintestSignal;
    satellite.signal = heard ? qRound(strength) : 0;
    if (heard && satellite.searchSeconds > 0)
        --satellite.searchSeconds;
}

void Sky::updateFix()
{
    const auto usable =
        std::count_if(constellation.cbegin(), constellation.cend(),
                      [this](const Satellite &satellite) { return isUsable(satellite); });
    usableSeconds = usable >= kSatellitesForFix ? usableSeconds + 1 : 0;
    knowsTime = knowsTime || usable > 0;
    if (!hasFix())
        return;
    reportedLatitude = latitude;
    reportedLongitude = longitude;
    ++drivenWithFix;
}

bool Sky::isInView(const Satellite &satellite) const
{
    return satellite.elevation >= kMask && satellite.searchSeconds == 0;
}

bool Sky::isUsable(const Satellite &satellite) const
{
    return isInView(satellite) && satellite.signal >= kUsableSignal;
}

double Sky::random()
{
    // Not a distribution of the library: those differ from one library to the next.
    return static_cast<double>(generator()) / 4294967296.0;
}

krnmINFO Sky::info() const
{
    krnmINFO info = {};
    if (knowsTime && clockAtStart.isValid()) {
        const QDateTime now = clockAtStart.addSecs(elapsed);
        info.utcYear = now.date().year();
        info.utcMonth = now.date().month();
        info.utcDay = now.date().day();
        info.utcHour = now.time().hour();
        info.utcMinute = now.time().minute();
        info.utcSecond = now.time().second();
    }
    info.latitude = nmeaAngle(reportedLatitude);
    info.longitude = nmeaAngle(reportedLongitude);
    info.speed = hasFix() ? speed : 0;

    const QVector<krnmSatellite> inView = satellites();
    info.satellitesInView = inView.size();
    info.satellitesInUse =
        int(std::count_if(inView.cbegin(), inView.cend(),
                          [](const krnmSatellite &satellite) { return satellite.inUse == 1; }));
    std::copy(inView.cbegin(), inView.cend(), std::begin(info.satellites));
    return info;
}

QVector<krnmSatellite> Sky::satellites() const
{
    QVector<krnmSatellite> inView;
    for (int i = 0; i < kSatellites; ++i) {
        const Satellite &satellite = constellation[i];
        if (isInView(satellite))
            inView.append({i + 1, hasFix() && isUsable(satellite) ? 1 : 0, satellite.elevation,
                           satellite.azimuth, satellite.signal});
    }
    return inView;
}

krnmDuration Sky::duration() const
{
    return {{0, 0, 0}, secondsOn / 3600, secondsOn / 60 % 60, secondsOn % 60};
}

} // namespace bench
