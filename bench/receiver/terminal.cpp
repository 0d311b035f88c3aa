#include "terminal.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <iterator>

#include <fcntl.h>
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

} // namespace

bool Terminal::open(QString *error)
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

bool Terminal::openDevice(const QString &device, QString *error)
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

void Terminal::close()
{
    if (slave >= 0)
        ::close(slave);
    if (own >= 0)
        ::close(own);
    slave = -1;
    own = -1;
    hostPath.clear();
}

Line::Event Terminal::wait(int wakeDescriptor, std::optional<Clock::time_point> deadline,
                           bool forBytes)
{
    if (own < 0)
        return awaitDevice(wakeDescriptor, deadline);
    return waitOn(own, wakeDescriptor, deadline, forBytes);
}

// The caller looks again after this, whether the device is back or not.
Line::Event Terminal::awaitDevice(int wakeDescriptor, std::optional<Clock::time_point> deadline)
{
    const Clock::time_point next = Clock::now() + kLookEvery;
    waitOn(-1, wakeDescriptor, deadline ? std::min(*deadline, next) : next, false);
    own = openTerminal(hostPath);
    return Event::Woken;
}

QByteArray Terminal::read()
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

int Terminal::write(const QByteArray &bytes) const
{
    const ssize_t count = ::write(own, bytes.constData(), static_cast<size_t>(bytes.size()));
    return count > 0 ? static_cast<int>(count) : 0;
}

int Terminal::hostBaud() const
{
    termios settings = {};
    if (isDevice() || ::tcgetattr(own, &settings) != 0)
        return 0;
    const speed_t code = ::cfgetospeed(&settings);
    const auto *const found = std::find_if(std::begin(kRates), std::end(kRates),
                                           [code](const Rate &rate) { return rate.code == code; });
    return found == std::end(kRates) ? 0 : found->baud;
}

bool Terminal::hostFlowControl() const
{
    termios settings = {};
    return !isDevice() && ::tcgetattr(own, &settings) == 0 && (settings.c_iflag & IXON) != 0;
}

} // namespace bench::chip
