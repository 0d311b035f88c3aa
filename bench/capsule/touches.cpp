#include "touches.h"

#include <QAbstractButton>
#include <QApplication>
#include <QKeyEvent>
#include <QMainWindow>
#include <QMouseEvent>
#include <QWindow>

namespace bench {

namespace {

const QString kTouch = QStringLiteral("touch");
const QString kKey = QStringLiteral("key");

// The unit's own window on top: a list that is open, a box, or the screen.
QWidget *topWindow(QWidget *screen)
{
    for (QWidget *window : {QApplication::activePopupWidget(), QApplication::activeModalWidget()}) {
        if (window != nullptr)
            return window;
    }
    return screen;
}

// A button of a box may lie elsewhere with other fonts.
QAbstractButton *buttonOf(const QWidget *box, const QString &text)
{
    const QList<QAbstractButton *> buttons = box->findChildren<QAbstractButton *>();
    for (QAbstractButton *button : buttons) {
        if (button->text() == text && button->isVisible())
            return button;
    }
    return nullptr;
}

QPoint placeOf(QWidget *screen, QWidget *target, const QJsonObject &arguments)
{
    const QString text = arguments["button"].toString();
    const QAbstractButton *button =
        target == screen || text.isEmpty() ? nullptr : buttonOf(target, text);
    return button != nullptr
        ? button->mapToGlobal(button->rect().center())
        : target->mapToGlobal(QPoint(arguments["x"].toInt(), arguments["y"].toInt()));
}

} // namespace

bool isTouch(const QString &call)
{
    return call == kTouch || call == kKey;
}

TouchListener::TouchListener(QWidget *unitScreen, Taker taker)
    : screen(unitScreen), take(std::move(taker))
{
}

// Boxes and lists that the plug-in opens are windows of their own, without a parent at times; the
// operator's are docks of a main window.
bool TouchListener::isOfTheUnit(const QObject *object) const
{
    for (; object != nullptr && object != screen; object = object->parent()) {
        if (qobject_cast<const QMainWindow *>(object) != nullptr)
            return false;
    }
    return true;
}

void TouchListener::look(QObject *watched, QEvent *event)
{
    if (!watched->isWindowType() || !event->spontaneous())
        return;
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::MouseButtonRelease:
        takeTouch(event);
        return;
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
        takeKey(event);
        return;
    default:
        return;
    }
}

void TouchListener::takeTouch(QEvent *event)
{
    const QPoint place = static_cast<QMouseEvent *>(event)->globalPos();
    QWidget *touched = QApplication::widgetAt(place);
    if (event->type() == QEvent::MouseButtonPress)
        down = touched != nullptr && isOfTheUnit(touched);
    if (!down)
        return;
    down = event->type() != QEvent::MouseButtonRelease;
    QWidget *target =
        touched == nullptr || touched->window() == screen->window() ? screen : touched->window();
    const QPoint at = target->mapFromGlobal(place);
    QJsonObject arguments{{"event", int(event->type())}, {"x", at.x()}, {"y", at.y()}};
    if (touched != nullptr && !touched->objectName().isEmpty())
        arguments.insert("object", touched->objectName());
    if (const auto *button = qobject_cast<QAbstractButton *>(touched))
        arguments.insert("button", button->text());
    take(kTouch, arguments);
}

void TouchListener::takeKey(QEvent *event)
{
    const QWidget *focus = QApplication::focusWidget();
    if (focus == nullptr || !isOfTheUnit(focus))
        return;
    const auto *key = static_cast<QKeyEvent *>(event);
    take(kKey,
         {{"event", int(event->type())},
          {"key", key->key()},
          {"modifiers", int(key->modifiers())},
          {"text", key->text()}});
}

void repeatTouch(QWidget *screen, const QString &call, const QJsonObject &arguments)
{
    QWidget *target = topWindow(screen);
    QWindow *window = target->window()->windowHandle();
    const auto type = static_cast<QEvent::Type>(arguments["event"].toInt());
    if (call == kKey) {
        QKeyEvent event(type, arguments["key"].toInt(),
                        Qt::KeyboardModifiers(arguments["modifiers"].toInt()),
                        arguments["text"].toString());
        QCoreApplication::sendEvent(window, &event);
        return;
    }
    const QPoint place = placeOf(screen, target, arguments);
    const QPointF local = window->mapFromGlobal(place);
    const bool pressed = type != QEvent::MouseButtonRelease;
    QMouseEvent event(type, local, local, place,
                      type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton,
                      pressed ? Qt::LeftButton : Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(window, &event);
}

} // namespace bench
