#pragma once

#include <QMap>
#include <QString>
#include <QVariant>

namespace bench {

// One stored setting. `first` is what the longer forms of setValue pass beside the value.
struct Setting
{
    QVariant first;
    QVariant value;
};

// The two settings stores: "cache" lives until the next start, "func" survives it.
struct SettingsState
{
    QMap<QString, Setting> cache;
    QMap<QString, Setting> func;
};

} // namespace bench
