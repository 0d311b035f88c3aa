#include "appledevtest.h"

#include "framework/events.h"
#include "krdevice/devicemanager.h"
#include "lm_usb/lmusbmanager.h"
#include "lmplfctrl/lmplatformcontrol.h"
#include "mcu/mcuservice.h"
#include "mem/settingscache.h"
#include "tools/debugtrace.h"
#include "ui_apple_dev_test.h"

#include <QCoreApplication>
#include <QFile>
#include <QScrollBar>
#include <QScroller>
#include <QScrollerProperties>
#include <QTextStream>
#include <QTimer>

#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <tuple>

namespace testmode {

namespace {

// The code under "TEST_MODE" that asks for the USB face.
constexpr int kUsbTestPage = 13;

// The port whose charging mode is set, and the modes.
constexpr int kChargingPort = 0;
enum ChargingMode : int {
    Cdp,
    Dcp,
    Sdp,
};

enum Certification : int {
    Normal = 'O',
    Tid = 'T',
    Mif = 'M',
};

enum UsbFunction : int {
    NcmFunctionOn = 6,
    NcmFunctionOff = 7,
};

// The task that the framework is told of when the page goes.
constexpr auto kIdleTask = static_cast<Qx::TaskEvt>(0);

constexpr int kRebootDelayMilliseconds = 1000;

constexpr size_t kResultBytes = 2000;

// Shared by all instances; only one page exists at a time.
lmplfctrl::LMPlatformControl *platformControl = nullptr;
char resultBuffer[kResultBytes];
std::FILE *resultFile = nullptr;

void clearResult()
{
    std::memset(resultBuffer, 0, kResultBytes);
}

// Fills the buffer with the start of the last run's report.
bool readResult()
{
    resultFile = std::fopen("/var/ipt.log", "rt");
    if (resultFile == nullptr)
        return false;
    clearResult();
    std::ignore = std::fread(resultBuffer, 1, kResultBytes, resultFile);
    std::fclose(resultFile);
    resultFile = nullptr;
    return true;
}

// A report that fills the buffer has no end of its own: the text ends with the buffer.
QString resultText()
{
    return QString::fromUtf8(resultBuffer, static_cast<int>(qstrnlen(resultBuffer, kResultBytes)));
}

void enableAll(std::initializer_list<QWidget *> widgets, bool enabled)
{
    for (QWidget *widget : widgets)
        widget->setEnabled(enabled);
}

void hideAll(std::initializer_list<QWidget *> widgets)
{
    for (QWidget *widget : widgets)
        widget->hide();
}

// An exclusive button refuses to be unchecked, but a mode that no button stands for
// leaves all of them unchecked.
void showChecked(QRadioButton *button, bool checked)
{
    button->setAutoExclusive(false);
    button->setChecked(checked);
    button->setAutoExclusive(true);
}

} // namespace

Scroller::Scroller(QAbstractScrollArea *target, bool overshoot) : m_target(target)
{
    Q_ASSERT(m_target != NULL); // NOLINT(modernize-use-nullptr): the text is what the log shows
    m_scroller = QScroller::scroller(m_target);
    if (!overshoot)
        setOvershootEnable(false);
    QScroller::grabGesture(m_target, QScroller::LeftMouseButtonGesture);
}

void Scroller::setOvershootEnable(bool on)
{
    const auto policy = QVariant::fromValue<QScrollerProperties::OvershootPolicy>(
        on ? QScrollerProperties::OvershootAlwaysOn : QScrollerProperties::OvershootAlwaysOff);
    QScrollerProperties properties;
    properties.setScrollMetric(QScrollerProperties::HorizontalOvershootPolicy, policy);
    properties.setScrollMetric(QScrollerProperties::VerticalOvershootPolicy, policy);
    m_scroller->setScrollerProperties(properties);
}

AppleDevTest::AppleDevTest(QWidget *parent)
    : QWidget(parent), ui(new Ui_apple_dev_test), usbManager(lm_usb::LMUsbManager::GetInstance())
{
    move(0, 104);
    ui->setupUi(this);
    scroller = new Scroller(ui->result_view, false);
    setUpResultView();

    // A touch on a caption reaches the button beneath.
    for (QLabel *caption :
         {ui->title_text, ui->s_udp_text, ui->s_tcp_text, ui->s_stop_text, ui->c_udp50_text,
          ui->c_tcp_text, ui->c_udp100_text, ui->c_stop_text, ui->usb_sw_state, ui->ncm_sw_state})
        caption->setAttribute(Qt::WA_TransparentForMouseEvents);

    ui->radioButton->setChecked(true);
    ui->radioButton_2->setChecked(false);
    ui->busy_text->hide();
    usbSpeedSwitched = false;
    ncmOn = false;
    if (platformControl == nullptr)
        platformControl = lmplfctrl::LMPlatformControl::GetInstance();

    // The NCM function is off.
    ui->result_view->clear();
    setClientTestsEnabled(false);
    setServerTestsEnabled(false);
    setSidesEnabled(false);

    for (QRadioButton *button :
         {ui->radioButton_usb_normal, ui->radioButton_usb_tid, ui->radioButton_usb_mif})
        button->setCheckable(true);
}

AppleDevTest::~AppleDevTest()
{
    usbSpeedSwitched = false;
    TaskEvent idle(kIdleTask);
    QCoreApplication::sendEvent(QCoreApplication::instance(), &idle);
    delete scroller;
    delete ui;
}

void AppleDevTest::setUpResultView()
{
    ui->result_view->setReadOnly(true);
    ui->result_view->setEnabled(false);

    ui->result_view->setVerticalScrollBar(ui->scrollbar);
    ui->result_view->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    ui->result_view->verticalScrollBar()->setAttribute(Qt::WA_OpaquePaintEvent, false);
    ui->scrollbar->setParent(this); // its place in the form is beside the view, not inside
}

void AppleDevTest::resume()
{
    const int page = mem::SettingsCache::instance()->getValue(QStringLiteral("TEST_MODE"), 0);
    if (page != kUsbTestPage) {
        showAppleFace();
        return;
    }
    showUsbFace();

    krdevice::DeviceManager *devices = krdevice::DeviceManager::instance();
    const int certification = devices->getUsbCertification();
    DBG << Qt::hex << certification;
    showCertification(certification);
    showChargingMode(devices->getUsbBcMode(kChargingPort));
}

// Kept: what one face hides is not shown again for the other; the face shown first
// decides for the life of the page.
void AppleDevTest::showAppleFace()
{
    ui->title_text->setText(tr("Apple Test"));
    hideAll({ui->radioButton_usb_normal, ui->radioButton_usb_tid, ui->radioButton_usb_mif,
             ui->radioButton_cdp, ui->radioButton_dcp, ui->radioButton_sdp, ui->frame,
             ui->frame_2});
}

void AppleDevTest::showUsbFace()
{
    ui->title_text->setText(tr("USB Test"));
    hideAll(
        {ui->result_view,   ui->scrollbar,    ui->btn_s_udp,    ui->btn_s_tcp,    ui->btn_s_stop,
         ui->btn_c_udp50,   ui->btn_c_tcp,    ui->btn_c_udp100, ui->btn_c_stop,   ui->radioButton,
         ui->radioButton_2, ui->btn_c_ncm_sw, ui->ncm_sw_state, ui->btn_c_usb_sw, ui->usb_sw_state,
         ui->s_udp_text,    ui->s_tcp_text,   ui->s_stop_text,  ui->c_udp50_text, ui->c_tcp_text,
         ui->c_udp100_text, ui->c_stop_text,  ui->usb_sw_text,  ui->ncm_sw_text,  ui->result_text});
}

void AppleDevTest::showCertification(int mode)
{
    showChecked(ui->radioButton_usb_normal, mode == Normal);
    showChecked(ui->radioButton_usb_tid, mode == Tid);
    showChecked(ui->radioButton_usb_mif, mode == Mif);
}

void AppleDevTest::showChargingMode(int mode)
{
    showChecked(ui->radioButton_cdp, mode == Cdp);
    showChecked(ui->radioButton_dcp, mode == Dcp);
    showChecked(ui->radioButton_sdp, mode == Sdp);
}

void AppleDevTest::setClientTestsEnabled(bool enabled)
{
    enableAll({ui->btn_c_udp50, ui->btn_c_tcp, ui->btn_c_udp100, ui->btn_c_stop}, enabled);
}

void AppleDevTest::setServerTestsEnabled(bool enabled)
{
    enableAll({ui->btn_s_udp, ui->btn_s_tcp, ui->btn_s_stop}, enabled);
}

void AppleDevTest::setSidesEnabled(bool enabled)
{
    enableAll({ui->radioButton, ui->radioButton_2}, enabled);
}

void AppleDevTest::changeToClient()
{
    ui->result_view->clear();
    ui->title_text->setText(tr("Connect the accessory to an Apple device that Client Test"));
    setClientTestsEnabled(true);
    setServerTestsEnabled(false);
}

void AppleDevTest::changeToServer()
{
    ui->result_view->clear();
    ui->title_text->setText(tr("Connect the accessory to an Apple device that Server Test"));
    setClientTestsEnabled(false);
    setServerTestsEnabled(true);
}

// The run blocks this thread: what the tester is to see meanwhile is painted now.
void AppleDevTest::beginRun()
{
    ui->result_view->clear();
    ui->busy_text->show();
    repaint();
}

void AppleDevTest::showServerStarted()
{
    clearResult();
    ui->result_view->setPlainText(tr("Please wait a moment then press <stop> button"));
    ui->busy_text->hide();
}

void AppleDevTest::showResult()
{
    ui->result_view->setPlainText(resultText());
    ui->busy_text->hide();
}

void AppleDevTest::on_btn_s_udp_clicked()
{
    DBG << "Server UDP clicked";
    beginRun();
    if (platformControl->startUdpServer() != 0) {
        DBG << "UDP Server faile";
        return;
    }
    DBG << "UDP Server ok";
    showServerStarted();
}

void AppleDevTest::on_btn_s_tcp_clicked()
{
    DBG << "Server TCP clicked";
    beginRun();
    if (platformControl->startTcpServer() != 0) {
        DBG << "TCP Server faile";
        return;
    }
    DBG << "TCP Server ok";
    showServerStarted();
}

void AppleDevTest::on_btn_s_stop_clicked()
{
    DBG << "Server STOP clicked";
    beginRun();
    if (platformControl->stopNetTest() != 0) {
        DBG << "Stop faile";
        return;
    }
    DBG << "Stop ok";
    if (!readResult()) {
        DBG << "faile open ipt.log";
        return;
    }
    DBG << "stop =" << qUtf8Printable(resultText());
    showResult();
}

void AppleDevTest::on_btn_c_udp50_clicked()
{
    DBG << "Client UDP50 clicked";
    beginRun();
    if (platformControl->startUdp50Client() != 0) {
        DBG << "UDP 50 faile";
        return;
    }
    DBG << "UDP 50 ok";
    if (!readResult()) {
        DBG << "faile open ipt.log";
        return;
    }
    DBG << "udp =" << qUtf8Printable(resultText());
    showResult();
}

void AppleDevTest::on_btn_c_udp100_clicked()
{
    DBG << "Client UDP100 clicked";
    beginRun();
    if (platformControl->startUdp100Client() != 0) {
        DBG << "UDP 100 faile";
        return;
    }
    DBG << "UDP 100 ok";
    if (!readResult()) {
        DBG << "faile open ipt.log";
        return;
    }
    DBG << "udp100 =" << qUtf8Printable(resultText());
    showResult();
}

void AppleDevTest::on_btn_c_tcp_clicked()
{
    DBG << "Client TCP clicked";
    beginRun();
    if (platformControl->startTcpClient() != 0) {
        DBG << "TCP Client faile";
        return;
    }
    DBG << "TCP Client ok";
    if (!readResult()) {
        DBG << "faile open ipt.log";
        return;
    }
    DBG << "tcp =" << qUtf8Printable(resultText());
    showResult();
}

void AppleDevTest::on_btn_c_stop_clicked()
{
    DBG << "Client STOP clicked";
    beginRun();
    if (platformControl->stopNetTest() != 0) {
        DBG << "Stop faile";
        return;
    }
    DBG << "Stop ok";
    if (!readResult()) {
        DBG << "faile open ipt.log";
        return;
    }
    DBG << "stop =" << qUtf8Printable(resultText());
    showResult();
}

void AppleDevTest::on_radioButton_clicked()
{
    changeToClient();
}

void AppleDevTest::on_radioButton_2_clicked()
{
    changeToServer();
}

// Kept: the value written is the state before the press, so the first press writes 0
// (full speed) and shows "ON".
void AppleDevTest::on_btn_c_usb_sw_clicked()
{
    QFile file(QStringLiteral("/sys/devices/platform/ehci-platform.2/usb_speed_switch"));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text)) {
        DBG << "file not exit";
        return;
    }
    QTextStream stream(&file);
    stream << (usbSpeedSwitched ? 1 : 0);
    stream.flush();
    file.close();

    usbSpeedSwitched = !usbSpeedSwitched;
    ui->usb_sw_state->setText(usbSpeedSwitched ? tr("ON") : tr("OFF"));
}

