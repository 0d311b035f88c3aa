#pragma once

#include <QByteArray>
#include <QString>

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

// The receiver's end of the line. Of a pseudo-terminal it owns the master and one raw slave
// descriptor, which keeps the line alive and free of echo while no host has it open. A
// device that goes is opened again when it is back. Receiver's thread, once open.
class Line
{
public:
    enum class Event { Bytes, Woken, Deadline };

    Line() = default;
    Line(const Line &) = delete;
    Line &operator=(const Line &) = delete;
    ~Line() { close(); }

    bool open(QString *error); // a pseudo-terminal
    bool openDevice(const QString &device, QString *error);
    void close();
    QString path() const { return hostPath; }

    // Sleeps until bytes are there (with `forBytes`), `wakeDescriptor` is readable or the deadline.
    Event wait(int wakeDescriptor, std::optional<Clock::time_point> deadline, bool forBytes);

    QByteArray read();                        // what is there; empty: nothing
    int write(const QByteArray &bytes) const; // bytes that fitted: a line does not wait
    void discardInput();

    int hostBaud() const;         // as the host set the port; 0: not to be known
    bool hostFlowControl() const; // the host's port takes XON and XOFF for itself

private:
    bool isDevice() const { return slave < 0; }
    Event awaitDevice(int wakeDescriptor, std::optional<Clock::time_point> deadline);

    int own = -1; // the pseudo-terminal's master, or the device; -1: closed, or the device is gone
    int slave = -1; // of a pseudo-terminal
    QString hostPath;
};

} // namespace bench::chip
