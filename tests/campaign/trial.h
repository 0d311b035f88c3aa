#pragma once

#include "faultcases.h"
#include "verdict.h"

#include "tests/support/clock/virtualclock.h"

#include <QStringList>

#include <memory>

namespace bench::chip {
class Chip;
}

namespace tests {

class LivingChip;
class TimeBudget;

// One receiver that is updated again and again, each time by a worker of its own: at the worker's
// signals, or over its transport and a pseudo-terminal. Lives on a clock of its own.
class Rig
{
public:
    explicit Rig(bool onTerminal);
    ~Rig();
    Q_DISABLE_COPY_MOVE(Rig)

    // An update with faults, then one without.
    Verdict run(const FaultCase &trial, Observation *seen = nullptr);

    QStringList lastDeeds() const { return deeds; } // what the faults did in the last run

    bench::chip::Chip &chip();

private:
    Observation update(const file &package);
    bool isEndless(const TimeBudget &budget, qint64 milliseconds) const;
    void noteFaults(Observation *seen);

    VirtualClock clock; // outlives every thread
    struct Ends;
    std::unique_ptr<Ends> line;
    std::unique_ptr<LivingChip> receiver;
    QByteArray flash; // after the last update
    QStringList deeds;
};

} // namespace tests
