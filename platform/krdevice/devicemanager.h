#pragma once

#include "platform_api.h"

#include <QString>

namespace krdevice {

// Client of the device service. GUI thread only.
class PLATFORM_API DeviceManager
{
public:
    static DeviceManager *instance();

    // A mass-storage disk on USB port 0 or 1, and the folder where it is mounted
    // (without a trailing "/"; empty without a disk).
    bool isUsbDiskDeviceExist(int port);
    QString usbPath(int port);

    // Battery-charging mode of a USB port: 0 CDP, 1 DCP, 2 SDP.
    void setUsbBcMode(int port, int mode);
    int getUsbBcMode(int port);

    // Certification mode of the unit: 79 ('O') normal, 84 ('T') TID, 77 ('M') MIF.
    void setUsbCertification(int mode);
    int getUsbCertification();
};

} // namespace krdevice
