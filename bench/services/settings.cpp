#include "mem/settingscache.h"
#include "mem/settingsfunc.h"

#include "bench/unit/headunit.h"
#include "bench/unit/journal.h"
#include "bench/unit/settingsstate.h"

#include <QJsonValue>

namespace mem {

using bench::journal;
using bench::Setting;
using bench::unit;

namespace {

const QString kCache = QStringLiteral("SettingsCache");
const QString kFunc = QStringLiteral("SettingsFunc");

} // namespace

SettingsCache *SettingsCache::instance()
{
    static SettingsCache store;
    return &store;
}

bool SettingsCache::getValue(QString key, bool defaultValue)
{
    journal().call(kCache, QStringLiteral("getValue"), {key, defaultValue});
    const auto found = unit().settings.cache.constFind(key);
    return found == unit().settings.cache.constEnd() ? defaultValue : found->value.toBool();
}

int SettingsCache::getValue(const QString &key, int defaultValue)
{
    journal().call(kCache, QStringLiteral("getValue"), {key, defaultValue});
    const auto found = unit().settings.cache.constFind(key);
    return found == unit().settings.cache.constEnd() ? defaultValue : found->value.toInt();
}

void SettingsCache::setValue(const QString &key, const QVariant &value)
{
    journal().call(kCache, QStringLiteral("setValue"), {key, QJsonValue::fromVariant(value)});
    unit().change()->settings.cache.insert(key, Setting{QVariant(), value});
}

void SettingsCache::setValue(QString key, QVariant first, QVariant value)
{
    journal().call(kCache, QStringLiteral("setValue"),
                   {key, QJsonValue::fromVariant(first), QJsonValue::fromVariant(value)});
    unit().change()->settings.cache.insert(key, Setting{first, value});
}

SettingsFunc *SettingsFunc::instance()
{
    static SettingsFunc store;
    return &store;
}

bool SettingsFunc::getValue(QString key, bool defaultValue)
{
    journal().call(kFunc, QStringLiteral("getValue"), {key, defaultValue});
    const auto found = unit().settings.func.constFind(key);
    return found == unit().settings.func.constEnd() ? defaultValue : found->value.toBool();
}

void SettingsFunc::setValue(QString key, QVariant first, QVariant value, bool flag)
{
    journal().call(kFunc, QStringLiteral("setValue"),
                   {key, QJsonValue::fromVariant(first), QJsonValue::fromVariant(value), flag});
    unit().change()->settings.func.insert(key, Setting{first, value});
}

} // namespace mem
