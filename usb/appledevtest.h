#pragma once

#include <QWidget>

class QAbstractScrollArea;
class QScroller;
class Ui_apple_dev_test;

namespace lm_usb {
class LMUsbManager;
}

namespace testmode {

// Kinetic touch scrolling for a scroll area, which must outlive it. GUI thread only.
class Scroller : public QObject
{
    Q_OBJECT

public:
    Scroller(QAbstractScrollArea *target, bool overshoot);

    // Resets every other property of the scrolling to Qt's defaults.
    void setOvershootEnable(bool on);

private:
    QAbstractScrollArea *m_target;
    QScroller *m_scroller;
};

// One page with two faces, chosen by "TEST_MODE" at each showing: network tests
// against an Apple device, or the charging and certification modes of the USB port.
// Its handlers block for as long as the service's runs last. GUI thread only.
class AppleDevTest : public QWidget
{
    Q_OBJECT

public:
    explicit AppleDevTest(QWidget *parent = nullptr);
    ~AppleDevTest() override;

    // Puts on the face of the entry that was pressed; called before every showing.
    void resume();

public slots:
    void on_btn_s_udp_clicked();
    void on_btn_s_tcp_clicked();
    void on_btn_s_stop_clicked();
    void on_btn_c_udp50_clicked();
    void on_btn_c_udp100_clicked();
    void on_btn_c_tcp_clicked();
    void on_btn_c_stop_clicked();
    void on_radioButton_clicked();
    void on_radioButton_2_clicked();
    void on_btn_c_usb_sw_clicked();
    void on_btn_c_ncm_sw_clicked();
    void on_radioButton_cdp_clicked();
    void on_radioButton_dcp_clicked();
    void on_radioButton_sdp_clicked();
    void on_radioButton_usb_normal_clicked();
    void on_radioButton_usb_tid_clicked();
    void on_radioButton_usb_mif_clicked();
    void onReboot();

private:
    void changeToClient();
    void changeToServer();

    void setUpResultView();
    void showAppleFace();
    void showUsbFace();
    void showCertification(int mode);
    void showChargingMode(int mode);
    void setChargingMode(int mode);
    void certify(int mode);
    void setClientTestsEnabled(bool enabled);
    void setServerTestsEnabled(bool enabled);
    void setSidesEnabled(bool enabled);
    void beginRun();
    void showServerStarted();
    void showResult();

    Ui_apple_dev_test *ui;
    Scroller *scroller;
    bool usbSpeedSwitched = false;
    bool ncmOn = false;
    lm_usb::LMUsbManager *usbManager; // the service's
};

} // namespace testmode
