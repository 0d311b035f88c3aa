#pragma once

#include "tests/support/unittest.h"
#include "virtualclock.h"

#include <optional>

namespace tests {

// Base of a test class whose cases live on a virtual clock, each on its own, from init() to
// cleanup(): a thread that a case starts ends in it.
class ClockedTest : public UnitTest
{
    Q_OBJECT

protected:
    // Since the case began. Waits end at whole milliseconds when they begin at one.
    qint64 milliseconds() const { return ownClock->milliseconds(); }

    // What `work` takes.
    template <typename Work>
    qint64 millisecondsOf(Work work) const
    {
        const qint64 before = ownClock->microseconds();
        work();
        return (ownClock->microseconds() - before) / 1000;
    }

protected slots:
    void init();
    void cleanup();

private:
    std::optional<VirtualClock> ownClock;
};

} // namespace tests
