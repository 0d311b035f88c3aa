#pragma once

#include "bench/unit/gnssstate.h"
#include "bench/unit/headunit.h"
#include "bench/unit/journal.h"
#include "gps/gps_test.h"
#include "gpsservice/gpsservice.h"
#include "tests/support/touch.h"

#include <QLabel>
#include <QListView>
#include <QScrollBar>

// What the tests of the receiver's page share: the page on screen, and the
// service's side of it.
namespace tests {

// The page on screen, as the page host shows it.
struct ShownPage : testmode::gps_test
{
    ShownPage()
    {
        bench::unit().change()->gnss.versionDelay =
            3600 * 1000; // unless a test says so, none arrives
        show();
        bench::journal().clear();
    }

    template <typename Widget = QLabel>
    Widget *child(const char *name) const
    {
        Widget *found = findChild<Widget *>(QLatin1String(name));
        if (found == nullptr)
            qFatal("no %s", name);
        return found;
    }

    QString text(const char *name) const { return child(name)->text(); }
    QScrollBar *bar() const { return child<QScrollBar>("satellitesScrollBar"); }
    QListView *list() const { return child<QListView>("satellitesListView"); }

    void tap(const char *name) const { tests::tap(child<QWidget>(name)); }
};

// What the service answers, and the signal that says so.
inline void report(const krnmINFO &info)
{
    bench::unit().change()->gnss.info = info;
    emit gpsservice::GpsService::instance()->krnmInfoRefresh(info);
}

inline void setSatellites(int count)
{
    bench::unit().change()->gnss.satellites.clear();
    for (int i = 0; i < count; ++i)
        bench::unit().change()->gnss.satellites.append({i + 1, 1, 45, 90, 30 + i});
    bench::unit().change()->gnss.info.satellitesInView = count;
}

inline QStringList calls()
{
    QStringList found;
    // Painting of rows comes whenever the screen wants it.
    for (const QString &text : bench::journal().texts()) {
        if (!text.startsWith("ColorGroup."))
            found << text;
    }
    return found;
}

inline int versionQueries()
{
    return calls().count("GpsService.read_set_CMD_VERSION()");
}

} // namespace tests
