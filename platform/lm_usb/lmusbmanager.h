#pragma once

#include "platform_api.h"

#include <string>

namespace lm_usb {

// USB function of the unit. GUI thread only.
class PLATFORM_API LMUsbManager
{
public:
    // The manager for clients built against interface `version`; owned by the service.
    static LMUsbManager *create(std::string version);

    static LMUsbManager *GetInstance() { return create(std::string("2.12")); }

    // 6 switches the NCM function on, 7 off. Returns 0 for success.
    virtual int switchUsbMode(int mode) = 0;

protected:
    virtual ~LMUsbManager() = default;
};

} // namespace lm_usb
