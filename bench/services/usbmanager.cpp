#include "lm_usb/lmusbmanager.h"

#include "bench/unit/headunit.h"
#include "bench/unit/journal.h"
#include "bench/unit/usbstate.h"

namespace lm_usb {

using bench::journal;
using bench::unit;

namespace {

const QString kService = QStringLiteral("LMUsbManager");

class UsbManager final : public LMUsbManager
{
public:
    int switchUsbMode(int mode) override
    {
        journal().call(kService, QStringLiteral("switchUsbMode"), {mode});
        unit().change()->usb.function = mode;
        return 0;
    }
};

} // namespace

LMUsbManager *LMUsbManager::create(std::string version)
{
    journal().call(kService, QStringLiteral("create"), {QString::fromStdString(version)});
    static UsbManager manager;
    return &manager;
}

} // namespace lm_usb
