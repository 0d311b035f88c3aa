#include "updatephase.h"

namespace bench {

QString nameOf(UpdatePhase phase)
{
    static constexpr const char *kNames[] = {
        "package",    "open",         "reset",         "sync",
        "identify",   "watchdog",     "load-stage-1",  "greet-stage-1",
        "check-line", "load-stage-2", "start-stage-2", "prepare-stage-2",
        "write",      "end",
    };
    return QString::fromLatin1(kNames[static_cast<int>(phase)]);
}

} // namespace bench
