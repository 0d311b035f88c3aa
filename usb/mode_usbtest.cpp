#include "mode_usbtest.h"

#include "devmem_main.h"
#include "tools/debugtrace.h"
#include "ui_setupusbform.h"
#include "usbphy.h"

#include <QPalette>

#include <cstdlib>
#include <string>
#include <tuple>

#include <unistd.h>

namespace testmode {

namespace {

constexpr unsigned int kOffsetInPage = 0xFFF;

// Lets the USB core settle after its logo test has been switched on.
constexpr unsigned int kLogoTestSettleMicroseconds = 500000;

// A read that fails yields 0.
unsigned int readRegister(unsigned int address)
{
    unsigned int word = 0;
    devmem_main(address & ~kOffsetInPage, address & kOffsetInPage, 0, &word);
    return word;
}

void writeRegister(unsigned int address, unsigned int word)
{
    devmem_main(address & ~kOffsetInPage, address & kOffsetInPage, 1, &word);
}

// Kept: the status of a command is not looked at.
void run(const std::string &command)
{
    std::ignore = std::system(command.c_str());
}

// The host controllers of ports 0 to 2 are numbered 1 to 3.
void switchSpeed(int port, const char *state)
{
    if (port < 0 || port >= usbphy::kPorts) // never: the buttons choose among the three
        return;
    run(std::string("echo ") + state + " > /sys/devices/platform/ehci-platform."
        + std::to_string(port + 1) + "/usb_speed_switch");
}

} // namespace

SetupUsbTest::SetupUsbTest(QWidget *parent) : QWidget(parent), ui(new Ui_SetupUsbForm)
{
    ui->setupUi(this);
    setGeometry(0, 130, 1024, 470);
    setAutoFillBackground(true);
    QPalette black = palette();
    black.setBrush(QPalette::Window, QBrush(Qt::black));
    setPalette(black);

    // A touch on a caption reaches the button beneath.
    ui->read_text->setAttribute(Qt::WA_TransparentForMouseEvents);
    ui->write_text->setAttribute(Qt::WA_TransparentForMouseEvents);
    refreshMode();

    run("echo 1 > /sys/module/usbcore/parameters/usb_logo_test_start");
    ::usleep(kLogoTestSettleMicroseconds);

    testPatternButtons.clear();
    testPatternButtons << ui->test_DiagramBtn << ui->test_JBtn << ui->test_KBtn << ui->test_SE0Btn
                       << ui->test_PacketBtn;
    connectWidgets();
    initWidgetsSetting();
    ui->port2_Btn->hide();
    DBG << "into usb test view.1";
}

SetupUsbTest::~SetupUsbTest()
{
    delete ui;
}

void SetupUsbTest::connectWidgets()
{
    connect(ui->hostMode, SIGNAL(clicked()), this, SLOT(switchToHostMode()));
    connect(ui->deviceMode, SIGNAL(clicked()), this, SLOT(switchToDeviceMode()));
    connect(ui->returnBtn, SIGNAL(clicked()), this, SLOT(returnBtnClicked()));
    connect(ui->useUphyBtn, SIGNAL(stateChanged(int)), this, SLOT(modeChange(int)));
    connect(ui->uphyDecBtn, SIGNAL(clicked()), this, SLOT(uphyDecClicked()));
    connect(ui->uphyAddBtn, SIGNAL(clicked()), this, SLOT(uphyAddClicked()));
    connect(ui->uphySwingBtn, SIGNAL(clicked()), this, SLOT(readBtnClicked()));
    connect(ui->uphyDisconnectBtn, SIGNAL(clicked()), this, SLOT(readBtnClicked()));
    connect(ui->readBtn, SIGNAL(clicked()), this, SLOT(readBtnClicked()));
    connect(ui->writeBtn, SIGNAL(clicked()), this, SLOT(writeBtnClicked()));
    connect(ui->writeBtn, SIGNAL(pressed()), this, SLOT(writeBtnPress()));
    connect(ui->writeBtn, SIGNAL(released()), this, SLOT(writeBtnReleased()));
    connect(ui->highBtn, SIGNAL(clicked()), this, SLOT(speedClicked()));
    connect(ui->fullBtn, SIGNAL(clicked()), this, SLOT(speedClicked()));
}

void SetupUsbTest::initWidgetsSetting()
{
    QRadioButton *portButton = port == 1 ? ui->port1_Btn
        : port == 2                      ? ui->port2_Btn
                                         : ui->port0_Btn;
    portButton->setChecked(true);

    const bool high = speed == 0;
    (high ? ui->highBtn : ui->fullBtn)->setChecked(true);
    changeUsbSpeed(port, high);

    (uphyPar != 0 ? ui->uphyDisconnectBtn : ui->uphySwingBtn)->setChecked(true);
}

void SetupUsbTest::readParameter()
{
    port = ui->port0_Btn->isChecked() ? 0 : ui->port1_Btn->isChecked() ? 1 : 2;
    speed = ui->highBtn->isChecked() ? 0 : 1;
    for (int i = 0; i < testPatternButtons.size(); ++i) {
        if (testPatternButtons.at(i)->isChecked())
            testPar = i;
    }
    uphyPar = ui->uphySwingBtn->isChecked() ? 0 : 1;

    DBG << "port:" << port;
    DBG << "speed:" << speed;
    DBG << "testPar:" << testPar;
    DBG << "uphyPar:" << uphyPar;
    DBG << "uphyData:" << uphyData;
}

void SetupUsbTest::refreshMode()
{
    DBG << uphyMode;
    const bool uphy = uphyMode != 0;
    ui->uphyGroupBox->setVisible(uphy);
    ui->testGroupBox->setEnabled(!uphy);
    ui->speedGroupBox->setEnabled(!uphy);
    ui->portGroupBox->setEnabled(!uphy);
    if (uphy) {
        ui->readBtn->setEnabled(true);
        ui->writeBtn->setEnabled(true);
    }
}

void SetupUsbTest::refreshUphy()
{
    if (uphyPar != 0) {
        ui->uphyData->setText(QString::number(static_cast<unsigned int>(uphyData), 16));
        return;
    }

    DBG << "refreshUphy" << uphyData;
    if (usbphy::isPlusSwing(uphyData))
        ui->uphyData->setText(QString::number(uphyData - usbphy::kPlusZero));
    else if (uphyData == usbphy::kMinusZero)
        ui->uphyData->setText(tr("-0"));
    else if (usbphy::isMinusSwing(uphyData))
        ui->uphyData->setText(QString::number(usbphy::kMinusZero - uphyData));
}

void SetupUsbTest::modeChange(int state)
{
    DBG << "modeChange" << state;
    if (state != 0) {
        changeTestMode();
        uphyMode = 1;
        readBtnClicked();
    } else {
        uphyMode = 0;
    }
    refreshMode();
}

void SetupUsbTest::uphyAddClicked()
{
    uphyData = uphyPar != 0 ? usbphy::disconnectUp(uphyData) : usbphy::swingUp(uphyData);
    refreshUphy();
    DBG << "uphyAddClicked" << uphyData;
}

void SetupUsbTest::uphyDecClicked()
{
    uphyData = uphyPar != 0 ? usbphy::disconnectDown(uphyData) : usbphy::swingDown(uphyData);
    refreshUphy();
}

void SetupUsbTest::readBtnClicked()
{
    DBG << "readBtnClicked";
    readParameter();
    if (uphyPar == 0)
        uphyData = usbphy::swingByte(readRegister(usbphy::kSwing), port);
    else
        uphyData = static_cast<int>(readRegister(usbphy::disconnect(port)));
    refreshUphy();
}

void SetupUsbTest::writeBtnClicked()
{
    DBG << "readBtnClicked"; // kept: testers know the write by this line
    readParameter();
    if (uphyMode == 1) {
        writeUphy();
        return;
    }
    if (const char *remark = usbphy::remarkOn(testPar))
        DBG << remark;
    writeRegister(usbphy::testMode(port), usbphy::testModeSelector(testPar, speed != 0));
}

void SetupUsbTest::writeUphy()
{
    if (uphyPar == 0) {
        const unsigned int word = readRegister(usbphy::kSwing);
        writeRegister(usbphy::kSwing, usbphy::withSwingByte(word, port, uphyData));
    } else {
        openIICDebug();
        writeRegister(usbphy::disconnect(port), static_cast<unsigned int>(uphyData));
    }
}

// Unlike "Write", leaves the register alone when no pattern is chosen.
void SetupUsbTest::changeTestMode()
{
    DBG << "changeTestMode";
    readParameter();
    if (const char *remark = usbphy::remarkOn(testPar))
        DBG << remark;
    if (testPar != usbphy::NoPattern)
        writeRegister(usbphy::testMode(port), usbphy::testModeSelector(testPar, speed != 0));
}

// Opens the way to a port's disconnect register.
void SetupUsbTest::openIICDebug()
{
    DBG << "open iic debug." << port;
    if (port < 0 || port >= usbphy::kPorts) // never: the buttons choose among the three
        return;
    writeRegister(usbphy::debugEnable(port), 1);
    writeRegister(usbphy::testMode(port), 7);
    writeRegister(usbphy::kDebugSelect, 0);
    writeRegister(usbphy::kDebugRoute, usbphy::debugRoute(port));
}

void SetupUsbTest::speedClicked()
{
    const auto *pressed = qobject_cast<QRadioButton *>(sender());
    if (pressed == nullptr)
        return;
    readParameter();
    changeUsbSpeed(port, pressed == ui->highBtn);
}

// Full speed has no patterns of its own: only the last button, "None", stays.
void SetupUsbTest::changeUsbSpeed(int ofPort, bool high)
{
    const int last = testPatternButtons.size() - 1;
    for (int i = 0; i < last; ++i)
        testPatternButtons.at(i)->setVisible(high);
    testPar = high ? 0 : last;
    testPatternButtons.at(testPar)->setChecked(true);
    if (high)
        fullToHigh(ofPort);
    else
        highToFull(ofPort);
}

void SetupUsbTest::fullToHigh(int ofPort)
{
    DBG << "change to high speed." << ofPort;
    switchSpeed(ofPort, "1");
}

void SetupUsbTest::highToFull(int ofPort)
{
    DBG << "change to full speed." << ofPort;
    switchSpeed(ofPort, "0");
}

void SetupUsbTest::switchToHostMode()
{
    DBG << "switchToHostMode";
    DBG << "switchToHostMode"; // kept: testers know the switch by two lines
    ui->port1_Btn->show();
    ui->useUphyBtn->show();
    run("usb_control --uphy_role 0");
}

void SetupUsbTest::switchToDeviceMode()
{
    DBG << "switchToDeviceMode";
    DBG << "switchToDeviceMode"; // kept, as above
    ui->port0_Btn->setChecked(true);
    ui->port1_Btn->hide();
    ui->useUphyBtn->hide();
    run("usb_control --uphy_role 1");
}

void SetupUsbTest::writeBtnPress()
{
    ui->write_text->setStyleSheet(QStringLiteral("color:#ffffff;"));
}

void SetupUsbTest::writeBtnReleased()
{
    ui->write_text->setStyleSheet(QStringLiteral("color:#ff0000;"));
}

void SetupUsbTest::returnBtnClicked()
{
    DBG << "returnBtnClicked";
    emit exitEqSig();
    deleteLater();
}

} // namespace testmode
