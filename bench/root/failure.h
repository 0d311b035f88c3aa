#pragma once

#include <string>

namespace bench {

// Exit status for what is the bench's own fault.
constexpr int kInternalFault = 70;

// Ends the program: "bench: cannot WHAT PATH: errno's text".
[[noreturn]] void fail(const char *what, const std::string &path);

} // namespace bench
