#pragma once

#include <string>

namespace bench {

// Makes what the plug-in expects to find by name in the private root: the physical
// memory, the USB controllers' files, the flash folder, mount folders, and `home`'s
// files in the working directory.
void makeRootContent(const std::string &home);

} // namespace bench
