#pragma once

#include <QByteArray>

#include <atomic>
#include <mutex>
#include <thread>

namespace tests {

// A chip at the other end of /dev/ttyS4 that answers the sync and then says 0xFF to everything, so
// that an update fails within a second. Lives in a thread of its own; takes the device away at its
// end.
class RefusingChip
{
public:
    RefusingChip();
    ~RefusingChip();

    // What the host has sent so far.
    QByteArray received() const;

private:
    void talk();
    bool waitForByte();
    bool hostHasReadAll() const;

    int master = -1;
    int slave = -1; // kept open: the line stays up between two updates
    std::atomic<bool> finished{false};
    mutable std::mutex mutex;
    QByteArray bytes;
    std::thread thread;
};

} // namespace tests
