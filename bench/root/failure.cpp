#include "failure.h"

#include "exitstatus.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace bench {

void fail(const char *what, const std::string &path)
{
    std::fprintf(stderr, "bench: cannot %s %s: %s\n", what, path.c_str(), std::strerror(errno));
    std::exit(kFault);
}

} // namespace bench
