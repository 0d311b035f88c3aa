#include "unitpaths.h"

#include "audiostate.h"
#include "gnssstate.h"
#include "headunit.h"
#include "recordentries.h"
#include "settingsstate.h"
#include "systemstate.h"
#include "usbstate.h"
#include "valueentries.h"

namespace bench {

namespace {

using namespace entries;

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

QVector<Entry> skyPaths(HeadUnit *unit, GnssState *gnss)
{
    Entry sky = boolean("gnss.sky", &gnss->followsSky,
                        "the sky fills status record, satellites and duration once a second");
    sky.write = [unit](const QJsonValue &given) { unit->followSky(given.toBool()); };
    Entry seed =
        integer("gnss.sky_seed", nullptr, 0, kNoMaximum, "begins a new sky from this seed");
    seed.read = [gnss] { return static_cast<int>(gnss->sky.seed()); };
    seed.write = [unit, gnss](const QJsonValue &given) {
        gnss->sky = Sky(static_cast<quint32>(given.toInt()));
        unit->followSky(gnss->followsSky);
    };
    return {seed, sky,
            coveredSectors("gnss.sky_covered", &gnss->scene.covered,
                           "buildings: from, to, clockwise, and elevation, in degrees; what stands "
                           "behind is not heard"),
            heldSatellites("gnss.sky_held", &gnss->scene.held,
                           "satellites that stay where they were put: number, elevation, azimuth"),
            number("gnss.sky_speed", &gnss->scene.speed,
                   "of the drive, in km/h; negative: as the town lets the car go")};
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

QVector<Entry> systemPaths(HeadUnit *unit, SystemState *system)
{
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

QVector<UnitDocument::Entry> pathsOf(HeadUnit *unit)
{
    UnitChange parts = unit->change();
    QVector<Entry> paths = gnssPaths(&parts->gnss) + skyPaths(unit, &parts->gnss)
        + usbPaths(&parts->usb) + systemPaths(unit, &parts->system)
        + settingsPaths(&parts->settings) + audioPaths(&parts->audio);
    for (Entry &entry : paths) {
        entry.write = [unit, write = entry.write](const QJsonValue &given) {
            const UnitChange told = unit->change();
            write(given);
        };
    }
    return paths;
}

} // namespace bench
