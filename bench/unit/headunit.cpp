#include "headunit.h"

namespace bench {

HeadUnit::HeadUnit(QObject *parent) : QObject(parent) { }

void HeadUnit::powerOn()
{
    gnss = GnssState();
    usb = UsbState();
    system = SystemState();
    settings = SettingsState();
    audio = AudioState();
    clock = ClockState();
    emit poweredOn();
}

void HeadUnit::followSky(bool on)
{
    gnss.followsSky = on;
    gnss.sky.setClock(clock.now());
    emit skyFollowed(on);
}

void HeadUnit::setStatusBarHidden(bool hidden)
{
    system.statusBarHidden = hidden;
    emit statusBarHiddenChanged(hidden);
}

void HeadUnit::showPopup(const QString &text)
{
    system.lastPopup = text;
    emit popupShown(text);
}

void HeadUnit::requestSystemReset(int kind)
{
    ++system.systemResets;
    emit systemResetRequested(kind);
}

void HeadUnit::requestFactoryReset()
{
    ++system.factoryResets;
    emit factoryResetRequested();
}

HeadUnit &unit()
{
    static HeadUnit instance;
    return instance;
}

} // namespace bench
