#pragma once

#include <QMutex>
#include <QWaitCondition>

namespace bench::chip {

// The receiver's inputs beside the line: reset, supply, and the end of its thread. Set
// from any thread; the receiver's own thread is woken through a descriptor.
class Pins
{
public:
    struct Levels
    {
        bool stopped = false;
        bool powered = true;
        bool reset = false;
        bool pulsed = false; // reset was asserted since the last take()
    };

    Pins();
    Pins(const Pins &) = delete;
    Pins &operator=(const Pins &) = delete;
    ~Pins();

    // Return when the receiver has acknowledged the change, or at once when none runs or
    // the call comes from its own thread.
    void setReset(bool asserted);
    void setPowered(bool powered);
    void stop();

    void listen();        // a receiver is about to start: from here on changes wait for it
    void awaitListener(); // until it runs

    // Receiver's thread.
    void attach(); // first
    void detach(); // last: nobody waits any longer
    int wakeDescriptor() const { return descriptor; }
    bool changed() const;
    Levels take();
    void acknowledge(); // of what was taken

private:
    void change();
    void awaitSeen();

    mutable QMutex mutex;
    QWaitCondition seen;
    Levels levels;
    int descriptor = -1;
    bool listening = false;
    Qt::HANDLE reader = nullptr; // the receiver's thread
    quint64 changes = 0;
    quint64 taken = 0;
    quint64 acknowledged = 0;
};

} // namespace bench::chip
