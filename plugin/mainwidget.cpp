#include "mainwidget.h"

#include "framework/events.h"
#include "gps/gps_test.h"
#include "gps/gpsupdate.h"
#include "gps/stagedupdate.h"
#include "gpsservice/gpsservice.h"
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

namespace testmode {

namespace {

// The kind of GNSS module that is flashed from here; the unit's own updater flashes all others.
constexpr int kModuleFlashedHere = 1;

// The touch that the framework closes the test mode on.
constexpr auto kLeaveTestMode = static_cast<Qx::Touch>(9);

const char kTestModeKey[] = "TEST_MODE";

void popup(const char *text)
{
    logs::OutputLogsUsb::instance()->tipsMessagePopup(QString::fromLatin1(text));
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

// The settings store and the Apple device page know two of them.
enum class MainWidget::PageCode : int32_t {
    Tools = 1,
    Mic = 2,
    Ncm = 9,
    UsbEyes = 12,
    UsbTest = 13,
    GpsTest = 15,
    GpsUpdate = 16,
};

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
    switch (static_cast<PageCode>(currentPage)) {
    case PageCode::Ncm:
        DBG << "ncm";
        onShowNcmModeWidget();
        break;
    case PageCode::UsbEyes:
        DBG << "usb eyes";
        onShowUSBEyesTestWidget();
        break;
    case PageCode::GpsTest:
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

// The code changes here only: a page that is shown again leaves it alone.
template <typename Page>
bool MainWidget::createOnce(Page *&page, PageCode code)
{
    if (page != nullptr)
        return false;
    page = new Page(this);
    currentPage = static_cast<int32_t>(code);
    return true;
}

void MainWidget::showInPlaceOfMenu(QWidget *page)
{
    page->show();
    entryPage->hide();
}

void MainWidget::onShowNcmModeWidget()
{
    showAppleDevPage(PageCode::Ncm);
}

void MainWidget::onShowUsbTestWidget()
{
    DBG << "usb test";
    showAppleDevPage(PageCode::UsbTest);
}

// Both entries share one page, which reads from the settings which of them was pressed.
void MainWidget::showAppleDevPage(PageCode code)
{
    createOnce(appleDevPage, code);
    mem::SettingsCache::instance()->setValue(QString::fromLatin1(kTestModeKey), 0,
                                             static_cast<int32_t>(code));
    appleDevPage->resume();
    showInPlaceOfMenu(appleDevPage);
}

void MainWidget::onShowUSBEyesTestWidget()
{
    if (createOnce(usbEyesPage, PageCode::UsbEyes))
        connect(usbEyesPage, &SetupUsbTest::exitEqSig, this, &MainWidget::leaveUsbEyesPage);
    showInPlaceOfMenu(usbEyesPage);
}

// The page deletes itself after its signal, and may say it again before it is gone. The next
// showing builds a new one.
void MainWidget::leaveUsbEyesPage()
{
    usbEyesPage->disconnect(this);
    usbEyesPage->hide();
    usbEyesPage = nullptr;
    entryPage->show();
}

void MainWidget::onShowGpstestWidget()
{
    if (gpsTestPage == nullptr)
        mem::SettingsCache::instance()->setValue(QString::fromLatin1(kTestModeKey), 0);
    createOnce(gpsTestPage, PageCode::GpsTest);
    gpsTestPage->reset();
    showInPlaceOfMenu(gpsTestPage);
}

void MainWidget::onShowGpsUpdateWidget()
{
    if (gpsservice::GpsService::instance()->getModualApatation() == kModuleFlashedHere) {
        createOnce(gpsUpdatePage, PageCode::GpsUpdate);
        // The menu stays shown beneath: the page covers it and hides itself on "Return".
        gpsUpdatePage->show();
        gpsUpdatePage->raise();
        return;
    }

    // Every other module: the unit's own updater does the rest after the reset.
    DBG << "========enter RX452 update============";
    mcu::McuService::instance()->setWatchDogEnable(false);
    if (!stagedupdate::writeMarker()) {
        DBG << "==can not open file===";
        popup("Error: can not open file");
    }

    const QString disk = stagedupdate::usbDiskPath();
    if (disk.isEmpty()) {
        popup("Error: No USB Device");
        return;
    }

    stagedupdate::copyPackage(disk);
    if (stagedupdate::packageIsStaged()) {
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
    auto *leave = new TouchEvent(kLeaveTestMode, -1, -1);
    QCoreApplication::sendEvent(QCoreApplication::instance(), leave);
}

void MainWidget::onShowSystemToolsWidget()
{
    createOnce(toolsPage, PageCode::Tools);
    showInPlaceOfMenu(toolsPage);
}

void MainWidget::onShowMicTestWidget()
{
    createOnce(micPage, PageCode::Mic);
    showInPlaceOfMenu(micPage);
}

} // namespace testmode
