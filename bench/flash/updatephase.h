#pragma once

#include <QString>

namespace bench {

// Where an update stands, in the order of a good one.
enum class UpdatePhase {
    Package,
    Open,
    Reset,
    Sync,
    Identify,
    Watchdog,
    LoadStage1,
    GreetStage1,
    CheckLine,
    LoadStage2,
    StartStage2,
    PrepareStage2,
    Write,
    End,
};

// Its name in the events; never changed once published.
QString nameOf(UpdatePhase phase);

} // namespace bench
