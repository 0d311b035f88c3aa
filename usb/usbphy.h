#pragma once

// What the page knows of the USB PHYs: register addresses, codes, and how a value
// steps. No state, no hardware access.
namespace testmode::usbphy {

constexpr int kPorts = 3;

// Physical addresses. What a port has for itself repeats every 0x80 bytes.
constexpr unsigned int kDebugSelect = 0x9C000088;
constexpr unsigned int kDebugRoute = 0x9C0000A0;
constexpr unsigned int kSwing = 0x9C000190; // one byte a port, port 0 lowest

constexpr unsigned int portRegister(unsigned int ofPortZero, int port)
{
    return ofPortZero + 0x80U * static_cast<unsigned int>(port);
}
constexpr unsigned int debugEnable(int port)
{
    return portRegister(0x9C004A8C, port);
}
constexpr unsigned int testMode(int port)
{
    return portRegister(0x9C004A90, port);
}
constexpr unsigned int disconnect(int port)
{
    return portRegister(0x9C004A9C, port); // threshold in bits 4:0
}

// Word for the debug route that leads to a port.
constexpr unsigned int debugRoute(int port)
{
    return (0x00040000U << port) | 0x0000100CU;
}

// Bits that every write of the swing register sets, port 2's code among them.
constexpr unsigned int kSwingFixed = 0x7F7F0000;

// A swing code: 0x40..0x5F are +0..+31, 0x60..0x7F are -0..-31, 0 is not set.
constexpr int kPlusZero = 0x40;
constexpr int kMinusZero = 0x60;
constexpr int kSwingEnd = 0x80;

constexpr bool isPlusSwing(int code)
{
    return code >= kPlusZero && code < kMinusZero;
}
constexpr bool isMinusSwing(int code)
{
    return code >= kMinusZero && code < kSwingEnd;
}

int swingByte(unsigned int word, int port);
unsigned int withSwingByte(unsigned int word, int port, int code);

// One step of a value; at the end of its range it stays.
int swingUp(int code);
int swingDown(int code);
int disconnectUp(int word);
int disconnectDown(int word);

// Test patterns, in the order of the page's buttons.
enum Pattern : int {
    EyeDiagram,
    TestJ,
    TestK,
    Se0,
    NoPattern,
};

// Selector for the test-mode register. 0 for "none" and for an index that is no pattern, which
// have a remark for the trace besides; null for the others.
unsigned int testModeSelector(int pattern, bool fullSpeed);
const char *remarkOn(int pattern);

} // namespace testmode::usbphy
