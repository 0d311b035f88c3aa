#pragma once

#include "platform_api.h"

namespace mcu {

// Client of the unit's microcontroller. GUI thread only.
class PLATFORM_API McuService
{
public:
    static McuService *instance();

    // Switches the system's watchdog; it is on after every start.
    void setWatchDogEnable(bool enable);

    // Resets the whole unit; returns, the reset follows. 1 is the ordinary reset.
    void setResetSystem(int kind);

    // Puts the unit back to the state of its delivery and restarts it.
    void factoryReset();
};

} // namespace mcu
