#pragma once

#include <QString>

class KeyEvent;
class QByteArray;

class WindowInterface
{
public:
    virtual void onCreate() = 0;
    virtual void onDestroy() = 0;
    virtual void onShow(const QByteArray &) = 0;
    virtual int backEvent() = 0;
    virtual int keyEvent(KeyEvent *) = 0;
    virtual QString name() = 0;
    virtual ~WindowInterface() = default;
};
