#include "headunit.h"

#include "audiostate.h"
#include "clockstate.h"
#include "gnssstate.h"
#include "settingsstate.h"
#include "systemstate.h"
#include "usbstate.h"

namespace bench {

struct HeadUnit::Parts
{
    GnssState gnss;
    UsbState usb;
    SystemState system;
    SettingsState settings;
    AudioState audio;
    ClockState clock;
};

HeadUnit::HeadUnit(QObject *parent)
    : QObject(parent), parts(std::make_unique<Parts>()), gnss(parts->gnss), usb(parts->usb),
      system(parts->system), settings(parts->settings), audio(parts->audio), clock(parts->clock)
{
}

HeadUnit::~HeadUnit() = default;

UnitChange HeadUnit::change()
{
    return UnitChange(this);
}

UnitChange::UnitChange(HeadUnit *changed)
    : unit(changed), writable{unit->parts->gnss,     unit->parts->usb,   unit->parts->system,
                              unit->parts->settings, unit->parts->audio, unit->parts->clock}
{
    ++unit->openChanges;
}

UnitChange::~UnitChange()
{
    if (--unit->openChanges == 0)
        emit unit->written();
}

void HeadUnit::powerOn()
{
    const UnitChange whole = change();
    *parts = Parts();
    emit poweredOn();
}

void HeadUnit::followSky(bool on)
{
    UnitChange next = change();
    next->gnss.followsSky = on;
    next->gnss.sky.setClock(clock.now());
    emit skyFollowed(on);
}

void HeadUnit::setStatusBarHidden(bool hidden)
{
    change()->system.statusBarHidden = hidden;
    emit statusBarHiddenChanged(hidden);
}

void HeadUnit::showPopup(const QString &text)
{
    change()->system.lastPopup = text;
    emit popupShown(text);
}

void HeadUnit::requestSystemReset(int kind)
{
    ++change()->system.systemResets;
    emit systemResetRequested(kind);
}

void HeadUnit::requestFactoryReset()
{
    ++change()->system.factoryResets;
    emit factoryResetRequested();
}

HeadUnit &unit()
{
    static HeadUnit instance;
    return instance;
}

} // namespace bench
