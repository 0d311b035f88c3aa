#pragma once

#include <QtGlobal>

namespace benchmark {

// What the process holds of the machine's memory; what is free in its heap is given back first.
qint64 residentKibibytes();

} // namespace benchmark
