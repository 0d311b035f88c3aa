#include "virtualclock.h"

#include "timeline.h"

namespace tests {

VirtualClock::VirtualClock() : began(0)
{
    Timeline::instance().start();
    began = Timeline::instance().monotonic();
}

VirtualClock::~VirtualClock()
{
    Timeline::instance().stop();
}

std::int64_t VirtualClock::microseconds() const
{
    return (Timeline::instance().monotonic() - began) / 1000;
}

int VirtualClock::threads()
{
    return Timeline::instance().participants();
}

void VirtualClock::setTimeOfDay(const QTime &time)
{
    const int by = QTime::currentTime().msecsTo(time);
    Timeline::instance().moveTimeOfDay(by * INT64_C(1000000));
}

} // namespace tests
