#include "framework/qpushbutton2.h"

#include <QPainter>

namespace {

// The unit names its images with a URL scheme that Qt's files do not know.
QPixmap styleImage(const QString &name)
{
    return QPixmap(name.startsWith(QLatin1String("qrc:/")) ? name.mid(3) : name);
}

} // namespace

QPushButton2::QPushButton2(QWidget *parent) : QPushButton(parent) { }

QString QPushButton2::backgroundNormalOff() const
{
    return normalOff;
}

void QPushButton2::setBackgroundNormalOff(const QString &image)
{
    normalOff = image;
    normalOffPixmap = styleImage(image);
    update();
}

QString QPushButton2::backgroundNormalOn() const
{
    return normalOn;
}

void QPushButton2::setBackgroundNormalOn(const QString &image)
{
    normalOn = image;
    normalOnPixmap = styleImage(image);
    update();
}

void QPushButton2::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawPixmap(rect(), isDown() ? normalOnPixmap : normalOffPixmap);
}
