#pragma once

#include <QDateTime>

namespace krdatetime {

class DateTimeManager
{
public:
    static DateTimeManager *instance();
    QDateTime currentDateTime(int);
};

} // namespace krdatetime
