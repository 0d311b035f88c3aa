#pragma once

#include <QString>

class KeyEvent;
class QByteArray;

// The life cycle and the input of one window, as the framework drives it.
// GUI thread only. The order of the virtual functions is the framework's ABI.
class WindowInterface
{
public:
    virtual void onCreate() = 0;
    virtual void onDestroy() = 0;
    virtual void onShow(const QByteArray &data) = 0;

    // The result tells the framework what became of the key; its meaning is the framework's.
    virtual int backEvent() = 0;
    virtual int keyEvent(KeyEvent *event) = 0;

    // Name of the window in the framework's log.
    virtual QString name() = 0;

    virtual ~WindowInterface() = default;
};
