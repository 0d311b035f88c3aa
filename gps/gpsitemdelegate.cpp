#include "gpsitemdelegate.h"

#include "framework/colorgroup.h"
#include "tools/debugtrace.h"

#include <QAbstractItemView>
#include <QPainter>
#include <QPixmap>

namespace testmode {

namespace {

constexpr int kRowHeight = 64;
constexpr int kFontSize = 26;

// States of the text in the unit's style.
enum TextState { NormalText = 0, SelectedText = 1, DisabledText = 2, CheckedText = 3 };

const QRgb kCheckedColor = qRgb(255, 177, 25);

const QPoint kArrowOffset(610, 22);

// Column of the decoration.
const QSize kLargestDecoration(181, 109);
constexpr int kDecorationMargin = 20;

// Space around the texts.
constexpr int kTextTop = 10;
constexpr int kTextHeightLoss = 26;
constexpr int kTextGap = 26;
constexpr int kTextWidthLossBesideDecoration = 68;
constexpr int kTextWidthLoss = 25;

// The rows' share of the view, from its left to its right edge. A row that is
// painted outside a view stands for it.
QRect viewSpan(const QStyleOptionViewItem &option)
{
    const auto *view = qobject_cast<const QAbstractItemView *>(option.widget);
    return view == nullptr ? option.rect : view->viewport()->rect();
}

// A name that ends in "n.png" has a pressed variant beside it.
QPixmap decorationImage(const QString &name, bool selected)
{
    if (name.isEmpty())
        return QPixmap();
    if (selected) {
        const QPixmap pressed(name.chopped(qMin(5, name.size())) + QLatin1String("p.png"));
        if (!pressed.isNull())
            return pressed;
    }
    return QPixmap(name);
}

// At most the column's size, in the image's own proportions.
QSize decorationSize(const QPixmap &image)
{
    const bool fits = image.size().boundedTo(kLargestDecoration) == image.size();
    return fits ? image.size() : image.size().scaled(kLargestDecoration, Qt::KeepAspectRatio);
}

QRect centredInRow(const QRect &row, int left, const QSize &size)
{
    return QRect(QPoint(left, row.top() + (row.height() - size.height()) / 2), size);
}

} // namespace

GpsItemDelegate::GpsItemDelegate(QObject *parent, bool drawsArrow, int textIndent)
    : QItemDelegate(parent), arrow(drawsArrow), indent(textIndent)
{
}

void GpsItemDelegate::setHeight(int)
{
    // Kept on purpose: rows of the list style are 64 pixels high, whatever is asked.
    height = kRowHeight;
}

void GpsItemDelegate::setCheckIconLayout(Layout checkLayout)
{
    layout = checkLayout;
}

void GpsItemDelegate::setCheckAble(bool on)
{
    checkable = on;
}

void GpsItemDelegate::setColorGroup(QString group)
{
    colorGroup = group;
}

QSize GpsItemDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    if (height < 1)
        return QItemDelegate::sizeHint(option, index);
    return QSize(option.rect.right() - option.rect.left(), height);
}

void GpsItemDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                            const QModelIndex &index) const
{
    Q_ASSERT(index.isValid());
    painter->save();

    const QString checkName = index.data(CheckImageRole).toString();
    const QPixmap check = checkName.isEmpty() ? QPixmap() : QPixmap(checkName);
    const QPixmap decoration = decorationImage(index.data(Qt::DecorationRole).toString(),
                                               option.state.testFlag(QStyle::State_Selected));
    const Rectangles at = arrange(option, check.size(), decorationSize(decoration));

    QStyleOptionViewItem row = option;
    row.index = index;
    row.checkState = index.data(Qt::CheckStateRole).toInt() < 1 ? Qt::Unchecked : Qt::Checked;

    drawBackground(painter, row);
    if (arrow)
        drawArrow(painter, row);
    drawFocus(painter, row, option.rect);
    drawCheck(painter, row, at.check, row.checkState);
    drawDecoration(painter, row, at.decoration, decoration);
    drawDisplay(painter, row, at.display, index.data(Qt::DisplayRole).toString());
    drawCurrent(painter, row, at.current, index.data(Qt::StatusTipRole).toString());

    painter->restore();
}

