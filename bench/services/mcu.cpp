#include "mcu/mcumanager.h"
#include "mcu/mcuservice.h"

#include "bench/unit/headunit.h"
#include "bench/unit/journal.h"
#include "bench/unit/systemstate.h"

using bench::journal;
using bench::unit;

namespace mcu {

namespace {

const QString kService = QStringLiteral("McuService");

} // namespace

McuService *McuService::instance()
{
    static McuService service;
    return &service;
}

void McuService::setWatchDogEnable(bool enable)
{
    journal().call(kService, QStringLiteral("setWatchDogEnable"), {enable});
    unit().change()->system.watchdogEnabled = enable;
}

void McuService::setResetSystem(int kind)
{
    journal().call(kService, QStringLiteral("setResetSystem"), {kind});
    unit().requestSystemReset(kind);
}

void McuService::factoryReset()
{
    journal().call(kService, QStringLiteral("factoryReset"));
    unit().requestFactoryReset();
}

} // namespace mcu

McuManager *McuManager::instance()
{
    static McuManager manager;
    return &manager;
}

QString McuManager::findUpdateFile(UpdateFile kind)
{
    journal().call(QStringLiteral("McuManager"), QStringLiteral("findUpdateFile"), {kind});
    return kind == GnssPackage ? unit().system.updateFolder : QString();
}
