#pragma once

#include <QString>

namespace bench {

class Host;
class Receiver;
class ResetPrompt;
class TraceLog;

// The parts of a running bench, for the monitor and the panel. Owned by the session;
// the receiver is null while a real device stands in its place.
struct Bench
{
    Host *host = nullptr;
    Receiver *receiver = nullptr;
    TraceLog *trace = nullptr;
    QString pictures; // folder of the panel's screenshots, inside the private root; empty: none
    ResetPrompt *resetPrompt = nullptr; // of a receiver that is reset by hand
};

} // namespace bench
