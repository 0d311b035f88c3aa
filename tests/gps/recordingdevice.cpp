#include "recordingdevice.h"

#include <QPainter>

namespace tests {

namespace {

constexpr int kWidth = 1024;
constexpr int kHeight = 600;
constexpr int kDotsPerInch = 96;

} // namespace

QVector<Painted> RecordingDevice::images() const
{
    QVector<Painted> found;
    for (const Painted &painted : list) {
        if (!painted.image.isNull())
            found << painted;
    }
    return found;
}

QVector<Painted> RecordingDevice::texts() const
{
    QVector<Painted> found;
    for (const Painted &painted : list) {
        if (painted.image.isNull())
            found << painted;
    }
    return found;
}

QPaintEngine *RecordingDevice::paintEngine() const
{
    return const_cast<RecordingDevice *>(this);
}

int RecordingDevice::metric(PaintDeviceMetric metric) const
{
    switch (metric) {
    case PdmWidth:
        return kWidth;
    case PdmHeight:
        return kHeight;
    case PdmDpiX:
    case PdmDpiY:
    case PdmPhysicalDpiX:
    case PdmPhysicalDpiY:
        return kDotsPerInch;
    case PdmDepth:
        return 32;
    case PdmDevicePixelRatio:
        return 1;
    case PdmDevicePixelRatioScaled:
        return int(devicePixelRatioFScale());
    default:
        return QPaintDevice::metric(metric);
    }
}

void RecordingDevice::drawPixmap(const QRectF &area, const QPixmap &pixmap, const QRectF &)
{
    list.append({area, pixmap.toImage(), QString(), painter()->pen().color(), QFont()});
}

void RecordingDevice::drawTextItem(const QPointF &baseline, const QTextItem &item)
{
    const QRectF area(baseline.x(), baseline.y() - item.ascent(), item.width(),
                      item.ascent() + item.descent());
    list.append({area, QImage(), item.text(), painter()->pen().color(), item.font()});
}

} // namespace tests
