#pragma once

#include "audiostate.h"
#include "clockstate.h"
#include "gnssstate.h"
#include "platform_api.h"
#include "settingsstate.h"
#include "systemstate.h"
#include "usbstate.h"

#include <QObject>

class QWidget;

namespace bench {

// The one model of the simulated unit. The services read and change it, the
// host and the operator's panel show it. The state belongs to the GUI thread;
// the reset line may be driven from any thread.
class PLATFORM_API HeadUnit : public QObject
{
    Q_OBJECT

public:
    explicit HeadUnit(QObject *parent = nullptr);

    GnssState gnss;
    UsbState usb;
    SystemState system;
    SettingsState settings;
    AudioState audio;
    ClockState clock;

    // Back to the state of a unit that was just switched on with nothing attached.
    // Tests call it between cases.
    void powerOn();

    void setMainWidget(QWidget *widget, int window) { emit mainWidgetChanged(widget, window); }
    void destroyWindow(QObject *window) { emit windowDestroyed(window); }
    void setGnssReset(bool asserted) { emit gnssResetChanged(asserted); }
    void followSky(bool on);
    void setStatusBarHidden(bool hidden);
    void showPopup(const QString &text);
    void requestSystemReset(int kind);
    void requestFactoryReset();
    void requestReboot() { emit rebootRequested(); }

signals:
    void poweredOn(); // what was under way before is void
    void mainWidgetChanged(QWidget *widget, int window);
    void windowDestroyed(QObject *window);
    void gnssResetChanged(bool asserted); // emitted in the caller's thread
    void skyFollowed(bool on);
    void statusBarHiddenChanged(bool hidden);
    void popupShown(const QString &text);
    void systemResetRequested(int kind);
    void factoryResetRequested();
    void rebootRequested();
};

// The one unit of the process.
PLATFORM_API HeadUnit &unit();

} // namespace bench
