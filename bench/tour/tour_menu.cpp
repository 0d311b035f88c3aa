#include "tour.h"

namespace bench {

namespace {

struct Entry
{
    const char *button;
    const char *page; // object name
    const char *title;
};

// The menu from top to bottom, left column first; QUIT is the tour's last step.
const Entry kEntries[] = {
    {"key_usb_test", "apple_dev_test", "USB Test"},
    {"key_usb_tid", "SetupUsbForm", "USB Tid"},
    {"key_gps_test", "gps_test", "GPS test"},
    {"key_ncm_test", "apple_dev_test", "NCM Test"},
    {"key_tools", "SystemToolsWidget", "System Tools"},
    {"key_mic_test", "mic_test", "Mic Test"},
    {"key_gps_update", "Gpsupdate", "GPS Update"},
};

} // namespace

void Tour::menu()
{
    step(QStringLiteral("the framework loads the plug-in and asks for window 38"), [this] {
        openMenu();
        picture(QStringLiteral("menu"));
        return QStringLiteral("the menu is shown");
    });
}

void Tour::everyEntry()
{
    for (const Entry &entry : kEntries) {
        step(QStringLiteral("menu: press \"%1\", then Home").arg(QLatin1String(entry.title)),
             [this, &entry] {
                 const QString page = QString::fromLatin1(entry.page);
                 click(QString::fromLatin1(entry.button));
                 waitFor(page, QStringLiteral("visible"), true);
                 openMenu();
                 expect(!isVisible(page), QStringLiteral("%1 is still shown").arg(page));
                 return QStringLiteral("%1 opened and left").arg(page);
             });
    }
}

void Tour::quit()
{
    step(QStringLiteral("menu: press \"QUIT\""), [this] {
        openMenu();
        markJournal();
        click(QStringLiteral("key_quit"));
        expectJournal({QStringLiteral("framework.TouchEvent(1008, 9, -1, -1)")});
        picture(QStringLiteral("home"));
        return QStringLiteral("the test mode was left: touch event 1008, 9, -1, -1");
    });
}

} // namespace bench
