#pragma once

#include <QString>

namespace krdevice {

class DeviceManager
{
public:
    static DeviceManager *instance();
    bool isUsbDiskDeviceExist(int);
    QString usbPath(int);
    void setUsbBcMode(int, int);
    int getUsbBcMode(int);
    void setUsbCertification(int);
    int getUsbCertification();
};

} // namespace krdevice
