#include "recordedcalls.h"

#include <QMutex>

#include <cerrno>
#include <cstdarg>
#include <cstdio>

#include <fcntl.h>
#include <linux/gpio.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace tests {

namespace {

struct Kernel
{
    bool active = false;
    QStringList calls;
    int modemLines = 0;
    int failure = 0; // of the next request
    unsigned gpioLines = 8;
    QString holder;
};

QMutex mutex;
Kernel kernel;

int answer(int reason)
{
    errno = reason;
    return reason == 0 ? 0 : -1;
}

int changeModemLine(unsigned long request, int bit)
{
    kernel.modemLines = request == TIOCMBIS ? kernel.modemLines | bit : kernel.modemLines & ~bit;
    kernel.calls << QString("%1 %2").arg(bit == TIOCM_RTS ? "RTS" : "DTR",
                                         request == TIOCMBIS ? "set" : "cleared");
    return answer(0);
}

int describeChip(gpiochip_info *info)
{
    info->lines = kernel.gpioLines;
    return answer(0);
}

int describeLine(gpio_v2_line_info *info)
{
    std::snprintf(info->consumer, sizeof info->consumer, "%s", qPrintable(kernel.holder));
    return answer(0);
}

int takeLine(gpio_v2_line_request *request)
{
    if (!kernel.holder.isNull())
        return answer(EBUSY);
    const bool high = (request->config.attrs[0].attr.values & 1) != 0;
    const bool output = request->config.flags == GPIO_V2_LINE_FLAG_OUTPUT
        && request->config.num_attrs == 1 && request->config.attrs[0].mask == 1
        && request->config.attrs[0].attr.id == GPIO_V2_LINE_ATTR_ID_OUTPUT_VALUES
        && request->num_lines == 1;
    kernel.calls << QString("gpio %1 %2 %3 as \"%4\"")
                        .arg(request->offsets[0])
                        .arg(output ? "output" : "other", high ? "high" : "low", request->consumer);
    request->fd = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    return answer(0);
}

int driveLine(const gpio_v2_line_values *values)
{
    kernel.calls << QString("gpio %1").arg((values->bits & values->mask & 1) != 0 ? "high" : "low");
    return answer(0);
}

// False: it is the real kernel's.
bool take(unsigned long request, void *argument, int *result)
{
    const QMutexLocker lock(&mutex);
    if (!kernel.active)
        return false;
    switch (request) {
    case TIOCMBIS:
    case TIOCMBIC:
    case GPIO_GET_CHIPINFO_IOCTL:
    case GPIO_V2_GET_LINEINFO_IOCTL:
    case GPIO_V2_GET_LINE_IOCTL:
    case GPIO_V2_LINE_SET_VALUES_IOCTL:
        break;
    default:
        return false;
    }
    if (kernel.failure != 0)
        *result = answer(std::exchange(kernel.failure, 0));
    else if (request == TIOCMBIS || request == TIOCMBIC)
        *result = changeModemLine(request, *static_cast<int *>(argument));
    else if (request == GPIO_GET_CHIPINFO_IOCTL)
        *result = describeChip(static_cast<gpiochip_info *>(argument));
    else if (request == GPIO_V2_GET_LINEINFO_IOCTL)
        *result = describeLine(static_cast<gpio_v2_line_info *>(argument));
    else if (request == GPIO_V2_GET_LINE_IOCTL)
        *result = takeLine(static_cast<gpio_v2_line_request *>(argument));
    else
        *result = driveLine(static_cast<gpio_v2_line_values *>(argument));
    return true;
}

} // namespace

RecordedCalls::RecordedCalls()
{
    const QMutexLocker lock(&mutex);
    kernel = Kernel();
    kernel.active = true;
}

RecordedCalls::~RecordedCalls()
{
    const QMutexLocker lock(&mutex);
    kernel.active = false;
}

QStringList RecordedCalls::calls() const
{
    const QMutexLocker lock(&mutex);
    return kernel.calls;
}

void RecordedCalls::clear()
{
    const QMutexLocker lock(&mutex);
    kernel.calls.clear();
}

void RecordedCalls::raiseModemLines()
{
    const QMutexLocker lock(&mutex);
    kernel.modemLines = TIOCM_RTS | TIOCM_DTR;
}

bool RecordedCalls::rts() const
{
    const QMutexLocker lock(&mutex);
    return (kernel.modemLines & TIOCM_RTS) != 0;
}

bool RecordedCalls::dtr() const
{
    const QMutexLocker lock(&mutex);
    return (kernel.modemLines & TIOCM_DTR) != 0;
}

void RecordedCalls::failNext(int reason)
{
    const QMutexLocker lock(&mutex);
    kernel.failure = reason;
}

void RecordedCalls::setGpioLines(unsigned count)
{
    const QMutexLocker lock(&mutex);
    kernel.gpioLines = count;
}

void RecordedCalls::setHolder(const QString &consumer)
{
    const QMutexLocker lock(&mutex);
    kernel.holder = consumer;
}

} // namespace tests

extern "C" int ioctl(int descriptor, unsigned long request, ...) noexcept
{
    std::va_list arguments;
    va_start(arguments, request);
    void *argument = va_arg(arguments, void *);
    va_end(arguments);
    int result = 0;
    if (tests::take(request, argument, &result))
        return result;
    return static_cast<int>(::syscall(SYS_ioctl, descriptor, request, argument));
}
