#pragma once

// The rule: time stands still while any thread runs, and jumps when all of them wait.
//
// A test that makes a VirtualClock takes part in it, and so does every thread that is started
// while it exists; threads that were there before keep to the machine's clock. A thread waits while
// it sleeps, polls descriptors or waits for another thread (condition, semaphore, mutex of Qt or
// GLib). When the last of them begins to wait,
//   1. every descriptor that is waited for is looked at. If one is ready, no time passes, and
//      its thread is woken. Bytes on their way through a pseudo-terminal are ready bytes: the
//      kernel delivers them when it is asked;
//   2. otherwise the clock jumps to the earliest deadline and wakes the one thread that set it;
//      of several, the one that began to wait first.
// So a wait takes exactly its time, on any machine under any load, and a minute takes as long as
// the code that runs in it. A loop that watches the clock and never sleeps would not end: it is
// reported. Waits for what is outside of the process have no time to wait in: a child process
// with a time-out belongs on the machine's clock.
//
// Only in executables made with CLOCK (see testmode_test): it stands in the place of the C
// library's calls. What they are is in clockcalls.cpp.

#include <QTime>

#include <cstdint>

namespace tests {

// The process's clock from its making to its end; outside of that the machine's, which goes on
// from where this one stopped. Begins at noon of the machine's yesterday, on a whole millisecond.
// One at a time; all threads that were started meanwhile must have ended before it does.
class VirtualClock
{
public:
    VirtualClock();
    ~VirtualClock();
    Q_DISABLE_COPY_MOVE(VirtualClock)

    // Since its making.
    std::int64_t milliseconds() const { return microseconds() / 1000; }
    std::int64_t microseconds() const;

    // Threads that live in it: the test's own, and those started since that have not ended.
    static int threads();

    // Moves the time of day on its date, and nothing else.
    static void setTimeOfDay(const QTime &time);

private:
    std::int64_t began;
};

} // namespace tests
