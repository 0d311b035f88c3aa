#pragma once

namespace mcu {

class McuService
{
public:
    static McuService *instance();
    void setWatchDogEnable(bool);
    void setResetSystem(int);
    void factoryReset();
};

} // namespace mcu
