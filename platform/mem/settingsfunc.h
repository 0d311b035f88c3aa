#pragma once

#include "platform_api.h"

#include <QString>
#include <QVariant>

namespace mem {

// The settings store for values that survive a restart. GUI thread only.
class PLATFORM_API SettingsFunc
{
public:
    static SettingsFunc *instance();

    bool getValue(QString key, bool defaultValue);

    // `first` and `flag` are the store's own; what getValue returns afterwards is `value`.
    void setValue(QString key, QVariant first, QVariant value, bool flag);
};

} // namespace mem
