#pragma once

#include "dispatcher.h"
#include "finger.h"

#include <QImage>
#include <QPointer>
#include <QWidget>

namespace bench {

// The ui.* calls: see and use what is on the unit's screen. Lives as long as
// the dispatcher, in the GUI thread; the screen outlives it.
class UiMethods : public QObject
{
    Q_OBJECT

public:
    // Takes the picture of the screen with all that stands over it.
    using Camera = std::function<QImage()>;

    // Adds the calls to `dispatcher`, which owns them from then on.
    static void addTo(Dispatcher *dispatcher, QWidget *screen, Camera camera);

private:
    UiMethods(Dispatcher *dispatcher, QWidget *screen, Camera camera);

    void addLooks(Dispatcher *dispatcher);
    void addTouches(Dispatcher *dispatcher);
    void addBoxes(Dispatcher *dispatcher);

    QWidget *find(const Arguments &arguments) const;
    void checkFinger(bool down) const;

    QJsonObject tree(const Arguments &arguments) const;
    QJsonObject state(const Arguments &arguments) const;
    QJsonObject screenshot(const Arguments &arguments) const;
    void wait(const Call &call);

    void touch(QWidget *target, const Responder &responder);
    void press(const Call &call);
    void release(const Call &call);
    void choose(const Call &call);
    void type(const Call &call);

    QJsonArray boxes() const;
    void waitForBoxes(const Call &call);
    void answer(const Call &call);

    QPointer<QWidget> screen;
    Camera camera;
    Finger finger;
};

} // namespace bench
