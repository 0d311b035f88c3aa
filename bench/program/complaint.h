#pragma once

#include <string>

namespace bench {

// One line on standard error, beginning with the program's name.
void remark(const std::string &line);

// The same, for an end with that exit status, which is returned.
int complain(const std::string &line, int status);

} // namespace bench
