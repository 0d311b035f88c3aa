#include "flashmap.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <iterator>

namespace bench {

namespace {

// One an image in the order of the dialogue; told apart in grey, too.
const QColor kImages[] = {{0x5B, 0x9B, 0xF0}, {0xF2, 0xC1, 0x4E}, {0x5F, 0xC9, 0x86},
                          {0xC7, 0x8B, 0xF2}, {0x4F, 0xC9, 0xD6}, {0xF0, 0x8F, 0xB8}};
const QColor kBefore(0x7D, 0x84, 0x8D); // written before the reset
const QColor kErased(0x2A, 0x2E, 0x34);
const QColor kWrong(0xFF, 0x6B, 0x60);
const QColor kMark(0xFF, 0xFF, 0xFF);

} // namespace

FlashMap::FlashMap(QWidget *parent) : QWidget(parent), sectors(kSectors)
{
    setObjectName(QStringLiteral("flash_map"));
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setMinimumSize(kColumns * 3, kSectors / kColumns * 8);
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    setSizePolicy(policy);
}

QColor FlashMap::colourOf(int image)
{
    return image < 1 ? kBefore : kImages[size_t(image - 1) % std::size(kImages)];
}

QSize FlashMap::sizeHint() const
{
    return {kColumns * 6, kSectors / kColumns * 10};
}

void FlashMap::setSectors(const QVector<Sector> &all)
{
    sectors = all;
    landed = -1;
    update();
}

void FlashMap::countWrite(int number, int image)
{
    if (number < 0 || number >= kSectors)
        return;
    Sector &sector = sectors[number];
    sector.image = image;
    ++sector.times;
    sector.erased = false;
    sector.differs = false; // as far as anybody knows before the image is whole
    landed = number;
}

void FlashMap::choose(int number)
{
    point(&chosen, number);
}

void FlashMap::point(int *which, int number)
{
    const int before = shown();
    *which = number;
    update();
    if (shown() != before)
        emit pointed(shown());
}

QRect FlashMap::cellOf(int number) const
{
    constexpr int kRows = kSectors / kColumns;
    const int column = number % kColumns;
    const int row = number / kColumns;
    const int left = width() * column / kColumns;
    const int top = height() * row / kRows;
    return {left, top, width() * (column + 1) / kColumns - left,
            height() * (row + 1) / kRows - top};
}

int FlashMap::sectorAt(const QPoint &point) const
{
    if (!rect().contains(point))
        return -1;
    constexpr int kRows = kSectors / kColumns;
    // The inverse of cellOf(): the last cell that begins at the point or before it.
    const int column = ((point.x() + 1) * kColumns - 1) / width();
    const int row = ((point.y() + 1) * kRows - 1) / height();
    return row * kColumns + column;
}

void FlashMap::mouseMoveEvent(QMouseEvent *event)
{
    point(&hovered, sectorAt(event->pos()));
}

// A second press on the same sector lets go of it.
void FlashMap::mousePressEvent(QMouseEvent *event)
{
    const int number = sectorAt(event->pos());
    point(&chosen, number == chosen ? -1 : number);
}

void FlashMap::leaveEvent(QEvent * /*event*/)
{
    point(&hovered, -1);
}

void FlashMap::keyPressEvent(QKeyEvent *event)
{
    int step = 0;
    switch (event->key()) {
    case Qt::Key_Left:
        step = -1;
        break;
    case Qt::Key_Right:
        step = 1;
        break;
    case Qt::Key_Up:
        step = -kColumns;
        break;
    case Qt::Key_Down:
        step = kColumns;
        break;
    default:
        QWidget::keyPressEvent(event);
        return;
    }
    const int next = chosen < 0 ? qMax(0, shown()) : chosen + step;
    if (next >= 0 && next < kSectors)
        choose(next);
}

void FlashMap::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    for (int number = 0; number < kSectors; ++number)
        paintSector(&painter, number);
    painter.setBrush(Qt::NoBrush);
    for (const int marked : {landed, shown()}) {
        if (marked < 0)
            continue;
        painter.setPen(QPen(kMark, 1, marked == landed ? Qt::DotLine : Qt::SolidLine));
        painter.drawRect(cellOf(marked).adjusted(-1, -1, 0, 0));
    }
}

// A shape beside the colour: a bar through what differs, a notch in what was written twice, an
// outline of what the package has and the flash has not.
void FlashMap::paintSector(QPainter *painter, int number) const
{
    const Sector &sector = sectors.at(number);
    const QRect cell = cellOf(number).adjusted(0, 0, -1, -1);
    painter->fillRect(cell, sector.erased ? kErased : colourOf(sector.image));
    if (sector.differs && sector.erased) {
        painter->setPen(kBefore);
        painter->drawRect(cell.adjusted(0, 0, -1, -1));
    } else if (sector.differs) {
        painter->fillRect(cell, kWrong);
        painter->setPen(kMark);
        painter->drawLine(cell.bottomLeft(), cell.topRight());
    }
    if (sector.times > 1) {
        const QRect notch(cell.left(), cell.top(), cell.width(), qMax(2, cell.height() / 3));
        painter->fillRect(notch, kMark);
    }
}

} // namespace bench
