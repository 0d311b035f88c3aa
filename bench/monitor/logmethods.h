#pragma once

namespace bench {

class Dispatcher;
class TraceLog;

// unit.journal and trace.read, and their events. The log outlives the dispatcher.
void addJournalMethods(Dispatcher *dispatcher);
void addTraceMethods(Dispatcher *dispatcher, TraceLog *trace);

} // namespace bench
