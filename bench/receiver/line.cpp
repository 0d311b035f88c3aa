#include "line.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <iterator>

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

namespace bench::chip {

namespace {

struct Rate
{
    speed_t code;
    int baud;
};

constexpr Rate kRates[] = {
    {B1200, 1200},       {B2400, 2400},       {B4800, 4800},       {B9600, 9600},
    {B19200, 19200},     {B38400, 38400},     {B57600, 57600},     {B115200, 115200},
    {B230400, 230400},   {B460800, 460800},   {B500000, 500000},   {B576000, 576000},
    {B921600, 921600},   {B1000000, 1000000}, {B1152000, 1152000}, {B1500000, 1500000},
    {B2000000, 2000000}, {B2500000, 2500000}, {B3000000, 3000000}, {B3500000, 3500000},
    {B4000000, 4000000},
};

std::chrono::nanoseconds onTheLine(int count, int baud)
{
    if (baud <= 0)
        return std::chrono::nanoseconds(0);
    return std::chrono::nanoseconds(INT64_C(10000000000) * count / baud);
}

// How soon a device is looked for again that has gone.
constexpr std::chrono::milliseconds kLookEvery(100);

QString failure(const char *what)
{
    return QStringLiteral("the receiver's line: %1: %2")
        .arg(QString::fromLocal8Bit(what), QString::fromLocal8Bit(std::strerror(errno)));
}

bool makeRaw(int terminal)
{
    termios settings = {};
    if (::tcgetattr(terminal, &settings) != 0)
        return false;
    ::cfmakeraw(&settings);
    settings.c_cflag |= CLOCAL | CREAD; // lives on when the host's end is closed
    return ::tcsetattr(terminal, TCSANOW, &settings) == 0;
}

int openTerminal(const QString &path)
{
    const int terminal =
        ::open(path.toLocal8Bit().constData(), O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    if (terminal < 0 || makeRaw(terminal))
        return terminal;
    ::close(terminal);
    return -1;
}

// ppoll with a point in time in place of a span.
int pollUntil(pollfd *descriptors, nfds_t count, std::optional<Clock::time_point> deadline)
{
    timespec rest = {};
    if (deadline) {
        const auto left = std::max(std::chrono::nanoseconds(0),
                                   std::chrono::nanoseconds(*deadline - Clock::now()));
        rest.tv_sec = static_cast<time_t>(left.count() / 1000000000);
        rest.tv_nsec = static_cast<long>(left.count() % 1000000000);
    }
    return ::ppoll(descriptors, count, deadline ? &rest : nullptr, nullptr);
}

} // namespace

Clock::time_point LineClock::arrival(Clock::time_point now, int baud)
{
    busyUntil = std::max(now, busyUntil) + onTheLine(1, baud);
    return busyUntil;
}

Clock::time_point LineClock::departure(Clock::time_point earliest, int count, int baud)
{
    busyUntil = std::max(earliest, busyUntil) + onTheLine(count, baud);
    return busyUntil;
}

bool Line::open(QString *error)
{
    char name[PATH_MAX];
    const char *step = "posix_openpt";
    own = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    bool good = own >= 0;
    if (good)
        good =
            ::grantpt(own) == 0 && ::unlockpt(own) == 0 && ::ptsname_r(own, name, sizeof name) == 0;
    if (good) {
        step = name;
        slave = ::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
        good = slave >= 0 && makeRaw(slave);
    }
    if (!good) {
        if (error != nullptr)
            *error = failure(step);
        close();
        return false;
    }
    hostPath = QString::fromLocal8Bit(name);
    return true;
}

bool Line::openDevice(const QString &device, QString *error)
{
    own = openTerminal(device);
    if (own < 0) {
        if (error != nullptr)
            *error = failure(device.toLocal8Bit().constData());
        return false;
    }
    hostPath = device;
    return true;
}

void Line::close()
{
    if (slave >= 0)
        ::close(slave);
    if (own >= 0)
        ::close(own);
    slave = -1;
    own = -1;
    hostPath.clear();
}

Line::Event Line::wait(int wakeDescriptor, std::optional<Clock::time_point> deadline, bool forBytes)
{
    if (own < 0)
        return awaitDevice(wakeDescriptor, deadline);
    pollfd descriptors[] = {{wakeDescriptor, POLLIN, 0}, {forBytes ? own : -1, POLLIN, 0}};
    const int ready = pollUntil(descriptors, std::size(descriptors), deadline);
    if (ready < 0 || (descriptors[0].revents & POLLIN) != 0)
        return Event::Woken; // an interrupting signal: the caller looks again
    return ready > 0 ? Event::Bytes : Event::Deadline;
}

// The caller looks again after this, whether the device is back or not.
Line::Event Line::awaitDevice(int wakeDescriptor, std::optional<Clock::time_point> deadline)
{
    pollfd wake = {wakeDescriptor, POLLIN, 0};
    const Clock::time_point next = Clock::now() + kLookEvery;
    pollUntil(&wake, 1, deadline ? std::min(*deadline, next) : next);
    own = openTerminal(hostPath);
    return Event::Woken;
}

QByteArray Line::read()
{
    char buffer[8192];
    const ssize_t count = ::read(own, buffer, sizeof buffer);
    const bool gone = count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR);
    if (gone && isDevice()
        && own >= 0) { // it was pulled: the terminal never comes back, another may
        ::close(own);
        own = -1;
    }
    return count > 0 ? QByteArray(buffer, static_cast<int>(count)) : QByteArray();
}

int Line::write(const QByteArray &bytes) const
{
    const ssize_t count = ::write(own, bytes.constData(), static_cast<size_t>(bytes.size()));
    return count > 0 ? static_cast<int>(count) : 0;
}

void Line::discardInput()
{
    while (!read().isEmpty()) { }
}

int Line::hostBaud() const
{
    termios settings = {};
    if (isDevice() || ::tcgetattr(own, &settings) != 0)
        return 0;
    const speed_t code = ::cfgetospeed(&settings);
    const auto *const found = std::find_if(std::begin(kRates), std::end(kRates),
                                           [code](const Rate &rate) { return rate.code == code; });
    return found == std::end(kRates) ? 0 : found->baud;
}

bool Line::hostFlowControl() const
{
    termios settings = {};
    return !isDevice() && ::tcgetattr(own, &settings) == 0 && (settings.c_iflag & IXON) != 0;
}

} // namespace bench::chip
