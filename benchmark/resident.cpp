#include "resident.h"

#include <QFile>

#include <malloc.h>
#include <unistd.h>

namespace benchmark {

qint64 residentKibibytes()
{
    ::malloc_trim(0);
    QFile statm(QStringLiteral("/proc/self/statm"));
    if (!statm.open(QIODevice::ReadOnly))
        qFatal("no /proc/self/statm");
    return statm.readAll().split(' ').value(1).toLongLong() * ::sysconf(_SC_PAGESIZE) / 1024;
}

} // namespace benchmark
