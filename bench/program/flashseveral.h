#pragma once

#include "commandline.h"

namespace bench {

// A bench for each receiver of the command line, side by side. The exit status of all.
int flashSeveral(const CommandLine &options);

} // namespace bench
