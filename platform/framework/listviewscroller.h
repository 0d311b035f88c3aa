#pragma once

#include "platform_api.h"

#include <QItemSelection>
#include <QObject>
#include <QPoint>
#include <QPointer>

class QAbstractItemView;
class QItemSelectionModel;
class QMouseEvent;
class QWidget;

namespace cm {

// Scrolls a list view by touch, in the unit's list style. GUI thread only.
class PLATFORM_API ListviewScroller : public QObject
{
    Q_OBJECT

public:
    // `owner` becomes the scroller's parent.
    ListviewScroller(QAbstractItemView *view, QWidget *owner);

    // The selection that a drag must not disturb; not owned.
    void setSelectionModel(QItemSelectionModel *model);

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void press(const QMouseEvent *event);
    bool move(const QMouseEvent *event);
    bool release();

    QAbstractItemView *list; // not owned
    QPointer<QItemSelectionModel> selection;
    QItemSelection selectedBefore;
    QPoint start;
    int valueAtStart = 0;
    bool isDown = false;
    bool isDragging = false;
};

} // namespace cm
