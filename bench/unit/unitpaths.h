#pragma once

#include "unitdocument.h"

#include "platform_api.h"

namespace bench {

class HeadUnit;

// The table of the model's own paths, in the order in which they are written.
PLATFORM_API QVector<UnitDocument::Entry> pathsOf(HeadUnit *unit);

} // namespace bench
