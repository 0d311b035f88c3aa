#pragma once

#include <QJsonObject>
#include <QObject>

#include <functional>

class QEvent;
class QWidget;

namespace bench {

// Fingers and keys that a person uses on the unit's screen and its boxes, as inputs "touch" and
// "key": what a script does by calls comes from the program itself and is none. GUI thread.
class TouchListener
{
public:
    using Taker = std::function<void(const QString &call, const QJsonObject &arguments)>;

    TouchListener(QWidget *screen, Taker taker);

    // What passes the application's event filters.
    void look(QObject *watched, QEvent *event);

    bool isOfTheUnit(const QObject *object) const;

private:
    void takeTouch(QEvent *event);
    void takeKey(QEvent *event);

    QWidget *screen;
    Taker take;
    bool down = false; // on the unit
};

bool isTouch(const QString &call);

// Does it again. It returns when the plug-in has done what it does at it.
void repeatTouch(QWidget *screen, const QString &call, const QJsonObject &arguments);

} // namespace bench
