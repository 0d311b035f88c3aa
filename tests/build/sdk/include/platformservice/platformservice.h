#pragma once

namespace platform {

class PlatformService
{
public:
    static PlatformService *instance();
    void setGPSResetGPIO(bool);
};

} // namespace platform
