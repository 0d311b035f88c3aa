#pragma once

#include "platform_api.h"

namespace cm {

// The status bar at the top of the unit's screen. GUI thread only.
class PLATFORM_API StatusBarControl
{
public:
    static StatusBarControl *instance();

    // true takes the bar off the screen, false brings it back.
    void sethide(bool hide);
};

} // namespace cm
