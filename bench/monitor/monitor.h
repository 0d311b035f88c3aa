#pragma once

#include "dispatcher.h"

#include "bench/host/bench.h"

#include <memory>

namespace bench {

class UnitDocument;

// All the calls that the running bench can take. GUI thread; the parties and
// the document outlive it.
std::unique_ptr<Dispatcher> makeDispatcher(const Bench &bench, UnitDocument *document);

// Holds the number of the process that a user sees and may end: inside of the
// private root the program has another one.
constexpr char kProcessVariable[] = "HEADUNIT_PROCESS";

// What every client of the socket is told first.
QJsonObject greeting(const Bench &bench);

} // namespace bench
