#pragma once

#include "commandline.h"

#include "bench/root/privateroot.h"

#include <string>

namespace bench {

// Outside of the private root: looks at everything that the command line names, makes its
// paths absolute, fills in the defaults and says what the root is to show. False, with
// one line that names the thing and the cure, when one cannot be used; then nothing was made.
bool prepareRoot(CommandLine *options, RootLayout *layout, std::string *error);

// Where the operator's window keeps its layout; the same inside of the root.
std::string windowFolder();

// Where a run that fails leaves its capsule when no file is named; the same inside of the root.
std::string capsuleFolder();

} // namespace bench
