#pragma once

#include <QItemDelegate>

namespace testmode {

// Draws list rows in the unit's list style: a bar behind, optional check, arrow
// and decoration images, texts in two columns. A derived delegate may replace any
// drawing step. GUI thread.
class GpsItemDelegate : public QItemDelegate
{
    Q_OBJECT

public:
    // Where the check image sits: 0 at the view's right edge, otherwise at its left edge.
    enum Layout { CheckRight = 0, CheckLeft = 1 };

    // Role of the text that names a row's check image.
    enum Role { CheckImageRole = Qt::UserRole + 101 };

    // `arrow` draws the arrow image on each row; `indent` moves the text of rows
    // with a decoration to the right, in pixels.
    GpsItemDelegate(QObject *parent, bool arrow, int indent);

    void setHeight(int pixels);
    void setCheckIconLayout(Layout checkLayout);
    void setCheckAble(bool on);

    // Colour group of the unit's style that the texts take their font from.
    void setColorGroup(QString group);

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;

protected:
    // The drawing steps. Their option carries the row's index and, as its check
    // state, what the row is drawn with: unchecked or checked.
    virtual void drawBackground(QPainter *painter, const QStyleOptionViewItem &option) const;
    virtual void drawArrow(QPainter *painter, const QStyleOptionViewItem &option) const;
    void drawFocus(QPainter *painter, const QStyleOptionViewItem &option,
                   const QRect &rect) const override;
    void drawCheck(QPainter *painter, const QStyleOptionViewItem &option, const QRect &rect,
                   Qt::CheckState state) const override;
    void drawDecoration(QPainter *painter, const QStyleOptionViewItem &option, const QRect &rect,
                        const QPixmap &pixmap) const override;
    void drawDisplay(QPainter *painter, const QStyleOptionViewItem &option, const QRect &rect,
                     const QString &text) const override;
    virtual void drawCurrent(QPainter *painter, const QStyleOptionViewItem &option,
                             const QRect &rect, const QString &text) const;

private:
    struct Rectangles
    {
        QRect check;
        QRect decoration;
        QRect display;
        QRect current;
    };

    Rectangles arrange(const QStyleOptionViewItem &option, const QSize &check,
                       const QSize &decoration) const;

    Layout layout = CheckRight;
    int height = 64; // of a row, in pixels
    bool checkable = false;
    QString colorGroup = QStringLiteral("ColorGroup1");
    bool arrow;
    int indent;
};

} // namespace testmode
