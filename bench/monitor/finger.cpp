#include "finger.h"

#include "callerror.h"
#include "widgets.h"

#include <QApplication>
#include <QMouseEvent>
#include <QWidget>

namespace bench {

namespace {

bool isWithin(const QWidget *widget, const QWidget *ancestor)
{
    while (widget != nullptr && widget != ancestor)
        widget = widget->parentWidget();
    return widget != nullptr;
}

// The widget because of which `widget` is not shown.
const QWidget *hiddenPart(const QWidget *widget)
{
    while (!widget->isHidden() && widget->parentWidget() != nullptr)
        widget = widget->parentWidget();
    return widget;
}

void checkShown(const QWidget *target)
{
    if (target->isVisible())
        return;
    const QWidget *part = hiddenPart(target);
    throw CallError(ErrorClass::Hidden,
                    part == target ? QStringLiteral("%1 is hidden").arg(describe(target))
                                   : QStringLiteral("%1 is hidden: %2 is not shown")
                                         .arg(describe(target), describe(part)));
}

[[noreturn]] void failCovered(const QWidget *target, const QWidget *inTheWay)
{
    throw CallError(ErrorClass::Covered,
                    QStringLiteral("%1 lies under %2").arg(describe(target), describe(inTheWay)));
}

// Windows that keep touches from all others.
void checkInputWindows(const QWidget *target)
{
    for (const QWidget *window :
         {QApplication::activePopupWidget(), QApplication::activeModalWidget()}) {
        if (window != nullptr && !isWithin(target, window))
            failCovered(target, window);
    }
}

bool letsTouchesThrough(const QWidget *widget)
{
    for (; widget != nullptr && !widget->isWindow(); widget = widget->parentWidget()) {
        if (widget->testAttribute(Qt::WA_TransparentForMouseEvents))
            return true;
    }
    return false;
}

QPoint centreOf(const QWidget *target)
{
    return target->mapToGlobal(target->rect().center());
}

} // namespace

QWidget *Finger::receiverAt(QWidget *target)
{
    checkShown(target);
    checkInputWindows(target);
    QWidget *window = target->window();
    const QPoint position = window->mapFromGlobal(centreOf(target));
    if (!window->rect().contains(position))
        throw CallError(ErrorClass::Hidden,
                        QStringLiteral("%1 lies outside of its window").arg(describe(target)));

    QWidget *top = window->childAt(position);
    if (top == nullptr)
        top = window;
    if (!letsTouchesThrough(target) && !isWithin(top, target))
        failCovered(target, top);
    for (const QWidget *taker :
         {const_cast<const QWidget *>(target), const_cast<const QWidget *>(top)}) {
        if (!taker->isEnabled())
            throw CallError(ErrorClass::Disabled,
                            QStringLiteral("%1 is disabled").arg(describe(taker)));
    }
    return top;
}

void Finger::press(QWidget *target)
{
    down = true;
    position = centreOf(target);
    window = target->window()->windowHandle();
    send(QEvent::MouseButtonPress);
}

void Finger::release(const QWidget *target)
{
    position = centreOf(target);
    release();
}

void Finger::release()
{
    down = false;
    send(QEvent::MouseButtonRelease);
}

void Finger::send(QEvent::Type type)
{
    if (window.isNull())
        return; // closed by the press: nothing is left to be released
    const QPointF local = window->mapFromGlobal(position);
    const Qt::MouseButtons buttons = down ? Qt::LeftButton : Qt::NoButton;
    QMouseEvent event(type, local, local, position, Qt::LeftButton, buttons, Qt::NoModifier);
    QCoreApplication::sendEvent(window, &event);
}

} // namespace bench
