#include "unitpaths.h"

#include "headunit.h"

#include <QJsonArray>

#include <chrono>
#include <cmath>
#include <initializer_list>
#include <limits>

namespace bench {

namespace {

using Entry = UnitDocument::Entry;

constexpr int kNoMaximum = std::numeric_limits<int>::max();

QString wanted(const QString &type)
{
    return QStringLiteral(": wanted is ") + type;
}

bool isWhole(const QJsonValue &value, double minimum, double maximum)
{
    const double number = value.toDouble(std::nan(""));
    return number >= minimum && number <= maximum && std::trunc(number) == number;
}

Entry boolean(const char *path, bool *value, const char *description)
{
    const QString type = QStringLiteral("true or false");
    return {path,
            type,
            description,
            [value] { return *value; },
            [type](const QJsonValue &given) { return given.isBool() ? QString() : wanted(type); },
            [value](const QJsonValue &given) { *value = given.toBool(); }};
}

Entry integer(const char *path, int *value, int minimum, int maximum, const char *description)
{
    const QString type = maximum == kNoMaximum
        ? QStringLiteral("a whole number from %1").arg(minimum)
        : QStringLiteral("a whole number from %1 to %2").arg(minimum).arg(maximum);
    return {path,
            type,
            description,
            [value] { return *value; },
            [type, minimum, maximum](const QJsonValue &given) {
                return isWhole(given, minimum, maximum) ? QString() : wanted(type);
            },
            [value](const QJsonValue &given) { *value = given.toInt(); }};
}

Entry milliseconds(const char *path, std::chrono::milliseconds *value, const char *description)
{
    const QString type = QStringLiteral("a whole number from 0");
    return {
        path,
        type,
        description,
        [value] { return static_cast<int>(value->count()); },
        [type](const QJsonValue &given) {
            return isWhole(given, 0, kNoMaximum) ? QString() : wanted(type);
        },
        [value](const QJsonValue &given) { *value = std::chrono::milliseconds(given.toInt()); }};
}

Entry oneOf(const char *path, int *value, std::initializer_list<int> codes, const char *description)
{
    const QVector<int> allowed(codes);
    QStringList words;
    for (const int code : allowed)
        words << QString::number(code);
    const QString type = QStringLiteral("one of ") + words.join(QStringLiteral(", "));
    return {path,
            type,
            description,
            [value] { return *value; },
            [type, allowed](const QJsonValue &given) {
                return given.isDouble() && allowed.contains(given.toInt(-1)) ? QString()
                                                                             : wanted(type);
            },
            [value](const QJsonValue &given) { *value = given.toInt(); }};
}

template <typename Number>
Entry number(const char *path, Number *value, const char *description)
{
    const QString type = QStringLiteral("a number");
    return {path,
            type,
            description,
            [value] { return static_cast<double>(*value); },
            [type](const QJsonValue &given) { return given.isDouble() ? QString() : wanted(type); },
            [value](const QJsonValue &given) { *value = static_cast<Number>(given.toDouble()); }};
}

Entry text(const char *path, QString *value, const char *description)
{
    const QString type = QStringLiteral("a text");
    return {path,
            type,
            description,
            [value] { return *value; },
            [type](const QJsonValue &given) { return given.isString() ? QString() : wanted(type); },
            [value](const QJsonValue &given) { *value = given.toString(); }};
}

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

// The list of the service; the status record follows it.
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

Entry satellites(const char *path, GnssState *gnss, const char *description)
{
    return {path,
            QStringLiteral("a list of objects"),
            description,
            [gnss] { return satellitesToJson(gnss->satellites); },
            checkSatellites,
            [gnss](const QJsonValue &given) { writeSatellites(gnss, given.toArray()); }};
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

// One column of a settings store. Writing the values leaves the stored first
// arguments of keys that stay.
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

QVector<Entry> skyPaths(HeadUnit *unit)
{
    GnssState *gnss = &unit->gnss;
    Entry sky = boolean("gnss.sky", &gnss->followsSky,
                        "the sky fills status record, satellites and duration once a second");
    sky.write = [unit](const QJsonValue &given) { unit->followSky(given.toBool()); };
    Entry seed =
        integer("gnss.sky_seed", nullptr, 0, kNoMaximum, "begins a new sky from this seed");
    seed.read = [gnss] { return static_cast<int>(gnss->sky.seed()); };
    seed.write = [unit](const QJsonValue &given) {
        unit->gnss.sky = Sky(static_cast<quint32>(given.toInt()));
        unit->followSky(unit->gnss.followsSky);
    };
    return {seed, sky};
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

// What the operations of the network tests return, by their names.
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

QVector<Entry> gnssPaths(GnssState *gnss)
{
    krnmINFO *info = &gnss->info;
    return {
        integer("gnss.module_kind", &gnss->moduleKind, 0, kNoMaximum,
                "kind of module: 1 is flashed by the test mode itself"),
        text("gnss.antenna", &gnss->antenna, "state of the antenna, in words"),
        text("gnss.install_status", &gnss->installStatus, "calibration of the installation"),
        text("gnss.version", &gnss->version, "answer to a version query"),
        integer("gnss.version_delay_ms", &gnss->versionDelay, 0, kNoMaximum,
                "from the query to the answer"),
        satellites("gnss.satellites", gnss,
                   "satellites in view: number, in_use, elevation, azimuth, signal"),
        integer("gnss.satellites_in_use", &info->satellitesInUse, 0, kNoMaximum,
                "of the status record; follows the list unless it is given"),
        integer("gnss.satellites_in_view", &info->satellitesInView, 0, kNoMaximum,
                "of the status record; follows the list unless it is given"),
        number("gnss.latitude", &info->latitude, "ddmm.mmmm"),
        number("gnss.longitude", &info->longitude, "dddmm.mmmm"),
        number("gnss.speed", &info->speed, "in the service's unit"),
        integer("gnss.utc.year", &info->utcYear, 0, kNoMaximum, "of the status record"),
        integer("gnss.utc.month", &info->utcMonth, 0, kNoMaximum, "of the status record"),
        integer("gnss.utc.day", &info->utcDay, 0, kNoMaximum, "of the status record"),
        integer("gnss.utc.hour", &info->utcHour, 0, kNoMaximum, "of the status record"),
        integer("gnss.utc.minute", &info->utcMinute, 0, kNoMaximum, "of the status record"),
        integer("gnss.utc.second", &info->utcSecond, 0, kNoMaximum, "of the status record"),
        integer("gnss.duration.hours", &gnss->duration.hours, 0, kNoMaximum, "of delivered data"),
        integer("gnss.duration.minutes", &gnss->duration.minutes, 0, kNoMaximum,
                "of delivered data"),
        integer("gnss.duration.seconds", &gnss->duration.seconds, 0, kNoMaximum,
                "of delivered data"),
    };
}

QVector<Entry> usbPaths(UsbState *usb)
{
    return {
        boolean("usb.0.disk", &usb->ports[0].disk, "a disk is plugged in"),
        text("usb.0.path", &usb->ports[0].path, "mount folder of the disk"),
        integer("usb.0.charging_mode", &usb->ports[0].chargingMode, 0, 2, "0 CDP, 1 DCP, 2 SDP"),
        boolean("usb.1.disk", &usb->ports[1].disk, "a disk is plugged in"),
        text("usb.1.path", &usb->ports[1].path, "mount folder of the disk"),
        integer("usb.1.charging_mode", &usb->ports[1].chargingMode, 0, 2, "0 CDP, 1 DCP, 2 SDP"),
        oneOf("usb.certification", &usb->certification, {77, 79, 84}, "77 MIF, 79 normal, 84 TID"),
        oneOf("usb.function", &usb->function, {6, 7}, "6 NCM on, 7 off"),
        milliseconds("usb.network.run_ms", &usb->networkTests.runDuration,
                     "how long a client run blocks"),
        results("usb.network.results", &usb->networkTests.results,
                "what operations return, by name; 0, success, where none stands"),
        text("usb.network.report", &usb->networkTests.log,
             "what a run leaves in /var/ipt.log; empty: measured rates"),
        boolean("usb.network.writes_report", &usb->networkTests.writesLog,
                "runs that succeed leave a report"),
        text("usb.network.server", &usb->networkTests.server,
             "the server test that runs; empty: none"),
    };
}

QVector<Entry> systemPaths(HeadUnit *unit)
{
    SystemState *system = &unit->system;
    Entry statusBar = boolean("system.status_bar_hidden", &system->statusBarHidden,
                              "the status bar is off the screen");
    statusBar.write = [unit](const QJsonValue &given) { unit->setStatusBarHidden(given.toBool()); };
    return {
        boolean("system.watchdog", &system->watchdogEnabled, "the watchdog is on"),
        integer("system.system_resets", &system->systemResets, 0, kNoMaximum, "asked for so far"),
        integer("system.factory_resets", &system->factoryResets, 0, kNoMaximum, "asked for so far"),
        statusBar,
        text("system.popup", &system->lastPopup, "the message that was shown last"),
        text("update.folder", &system->updateFolder, "where the update package lies"),
    };
}

QVector<Entry> settingsPaths(SettingsState *state)
{
    return {
        settings("settings.cache", &state->cache, &Setting::value,
                 "settings until the next start, by key; null removes one"),
        settings("settings.func", &state->func, &Setting::value,
                 "settings that survive a start, by key; null removes one"),
        settings("settings.cache_first", &state->cache, &Setting::first,
                 "what the longer form of setValue stored beside the value"),
        settings("settings.func_first", &state->func, &Setting::first,
                 "what the longer form of setValue stored beside the value"),
    };
}

QVector<Entry> audioPaths(AudioState *audio)
{
    return {
        number("audio.analog_gain.0", &audio->analogGain[0], "first channel, in dB"),
        number("audio.analog_gain.1", &audio->analogGain[1], "second channel, in dB"),
        number("audio.op_gain", &audio->microphone.opGain, "of the microphone's path"),
        number("audio.pga_gain", &audio->microphone.pgaGain, "of the microphone's path"),
        number("audio.uplink_gain", &audio->microphone.uplinkGain, "of the microphone's path"),
    };
}

} // namespace

QVector<Entry> pathsOf(HeadUnit *unit)
{
    return gnssPaths(&unit->gnss) + skyPaths(unit) + usbPaths(&unit->usb) + systemPaths(unit)
        + settingsPaths(&unit->settings) + audioPaths(&unit->audio);
}

} // namespace bench
