#pragma once

#include <QVector>

namespace benchmark {

// Notes when which side of a pseudo-terminal wrote, for a line whose receiver lives in this
// process. It stands in the place of the C library's write(). One line at a time.
class LineClock
{
public:
    LineClock();
    ~LineClock();
    LineClock(const LineClock &) = delete;
    LineClock &operator=(const LineClock &) = delete;

    // Any thread: the host has taken a byte that it read.
    static void hostHasRead();

    // Microseconds until the packet after a packet's reply, in the order they came: since the host
    // had read the reply, and since the receiver had written it, which holds the host's polls too.
    QVector<double> pauses() const { return packets().pauses; }
    QVector<double> turnarounds() const { return packets().turnarounds; }

private:
    struct Packets
    {
        QVector<double> pauses;
        QVector<double> turnarounds;
    };
    Packets packets() const;
};

} // namespace benchmark
