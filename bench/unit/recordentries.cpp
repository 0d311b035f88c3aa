#include "recordentries.h"

#include "gnssstate.h"
#include "valueentries.h"

#include <QJsonArray>

#include <limits>

namespace bench::entries {

namespace {

// The fields of a satellite, under the names that the document gives them.
struct SatelliteField
{
    const char *name;
    int32_t krnmSatellite::*field;
};

constexpr SatelliteField kSatelliteFields[] = {
    {"number", &krnmSatellite::number},       {"in_use", &krnmSatellite::inUse},
    {"elevation", &krnmSatellite::elevation}, {"azimuth", &krnmSatellite::azimuth},
    {"signal", &krnmSatellite::signal},
};

QJsonValue satellitesToJson(const QVector<krnmSatellite> &satellites)
{
    QJsonArray list;
    for (const krnmSatellite &satellite : satellites) {
        QJsonObject entry;
        for (const SatelliteField &field : kSatelliteFields)
            entry.insert(QLatin1String(field.name), satellite.*field.field);
        list.append(entry);
    }
    return list;
}

const SatelliteField *satelliteField(const QString &name)
{
    for (const SatelliteField &field : kSatelliteFields) {
        if (name == QLatin1String(field.name))
            return &field;
    }
    return nullptr;
}

QString checkSatellites(const QJsonValue &given)
{
    if (!given.isArray())
        return wanted(QStringLiteral("a list of satellites"));
    const QJsonArray list = given.toArray();
    for (int i = 0; i < list.size(); ++i) {
        const QString place = QStringLiteral(".%1").arg(i);
        if (!list.at(i).isObject())
            return place + wanted(QStringLiteral("an object"));
        const QJsonObject satellite = list.at(i).toObject();
        for (auto field = satellite.begin(); field != satellite.end(); ++field) {
            const QString name = place + QLatin1Char('.') + field.key();
            if (satelliteField(field.key()) == nullptr)
                return name + QStringLiteral(": a satellite has no such key");
            if (!isWhole(field.value(), std::numeric_limits<int>::min(), kNoMaximum))
                return name + wanted(QStringLiteral("a whole number"));
        }
    }
    return QString();
}

void writeSatellites(GnssState *gnss, const QJsonArray &list)
{
    gnss->satellites.clear();
    int inUse = 0;
    for (const QJsonValue &entry : list) {
        krnmSatellite satellite = {};
        for (const SatelliteField &field : kSatelliteFields)
            satellite.*field.field = entry.toObject().value(QLatin1String(field.name)).toInt();
        gnss->satellites.append(satellite);
        inUse += satellite.inUse == 1 ? 1 : 0;
    }
    int place = 0;
    for (krnmSatellite &satellite : gnss->info.satellites)
        satellite = gnss->satellites.value(place++);
    gnss->info.satellitesInView = gnss->satellites.size();
    gnss->info.satellitesInUse = inUse;
}

QVariant toVariant(const QJsonValue &value)
{
    // A whole number was stored as one.
    return isWhole(value, std::numeric_limits<int>::min(), kNoMaximum) ? QVariant(value.toInt())
                                                                       : value.toVariant();
}

QString checkSettings(const QJsonValue &given)
{
    if (!given.isObject())
        return wanted(QStringLiteral("an object of settings"));
    const QJsonObject store = given.toObject();
    for (auto setting = store.begin(); setting != store.end(); ++setting) {
        if (!setting.value().isBool() && !setting.value().isDouble() && !setting.value().isString())
            return QLatin1Char('.') + setting.key()
                + wanted(QStringLiteral("true or false, a number or a text"));
    }
    return QString();
}

QString checkResults(const QJsonValue &given)
{
    static const QStringList operations{
        QStringLiteral("startTcpServer"),    QStringLiteral("startUdpServer"),
        QStringLiteral("stopNetTest"),       QStringLiteral("startUdp50Client"),
        QStringLiteral("startUdp100Client"), QStringLiteral("startTcpClient"),
    };
    if (!given.isObject())
        return wanted(QStringLiteral("an object of results"));
    const QJsonObject results = given.toObject();
    for (auto result = results.begin(); result != results.end(); ++result) {
        if (!operations.contains(result.key()))
            return QLatin1Char('.') + result.key()
                + QStringLiteral(": the network tests have no such operation");
        if (!isWhole(result.value(), std::numeric_limits<int>::min(), kNoMaximum))
            return QLatin1Char('.') + result.key() + wanted(QStringLiteral("a whole number"));
    }
    return QString();
}

} // namespace

Entry satellites(const char *path, GnssState *gnss, const char *description)
{
    return {path,
            QStringLiteral("a list of objects"),
            description,
            [gnss] { return satellitesToJson(gnss->satellites); },
            checkSatellites,
            [gnss](const QJsonValue &given) { writeSatellites(gnss, given.toArray()); }};
}

Entry settings(const char *path, QMap<QString, Setting> *store, QVariant Setting::*column,
               const char *description)
{
    const auto read = [store, column]() -> QJsonValue {
        QJsonObject object;
        for (auto setting = store->constBegin(); setting != store->constEnd(); ++setting) {
            if ((*setting.*column).isValid())
                object.insert(setting.key(), QJsonValue::fromVariant(*setting.*column));
        }
        return object;
    };
    const auto write = [store, column](const QJsonValue &given) {
        const QJsonObject object = given.toObject();
        for (auto setting = store->begin(); setting != store->end(); ++setting)
            *setting.*column = QVariant();
        for (auto setting = object.begin(); setting != object.end(); ++setting)
            (*store)[setting.key()].*column = toVariant(setting.value());
        for (auto setting = store->begin(); setting != store->end();)
            setting = setting->value.isValid() || setting->first.isValid() ? setting + 1
                                                                           : store->erase(setting);
    };
    return {path, QStringLiteral("an object of settings"), description, read, checkSettings, write};
}

Entry results(const char *path, QMap<QString, int> *values, const char *description)
{
    const auto read = [values]() -> QJsonValue {
        QJsonObject object;
        for (auto result = values->constBegin(); result != values->constEnd(); ++result)
            object.insert(result.key(), result.value());
        return object;
    };
    const auto write = [values](const QJsonValue &given) {
        const QJsonObject object = given.toObject();
        values->clear();
        for (auto result = object.begin(); result != object.end(); ++result)
            values->insert(result.key(), result.value().toInt());
    };
    return {path, QStringLiteral("an object of results"), description, read, checkResults, write};
}

} // namespace bench::entries
