#include "line.h"

#include <algorithm>
#include <iterator>

#include <poll.h>

namespace bench::chip {

namespace {

std::chrono::nanoseconds onTheLine(int count, int baud)
{
    if (baud <= 0)
        return std::chrono::nanoseconds(0);
    return std::chrono::nanoseconds(INT64_C(10000000000) * count / baud);
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

void Line::discardInput()
{
    while (!read().isEmpty()) { }
}

Line::Event Line::waitOn(int descriptor, int wakeDescriptor,
                         std::optional<Clock::time_point> deadline, bool forBytes)
{
    pollfd descriptors[] = {{wakeDescriptor, POLLIN, 0}, {forBytes ? descriptor : -1, POLLIN, 0}};
    const int ready = pollUntil(descriptors, std::size(descriptors), deadline);
    if (ready < 0 || (descriptors[0].revents & POLLIN) != 0)
        return Event::Woken; // an interrupting signal: the caller looks again
    return ready > 0 ? Event::Bytes : Event::Deadline;
}

} // namespace bench::chip
