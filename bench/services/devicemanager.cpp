#include "krdevice/devicemanager.h"

#include "bench/unit/headunit.h"
#include "bench/unit/journal.h"
#include "bench/unit/usbstate.h"

namespace krdevice {

using bench::journal;
using bench::unit;
using bench::UsbPortState;

namespace {

const QString kService = QStringLiteral("DeviceManager");

// The unit has two ports; a call for another one is answered as for an empty port.
UsbPortState portState(int port)
{
    return port == 0 || port == 1 ? unit().usb.ports[port] : UsbPortState();
}

} // namespace

DeviceManager *DeviceManager::instance()
{
    static DeviceManager manager;
    return &manager;
}

bool DeviceManager::isUsbDiskDeviceExist(int port)
{
    journal().call(kService, QStringLiteral("isUsbDiskDeviceExist"), {port});
    return portState(port).disk;
}

QString DeviceManager::usbPath(int port)
{
    journal().call(kService, QStringLiteral("usbPath"), {port});
    const UsbPortState state = portState(port);
    return state.disk ? state.path : QString();
}

void DeviceManager::setUsbBcMode(int port, int mode)
{
    journal().call(kService, QStringLiteral("setUsbBcMode"), {port, mode});
    if (port == 0 || port == 1)
        unit().change()->usb.ports[port].chargingMode = mode;
}

int DeviceManager::getUsbBcMode(int port)
{
    journal().call(kService, QStringLiteral("getUsbBcMode"), {port});
    return portState(port).chargingMode;
}

void DeviceManager::setUsbCertification(int mode)
{
    journal().call(kService, QStringLiteral("setUsbCertification"), {mode});
    unit().change()->usb.certification = mode;
}

int DeviceManager::getUsbCertification()
{
    journal().call(kService, QStringLiteral("getUsbCertification"));
    return unit().usb.certification;
}

} // namespace krdevice
