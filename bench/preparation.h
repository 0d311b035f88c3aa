#pragma once

#include "bench/commandline.h"
#include "bench/root/privateroot.h"

#include <string>

namespace bench {

// Where the root shows what the user named.
constexpr char kPackageFolder[] = "/media/update";
constexpr const char *kUsbFolders[2] = {"/media/usb0", "/media/usb1"};

// Outside of the private root: looks at everything that the command line names, makes its
// paths absolute, fills in the defaults and says what the root is to show. False, with
// one line that names the thing and the cure, when one cannot be used; then nothing was made.
bool prepareRoot(CommandLine *options, RootLayout *layout, std::string *error);

} // namespace bench
