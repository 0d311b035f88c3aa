#pragma once

#include <QByteArray>

#include <chrono>
#include <optional>

namespace bench::chip {

using Clock = std::chrono::steady_clock;

// When bytes pass a line of ten bits a byte. One direction. Rate 0: unknown, no time passes.
class LineClock
{
public:
    // When the next byte has arrived whole, the line being read at `now`.
    Clock::time_point arrival(Clock::time_point now, int baud);

    // When the last of `count` bytes has left, that could begin at `earliest`.
    Clock::time_point departure(Clock::time_point earliest, int count, int baud);

    void restart() { busyUntil = Clock::time_point(); }

private:
    Clock::time_point busyUntil;
};

// The receiver's end of the line, whatever the line is. Receiver's thread.
class Line
{
public:
    enum class Event { Bytes, Woken, Deadline };

    Line() = default;
    Line(const Line &) = delete;
    Line &operator=(const Line &) = delete;
    virtual ~Line() = default;

    // Sleeps until bytes are there (with `forBytes`), `wakeDescriptor` is readable or the deadline.
    virtual Event wait(int wakeDescriptor, std::optional<Clock::time_point> deadline,
                       bool forBytes) = 0;

    virtual QByteArray read() = 0;                        // what is there; empty: nothing
    virtual int write(const QByteArray &bytes) const = 0; // bytes that fitted: a line does not wait
    void discardInput();

    virtual int hostBaud() const = 0;         // as the host set the port; 0: not to be known
    virtual bool hostFlowControl() const = 0; // the host's port takes XON and XOFF for itself

protected:
    // wait() on a descriptor that the bytes come from.
    static Event waitOn(int descriptor, int wakeDescriptor,
                        std::optional<Clock::time_point> deadline, bool forBytes);
};

} // namespace bench::chip
