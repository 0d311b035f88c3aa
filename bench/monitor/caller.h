#pragma once

#include "dispatcher.h"

namespace bench {

// Makes calls of a dispatcher that lives in another thread, and waits for each
// answer. Belongs to the thread that calls; the dispatcher must outlive the last call's start.
class Caller
{
public:
    explicit Caller(Dispatcher *destination) : dispatcher(destination) { }

    // {"result": {...}} or {"error": {...}}. Must not be called in the GUI thread.
    QJsonObject call(const QString &method, const QJsonObject &params = {});

private:
    Dispatcher *dispatcher;
};

} // namespace bench
