#include "mainwidget.h"

#include "framework/events.h"
#include "gps/gps_test.h"
#include "gps/gpsupdate.h"
#include "gpsservice/gpsservice.h"
#include "krdevice/devicemanager.h"
#include "logs/outputlogsusb.h"
#include "mcu/mcuservice.h"
#include "mem/settingscache.h"
#include "testentrywidget.h"
#include "tools/debugtrace.h"
#include "tools/mic_test.h"
#include "tools/systemtoolswidget.h"
#include "usb/appledevtest.h"
#include "usb/mode_usbtest.h"

#include <QCoreApplication>
#include <QFile>

#include <cstdlib>
#include <tuple>

namespace testmode {

namespace {

// Page codes; the settings store and the Apple device page know two of them.
enum PageCode : int32_t {
    ToolsPage = 1,
    MicPage = 2,
    NcmPage = 9,
    UsbEyesPage = 12,
    UsbTestPage = 13,
    GpsTestPage = 15,
    GpsUpdatePage = 16,
};

// The kind of GNSS module that is flashed from here; the unit's own updater flashes all others.
constexpr int kModuleFlashedHere = 1;

const char kTestModeKey[] = "TEST_MODE";
const char kUpdateMarker[] = "/media/flash/nvm/gpsupdate.cfg";
const char kStagedPackage[] = "/media/flash/nvm/gps.bin";

void popup(const char *text)
{
    logs::OutputLogsUsb::instance()->tipsMessagePopup(QString::fromLatin1(text));
}

// Mount folder of the disk that holds the package; port 0 wins.
QString usbDiskPath()
{
    krdevice::DeviceManager *devices = krdevice::DeviceManager::instance();
    for (int port = 0; port < 2; ++port) {
        if (devices->isUsbDiskDeviceExist(port))
            return devices->usbPath(port);
    }
    return QString();
}

// The marker tells the unit's updater at the next start that a package waits.
bool writeUpdateMarker()
{
    QFile marker(QString::fromLatin1(kUpdateMarker));
    if (!marker.open(QIODevice::WriteOnly))
        return false;
    marker.write("true");
    marker.close();
    return true;
}

void copyToFlash(const QString &disk)
{
    const QString copy = QStringLiteral("cp %1/gps.bin /media/flash/nvm/").arg(disk);
    // Kept: what the commands return is not looked at, only whether the staged file is there.
    std::ignore = std::system(copy.toLatin1().constData());
    std::ignore = std::system("sync");
}

template <typename Page>
void deletePage(Page *&page)
{
    delete page;
    page = nullptr;
}

template <typename Page>
void hidePage(Page *page)
{
    if (page != nullptr)
        page->hide();
}

} // namespace

MainWidget::MainWidget(QWidget *parent) : QWidget(parent)
{
    entryPage = new testEntryWidget(this);
    entryPage->show();

    connect(entryPage, SIGNAL(key_tid()), this, SLOT(onShowUSBEyesTestWidget()));
    connect(entryPage, SIGNAL(key_ncm()), this, SLOT(onShowNcmModeWidget()));
    connect(entryPage, SIGNAL(key_gps()), this, SLOT(onShowGpstestWidget()));
    connect(entryPage, SIGNAL(key_usb_test()), this, SLOT(onShowUsbTestWidget()));
    connect(entryPage, SIGNAL(key_quit()), this, SLOT(onReturnHome()));
    connect(entryPage, SIGNAL(key_gps_update()), this, SLOT(onShowGpsUpdateWidget()));
    connect(entryPage, SIGNAL(key_system_tools()), this, SLOT(onShowSystemToolsWidget()));
    connect(entryPage, SIGNAL(key_mic_test()), this, SLOT(onShowMicTestWidget()));
}

MainWidget::~MainWidget()
{
    deletePage(appleDevPage);
    deletePage(usbEyesPage);
    deletePage(gpsTestPage);
    deletePage(entryPage);
    deletePage(gpsUpdatePage);
    deletePage(toolsPage);
    deletePage(micPage);
}

void MainWidget::resume()
{
    hideAllPage();
    entryPage->show();
}

void MainWidget::hideAllPage()
{
    hidePage(appleDevPage);
    hidePage(usbEyesPage);
    hidePage(gpsTestPage);
    hidePage(gpsUpdatePage);
    hidePage(toolsPage);
    hidePage(micPage);
}

void MainWidget::showCurrentPage(int)
{
    switch (currentPage) {
    case NcmPage:
        DBG << "ncm";
        onShowNcmModeWidget();
        break;
    case UsbEyesPage:
        DBG << "usb eyes";
        onShowUSBEyesTestWidget();
        break;
    case GpsTestPage:
        DBG << "gps";
        onShowGpstestWidget();
        break;
    default:
        break;
    }
}

int MainWidget::windowKeyEvent(KeyEvent *event)
{
    DBG << "key:" << event->key() << "--testmode:" << currentPage;
    const bool handled = false; // no page has a key action
    DBG << handled;
    return -1;
}

void MainWidget::onShowNcmModeWidget()
{
    showAppleDevPage(NcmPage);
}

void MainWidget::onShowUsbTestWidget()
{
    DBG << "usb test";
    showAppleDevPage(UsbTestPage);
}

// Both entries share one page, which reads from the settings which of them was pressed.
void MainWidget::showAppleDevPage(int pageCode)
{
    if (appleDevPage == nullptr) {
        appleDevPage = new AppleDevTest(this);
        currentPage = pageCode;
    }
    mem::SettingsCache::instance()->setValue(QString::fromLatin1(kTestModeKey), 0, pageCode);
    appleDevPage->resume();
    appleDevPage->show();
    entryPage->hide();
}

void MainWidget::onShowUSBEyesTestWidget()
{
    if (usbEyesPage == nullptr) {
        usbEyesPage = new SetupUsbTest(this);
        connect(usbEyesPage, &SetupUsbTest::exitEqSig, this, &MainWidget::leaveUsbEyesPage);
        currentPage = UsbEyesPage;
    }
    usbEyesPage->show();
    entryPage->hide();
}

// The page deletes itself after its signal; the next showing builds a new one.
void MainWidget::leaveUsbEyesPage()
{
    usbEyesPage->hide();
    usbEyesPage = nullptr;
    entryPage->show();
}

void MainWidget::onShowGpstestWidget()
{
    if (gpsTestPage == nullptr) {
        mem::SettingsCache::instance()->setValue(QString::fromLatin1(kTestModeKey), 0);
        gpsTestPage = new gps_test(this);
        currentPage = GpsTestPage;
    }
    gpsTestPage->reset();
    gpsTestPage->show();
    entryPage->hide();
}

void MainWidget::onShowGpsUpdateWidget()
{
    if (gpsservice::GpsService::instance()->getModualApatation() == kModuleFlashedHere) {
        if (gpsUpdatePage == nullptr) {
            gpsUpdatePage = new gpsupdate(this);
            currentPage = GpsUpdatePage;
        }
        // The menu stays shown beneath: the page covers it and hides itself on "Return".
        gpsUpdatePage->show();
        gpsUpdatePage->raise();
        return;
    }

    // Every other module: the package goes from a USB disk to flash, and the unit's own updater
    // does the rest after the reset.
    DBG << "========enter RX452 update============";
    mcu::McuService::instance()->setWatchDogEnable(false);
    if (!writeUpdateMarker()) {
        DBG << "==can not open file===";
        popup("Error: can not open file");
    }

    const QString disk = usbDiskPath();
    if (disk.isEmpty()) {
        popup("Error: No USB Device");
        return;
    }

    copyToFlash(disk);

    if (QFile::exists(QString::fromLatin1(kStagedPackage))) {
        mcu::McuService::instance()->setResetSystem(1);
    } else {
        DBG << "===file not copy========";
        popup("Error: file not copy");
    }
}

void MainWidget::onShowTidModeWidget() { }

void MainWidget::onReturnHome()
{
    // Kept: the event is not deleted here; it is the framework's once it has been delivered.
    auto *leave = new TouchEvent(Qx::TouchLeaveTestMode, -1, -1);
    QCoreApplication::sendEvent(QCoreApplication::instance(), leave);
}

void MainWidget::onShowSystemToolsWidget()
{
    if (toolsPage == nullptr) {
        toolsPage = new SystemToolsWidget(this);
        currentPage = ToolsPage;
    }
    toolsPage->show();
    entryPage->hide();
}

void MainWidget::onShowMicTestWidget()
{
    if (micPage == nullptr) {
        micPage = new mictestwidget(this);
        currentPage = MicPage;
    }
    micPage->show();
    entryPage->hide();
}

} // namespace testmode
