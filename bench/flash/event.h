#pragma once

#include <QJsonObject>

#include <functional>

namespace bench {

// What an update tells while it runs: one object, whose "kind" says what else it holds.
// docs/flash.md lists the kinds and their keys; programs read them.
using Event = QJsonObject;

using EventSink = std::function<void(const Event &)>;

} // namespace bench
