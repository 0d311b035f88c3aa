#include "platformservice/platformservice.h"

#include "bench/unit/headunit.h"
#include "bench/unit/journal.h"

namespace platform {

PlatformService *PlatformService::instance()
{
    static PlatformService service;
    return &service;
}

void PlatformService::setGPSResetGPIO(bool asserted)
{
    bench::journal().call(QStringLiteral("PlatformService"), QStringLiteral("setGPSResetGPIO"),
                          {asserted});
    bench::unit().setGnssReset(asserted);
}

} // namespace platform
