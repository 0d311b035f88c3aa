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

QString failure(const char *what)
{
    return QStringLiteral("the receiver's line: %1: %2")
        .arg(QString::fromLatin1(what), QString::fromLocal8Bit(std::strerror(errno)));
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
    termios settings = {};
    const char *step = "posix_openpt";
    master = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    bool good = master >= 0;
    if (good)
        good = ::grantpt(master) == 0 && ::unlockpt(master) == 0
            && ::ptsname_r(master, name, sizeof name) == 0;
    if (good) {
        step = name;
        slave = ::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
        good = slave >= 0 && ::tcgetattr(slave, &settings) == 0;
    }
    if (good) {
        ::cfmakeraw(&settings);
        good = ::tcsetattr(slave, TCSANOW, &settings) == 0;
    }
    if (!good) {
        if (error != nullptr)
            *error = failure(step);
        close();
        return false;
    }
    slavePath = QString::fromLocal8Bit(name);
    return true;
}

void Line::close()
{
    if (slave >= 0)
        ::close(slave);
    if (master >= 0)
        ::close(master);
    slave = -1;
    master = -1;
    slavePath.clear();
}

Line::Event Line::wait(int wakeDescriptor, std::optional<Clock::time_point> deadline,
                       bool forBytes) const
{
    pollfd descriptors[] = {{wakeDescriptor, POLLIN, 0}, {forBytes ? master : -1, POLLIN, 0}};
    timespec rest = {};
    if (deadline) {
        const auto left = std::max(std::chrono::nanoseconds(0),
                                   std::chrono::nanoseconds(*deadline - Clock::now()));
        rest.tv_sec = static_cast<time_t>(left.count() / 1000000000);
        rest.tv_nsec = static_cast<long>(left.count() % 1000000000);
    }
    const int ready =
        ::ppoll(descriptors, std::size(descriptors), deadline ? &rest : nullptr, nullptr);
    if (ready < 0 || (descriptors[0].revents & POLLIN) != 0)
        return Event::Woken; // an interrupting signal: the caller looks again
    return ready > 0 ? Event::Bytes : Event::Deadline;
}

QByteArray Line::read() const
{
    char buffer[8192];
    const ssize_t count = ::read(master, buffer, sizeof buffer);
    return count > 0 ? QByteArray(buffer, static_cast<int>(count)) : QByteArray();
}

int Line::write(const QByteArray &bytes) const
{
    const ssize_t count = ::write(master, bytes.constData(), static_cast<size_t>(bytes.size()));
    return count > 0 ? static_cast<int>(count) : 0;
}

void Line::discardInput() const
{
    while (!read().isEmpty()) { }
}

int Line::hostBaud() const
{
    termios settings = {};
    if (::tcgetattr(master, &settings) != 0)
        return 0;
    const speed_t code = ::cfgetospeed(&settings);
    const auto *const found = std::find_if(std::begin(kRates), std::end(kRates),
                                           [code](const Rate &rate) { return rate.code == code; });
    return found == std::end(kRates) ? 0 : found->baud;
}

bool Line::hostFlowControl() const
{
    termios settings = {};
    return ::tcgetattr(master, &settings) == 0 && (settings.c_iflag & IXON) != 0;
}

} // namespace bench::chip
