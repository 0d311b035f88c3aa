#pragma once

#include <QColor>
#include <QFont>
#include <QImage>
#include <QPaintDevice>
#include <QPaintEngine>
#include <QRectF>
#include <QString>
#include <QVector>

namespace tests {

// One thing that was painted: an image or a run of text.
struct Painted
{
    QRectF area;  // of a text: its advance and its line, from ascent to descent
    QImage image; // null for a text
    QString text;
    QColor pen;
    QFont font;
};

// Keeps what is painted on it, in order, instead of showing it.
class RecordingDevice : public QPaintDevice, private QPaintEngine
{
public:
    RecordingDevice() : QPaintEngine(AllFeatures) { }

    const QVector<Painted> &painted() const { return list; }
    QVector<Painted> images() const;
    QVector<Painted> texts() const;

    // The device
    QPaintEngine *paintEngine() const override;

protected:
    int metric(PaintDeviceMetric metric) const override;

private:
    // The engine
    bool begin(QPaintDevice *) override { return true; }
    bool end() override { return true; }
    void updateState(const QPaintEngineState &) override { }
    Type type() const override { return User; }
    void drawPixmap(const QRectF &area, const QPixmap &pixmap, const QRectF &source) override;
    void drawTextItem(const QPointF &baseline, const QTextItem &item) override;

    QVector<Painted> list;
};

} // namespace tests
