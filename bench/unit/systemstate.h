#pragma once

#include <QString>

namespace bench {

// Watchdog, resets and update packages of the unit.
struct SystemState
{
    bool watchdogEnabled = true;
    int systemResets = 0;
    int factoryResets = 0;
    bool statusBarHidden = false;
    QString updateFolder; // where the GNSS package lies; empty: none found
    QString lastPopup;
};

} // namespace bench
