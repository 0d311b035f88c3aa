#include "statusbar.h"

#include <QPainter>
#include <QTime>

namespace bench {

namespace {

constexpr int kMargin = 16;

// Four bars that rise to the right.
void drawAntenna(QPainter *painter, const QPoint &corner)
{
    for (int bar = 0; bar < 4; ++bar) {
        const int height = 4 + 3 * bar;
        painter->fillRect(corner.x() + 6 * bar, corner.y() - height, 4, height,
                          QColor(0xb8, 0xc4, 0xd4));
    }
}

} // namespace

StatusBar::StatusBar(QWidget *parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("unit_status_bar"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    minute.setSingleShot(true);
    connect(&minute, &QTimer::timeout, this, [this] {
        update();
        waitForNextMinute();
    });
}

void StatusBar::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), QColor(0x05, 0x07, 0x0a, 0xd8));
    QFont words = font();
    words.setPixelSize(15);
    painter.setFont(words);
    painter.setPen(QColor(0xb8, 0xc4, 0xd4));
    const QRect inner = rect().adjusted(kMargin, 0, -kMargin, 0);
    painter.drawText(inner, Qt::AlignVCenter | Qt::AlignRight,
                     QTime::currentTime().toString(QStringLiteral("HH:mm")));
    painter.drawText(inner, Qt::AlignVCenter | Qt::AlignLeft, QStringLiteral("Head unit"));
    drawAntenna(&painter, QPoint(width() - kMargin - 80, height() - 8));
}

void StatusBar::showEvent(QShowEvent *)
{
    waitForNextMinute();
}

void StatusBar::hideEvent(QHideEvent *)
{
    minute.stop();
}

void StatusBar::waitForNextMinute()
{
    const QTime now = QTime::currentTime();
    minute.start((60 - now.second()) * 1000 - now.msec());
}

} // namespace bench
