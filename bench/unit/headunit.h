#pragma once

#include "platform_api.h"

#include <QObject>

#include <memory>

class QWidget;

namespace bench {

struct AudioState;
struct ClockState;
struct GnssState;
struct SettingsState;
struct SystemState;
struct UsbState;
class UnitChange;

// The one model of the simulated unit. The services read and change it, the
// host and the operator's window show it. The state belongs to the GUI thread;
// the reset line may be driven from any thread. Who looks into a part includes its
// header ("gnssstate.h" for `gnss`).
class PLATFORM_API HeadUnit : public QObject
{
    Q_OBJECT

public:
    explicit HeadUnit(QObject *parent = nullptr);
    ~HeadUnit() override;

private:
    struct Parts;
    std::unique_ptr<Parts> parts;

public:
    const GnssState &gnss;
    const UsbState &usb;
    const SystemState &system;
    const SettingsState &settings;
    const AudioState &audio;
    const ClockState &clock;

    // The one way to write: unit().change()->usb.function = 6;
    UnitChange change();

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
    void written(); // the state may be another; changes within a change are told with the outermost
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

private:
    friend class UnitChange;

    int openChanges = 0;
};

// The parts of the state for whoever writes. `written` follows when the change goes: at
// the end of the statement, or of the block that holds it.
class PLATFORM_API UnitChange
{
public:
    struct Writable
    {
        GnssState &gnss;
        UsbState &usb;
        SystemState &system;
        SettingsState &settings;
        AudioState &audio;
        ClockState &clock;
    };

    explicit UnitChange(HeadUnit *unit);
    ~UnitChange();
    Q_DISABLE_COPY(UnitChange)

    Writable *operator->() { return &writable; }

private:
    HeadUnit *unit;
    Writable writable;
};

// The one unit of the process.
PLATFORM_API HeadUnit &unit();

} // namespace bench
