#include "stagedupdate.h"

#include "krdevice/devicemanager.h"
#include "tools/debugtrace.h"

#include <QFile>

#include <cstdlib>
#include <tuple>

namespace testmode::stagedupdate {

namespace {

const char kMarker[] = "/media/flash/nvm/gpsupdate.cfg";
const char kMarkerText[] = "true";
const char kStagedPackage[] = "/media/flash/nvm/gps.bin";

} // namespace

// A full flash takes the open and refuses the bytes, some only when they are flushed by the close.
bool writeMarker()
{
    QFile marker(QString::fromLatin1(kMarker));
    if (!marker.open(QIODevice::WriteOnly))
        return false;
    const qint64 bytes = qstrlen(kMarkerText);
    const bool written = marker.write(kMarkerText, bytes) == bytes;
    marker.close();
    return written && marker.error() == QFileDevice::NoError;
}

QString usbDiskPath()
{
    krdevice::DeviceManager *devices = krdevice::DeviceManager::instance();
    for (int port = 0; port < 2; ++port) {
        if (devices->isUsbDiskDeviceExist(port))
            return devices->usbPath(port);
    }
    return QString();
}

void copyPackage(const QString &disk)
{
    const QString copy = QStringLiteral("cp %1/gps.bin /media/flash/nvm/").arg(disk);
    // Kept: what the commands return is not looked at, only whether the staged file is there.
    std::ignore = std::system(copy.toLatin1().constData());
    std::ignore = std::system("sync");
}

bool packageIsStaged()
{
    return QFile::exists(QString::fromLatin1(kStagedPackage));
}

} // namespace testmode::stagedupdate