// The sizes are empty where the row has no such image.
GpsItemDelegate::Rectangles GpsItemDelegate::arrange(const QStyleOptionViewItem &option,
                                                     const QSize &check,
                                                     const QSize &decoration) const
{
    const QRect row = option.rect;
    const QRect view = viewSpan(option);
    const int textHeight = row.height() - kTextHeightLoss;
    Rectangles at;

    const int checkLeft =
        layout == CheckRight ? view.left() + view.width() - check.width() : view.left();
    at.check = centredInRow(row, checkLeft, check);

    // The text of the second column has the view's whole width in rows of both kinds.
    at.current =
        QRect(view.left(), row.top() + kTextTop, view.width() - kTextWidthLoss, textHeight);
    at.display = at.current;
    if (!decoration.isEmpty()) {
        const int columnLeft =
            (layout == CheckRight ? row.left() : at.check.left() + at.check.width())
            + kDecorationMargin;
        at.decoration = centredInRow(
            row, columnLeft + (kLargestDecoration.width() - decoration.width()) / 2, decoration);
        at.display = QRect(
            at.decoration.left() + at.decoration.width() + kTextGap + indent, row.top() + kTextTop,
            view.width() - decoration.width() - kTextWidthLossBesideDecoration, textHeight);
    }
    return at;
}

void GpsItemDelegate::drawBackground(QPainter *painter, const QStyleOptionViewItem &option) const
{
    painter->drawPixmap(option.rect.topLeft(),
                        QPixmap(QStringLiteral(":/Resource/common/Icn_list_item_bar_n.png")));
}

void GpsItemDelegate::drawArrow(QPainter *painter, const QStyleOptionViewItem &option) const
{
    painter->drawPixmap(option.rect.topLeft() + kArrowOffset,
                        QPixmap(QStringLiteral(":/Resource/setup/Icn_arrow")));
}

void GpsItemDelegate::drawFocus(QPainter *painter, const QStyleOptionViewItem &option,
                                const QRect &rect) const
{
    if (option.state.testFlag(QStyle::State_HasFocus))
        painter->drawPixmap(rect.topLeft(),
                            QPixmap(QStringLiteral(":/Resource/common/Icn_list_item_bar_p.png")));
}

void GpsItemDelegate::drawCheck(QPainter *painter, const QStyleOptionViewItem &, const QRect &rect,
                                Qt::CheckState state) const
{
    if (state == Qt::Checked)
        painter->drawPixmap(rect,
                            QPixmap(QStringLiteral(":/Resource/common/Icn_list_item_bar_s.png")));
}

void GpsItemDelegate::drawDecoration(QPainter *painter, const QStyleOptionViewItem &,
                                     const QRect &rect, const QPixmap &pixmap) const
{
    if (!pixmap.isNull())
        painter->drawPixmap(rect, pixmap);
}

void GpsItemDelegate::drawDisplay(QPainter *painter, const QStyleOptionViewItem &option,
                                  const QRect &rect, const QString &text) const
{
    if (text.isEmpty() || !rect.isValid())
        return;

    TextState state = DisabledText;
    if (option.index.flags() & (Qt::ItemIsSelectable | Qt::ItemIsEditable)) {
        if (option.state.testFlag(QStyle::State_Selected)) {
            state = SelectedText; // with the pen that the view has set
        } else if (option.checkState == Qt::Checked) {
            state = CheckedText;
            painter->setPen(QColor(kCheckedColor));
        } else {
            state = NormalText;
            painter->setPen(Qt::white);
        }
    } else {
        painter->setPen(Qt::gray);
    }

    QFont font = painter->font();
    ColorGroup::setFontColor(font, colorGroup, kFontSize, state);
    painter->setFont(font);

    const QStringList columns = text.split(QLatin1Char(','));
    painter->drawText(rect, Qt::AlignLeft | Qt::AlignVCenter, columns.value(0));
    painter->drawText(rect, Qt::AlignRight | Qt::AlignVCenter, columns.value(1));
}

void GpsItemDelegate::drawCurrent(QPainter *painter, const QStyleOptionViewItem &option,
                                  const QRect &rect, const QString &text) const
{
    GpsItemDelegate::drawDisplay(painter, option, rect, text);
}

} // namespace testmode
