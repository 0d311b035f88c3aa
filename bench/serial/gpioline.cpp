#include "gpioline.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <linux/gpio.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace bench {

namespace {

constexpr char kConsumer[] = "testmode-bench reset";

std::string whyNotOpen(const std::string &chip)
{
    switch (errno) {
    case ENOENT:
    case ENODEV:
    case ENXIO:
        return chip + " is not there; name a chip that `ls /dev/gpiochip*` shows";
    case EACCES:
    case EPERM:
        return chip + " may not be opened; join the device's group (often gpio)";
    default:
        return chip + " cannot be opened (" + std::strerror(errno) + "); name a GPIO chip";
    }
}

// Who holds a line, as far as it is known.
std::string holderOf(int chip, unsigned lineNumber)
{
    gpio_v2_line_info info = {};
    info.offset = lineNumber;
    if (::ioctl(chip, GPIO_V2_GET_LINEINFO_IOCTL, &info) != 0 || info.consumer[0] == '\0')
        return "another program";
    return std::string("\"") + info.consumer + "\"";
}

std::string whyNotTaken(int chip, const std::string &name, unsigned lineNumber)
{
    const int reason = errno;
    const std::string line = name + ", line " + std::to_string(lineNumber);
    if (reason == EBUSY)
        return line + " is in use by " + holderOf(chip, lineNumber)
            + "; end that one, or name another line";
    return line + " cannot be an output (" + std::strerror(reason) + "); name another line";
}

gpio_v2_line_request outputRequest(unsigned lineNumber, bool high)
{
    gpio_v2_line_request request = {};
    request.offsets[0] = lineNumber;
    request.num_lines = 1;
    std::snprintf(request.consumer, sizeof request.consumer, "%s", kConsumer);
    request.config.flags = GPIO_V2_LINE_FLAG_OUTPUT;
    request.config.num_attrs = 1;
    request.config.attrs[0].mask = 1;
    request.config.attrs[0].attr.id = GPIO_V2_LINE_ATTR_ID_OUTPUT_VALUES;
    request.config.attrs[0].attr.values = high ? 1 : 0;
    return request;
}

} // namespace

int takeGpioLine(const std::string &chip, unsigned lineNumber, bool high, std::string *error)
{
    const int device = ::open(chip.c_str(), O_RDWR | O_CLOEXEC);
    if (device < 0) {
        *error = whyNotOpen(chip);
        return -1;
    }
    int line = -1;
    gpiochip_info info = {};
    gpio_v2_line_request request = outputRequest(lineNumber, high);
    if (::ioctl(device, GPIO_GET_CHIPINFO_IOCTL, &info) != 0)
        *error = chip + " is no GPIO chip; name one that `ls /dev/gpiochip*` shows";
    else if (lineNumber >= info.lines)
        *error = chip + " has no line " + std::to_string(lineNumber) + "; it has 0 to "
            + std::to_string(static_cast<int>(info.lines) - 1);
    else if (::ioctl(device, GPIO_V2_GET_LINE_IOCTL, &request) != 0)
        *error = whyNotTaken(device, chip, lineNumber);
    else
        line = request.fd;
    ::close(device);
    return line;
}

bool driveGpioLine(int line, bool high)
{
    gpio_v2_line_values values = {};
    values.bits = high ? 1 : 0;
    values.mask = 1;
    return ::ioctl(line, GPIO_V2_LINE_SET_VALUES_IOCTL, &values) == 0;
}

} // namespace bench
