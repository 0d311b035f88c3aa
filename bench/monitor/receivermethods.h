#pragma once

namespace bench {

class Dispatcher;
class Receiver;
class UnitDocument;

// The receiver.* calls. Without a receiver (a real device stands in its place)
// they all fail with Unavailable. The document has the receiver's paths; both
// outlive the dispatcher.
void addReceiverMethods(Dispatcher *dispatcher, UnitDocument *document, Receiver *receiver);

} // namespace bench
