#include "ratecurve.h"

#include <QPainter>
#include <QPolygonF>

#include <algorithm>

namespace bench {

namespace {

constexpr int kMostPackets = 2048; // an update of the whole flash has half as many
constexpr int kSmoothed = 4;       // packets that one rate is taken over
constexpr int kBitsOfByte = 10;    // on the line
const QColor kCurve(0x6F, 0xD0, 0x8C);
const QColor kLine(0x7D, 0x84, 0x8D);

} // namespace

RateCurve::RateCurve(QWidget *parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("panel_receiver_curve"));
    setMinimumHeight(44);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void RateCurve::clear()
{
    packets.clear();
    update();
}

void RateCurve::add(double ms, int bytes)
{
    if (packets.size() >= kMostPackets)
        packets.remove(0, kMostPackets / 2);
    packets.append({ms, bytes});
}

void RateCurve::setLineRate(int baud)
{
    lineRate = double(baud) / kBitsOfByte;
}

double RateCurve::rateAt(int last) const
{
    const int first = qMax(0, last - kSmoothed);
    double bytes = 0;
    for (int i = first + 1; i <= last; ++i)
        bytes += packets.at(i).bytes;
    const double ms = packets.at(last).ms - packets.at(first).ms;
    return ms > 0 ? 1000 * bytes / ms : 0;
}

double RateCurve::bytesPerSecond() const
{
    return packets.size() < 2 ? 0 : rateAt(packets.size() - 1);
}

void RateCurve::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    painter.fillRect(rect(), palette().base());
    if (packets.size() < 2)
        return;
    painter.setRenderHint(QPainter::Antialiasing);
    QVector<double> rates;
    for (int i = 1; i < packets.size(); ++i)
        rates.append(rateAt(i));
    const double most = 1.1 * std::max(lineRate, *std::max_element(rates.cbegin(), rates.cend()));
    const double began = packets.first().ms;
    const double span = qMax(1.0, packets.last().ms - began);
    const auto high = [&](double rate) { return height() * (1 - rate / most); };
    QPolygonF curve;
    for (int i = 0; i < rates.size(); ++i)
        curve << QPointF(width() * (packets.at(i + 1).ms - began) / span, high(rates.at(i)));
    painter.setPen(QPen(kLine, 1, Qt::DotLine));
    painter.drawLine(QPointF(0, high(lineRate)), QPointF(width(), high(lineRate)));
    painter.setPen(QPen(kCurve, 1.5));
    painter.drawPolyline(curve);
}

} // namespace bench
