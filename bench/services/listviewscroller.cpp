#include "framework/listviewscroller.h"

#include "bench/unit/journal.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QItemSelectionModel>
#include <QMouseEvent>
#include <QScrollBar>

namespace cm {

using bench::journal;

namespace {

const QString kService = QStringLiteral("ListviewScroller");

} // namespace

// Not over Qt's own scroller: that one leaves a gesture recogniser behind for every view.
ListviewScroller::ListviewScroller(QAbstractItemView *view, QWidget *owner)
    : QObject(owner), list(view)
{
    journal().call(kService, QStringLiteral("ListviewScroller"),
                   {view->objectName(), owner->objectName()});
    view->viewport()->installEventFilter(this);
}

void ListviewScroller::setSelectionModel(QItemSelectionModel *model)
{
    journal().call(kService, QStringLiteral("setSelectionModel"), {model != nullptr});
    selection = model;
}

bool ListviewScroller::eventFilter(QObject *, QEvent *event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        press(static_cast<QMouseEvent *>(event));
        return false;
    case QEvent::MouseMove:
        return move(static_cast<QMouseEvent *>(event));
    case QEvent::MouseButtonRelease:
        return release();
    default:
        return false;
    }
}

void ListviewScroller::press(const QMouseEvent *event)
{
    isDown = event->button() == Qt::LeftButton;
    isDragging = false;
    start = event->pos();
    valueAtStart = list->verticalScrollBar()->value();
    if (selection)
        selectedBefore = selection->selection();
}

// The rows follow the finger from where it went down. The view itself gets no moves:
// it would take them for a selection of many rows.
bool ListviewScroller::move(const QMouseEvent *event)
{
    if (!isDown)
        return false;
    const int way = start.y() - event->pos().y();
    if (!isDragging && qAbs(way) >= QApplication::startDragDistance()) {
        isDragging = true;
        // The press was a drag, not a choice.
        if (selection)
            selection->select(selectedBefore, QItemSelectionModel::ClearAndSelect);
    }
    if (isDragging)
        list->verticalScrollBar()->setValue(valueAtStart + way);
    return true;
}

bool ListviewScroller::release()
{
    const bool wasDragging = isDragging;
    isDown = false;
    isDragging = false;
    return wasDragging;
}

} // namespace cm
