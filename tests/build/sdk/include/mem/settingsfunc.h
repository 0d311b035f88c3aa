#pragma once

#include <QString>
#include <QVariant>

namespace mem {

class SettingsFunc
{
public:
    static SettingsFunc *instance();
    bool getValue(QString, bool);
    void setValue(QString, QVariant, QVariant, bool);
};

} // namespace mem
