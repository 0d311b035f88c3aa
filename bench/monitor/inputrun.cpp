#include "inputrun.h"

#include <QCoreApplication>
#include <QEvent>
#include <QWidget>

#include <utility>

namespace bench {

namespace {

// A window that keeps the input to itself may run an event loop of its own inside the delivery.
bool takesAllInput(const QObject *object)
{
    if (!object->isWidgetType())
        return false;
    const auto *widget = static_cast<const QWidget *>(object);
    return widget->isWindow() && (widget->isModal() || widget->windowType() == Qt::Popup);
}

} // namespace

void InputRun::start(Step deliver, Step report)
{
    auto *input = new InputRun(std::move(deliver), std::move(report));
    QMetaObject::invokeMethod(input, &InputRun::run, Qt::QueuedConnection);
}

InputRun::InputRun(Step delivery, Step whenDone)
    : QObject(QCoreApplication::instance()), deliver(std::move(delivery)),
      report(std::move(whenDone))
{
}

void InputRun::run()
{
    QCoreApplication::instance()->installEventFilter(this);
    deliver();
    reportOnce();
    deleteLater();
}

bool InputRun::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Show && takesAllInput(watched))
        QMetaObject::invokeMethod(this, &InputRun::reportOnce, Qt::QueuedConnection);
    return false;
}

void InputRun::reportOnce()
{
    QCoreApplication::instance()->removeEventFilter(this);
    if (const Step whenDone = std::exchange(report, nullptr))
        whenDone();
}

} // namespace bench
