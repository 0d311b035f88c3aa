#pragma once

#include "settingsstate.h"
#include "unitdocument.h"

#include <QMap>

namespace bench {

struct CoveredSector;
struct GnssState;
struct HeldSatellite;

} // namespace bench

// Rows of the document over the model's lists and maps, which have an inside to check.
namespace bench::entries {

using Entry = UnitDocument::Entry;

// The list of the service; the status record follows it.
Entry satellites(const char *path, GnssState *gnss, const char *description);

Entry heldSatellites(const char *path, QVector<HeldSatellite> *held, const char *description);
Entry coveredSectors(const char *path, QVector<CoveredSector> *covered, const char *description);

// One column of a settings store. Writing the values leaves the stored first
// arguments of keys that stay.
Entry settings(const char *path, QMap<QString, Setting> *store, QVariant Setting::*column,
               const char *description);

// What the operations of the network tests return, by their names.
Entry results(const char *path, QMap<QString, int> *values, const char *description);

} // namespace bench::entries
