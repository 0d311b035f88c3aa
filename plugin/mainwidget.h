#pragma once

#include <QWidget>

#include <cstdint>

class KeyEvent;
class SystemToolsWidget;

namespace testmode {

class AppleDevTest;
class SetupUsbTest;
class gps_test;
class gpsupdate;
class mictestwidget;
class testEntryWidget;

// Owns the menu and the test pages, creates each page at its first showing and
// shows one at a time. A page is kept, but for the USB PHY page: it goes when the
// user leaves it. GUI thread only.
class MainWidget : public QWidget
{
    Q_OBJECT

public:
    explicit MainWidget(QWidget *parent);
    ~MainWidget() override;

    // Back to the menu: every page hidden, the menu shown.
    void resume();
    void hideAllPage();

    // Shows the page of the field `currentPage`; the argument is the framework's and is not looked
    // at.
    void showCurrentPage(int);

    // -1: no key is consumed by the test mode.
    int windowKeyEvent(KeyEvent *event);

public slots:
    void onShowNcmModeWidget();
    void onShowUSBEyesTestWidget();
    void onShowGpstestWidget();
    void onShowGpsUpdateWidget();
    void onShowTidModeWidget();
    void onShowUsbTestWidget();
    void onReturnHome();
    void onShowSystemToolsWidget();
    void onShowMicTestWidget();

private:
    enum class PageCode : int32_t;

    // True when the page was not there yet.
    template <typename Page>
    bool createOnce(Page *&page, PageCode code);
    void showInPlaceOfMenu(QWidget *page);
    void showAppleDevPage(PageCode code);
    void leaveUsbEyesPage();

    AppleDevTest *appleDevPage = nullptr; // serves both the NCM and the USB test
    SetupUsbTest *usbEyesPage = nullptr;
    gps_test *gpsTestPage = nullptr;
    testEntryWidget *entryPage = nullptr;
    gpsupdate *gpsUpdatePage = nullptr;
    int32_t currentPage = 0; // code of the page created last, not of the one on screen
    SystemToolsWidget *toolsPage = nullptr;
    mictestwidget *micPage = nullptr;
};

} // namespace testmode
