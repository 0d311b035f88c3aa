#pragma once

#include <QDateTime>

namespace bench {

// The unit's own clock.
struct ClockState
{
    QDateTime standsAt; // the clock stands still at this local time; invalid: it runs

    QDateTime now() const { return standsAt.isValid() ? standsAt : QDateTime::currentDateTime(); }
};

} // namespace bench
