#include "usbphy.h"

#include "tools/debugtrace.h"

namespace testmode::usbphy {

namespace {

constexpr int kThresholdBits = 0x1F;

} // namespace

int swingByte(unsigned int word, int port)
{
    return static_cast<int>((word >> (8 * port)) & 0xFFU);
}

unsigned int withSwingByte(unsigned int word, int port, int code)
{
    const unsigned int others = word & ~(0xFFU << (8 * port));
    return others | (static_cast<unsigned int>(code) << (8 * port)) | kSwingFixed;
}

int swingUp(int code)
{
    if (code == 0)
        return kMinusZero; // kept: a code that is not set goes to the zero of the other direction
    if (code == kMinusZero)
        return kPlusZero;
    if (isMinusSwing(code))
        return code - 1;
    if (isPlusSwing(code) && code + 1 < kMinusZero)
        return code + 1;
    return code;
}

int swingDown(int code)
{
    if (code == 0)
        return kPlusZero; // kept, as above
    if (code == kPlusZero)
        return kMinusZero;
    if (isPlusSwing(code))
        return code - 1;
    if (isMinusSwing(code) && code + 1 < kSwingEnd)
        return code + 1;
    return code;
}

int disconnectUp(int word)
{
    return (word & kThresholdBits) < kThresholdBits ? word + 1 : word;
}

int disconnectDown(int word)
{
    return (word & kThresholdBits) != 0 ? word - 1 : word;
}

unsigned int testModeSelector(int pattern, bool fullSpeed)
{
    switch (pattern) {
    case EyeDiagram:
        return fullSpeed ? 4 : 1;
    case TestJ:
        return fullSpeed ? 11 : 9;
    case TestK:
        return fullSpeed ? 12 : 10;
    case Se0:
        return 7;
    default:
        return 0;
    }
}

const char *remarkOn(int pattern)
{
    if (pattern == NoPattern)
        return "nothing to do.";
    return pattern < EyeDiagram || pattern > NoPattern ? "not support!" : nullptr;
}

} // namespace testmode::usbphy
