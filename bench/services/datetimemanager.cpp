#include "krdatetime/datetimemanager.h"

#include "bench/unit/clockstate.h"
#include "bench/unit/headunit.h"
#include "bench/unit/journal.h"

namespace krdatetime {

DateTimeManager *DateTimeManager::instance()
{
    static DateTimeManager manager;
    return &manager;
}

QDateTime DateTimeManager::currentDateTime(int kind)
{
    bench::journal().call(QStringLiteral("DateTimeManager"), QStringLiteral("currentDateTime"),
                          {kind});
    return bench::unit().clock.now();
}

} // namespace krdatetime
