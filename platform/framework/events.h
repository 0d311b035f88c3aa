#pragma once

#include <QByteArray>
#include <QEvent>

namespace Qx {

// Event types of the framework.
enum EventType : int {
    KeyEventType = 1007,
    TouchEventType = 1008,
    TaskEventType = 1009,
};

// Touch and gesture codes; only the code that the framework acts on here.
enum Touch : int {
    TouchLeaveTestMode = 9, // closes the test mode
};

// Task codes; only the code that is sent here.
enum TaskEvt : int {
    TaskIdle = 0,
};

} // namespace Qx

// A framework event with a 32-bit value and optional payload bytes. Built by the
// sender, so the order of the fields is ABI: payload first, then the value.
template <typename T>
class SimpleEvent : public QEvent
{
public:
    SimpleEvent(Qx::EventType eventType, T eventValue)
        : QEvent(static_cast<QEvent::Type>(eventType)), payload(), value(eventValue)
    {
        static_assert(sizeof(T) == 4, "the value of a framework event has 32 bits");
    }

    QByteArray payload;
    T value;
};

// A touch; payload: four 32-bit integers in host byte order, 1008, the code, x, y.
class TouchEvent : public SimpleEvent<Qx::Touch>
{
public:
    TouchEvent(Qx::Touch touch, int x, int y) : SimpleEvent<Qx::Touch>(Qx::TouchEventType, touch)
    {
        const qint32 words[4] = {Qx::TouchEventType, static_cast<qint32>(touch), x, y};
        payload = QByteArray(reinterpret_cast<const char *>(words), sizeof words);
    }
};

// A task change; no payload.
class TaskEvent : public SimpleEvent<Qx::TaskEvt>
{
public:
    explicit TaskEvent(Qx::TaskEvt task) : SimpleEvent<Qx::TaskEvt>(Qx::TaskEventType, task) { }
};

// A key of the unit's panel or of the steering wheel.
class KeyEvent : public SimpleEvent<int>
{
public:
    explicit KeyEvent(int keyCode) : SimpleEvent<int>(Qx::KeyEventType, keyCode) { }

    int key() const { return value; }
};
