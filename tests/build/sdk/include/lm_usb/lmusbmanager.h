#pragma once

#include <string>

namespace lm_usb {

class LMUsbManager
{
public:
    static LMUsbManager *create(std::string);
    static LMUsbManager *GetInstance() { return create(std::string("2.12")); }

    virtual int switchUsbMode(int) = 0;
};

} // namespace lm_usb
