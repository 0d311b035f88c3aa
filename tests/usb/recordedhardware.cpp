#include "recordedhardware.h"

#include "bench/unit/journal.h"
#include "usb/devmem_main.h"

#include <unistd.h>

namespace tests {

namespace {

QString hex(unsigned int number)
{
    return QStringLiteral("0x") + QString::number(number, 16);
}

} // namespace

RecordedHardware &hardware()
{
    static RecordedHardware instance;
    return instance;
}

} // namespace tests

void testmode::devmem_main(unsigned int pageBase, unsigned int offset, char write,
                           unsigned int *value)
{
    using tests::hardware;
    using tests::hex;

    const QString place = hex(pageBase) + QLatin1Char('+') + hex(offset);
    const QString registers = QStringLiteral("registers");
    if (write != 0)
        bench::journal().call(registers, QStringLiteral("write"), {place, hex(*value)});
    else
        bench::journal().call(registers, QStringLiteral("read"), {place});
    if (hardware().fails)
        return;
    if (write != 0)
        hardware().words[pageBase + offset] = *value;
    *value = hardware().words.value(pageBase + offset);
}

extern "C" int usleep(useconds_t microseconds)
{
    bench::journal().call(QStringLiteral("clock"), QStringLiteral("usleep"),
                          {static_cast<int>(microseconds)});
    return 0;
}
