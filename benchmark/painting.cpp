#include "painting.h"

#include "waits.h"

#include <QCoreApplication>
#include <QEvent>
#include <QWidget>

#include <ctime>

namespace benchmark {

bool Painting::eventFilter(QObject *, QEvent *event)
{
    if (event->type() == QEvent::Paint)
        painted = true; // its window is flushed before the event loop returns
    return false;
}

void Painting::await(QWidget *widget)
{
    widget->installEventFilter(this);
    widget->update();
    while (!painted)
        QCoreApplication::processEvents();
    widget->removeEventFilter(this);
}

qint64 Painting::elapsed()
{
    timespec time = {};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return qint64(time.tv_sec) * 1000000000 + time.tv_nsec - waitedNanoseconds();
}

} // namespace benchmark
