#include "recordentries.h"

#include "gnssstate.h"
#include "valueentries.h"

#include <QJsonArray>

#include <algorithm>
#include <limits>
#include <vector>

namespace bench::entries {

namespace {

// A field of a record, under the name that the document gives it.
template <typename Record>
struct Field
{
    const char *name;
    int Record::*field;
    int minimum = std::numeric_limits<int>::min();
    int maximum = kNoMaximum;
};

template <typename Record>
using Fields = std::vector<Field<Record>>;

const Fields<krnmSatellite> kSatelliteFields{
    {"number", &krnmSatellite::number},       {"in_use", &krnmSatellite::inUse},
    {"elevation", &krnmSatellite::elevation}, {"azimuth", &krnmSatellite::azimuth},
    {"signal", &krnmSatellite::signal},
};

const Fields<HeldSatellite> kHeldFields{
    {"number", &HeldSatellite::number, 1, 30},
    {"elevation", &HeldSatellite::elevation, 0, 90},
    {"azimuth", &HeldSatellite::azimuth, 0, 359},
};

const Fields<CoveredSector> kSectorFields{
    {"from", &CoveredSector::from, 0, 359},
    {"to", &CoveredSector::to, 0, 359},
    {"elevation", &CoveredSector::elevation, 0, 90},
};

template <typename Record>
QJsonValue toJson(const QVector<Record> &records, const Fields<Record> &fields)
{
    QJsonArray list;
    for (const Record &record : records) {
        QJsonObject entry;
        for (const Field<Record> &field : fields)
            entry.insert(QLatin1String(field.name), record.*field.field);
        list.append(entry);
    }
    return list;
}

template <typename Record>
QVector<Record> fromJson(const QJsonArray &list, const Fields<Record> &fields)
{
    QVector<Record> records;
    for (const QJsonValue &entry : list) {
        Record record = {};
        for (const Field<Record> &field : fields)
            record.*field.field = entry.toObject().value(QLatin1String(field.name)).toInt();
        records.append(record);
    }
    return records;
}

template <typename Record>
QString checkField(const QString &key, const QJsonValue &value, const Fields<Record> &fields,
                   const QString &noun)
{
    for (const Field<Record> &field : fields) {
        if (key != QLatin1String(field.name))
            continue;
        if (isWhole(value, field.minimum, field.maximum))
            return QString();
        return wanted(field.maximum == kNoMaximum ? QStringLiteral("a whole number")
                                                  : QStringLiteral("a whole number from %1 to %2")
                                                        .arg(field.minimum)
                                                        .arg(field.maximum));
    }
    return QStringLiteral(": a %1 has no such key").arg(noun);
}

// `noun`: what one record is.
template <typename Record>
QString check(const QJsonValue &given, const Fields<Record> &fields, const QString &noun)
{
    if (!given.isArray())
        return wanted(QStringLiteral("a list of %1s").arg(noun));
    const QJsonArray list = given.toArray();
    for (int i = 0; i < list.size(); ++i) {
        const QString place = QStringLiteral(".%1").arg(i);
        if (!list.at(i).isObject())
            return place + wanted(QStringLiteral("an object"));
        const QJsonObject record = list.at(i).toObject();
        for (auto field = record.begin(); field != record.end(); ++field) {
            const QString wrong = checkField(field.key(), field.value(), fields, noun);
            if (!wrong.isEmpty())
                return place + QLatin1Char('.') + field.key() + wrong;
        }
    }
    return QString();
}

// A row over a list that nothing else follows from.
template <typename Record>
Entry listEntry(const char *path, QVector<Record> *records, const Fields<Record> &fields,
                const QString &noun, const char *description)
{
    return {path,
            QStringLiteral("a list of objects"),
            description,
            [=] { return toJson(*records, fields); },
            [=](const QJsonValue &given) { return check(given, fields, noun); },
            [=](const QJsonValue &given) { *records = fromJson(given.toArray(), fields); }};
}

void writeSatellites(GnssState *gnss, const QJsonArray &list)
{
    gnss->satellites = fromJson(list, kSatelliteFields);
    const auto inUse =
        std::count_if(gnss->satellites.cbegin(), gnss->satellites.cend(),
                      [](const krnmSatellite &satellite) { return satellite.inUse == 1; });
    int place = 0;
    for (krnmSatellite &satellite : gnss->info.satellites)
        satellite = gnss->satellites.value(place++);
    gnss->info.satellitesInView = gnss->satellites.size();
    gnss->info.satellitesInUse = int(inUse);
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
            [gnss] { return toJson(gnss->satellites, kSatelliteFields); },
            [](const QJsonValue &given) {
                return check(given, kSatelliteFields, QStringLiteral("satellite"));
            },
            [gnss](const QJsonValue &given) { writeSatellites(gnss, given.toArray()); }};
}

Entry heldSatellites(const char *path, QVector<HeldSatellite> *held, const char *description)
{
    return listEntry(path, held, kHeldFields, QStringLiteral("satellite"), description);
}

Entry coveredSectors(const char *path, QVector<CoveredSector> *covered, const char *description)
{
    return listEntry(path, covered, kSectorFields, QStringLiteral("sector"), description);
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
