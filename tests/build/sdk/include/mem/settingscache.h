#pragma once

#include <QString>
#include <QVariant>

namespace mem {

class SettingsCache
{
public:
    static SettingsCache *instance();
    bool getValue(QString, bool);
    int getValue(const QString &, int);
    void setValue(const QString &, const QVariant &);
    void setValue(QString, QVariant, QVariant);
};

} // namespace mem
