#pragma once

namespace bench {

class Dispatcher;
class UnitDocument;

// unit.get, unit.set and unit.emit, and the unit's events. The document
// outlives the dispatcher.
void addUnitMethods(Dispatcher *dispatcher, UnitDocument *document);

// unit.file.* and unit.memory.*: what the plug-in sees of the file system.
void addFileMethods(Dispatcher *dispatcher);

} // namespace bench
