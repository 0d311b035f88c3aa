#pragma once

#include <QStringList>

class QObject;

namespace bench {
class TraceLog;
}

namespace tests {

// "sender: signal -> slot" of every connection of a named child's signal into the object,
// oldest first, as Qt's own dump of the object tells them.
QStringList connectionsInto(const QObject &receiver, bench::TraceLog &trace);

} // namespace tests
