#pragma once

#include <QtGlobal>

namespace benchmark {

// Nanoseconds that the calling thread has slept through nanosleep(), clock_nanosleep() and
// usleep(), or waited for a command in system(), for which this program has its own: what a page
// waits for by definition is not what it costs.
qint64 waitedNanoseconds();

} // namespace benchmark
