#pragma once

#include <string>

namespace bench {

// One line of a GPIO chip, as an output. By the kernel's own calls (its second version, which
// every kernel since 5.10 has): two of them are all that is needed, and the library above
// them has another interface on each of the distributions that this is built on.

// Takes the line, with that level from the first moment on. A descriptor that holds it until
// it is closed; -1 with one line that names the thing and the cure.
int takeGpioLine(const std::string &chip, unsigned lineNumber, bool high, std::string *error);

bool driveGpioLine(int line, bool high);

} // namespace bench
