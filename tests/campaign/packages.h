#pragma once

#include "gps/firmwarepackage.h"

#include <QByteArray>
#include <QVector>

namespace tests {

// One of two packages, 0 or 1, that differ in every byte and lie in the same sectors, so that
// nothing of the one passes for the other.
const file &campaignPackage(int which);

// One image as the flash holds it: in whole packets.
struct FlashImage
{
    int offset = 0; // in the flash
    QByteArray bytes;
};
QVector<FlashImage> flashImages(const file &package);

// What the flash holds when exactly this one of the two packages was written.
QByteArray flashWith(const file &package);

} // namespace tests
