#pragma once

#include "platform_api.h"

#include <QString>
#include <QVariant>

namespace mem {

// The settings store for values that live until the next start. GUI thread only.
class PLATFORM_API SettingsCache
{
public:
    static SettingsCache *instance();

    bool getValue(QString key, bool defaultValue);
    int getValue(const QString &key, int defaultValue);

    void setValue(const QString &key, const QVariant &value);

    // `first` is kept beside the value for the store's own use; what getValue
    // returns afterwards is `value`.
    void setValue(QString key, QVariant first, QVariant value);
};

} // namespace mem
