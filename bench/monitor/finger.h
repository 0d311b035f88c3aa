#pragma once

#include <QPoint>
#include <QPointer>
#include <QWindow>

class QWidget;

namespace bench {

// One finger on the unit's screen: left mouse button events that enter through
// the window, so that whatever lies on top gets them. GUI thread.
class Finger
{
public:
    // The widget that a touch at the centre of `target` reaches: itself, a child of it, or
    // what lies beneath it where it lets touches through. Throws CallError with Hidden,
    // Disabled or Covered.
    static QWidget *receiverAt(QWidget *target);

    bool isDown() const { return down; }
    void press(QWidget *target);
    void release(const QWidget *target);
    void release(); // where it pressed

private:
    void send(QEvent::Type type);

    bool down = false;
    QPoint position;          // on the desktop
    QPointer<QWindow> window; // that got the press
};

} // namespace bench
