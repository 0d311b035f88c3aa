#include "skydock.h"

#include "calls.h"
#include "controls.h"

#include <QDateTime>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <cmath>
#include <utility>

namespace bench {

namespace {

const QString kSky = QStringLiteral("gnss.sky");
const QString kHeld = QStringLiteral("gnss.sky_held");
const QString kCovered = QStringLiteral("gnss.sky_covered");
const QString kSatellites = QStringLiteral("gnss.satellites");

SkySatellite satelliteOf(const QJsonValue &told)
{
    return {told["number"].toInt(), told["elevation"].toInt(),   told["azimuth"].toInt(),
            told["signal"].toInt(), told["in_use"].toInt() == 1, false};
}

QJsonArray without(const QJsonArray &list, int number)
{
    QJsonArray left;
    for (const QJsonValue &satellite : list) {
        if (satellite["number"].toInt() != number)
            left.append(satellite);
    }
    return left;
}

// The service's ddmm.mmmm as a person reads it.
QString angle(double nmea, char positive, char negative)
{
    const double size = std::abs(nmea);
    const int degrees = int(size) / 100;
    return QStringLiteral("%1\u00B0 %2' %3")
        .arg(degrees)
        .arg(size - degrees * 100, 0, 'f', 4)
        .arg(QLatin1Char(nmea < 0 ? negative : positive));
}

} // namespace

SkyDock::SkyDock(Calls *way, QWidget *parent)
    : QWidget(parent), calls(way), plot(new SkyPlot), bars(new SignalBars), words(new QLabel),
      dragging(this, [this] { sendDrag(); })
{
    words->setObjectName(QStringLiteral("sky_words"));
    words->setWordWrap(true);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(4, 4, 4, 4);
    column->addWidget(plot, 1);
    column->addWidget(bars);
    column->addWidget(words);
    column->addWidget(conditions());

    connect(plot, &SkyPlot::dragged, this, &SkyDock::drag);
    connect(plot, &SkyPlot::letGo, this, &SkyDock::letGo);
    connect(plot, &SkyPlot::covered, this, &SkyDock::cover);
    followBranch(calls, QStringLiteral("gnss."), this, [this] { draw(); });
    draw();
}

QWidget *SkyDock::conditions()
{
    auto *antenna =
        choice(calls, QStringLiteral("panel_antenna"), QStringLiteral("gnss.antenna"),
               {{"antenna OK", "OK"}, {"antenna open", "Open"}, {"antenna short", "Short"}});
    auto *moving = box(calls, QStringLiteral("moving"), QStringLiteral("panel_sky"), kSky);
    moving->setToolTip(QStringLiteral("satellites and car move, once a second"));
    auto *speed =
        number(calls, QStringLiteral("sky_speed"), QStringLiteral("gnss.sky_speed"), -1, 400);
    speed->setSpecialValueText(QStringLiteral("as in town"));
    speed->setSuffix(QStringLiteral(" km/h"));
    auto *cold = new QPushButton(QStringLiteral("Cold start"));
    cold->setObjectName(QStringLiteral("sky_cold_start"));
    connect(cold, &QPushButton::clicked, this,
            [this] { calls->make(QStringLiteral("unit.cold_start")); });
    auto *clear = new QPushButton(QStringLiteral("Clear sky"));
    clear->setObjectName(QStringLiteral("sky_clear"));
    clear->setToolTip(QStringLiteral("no buildings, no satellite held"));
    connect(clear, &QPushButton::clicked, this, [this] {
        calls->set(kCovered, QJsonArray());
        calls->set(kHeld, QJsonArray());
    });

    auto *whole = new QWidget;
    auto *rows = new QGridLayout(whole);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->addWidget(antenna, 0, 0);
    rows->addWidget(speed, 0, 1);
    rows->addWidget(moving, 0, 2);
    rows->addWidget(cold, 1, 0);
    rows->addWidget(clear, 1, 1, 1, 2);
    return whole;
}

// A disc that is held is shown where it was put, though the sky puts it there with its next second.
void SkyDock::draw()
{
    QMap<int, SkySatellite> places;
    const QJsonArray held = calls->value(kHeld).toArray();
    const bool moving = calls->value(kSky).toBool();
    for (const QJsonValue &satellite : held)
        places.insert(satellite["number"].toInt(), satelliteOf(satellite));
    QVector<SkySatellite> satellites;
    const QJsonArray told = calls->value(kSatellites).toArray();
    for (const QJsonValue &value : told) {
        SkySatellite satellite = satelliteOf(value);
        satellite.held = moving && places.contains(satellite.number);
        if (satellite.held) {
            satellite.elevation = places[satellite.number].elevation;
            satellite.azimuth = places[satellite.number].azimuth;
        }
        satellites.append(satellite);
    }
    QVector<SkySector> sectors;
    const QJsonArray covered = calls->value(kCovered).toArray();
    for (const QJsonValue &sector : covered)
        sectors.append({sector["from"].toInt(), sector["to"].toInt(), sector["elevation"].toInt()});
    plot->setSky(satellites, sectors);
    bars->setSatellites(satellites);
    drawWords();
}

void SkyDock::drawWords()
{
    const QJsonObject gnss = calls->value(QStringLiteral("gnss")).toObject();
    const QJsonValue utc = gnss["utc"];
    const QDateTime time(QDate(utc["year"].toInt(), utc["month"].toInt(), utc["day"].toInt()),
                         QTime(utc["hour"].toInt(), utc["minute"].toInt(), utc["second"].toInt()),
                         Qt::UTC);
    const QDateTime here = QDateTime::currentDateTimeUtc();
    const QString times = time.isValid()
        ? QStringLiteral("%1 UTC, %2 s from the unit's")
              .arg(time.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")))
              .arg(here.secsTo(time))
        : QStringLiteral("no time; the unit's is %1 UTC")
              .arg(here.toString(QStringLiteral("HH:mm:ss")));
    words->setText(QStringLiteral("%1, %2 \u00B7 %3 km/h \u00B7 %4 used, %5 seen\n%6")
                       .arg(angle(gnss["latitude"].toDouble(), 'N', 'S'),
                            angle(gnss["longitude"].toDouble(), 'E', 'W'))
                       .arg(gnss["speed"].toDouble(), 0, 'f', 0)
                       .arg(gnss["satellites_in_use"].toInt())
                       .arg(gnss["satellites_in_view"].toInt())
                       .arg(times));
}

void SkyDock::drag(int number, int elevation, int azimuth)
{
    SkySatellite satellite;
    satellite.number = number;
    satellite.elevation = elevation;
    satellite.azimuth = azimuth;
    moved.insert(number, satellite);
    dragging.ask();
}

// A sky that moves is told to hold the satellite; one that stands still is a list.
void SkyDock::sendDrag()
{
    const bool moving = calls->value(kSky).toBool();
    const QMap<int, SkySatellite> places = std::exchange(moved, {});
    QJsonArray list = calls->value(moving ? kHeld : kSatellites).toArray();
    for (const SkySatellite &place : places) {
        if (moving) {
            list = without(list, place.number);
            list.append(QJsonObject{{"number", place.number},
                                    {"elevation", place.elevation},
                                    {"azimuth", place.azimuth}});
            continue;
        }
        for (QJsonValueRef value : list) {
            QJsonObject satellite = value.toObject();
            if (satellite["number"].toInt() != place.number)
                continue;
            satellite["elevation"] = place.elevation;
            satellite["azimuth"] = place.azimuth;
            value = satellite;
        }
    }
    calls->set(moving ? kHeld : kSatellites, list);
    if (!moving) // nobody else reports it
        calls->make(QStringLiteral("unit.emit"), {{"signal", "gnss.status"}});
}

void SkyDock::letGo(int number)
{
    calls->set(kHeld, without(calls->value(kHeld).toArray(), number));
}

void SkyDock::cover(int from, int to, int elevation)
{
    QJsonArray sectors = calls->value(kCovered).toArray();
    sectors.append(QJsonObject{{"from", from}, {"to", to}, {"elevation", elevation}});
    calls->set(kCovered, sectors);
}

} // namespace bench
