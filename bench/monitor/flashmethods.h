#pragma once

namespace bench {

class Dispatcher;
class Receiver;

// The calls about the receiver's flash: what it holds, where it comes from, how it differs from a
// package; load, save, erase. `receiver` is null while a real device stands in its place.
void addFlashMethods(Dispatcher *dispatcher, Receiver *receiver);

} // namespace bench
