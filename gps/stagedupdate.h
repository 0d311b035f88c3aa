#pragma once

#include <QString>

// The update of modules that the unit's own updater flashes, as far as it is files and commands:
// the package goes from a USB disk to the unit's flash, and the updater finds it after a reset.
namespace testmode::stagedupdate {

// The marker tells the updater that a package waits. False: it does not stand whole in flash.
bool writeMarker();

// Mount folder of the disk that the package is taken from, port 0 before port 1; empty: none.
QString usbDiskPath();

// Blocks until the copy is in flash or has failed.
void copyPackage(const QString &disk);
bool packageIsStaged();

} // namespace testmode::stagedupdate
