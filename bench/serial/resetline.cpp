#include "resetline.h"

#include "gpioline.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace bench {

namespace {

// Number of the open line's descriptor, for the program that inherits it.
constexpr char kVariable[] = "HEADUNIT_RESET_LINE";

int openPort(const std::string &path)
{
    return ::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
}

int modemBit(const ResetWiring &wiring)
{
    return wiring.kind == ResetWiring::Kind::Rts ? TIOCM_RTS : TIOCM_DTR;
}

bool driveModemLine(int port, const ResetWiring &wiring, bool set)
{
    const int bit = modemBit(wiring);
    return ::ioctl(port, set ? TIOCMBIS : TIOCMBIC, &bit) == 0;
}

// The last close of a port drops its lines, unless it is told not to.
bool keepAfterClose(int port)
{
    termios settings = {};
    if (::tcgetattr(port, &settings) != 0)
        return false;
    settings.c_cflag &= ~static_cast<tcflag_t>(HUPCL);
    return ::tcsetattr(port, TCSANOW, &settings) == 0;
}

std::string whyNotDriven(const ResetWiring &wiring, const std::string &uart)
{
    const char *name = wiring.kind == ResetWiring::Kind::Rts ? "RTS" : "DTR";
    if (errno == ENOTTY || errno == EINVAL)
        return uart + " has no modem lines, so no " + name
            + "; name a GPIO line (gpio:CHIP:LINE), or leave --reset out and pull the line by hand";
    return uart + ": " + name + " cannot be driven (" + std::strerror(errno)
        + "); see to the adapter, or name another line";
}

} // namespace

std::unique_ptr<ResetLine> ResetLine::open(const ResetWiring &wiring, const std::string &uart,
                                           std::string *error)
{
    int descriptor = -1;
    if (!wiring.isModemLine()) {
        descriptor = takeGpioLine(wiring.chip, wiring.lineNumber, wiring.inverted, error);
        if (descriptor < 0)
            return nullptr;
        return std::unique_ptr<ResetLine>(new ResetLine(wiring, uart, descriptor));
    }
    descriptor = openPort(uart);
    if (descriptor < 0) {
        *error = uart + " cannot be opened (" + std::strerror(errno) + "); see to the adapter";
        return nullptr;
    }
    std::unique_ptr<ResetLine> line(new ResetLine(wiring, uart, descriptor));
    if (!line->drive() || !keepAfterClose(descriptor)) {
        *error = whyNotDriven(wiring, uart);
        return nullptr;
    }
    return line;
}

void ResetLine::bequeath()
{
    ::fcntl(descriptor, F_SETFD, 0);
    ::setenv(kVariable, std::to_string(descriptor).c_str(), 1);
    descriptor = -1;
}

std::unique_ptr<ResetLine> ResetLine::inherited(const ResetWiring &wiring, const std::string &uart)
{
    const char *number = std::getenv(kVariable);
    if (number == nullptr)
        return nullptr;
    const int descriptor = std::atoi(number);
    ::unsetenv(kVariable);
    if (::fcntl(descriptor, F_SETFD, FD_CLOEXEC) != 0)
        return nullptr;
    std::unique_ptr<ResetLine> line(new ResetLine(wiring, uart, descriptor));
    if (wiring.isModemLine())
        line->keepWhenOpened();
    return line;
}

ResetLine::ResetLine(const ResetWiring &lineWiring, std::string uartPath, int openDescriptor)
    : wiring(lineWiring), uart(std::move(uartPath)), descriptor(openDescriptor)
{
}

ResetLine::~ResetLine()
{
    if (follower.joinable()) {
        ::eventfd_write(end, 1);
        follower.join();
    }
    for (const int each : {openings, end, descriptor}) {
        if (each >= 0)
            ::close(each);
    }
}

bool ResetLine::set(bool asserted)
{
    const std::lock_guard<std::mutex> lock(mutex);
    isAsserted = asserted;
    // An adapter that was pulled and is back is another one to the descriptor.
    return drive() || (wiring.isModemLine() && reopen() && drive());
}

bool ResetLine::drive()
{
    const bool level = isAsserted != wiring.inverted;
    return wiring.isModemLine() ? driveModemLine(descriptor, wiring, level)
                                : driveGpioLine(descriptor, level);
}

bool ResetLine::reopen()
{
    const int fresh = openPort(uart);
    if (fresh < 0)
        return false;
    ::close(descriptor);
    descriptor = fresh;
    return keepAfterClose(descriptor);
}

// The kernel raises both modem lines whenever anybody opens the port: they are put back at once.
void ResetLine::keepWhenOpened()
{
    openings = ::inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
    end = ::eventfd(0, EFD_CLOEXEC);
    if (::inotify_add_watch(openings, uart.c_str(), IN_OPEN) >= 0)
        follower = std::thread([this] { followOpenings(); });
}

void ResetLine::followOpenings()
{
    pollfd descriptors[] = {{openings, POLLIN, 0}, {end, POLLIN, 0}};
    while (::poll(descriptors, 2, -1) >= 0 || errno == EINTR) {
        if ((descriptors[1].revents & POLLIN) != 0)
            return;
        char events[4096];
        if (::read(openings, events, sizeof events) > 0) {
            const std::lock_guard<std::mutex> lock(mutex);
            drive();
        }
    }
}

} // namespace bench
