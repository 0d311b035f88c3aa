#pragma once

#include <QtGlobal>

namespace benchmark {

// Nanoseconds that the calling thread has slept through nanosleep(), clock_nanosleep() and
// usleep(), for which this program has its own: what a page waits for by definition is not what it
// costs.
qint64 sleptNanoseconds();

} // namespace benchmark
