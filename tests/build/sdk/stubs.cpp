// Does nothing, as much of it as the plug-in links against.

#include "framework/basewindow.h"
#include "framework/colorgroup.h"
#include "framework/events.h"
#include "framework/listviewscroller.h"
#include "framework/qpushbutton2.h"
#include "framework/statusbarcontrol.h"
#include "gpsservice/gpsservice.h"
#include "kraudio/audioservice.h"
#include "krdatetime/datetimemanager.h"
#include "krdevice/devicemanager.h"
#include "lm_usb/lmusbmanager.h"
#include "lmplfctrl/lmplatformcontrol.h"
#include "logs/outputlogsusb.h"
#include "mcu/mcumanager.h"
#include "mcu/mcuservice.h"
#include "mem/settingscache.h"
#include "mem/settingsfunc.h"
#include "platformservice/platformservice.h"

namespace {

template <typename Service>
Service *only()
{
    static Service service;
    return &service;
}

} // namespace

// events
TouchEvent::TouchEvent(Qx::Touch touch, int, int)
    : SimpleEvent<Qx::Touch>(static_cast<Qx::EventType>(1008), touch)
{
}
TaskEvent::TaskEvent(Qx::TaskEvt task)
    : SimpleEvent<Qx::TaskEvt>(static_cast<Qx::EventType>(1009), task)
{
}
KeyEvent::KeyEvent(int key) : SimpleEvent<int>(static_cast<Qx::EventType>(1007), key) { }
int KeyEvent::key() const
{
    return number;
}

// window framework
namespace cm {
BaseWindow::BaseWindow(QObject *parent) : QObject(parent) { }
BaseWindow::~BaseWindow() = default;
void BaseWindow::onCreate() { }
void BaseWindow::onDestroy() { }
void BaseWindow::onShow(const QByteArray &) { }
int BaseWindow::backEvent()
{
    return 0;
}
int BaseWindow::keyEvent(KeyEvent *)
{
    return 0;
}
QString BaseWindow::name()
{
    return QString();
}
void BaseWindow::setMainWidget(QWidget *widget, int id)
{
    setProperty("shown", QVariant::fromValue(widget));
    setProperty("number", id);
}
void BaseWindow::setBackgroundVisible(int, bool) { }
void BaseWindow::deleteDelay() { }
ListviewScroller::ListviewScroller(QAbstractItemView *, QWidget *) { }
void ListviewScroller::setSelectionModel(QItemSelectionModel *) { }
StatusBarControl *StatusBarControl::instance()
{
    return only<StatusBarControl>();
}
void StatusBarControl::sethide(bool) { }
} // namespace cm
void ColorGroup::setFontColor(QFont &, QString, int, int) { }
QPushButton2::QPushButton2(QWidget *parent) : QPushButton(parent) { }

// GNSS
namespace gpsservice {
GpsService *GpsService::instance()
{
    return only<GpsService>();
}
int GpsService::getModualApatation()
{
    return 1;
}
krnmINFO GpsService::getNmeaInfo()
{
    return {};
}
krnmDuration GpsService::getGNSSDataDuration()
{
    return {};
}
QString GpsService::getAntennaInfo()
{
    return QString();
}
QString GpsService::getGpsInstallStatusStr()
{
    return QString();
}
int GpsService::getGPSSatelliteInView()
{
    return 0;
}
krnmSatellite GpsService::getSatellitesListForIdx(int, bool)
{
    return {};
}
void GpsService::read_set_CMD_VERSION() { }
void GpsService::read_set_CMD_COLD_START() { }
void GpsService::read_set_CMD_RESET_CALIBRATION() { }
void GpsService::read_set_CMD_RESET_REBOOT() { }
void GpsService::saveNmeaData2USB() { }
} // namespace gpsservice
namespace platform {
PlatformService *PlatformService::instance()
{
    return only<PlatformService>();
}
void PlatformService::setGPSResetGPIO(bool) { }
} // namespace platform

// devices and networks
namespace krdevice {
DeviceManager *DeviceManager::instance()
{
    return only<DeviceManager>();
}
bool DeviceManager::isUsbDiskDeviceExist(int)
{
    return false;
}
QString DeviceManager::usbPath(int)
{
    return QString();
}
void DeviceManager::setUsbBcMode(int, int) { }
int DeviceManager::getUsbBcMode(int)
{
    return 0;
}
void DeviceManager::setUsbCertification(int) { }
int DeviceManager::getUsbCertification()
{
    return 0;
}
} // namespace krdevice
lm_usb::LMUsbManager *lm_usb::LMUsbManager::create(std::string)
{
    return nullptr;
}
lmplfctrl::LMPlatformControl *lmplfctrl::LMPlatformControl::GetInstance()
{
    return nullptr;
}

// the rest of the unit
namespace kraudio {
AudioService *AudioService::instance()
{
    return only<AudioService>();
}
void AudioService::setMicAnalogGain(float, float) { }
void AudioService::configMic(krMicConfig) { }
} // namespace kraudio
namespace krdatetime {
DateTimeManager *DateTimeManager::instance()
{
    return only<DateTimeManager>();
}
QDateTime DateTimeManager::currentDateTime(int)
{
    return QDateTime();
}
} // namespace krdatetime
namespace logs {
OutputLogsUsb *OutputLogsUsb::instance()
{
    return only<OutputLogsUsb>();
}
void OutputLogsUsb::tipsMessagePopup(QString) { }
void OutputLogsUsb::updateLogToUsb(bool) { }
void OutputLogsUsb::startDumpsys(bool) { }
void OutputLogsUsb::endDumpsys(bool) { }
} // namespace logs
McuManager *McuManager::instance()
{
    return only<McuManager>();
}
QString McuManager::findUpdateFile(UpdateFile)
{
    return QString();
}
namespace mcu {
McuService *McuService::instance()
{
    return only<McuService>();
}
void McuService::setWatchDogEnable(bool) { }
void McuService::setResetSystem(int) { }
void McuService::factoryReset() { }
} // namespace mcu
namespace mem {
SettingsCache *SettingsCache::instance()
{
    return only<SettingsCache>();
}
bool SettingsCache::getValue(QString, bool value)
{
    return value;
}
int SettingsCache::getValue(const QString &, int value)
{
    return value;
}
void SettingsCache::setValue(const QString &, const QVariant &) { }
void SettingsCache::setValue(QString, QVariant, QVariant) { }
SettingsFunc *SettingsFunc::instance()
{
    return only<SettingsFunc>();
}
bool SettingsFunc::getValue(QString, bool value)
{
    return value;
}
void SettingsFunc::setValue(QString, QVariant, QVariant, bool) { }
} // namespace mem
