#pragma once

#include "bubblewrap.h"

namespace bench {

// Runs `command` to its end, handing requests to stop on to the program inside
// through a pipe, and ends this process with that program's exit status. A program that has
// not ended 10 s after the request, nor shown life for as long, is killed.
[[noreturn]] void supervise(Words command);

// Inside: takes the pipes over from the supervisor. Returns the end that requests to stop come
// from; -1 without one.
int takeStopDescriptor();

// Inside, after a request to stop: the program still has something to finish and gets on with it.
// Any thread.
void showLife();

} // namespace bench
