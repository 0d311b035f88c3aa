#pragma once

#include "privateroot.h"

#include <string>
#include <vector>

namespace bench {

using Words = std::vector<std::string>;

// The words of a bwrap command that makes the private root; the program's own follow.
Words rootCommand(const RootLayout &layout);

// Makes the root once and leaves it, so that a refusal is told apart from what the
// program returns. Empty if it works; else one line: what is refused, and the cure.
std::string refusal(const Words &rootCommand);

// For execvp; valid as long as `words`.
std::vector<char *> pointers(Words &words);

} // namespace bench
