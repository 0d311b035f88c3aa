#pragma once

#include "bench/commandline.h"

namespace bench {

class Host;
class Receiver;
class TraceLog;

// The parts of a running bench, for the monitor and the tour. Owned by main();
// the receiver is null while a real device stands in its place.
struct Bench
{
    Host *host = nullptr;
    Receiver *receiver = nullptr;
    TraceLog *trace = nullptr;
    CommandLine options; // paths as they are inside the private root
};

} // namespace bench
