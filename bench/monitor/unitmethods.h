#pragma once

namespace bench {

class Dispatcher;
class UnitDocument;

// unit.get, unit.set and unit.emit, and the unit's events. The document
// outlives the dispatcher.
void addUnitMethods(Dispatcher *dispatcher, UnitDocument *document);

// unit.file.*: what the plug-in sees of the file system.
void addFileMethods(Dispatcher *dispatcher);

// unit.memory.*, unit.registers and unit.register.*: the physical memory that the plug-in maps.
void addMemoryMethods(Dispatcher *dispatcher);

} // namespace bench
