#pragma once

namespace bench {

class Receiver;
class UnitDocument;

// Adds the receiver's settings and its faults to the unit's document, under
// "receiver". The receiver outlives the document.
void addReceiverPaths(UnitDocument *document, Receiver *receiver);

} // namespace bench
