#pragma once

#include <QList>
#include <QWidget>

class QRadioButton;
class Ui_SetupUsbForm;

namespace testmode {

// Engineering page for the electrical tests of the USB ports: test patterns, speed,
// role, and two analogue values of the PHY. Touches the hardware as soon as it is
// created, and deletes itself when the user leaves it. GUI thread only.
class SetupUsbTest : public QWidget
{
    Q_OBJECT

public:
    explicit SetupUsbTest(QWidget *parent = nullptr);
    ~SetupUsbTest() override;

signals:
    // The user leaves; the page is deleted soon after.
    void exitEqSig();

public slots:
    void returnBtnClicked();
    void switchToHostMode();
    void switchToDeviceMode();
    void modeChange(int state);
    void uphyAddClicked();
    void uphyDecClicked();
    void readBtnClicked();
    void writeBtnClicked();
    void writeBtnPress();
    void writeBtnReleased();
    void speedClicked();

private:
    void connectWidgets();
    void refreshMode();
    void refreshUphy();
    void readParameter();
    void initWidgetsSetting();
    void openIICDebug();
    void changeUsbSpeed(int port, bool high);
    void fullToHigh(int port);
    void highToFull(int port);
    void changeTestMode();
    void writeUphy();

    Ui_SetupUsbForm *ui;
    int uphyMode = 0; // 1 while the values of the PHY are worked on
    int port = 0;
    int speed = 0;    // 0 high, 1 full
    int testPar = 0;  // index into testPatternButtons
    int uphyPar = 0;  // 0 swing, 1 disconnect
    int uphyData = 0; // the chosen value as read or edited last
    QList<QRadioButton *> testPatternButtons;
};

} // namespace testmode
