#pragma once

#include "bench/monitor/caller.h"

#include <QString>
#include <QVector>

namespace bench {

// One image of the package beside what the simulated receiver's flash holds in its place.
struct ImageComparison
{
    QString name;
    quint32 address = 0; // in the flash
    int bytes = 0;
    QString fileSum; // SHA-256, as hexadecimal digits
    QString flashSum;
    bool equal = false; // byte for byte; an empty file is never equal
};

// Compares the package that the unit shows with the flash.
QVector<ImageComparison> compareFlash(Caller *caller);

} // namespace bench
