#pragma once

#include <string>

namespace bench {

// Ends the program with kFault: "bench: cannot WHAT PATH: errno's text".
[[noreturn]] void fail(const char *what, const std::string &path);

} // namespace bench
