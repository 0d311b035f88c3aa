#include "skyplot.h"

#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QToolTip>
#include <QtMath>

#include <algorithm>

namespace bench {

namespace {

constexpr int kMargin = 16; // for the letters of the compass
constexpr double kDisc = 9; // radius of a disc with a good signal
constexpr int kMostSignal = 55;
constexpr int kUsableSignal = 25;
constexpr int kGoodSignal = 35;
constexpr int kLeastSector = 3; // degrees; less is a press that slipped

const QColor kLine(0x4A, 0x50, 0x59);
const QColor kWords(0xB8, 0xBE, 0xC7);
const QColor kInk(0x10, 0x12, 0x15); // on a disc

QString wordsFor(const SkySatellite &satellite)
{
    return QStringLiteral("satellite %1, elevation %2\u00B0, azimuth %3\u00B0, %4 dB, %5%6")
        .arg(satellite.number)
        .arg(satellite.elevation)
        .arg(satellite.azimuth)
        .arg(satellite.signal)
        .arg(satellite.used ? QStringLiteral("used") : QStringLiteral("only seen"),
             satellite.held ? QStringLiteral(", held here") : QString());
}

// From one azimuth to another the shorter way, clockwise.
SkySector across(int from, int to, int elevation)
{
    const bool clockwise = (to - from + 360) % 360 <= 180;
    return clockwise ? SkySector{from, to, elevation} : SkySector{to, from, elevation};
}

} // namespace

QColor signalColour(int signal)
{
    return signal < kUsableSignal ? QColor(0xF0, 0x7A, 0x6E)
        : signal < kGoodSignal    ? QColor(0xF2, 0xC1, 0x4E)
                                  : QColor(0x6F, 0xD0, 0x8C);
}

SkyPlot::SkyPlot(QWidget *parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("sky_plot"));
    setMinimumSize(160, 160);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void SkyPlot::setSky(const QVector<SkySatellite> &all, const QVector<SkySector> &buildings)
{
    satellites = all;
    sectors = buildings;
    update();
}

bool SkyPlot::holds(int number) const
{
    return std::any_of(satellites.cbegin(), satellites.cend(), [number](const SkySatellite &each) {
        return each.number == number && each.held;
    });
}

double SkyPlot::radius() const
{
    return qMin(width(), height()) / 2.0 - kMargin;
}

QPointF SkyPlot::placeOf(int elevation, int azimuth) const
{
    const double away = radius() * (90 - elevation) / 90.0;
    const double angle = qDegreesToRadians(double(azimuth));
    return QPointF(width() / 2.0, height() / 2.0)
        + QPointF(away * std::sin(angle), -away * std::cos(angle));
}

SkyPlot::Direction SkyPlot::directionOf(const QPointF &point) const
{
    const QPointF away = point - QPointF(width() / 2.0, height() / 2.0);
    const double distance = std::hypot(away.x(), away.y());
    const int azimuth = qRound(qRadiansToDegrees(std::atan2(away.x(), -away.y())));
    return {qBound(0, qRound(90 - 90 * distance / radius()), 90), (azimuth + 360) % 360};
}

const SkySatellite *SkyPlot::satelliteAt(const QPointF &point) const
{
    const auto near = [&](const SkySatellite &satellite) {
        const QPointF away = placeOf(satellite.elevation, satellite.azimuth) - point;
        return std::hypot(away.x(), away.y()) <= kDisc;
    };
    const auto found = std::find_if(satellites.cbegin(), satellites.cend(), near);
    return found == satellites.cend() ? nullptr : &*found;
}

bool SkyPlot::event(QEvent *event)
{
    if (event->type() != QEvent::ToolTip)
        return QWidget::event(event);
    const auto *help = static_cast<QHelpEvent *>(event);
    const SkySatellite *satellite = satelliteAt(help->pos());
    QToolTip::showText(help->globalPos(), satellite != nullptr ? wordsFor(*satellite) : QString());
    return true;
}

void SkyPlot::mousePressEvent(QMouseEvent *event)
{
    const SkySatellite *satellite = satelliteAt(event->localPos());
    if (satellite != nullptr && event->button() == Qt::RightButton) {
        emit letGo(satellite->number);
    } else if (satellite != nullptr) {
        held = satellite->number;
    } else if (event->button() == Qt::LeftButton) {
        const Direction start = directionOf(event->localPos());
        beingDrawn = SkySector{start.azimuth, start.azimuth, start.elevation};
    }
}

void SkyPlot::mouseMoveEvent(QMouseEvent *event)
{
    const Direction here = directionOf(event->localPos());
    if (held != 0)
        emit dragged(held, here.elevation, here.azimuth);
    if (!beingDrawn)
        return;
    beingDrawn->to = here.azimuth;
    beingDrawn->elevation = here.elevation;
    update();
}

void SkyPlot::mouseReleaseEvent(QMouseEvent *event)
{
    mouseMoveEvent(event);
    held = 0;
    if (!beingDrawn)
        return;
    const SkySector drawn = across(beingDrawn->from, beingDrawn->to, beingDrawn->elevation);
    beingDrawn.reset();
    update();
    if ((drawn.to - drawn.from + 360) % 360 >= kLeastSector)
        emit covered(drawn.from, drawn.to, drawn.elevation);
}

void SkyPlot::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    paintGround(&painter);
    for (const SkySector &sector : qAsConst(sectors))
        paintSector(&painter, sector);
    if (beingDrawn)
        paintSector(&painter, across(beingDrawn->from, beingDrawn->to, beingDrawn->elevation));
    for (const SkySatellite &satellite : qAsConst(satellites))
        paintSatellite(&painter, satellite);
}

