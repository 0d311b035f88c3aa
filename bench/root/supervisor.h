#pragma once

#include "bubblewrap.h"

namespace bench {

// Runs `command` to its end, handing requests to stop on to the program inside
// through a pipe, and ends this process with that program's exit status.
[[noreturn]] void supervise(Words command);

// Inside: takes the pipe over from the supervisor. -1 without one.
int takeStopDescriptor();

} // namespace bench
