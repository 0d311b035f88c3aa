#pragma once

#include "platform_api.h"

#include <QDateTime>

namespace krdatetime {

// Client of the date and time service. GUI thread only.
class PLATFORM_API DateTimeManager
{
public:
    static DateTimeManager *instance();

    // 1: the system's local date and time.
    QDateTime currentDateTime(int kind);
};

} // namespace krdatetime