// The function runs before the buttons open, and ends after they are closed.
void AppleDevTest::on_btn_c_ncm_sw_clicked()
{
    ncmOn = !ncmOn;
    if (ncmOn) {
        usbManager->switchUsbMode(NcmFunctionOn);
        changeToClient();
        setSidesEnabled(true);
        ui->ncm_sw_state->setText(tr("NCM ON"));
    } else {
        ui->result_view->clear();
        setClientTestsEnabled(false);
        setServerTestsEnabled(false);
        setSidesEnabled(false);
        ui->ncm_sw_state->setText(tr("NCM OFF"));
        usbManager->switchUsbMode(NcmFunctionOff);
    }
}

void AppleDevTest::setChargingMode(int mode)
{
    krdevice::DeviceManager::instance()->setUsbBcMode(kChargingPort, mode);
    showChargingMode(mode);
}

void AppleDevTest::on_radioButton_cdp_clicked()
{
    setChargingMode(Cdp);
}

void AppleDevTest::on_radioButton_dcp_clicked()
{
    setChargingMode(Dcp);
}

void AppleDevTest::on_radioButton_sdp_clicked()
{
    setChargingMode(Sdp);
}

// Every press, also of the mode that is set already, ends in the reset.
void AppleDevTest::certify(int mode)
{
    krdevice::DeviceManager::instance()->setUsbCertification(mode);
    QTimer::singleShot(kRebootDelayMilliseconds, this, SLOT(onReboot()));
}

void AppleDevTest::on_radioButton_usb_normal_clicked()
{
    certify(Normal);
}

void AppleDevTest::on_radioButton_usb_tid_clicked()
{
    certify(Tid);
}

void AppleDevTest::on_radioButton_usb_mif_clicked()
{
    certify(Mif);
}

void AppleDevTest::onReboot()
{
    mcu::McuService::instance()->factoryReset();
}

} // namespace testmode
