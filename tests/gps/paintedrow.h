#pragma once

#include "gps/gpsitemdelegate.h"
#include "recordingdevice.h"

#include <QPainter>
#include <QStandardItemModel>
#include <QTemporaryDir>

// What the tests of the list rows share: a row to paint, and images for it.
namespace tests {

// A row at an odd place, so that no coordinate is right by chance.
inline const QRect kRow(7, 130, 500, 64);

inline const QString kBar = QStringLiteral(":/Resource/common/Icn_list_item_bar_n.png");
inline const QString kFocusBar = QStringLiteral(":/Resource/common/Icn_list_item_bar_p.png");
inline const QString kCheckMark = QStringLiteral(":/Resource/common/Icn_list_item_bar_s.png");
inline const QString kArrow = QStringLiteral(":/Resource/setup/Icn_arrow");

// A delegate with a row to paint; the values are what a row of the list style can have.
struct Row
{
    explicit Row(bool arrow = false, int indent = 0) : delegate(nullptr, arrow, indent)
    {
        item = new QStandardItem;
        model.appendRow(item);
        item->setFlags(Qt::NoItemFlags);
        option.rect = kRow;
        option.state = QStyle::State_None;
    }

    void paint()
    {
        QPainter painter(&device);
        delegate.paint(&painter, option, model.index(0, 0));
    }

    testmode::GpsItemDelegate delegate;
    QStandardItemModel model;
    QStandardItem *item; // owned by the model
    QStyleOptionViewItem option;
    RecordingDevice device;
};

inline bool isImage(const Painted &painted, const QString &name)
{
    const auto format = QImage::Format_ARGB32_Premultiplied;
    return !painted.image.isNull()
        && painted.image.convertToFormat(format) == QImage(name).convertToFormat(format);
}

// The areas in which the image was painted.
inline QVector<QRectF> areasOf(const RecordingDevice &device, const QString &name)
{
    QVector<QRectF> areas;
    const QVector<Painted> images = device.images();
    for (const Painted &painted : images) {
        if (isImage(painted, name))
            areas << painted.area;
    }
    return areas;
}

inline bool near(qreal a, qreal b)
{
    return qAbs(a - b) <= 1.0;
}

// A folder with images; each name has an image of its own colour.
class ImageFolder
{
public:
    QString image(const QString &name, int width, int height)
    {
        QString path = folder.filePath(name);
        QImage picture(width, height, QImage::Format_RGB32);
        picture.fill(QColor::fromHsv(int(qHash(name) % 360), 255, 255));
        if (!picture.save(path))
            qFatal("cannot write %s", qPrintable(path));
        return path;
    }

    QString filePath(const QString &name) const { return folder.filePath(name); }

private:
    QTemporaryDir folder;
};

} // namespace tests
