#include "tour.h"

namespace bench {

void Tour::systemTools()
{
    const auto openPage = [this] {
        openMenu();
        click(QStringLiteral("key_tools"));
        waitFor(QStringLiteral("SystemToolsWidget"), QStringLiteral("visible"), true);
    };
    const auto pressAndExpect = [this](const char *button, const QStringList &told) {
        markJournal();
        click(QString::fromLatin1(button));
        expectJournal(told);
        return told.join(QStringLiteral(", then "));
    };

    step(QStringLiteral("menu: press \"System Tools\""), [this, openPage] {
        openPage();
        picture(QStringLiteral("system-tools"));
        waitFor(QStringLiteral("screenShotDisBtn"), QStringLiteral("checked"), true);
        waitFor(QStringLiteral("SystemToolsWidget/readBtn"), QStringLiteral("enabled"), false);
        return QStringLiteral("screenshots off, \"Copy log\" closed");
    });
    step(QStringLiteral("tools page: screenshots on, then off"), [pressAndExpect] {
        return pressAndExpect(
                   "screenShotEnBtn",
                   {QStringLiteral(
                       R"(SettingsCache.setValue("ToolsScreenShotEnable", false, true))")})
            + QStringLiteral("; ")
            + pressAndExpect(
                   "screenShotDisBtn",
                   {QStringLiteral(
                       R"(SettingsCache.setValue("ToolsScreenShotEnable", false, false))")});
    });
    step(QStringLiteral("tools page: start and end a dump"), [pressAndExpect] {
        return pressAndExpect("CPDumpStartBtn",
                              {QStringLiteral("OutputLogsUsb.startDumpsys(true)")})
            + QStringLiteral("; ")
            + pressAndExpect("CPDumpEndBtn", {QStringLiteral("OutputLogsUsb.endDumpsys(true)")});
    });
    step(QStringLiteral("tools page: open the log service"), [this, pressAndExpect] {
        pressAndExpect(
            "openLogBtn",
            {QStringLiteral("shell: logset NAND_FILE_OUTPUT y\n"),
             QStringLiteral("McuService.setResetSystem(1)"),
             QStringLiteral(R"(SettingsFunc.setValue("ToolsUSBLogEnable", false, true, true))")});
        awaitRestart();
        return QStringLiteral("command, reset, setting; the unit has started anew");
    });
    step(QStringLiteral("tools page: copy the log"), [this, openPage, pressAndExpect] {
        openPage();
        waitFor(QStringLiteral("SystemToolsWidget/readBtn"), QStringLiteral("enabled"), true);
        return pressAndExpect("SystemToolsWidget/readBtn",
                              {QStringLiteral("OutputLogsUsb.updateLogToUsb(true)")});
    });
    step(QStringLiteral("tools page: close the log service"), [this, pressAndExpect] {
        pressAndExpect(
            "closeLogBtn",
            {QStringLiteral(R"(SettingsFunc.setValue("ToolsUSBLogEnable", false, false, true))"),
             QStringLiteral("shell: logset NAND_FILE_OUTPUT n\n"),
             QStringLiteral("McuService.setResetSystem(1)")});
        awaitRestart();
        return QStringLiteral("setting, command, reset; the unit has started anew");
    });
}

namespace {

// One gain: its "Next" key, how often it is pressed to pass its wrap, and what the
// audio service has been told then.
struct Gain
{
    const char *name;
    const char *key;
    int presses;
    const char *label;
    const char *shown;
    const char *told;
};

const Gain kGains[] = {
    {"analog gain", "key_mic_next", 47, "txt_mic", "Mic Analog Gain:-24",
     "AudioService.setMicAnalogGain(-24, -24)"},
    {"OP gain", "key_op_next", 5, "txt_op", "OP Gain:0", "AudioService.configMic(0, 6, 0)"},
    {"PGA gain", "key_opg_next", 1, "txt_opg", "PGA Gain:-24", "AudioService.configMic(0, -24, 0)"},
    {"uplink gain", "key_uplink_next", 25, "txt_uplink", "Uplink Gain: -24",
     "AudioService.configMic(0, -24, -24)"},
};

} // namespace

void Tour::microphone()
{
    step(QStringLiteral("menu: press \"Mic Test\""), [this] {
        openMenu();
        click(QStringLiteral("key_mic_test"));
        waitFor(QStringLiteral("mic_test"), QStringLiteral("visible"), true);
        return textOf(QStringLiteral("txt_op")) + QStringLiteral(", ")
            + textOf(QStringLiteral("txt_opg")) + QStringLiteral(", ")
            + textOf(QStringLiteral("txt_uplink"));
    });
    for (const Gain &gain : kGains) {
        step(QStringLiteral("mic page: %1, Next %2 times").arg(gain.name).arg(gain.presses),
             [this, &gain] {
                 markJournal();
                 for (int i = 0; i < gain.presses; ++i)
                     click(QString::fromLatin1(gain.key));
                 const QString shown = textOf(QString::fromLatin1(gain.label));
                 expect(shown == QLatin1String(gain.shown),
                        QStringLiteral("the label reads %1").arg(shown));
                 const QStringList told = journalSinceMark();
                 expect(told.size() == gain.presses && told.last() == QLatin1String(gain.told),
                        QStringLiteral("the audio service was told %1").arg(told.join("; ")));
                 return QStringLiteral("%1; %2").arg(shown, told.last());
             });
    }
    step(QStringLiteral("mic page: the picture"), [this] {
        picture(QStringLiteral("mic-test"));
        return QStringLiteral("mic-test.png");
    });
}

} // namespace bench
