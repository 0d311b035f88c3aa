#include "tour.h"

#include <QJsonArray>

namespace bench {

namespace {

// `count` satellites in view, the first four in use.
QJsonArray satellites(int count)
{
    QJsonArray list;
    for (int i = 0; i < count; ++i) {
        list.append(QJsonObject{{"number", 3 + 4 * i},
                                {"in_use", i < 4 ? 1 : 0},
                                {"elevation", 20 + 7 * i},
                                {"azimuth", 35 * i},
                                {"signal", 44 - 2 * i}});
    }
    return list;
}

// A receiver with a fix.
QJsonObject statusRecord(int satellitesInView)
{
    return {
        {"utc",
         QJsonObject{
             {"year", 2026}, {"month", 3}, {"day", 9}, {"hour", 8}, {"minute", 30}, {"second", 5}}},
        {"duration", QJsonObject{{"hours", 0}, {"minutes", 12}, {"seconds", 48}}},
        {"latitude", 3150.1234},
        {"longitude", 11712.5},
        {"speed", 42.5},
        {"satellites", satellites(satellitesInView)}};
}

} // namespace

void Tour::gnssStatus()
{
    step(QStringLiteral("menu: press \"GPS test\""), [this] {
        openMenu();
        markJournal();
        click(QStringLiteral("key_gps_test"));
        waitFor(QStringLiteral("gps_test"), QStringLiteral("visible"), true);
        expectJournal({QStringLiteral("StatusBarControl.sethide(true)"),
                       QStringLiteral("GpsService.read_set_CMD_VERSION()")});
        return QStringLiteral("the page is shown, the status bar is hidden");
    });
    step(QStringLiteral("status page: the version query is answered"), [this] {
        const QJsonValue version = unitValue(QStringLiteral("gnss.version"));
        waitFor(QStringLiteral("gps_test/txt_version"), QStringLiteral("text"), version);
        return version.toString();
    });
    for (const int count : {4, 9}) {
        step(QStringLiteral("status page: %1 satellites come into view").arg(count), [this, count] {
            setUnit(QStringLiteral("gnss"), statusRecord(count));
            call(QStringLiteral("unit.emit"), {{"signal", QStringLiteral("gnss.status")}});
            waitFor(QStringLiteral("numInView_vol"), QStringLiteral("text"),
                    QString::number(count));
            waitFor(QStringLiteral("satellitesScrollBar"), QStringLiteral("visible"), count >= 6);
            return QStringLiteral("in view %1, in use %2, latitude %3, scroll bar %4")
                .arg(textOf(QStringLiteral("numInView_vol")),
                     textOf(QStringLiteral("numInUse_vol")), textOf(QStringLiteral("latitude_vol")),
                     count >= 6 ? QStringLiteral("shown") : QStringLiteral("hidden"));
        });
    }
    step(QStringLiteral("status page: the picture"), [this] {
        picture(QStringLiteral("gnss-status"));
        return QStringLiteral("gnss-status.png");
    });
    step(QStringLiteral("status page: recording on, then off"), [this] {
        QStringList seen{textOf(QStringLiteral("gpslog_txt"))};
        for (int i = 0; i < 2; ++i) {
            click(QStringLiteral("gpslog_btn"));
            seen << textOf(QStringLiteral("gpslog_txt"));
        }
        expect(seen == QStringList{"Open", "Close", "Open"}, seen.join(QStringLiteral(", ")));
        return seen.join(QStringLiteral(", "));
    });
    step(QStringLiteral("status page: cold start and calibration reset"), [this] {
        markJournal();
        click(QStringLiteral("coldstart_btn"));
        click(QStringLiteral("resetinstall_brn"));
        const QStringList told{QStringLiteral("GpsService.read_set_CMD_COLD_START()"),
                               QStringLiteral("GpsService.read_set_CMD_RESET_CALIBRATION()"),
                               QStringLiteral("GpsService.read_set_CMD_RESET_REBOOT()")};
        expectJournal(told);
        return told.join(QStringLiteral(", "));
    });
    step(QStringLiteral("status page: leave it"), [this] {
        markJournal();
        openMenu();
        expectJournal({QStringLiteral("StatusBarControl.sethide(false)")});
        return QStringLiteral("the status bar is back");
    });
}

} // namespace bench
