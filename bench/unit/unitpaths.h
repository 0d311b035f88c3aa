#pragma once

#include "unitdocument.h"

namespace bench {

// The table of the model's own paths, in the order in which they are written.
QVector<UnitDocument::Entry> pathsOf(HeadUnit *unit);

} // namespace bench
