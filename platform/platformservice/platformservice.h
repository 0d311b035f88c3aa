#pragma once

#include "platform_api.h"

namespace platform {

// Client of the board service. May be called from any thread.
class PLATFORM_API PlatformService
{
public:
    static PlatformService *instance();

    // Drives the GNSS receiver's reset line: true asserts reset.
    void setGPSResetGPIO(bool asserted);
};

} // namespace platform
