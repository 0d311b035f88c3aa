#pragma once

namespace bench {

class Dispatcher;
class Host;

// The window.* calls: the life cycle and the keys, as the framework drives them.
// The host outlives the dispatcher.
void addWindowMethods(Dispatcher *dispatcher, Host *host);

} // namespace bench