void SkyPlot::paintGround(QPainter *painter) const
{
    painter->setPen(kLine);
    painter->setBrush(palette().base());
    for (const int elevation : {0, 30, 60}) {
        const double away = radius() * (90 - elevation) / 90.0;
        painter->drawEllipse(rect().center() + QPointF(0.5, 0.5), away, away);
        painter->setBrush(Qt::NoBrush);
    }
    painter->drawLine(placeOf(0, 0), placeOf(0, 180));
    painter->drawLine(placeOf(0, 90), placeOf(0, 270));
    painter->setPen(kWords);
    int azimuth = 0;
    for (const char *letter : {"N", "E", "S", "W"}) {
        QRectF box(0, 0, 2 * kMargin, 2 * kMargin);
        box.moveCenter(placeOf(-90 * (kMargin - 7) / qMax(1, int(radius())), azimuth));
        painter->drawText(box, Qt::AlignCenter, QString::fromLatin1(letter));
        azimuth += 90;
    }
    for (const int elevation : {30, 60})
        painter->drawText(placeOf(elevation, 0) + QPointF(3, -2), QString::number(elevation));
}

// From the horizon up to the roof.
void SkyPlot::paintSector(QPainter *painter, const SkySector &sector) const
{
    const QPointF centre(width() / 2.0, height() / 2.0);
    const auto circle = [&](double away) {
        return QRectF(centre.x() - away, centre.y() - away, 2 * away, 2 * away);
    };
    const double start = 90 - sector.from; // Qt counts from east, against the clock
    const double sweep = -((sector.to - sector.from + 360) % 360);
    const double roof = radius() * (90 - sector.elevation) / 90.0;
    QPainterPath path;
    path.arcMoveTo(circle(radius()), start);
    path.arcTo(circle(radius()), start, sweep);
    path.arcTo(circle(roof), start + sweep, -sweep);
    path.closeSubpath();
    painter->setPen(kWords);
    painter->setBrush(QBrush(QColor(0x8A, 0x90, 0x98, 0xB0), Qt::BDiagPattern));
    painter->drawPath(path);
}

void SkyPlot::paintSatellite(QPainter *painter, const SkySatellite &satellite) const
{
    const QColor colour = signalColour(satellite.signal);
    const double size =
        kDisc * (0.75 + 0.35 * qBound(0, satellite.signal, kMostSignal) / kMostSignal);
    const QPointF centre = placeOf(satellite.elevation, satellite.azimuth);
    painter->setPen(QPen(colour, 2));
    painter->setBrush(satellite.used ? QBrush(colour) : palette().base());
    painter->drawEllipse(centre, size, size);
    if (satellite.held) { // a pin
        painter->setPen(QPen(Qt::white, 1.5));
        painter->setBrush(Qt::NoBrush);
        painter->drawEllipse(centre, size + 3, size + 3);
    }
    QFont small = font();
    small.setPointSizeF(7.5);
    painter->setFont(small);
    painter->setPen(satellite.used ? kInk : kWords);
    painter->drawText(QRectF(centre.x() - 12, centre.y() - 8, 24, 16), Qt::AlignCenter,
                      QString::number(satellite.number));
}

SignalBars::SignalBars(QWidget *parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("sky_bars"));
    setMinimumHeight(64);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void SignalBars::setSatellites(QVector<SkySatellite> all)
{
    std::sort(all.begin(), all.end(),
              [](const SkySatellite &a, const SkySatellite &b) { return a.number < b.number; });
    satellites = all;
    update();
}

void SignalBars::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    QFont small = font();
    small.setPointSizeF(7.5);
    painter.setFont(small);
    const int text = QFontMetrics(small).height();
    const int most = height() - 2 * text; // of a bar
    const int step = qMin(28, width() / qMax(1, satellites.size()));
    int left = 0;
    for (const SkySatellite &satellite : qAsConst(satellites)) {
        const int high = most * qBound(0, satellite.signal, kMostSignal) / kMostSignal;
        const QRect bar(left + 2, text + most - high, step - 5, high);
        painter.setPen(signalColour(satellite.signal));
        painter.setBrush(satellite.used ? QBrush(signalColour(satellite.signal)) : QBrush());
        painter.drawRect(bar);
        painter.setPen(kWords);
        const QRect column(left, 0, step, text);
        painter.drawText(column.translated(0, text + most), Qt::AlignCenter,
                         QString::number(satellite.number));
        painter.drawText(column.translated(0, most - high), Qt::AlignCenter,
                         QString::number(satellite.signal));
        left += step;
    }
}

} // namespace bench
