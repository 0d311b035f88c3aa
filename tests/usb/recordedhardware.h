#pragma once

#include <QMap>

namespace tests {

// Stands behind devmem_main() and usleep() in executables that link it: registers
// that remember, with every access and every sleep in the journal:
//   registers.read("0x9c000000+0x190")
//   registers.write("0x9c000000+0x190", "0x7f7f4533")
//   clock.usleep(500000), which returns at once
struct RecordedHardware
{
    QMap<unsigned int, unsigned int> words; // by physical address; 0 where none stands
    bool fails = false;                     // accesses leave the caller's word as it was
};

RecordedHardware &hardware();

} // namespace tests
