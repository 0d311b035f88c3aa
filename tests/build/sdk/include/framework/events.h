#pragma once

#include <QByteArray>
#include <QEvent>

// Their enumerators are the SDK's own affair.
namespace Qx {

enum EventType : int {};
enum Touch : int {};
enum TaskEvt : int {};

} // namespace Qx

template <typename T>
class SimpleEvent : public QEvent
{
public:
    SimpleEvent(Qx::EventType type, T value)
        : QEvent(static_cast<QEvent::Type>(type)), bytes(), number(value)
    {
    }

    QByteArray bytes;
    T number;
};

class TouchEvent : public SimpleEvent<Qx::Touch>
{
public:
    TouchEvent(Qx::Touch, int x, int y);
};

class TaskEvent : public SimpleEvent<Qx::TaskEvt>
{
public:
    explicit TaskEvent(Qx::TaskEvt);
};

class KeyEvent : public SimpleEvent<int>
{
public:
    explicit KeyEvent(int);
    int key() const;
};
