#include "tests/support/unittest.h"

#include "pagehelpers.h"
#include "recordedhardware.h"
#include "ui_setupusbform.h"
#include "usb/mode_usbtest.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QFile>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPointer>
#include <QRadioButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QStyleOptionButton>
#include <QTranslator>

#include <memory>

using testmode::SetupUsbTest;
using tests::child;
using tests::clickAt;
using tests::hardware;

// What the page is, and its speed, role, mode and way out.
class TestSetupUsbTest : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void signalsAndSlotsInOrder();
    void widgetsOfTheForm_data();
    void widgetsOfTheForm();
    void connectionsInOrder();
    void creationTouchesTheHardware();
    void startsOnPort0AtHighSpeedWithSwing();
    void placeAndBackground();
    void widgetsKeepTheirDistance_data();
    void widgetsKeepTheirDistance();
    void imagesExist();
    void formIsAsItIsKnown();
    void textsAreRedAndGreyWhenDisabled();
    void indicatorsAreTheTouchImages_data();
    void indicatorsAreTheTouchImages();
    void textsCanBeTranslated();
    void speedSwitchOfThePort_data();
    void speedSwitchOfThePort();
    void fullSpeedLeavesOnlyNone();
    void speedIgnoresOtherSenders();
    void fullSpeedWriteClearsTheTestMode();
    void enteringUphyAtFullSpeedWritesNothing();
    void enteringUphyWritesThePatternThenReads();
    void uphyModeClosesTheOtherGroups();
    void port2IsNeverVisible();
    void roles();
    void deviceRoleForcesPort0();
    void writeCaptionFollowsTheFinger();
    void captionsLetThePressThrough();
    void leavingTellsThenDeletes();
    void leavingRestoresNothing();

private:
    // The page shown, with journal and trace of its creation behind it.
    std::unique_ptr<SetupUsbTest> open();
    QStringList calls() const { return bench::journal().texts(mark); }
    QStringList said() { return trace().payloads(traceMark); }
    void forget();

    int mark = 0;
    int traceMark = 0;
};

namespace {

const char kSwitch1[] = "/sys/devices/platform/ehci-platform.1/usb_speed_switch";
const char kLogoTest[] = "/sys/module/usbcore/parameters/usb_logo_test_start";

} // namespace

std::unique_ptr<SetupUsbTest> TestSetupUsbTest::open()
{
    hardware() = tests::RecordedHardware();
    auto page = std::make_unique<SetupUsbTest>(nullptr);
    page->show();
    forget();
    return page;
}

void TestSetupUsbTest::forget()
{
    mark = bench::journal().lastNumber();
    traceMark = trace().payloads().size();
}

void TestSetupUsbTest::signalsAndSlotsInOrder()
{
    QCOMPARE(tests::signalsOf(SetupUsbTest::staticMetaObject), QStringList{"exitEqSig()"});
    QCOMPARE(tests::slotsOf(SetupUsbTest::staticMetaObject),
             (QStringList{"returnBtnClicked()", "switchToHostMode()", "switchToDeviceMode()",
                          "modeChange(int)", "uphyAddClicked()", "uphyDecClicked()",
                          "readBtnClicked()", "writeBtnClicked()", "writeBtnPress()",
                          "writeBtnReleased()", "speedClicked()"}));
}

void TestSetupUsbTest::widgetsOfTheForm_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("property");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, const char *type, const char *property,
                        const char *text) {
        QTest::newRow(name) << QString(type) << QString(property) << QString(text);
    };
    row("background", "QWidget", "windowTitle", "");
    row("portGroupBox", "QGroupBox", "title", "USB Port");
    row("port0_Btn", "QRadioButton", "text", "Port0");
    row("port1_Btn", "QRadioButton", "text", "Port1");
    row("port2_Btn", "QRadioButton", "text", "Port2");
    row("speedGroupBox", "QGroupBox", "title", "USB Speed");
    row("highBtn", "QRadioButton", "text", "High Speed");
    row("fullBtn", "QRadioButton", "text", "Full Speed");
    row("uphyGroupBox", "QGroupBox", "title", "UPHY Parameter");
    row("uphyDisconnectBtn", "QRadioButton", "text", "Disconnect");
    row("uphySwingBtn", "QRadioButton", "text", "Swing");
    row("uphyDecBtn", "QPushButton", "text", "");
    row("uphyAddBtn", "QPushButton", "text", "");
    row("uphyData", "QLabel", "text", "0");
    row("testGroupBox", "QGroupBox", "title", "Test Pattern");
    row("test_DiagramBtn", "QRadioButton", "text", "Eye Diagram");
    row("test_JBtn", "QRadioButton", "text", "Test J");
    row("test_KBtn", "QRadioButton", "text", "Test K");
    row("test_SE0Btn", "QRadioButton", "text", "SE0");
    row("test_PacketBtn", "QRadioButton", "text", "None");
    row("useUphyBtn", "QCheckBox", "text", "Use UPHY");
    row("readBtn", "QPushButton", "text", "");
    row("read_text", "QLabel", "text", "Read");
    row("writeBtn", "QPushButton", "text", "");
    row("write_text", "QLabel", "text", "Write");
    row("returnBtn", "QPushButton", "text", "");
    row("testmode", "QGroupBox", "title", "");
    row("hostMode", "QRadioButton", "text", "Host Mode");
    row("deviceMode", "QRadioButton", "text", "Device Mode");
}

void TestSetupUsbTest::widgetsOfTheForm()
{
    QFETCH(QString, property);
    const auto page = open();
    const QWidget *widget = child(*page, QTest::currentDataTag());
    QTEST(QString(widget->metaObject()->className()), "type");
    QTEST(widget->property(property.toLatin1().constData()).toString(), "text");
    QCOMPARE(page->windowTitle(), QString("Form"));
}

void TestSetupUsbTest::connectionsInOrder()
{
    const auto page = open();
    const QStringList expected{
        "hostMode: clicked(bool) -> switchToHostMode()",
        "deviceMode: clicked(bool) -> switchToDeviceMode()",
        "returnBtn: clicked(bool) -> returnBtnClicked()",
        "useUphyBtn: stateChanged(int) -> modeChange(int)",
        "uphyDecBtn: clicked(bool) -> uphyDecClicked()",
        "uphyAddBtn: clicked(bool) -> uphyAddClicked()",
        "uphySwingBtn: clicked(bool) -> readBtnClicked()",
        "uphyDisconnectBtn: clicked(bool) -> readBtnClicked()",
        "readBtn: clicked(bool) -> readBtnClicked()",
        "writeBtn: clicked(bool) -> writeBtnClicked()",
        "writeBtn: pressed() -> writeBtnPress()",
        "writeBtn: released() -> writeBtnReleased()",
        "highBtn: clicked(bool) -> speedClicked()",
        "fullBtn: clicked(bool) -> speedClicked()",
    };
    QCOMPARE(tests::connectionsInto(*page, trace()), expected);
}

void TestSetupUsbTest::creationTouchesTheHardware()
{
    tests::writeFile(kLogoTest, "0\n");
    tests::writeFile(kSwitch1, "0\n");
    const SetupUsbTest page;
    QCOMPARE(
        bench::journal().texts(),
        (QStringList{"shell: echo 1 > /sys/module/usbcore/parameters/usb_logo_test_start",
                     "clock.usleep(500000)",
                     "shell: echo 1 > /sys/devices/platform/ehci-platform.1/usb_speed_switch"}));
    QCOMPARE(tests::contentOf(kLogoTest), QByteArray("1\n"));
    QCOMPARE(tests::contentOf(kSwitch1), QByteArray("1\n"));
    QCOMPARE(trace().payloads(),
             (QStringList{"0", "change to high speed. 0", "into usb test view.1"}));
}

void TestSetupUsbTest::startsOnPort0AtHighSpeedWithSwing()
{
    const auto page = open();
    QStringList checked;
    const auto buttons = page->findChildren<QAbstractButton *>();
    for (const QAbstractButton *button : buttons) {
        if (button->isChecked())
            checked << button->objectName();
    }
    checked.sort();
    QCOMPARE(checked, (QStringList{"highBtn", "port0_Btn", "test_DiagramBtn", "uphySwingBtn"}));
    QVERIFY(child(*page, "uphyGroupBox")->isHidden());
    QVERIFY(child(*page, "test_PacketBtn")->isVisible());
    for (const char *group : {"portGroupBox", "speedGroupBox", "testGroupBox"})
        QVERIFY(child(*page, group)->isEnabled());
}

void TestSetupUsbTest::placeAndBackground()
{
    const auto page = open();
    QCOMPARE(page->geometry(), QRect(0, 130, 1024, 470));
    QVERIFY(page->autoFillBackground());
    QCOMPARE(page->palette().brush(QPalette::Window), QBrush(Qt::black, Qt::SolidPattern));
    QVERIFY(qobject_cast<QHBoxLayout *>(page->layout()) != nullptr);
    QCOMPARE(page->layout()->spacing(), 0);
    QCOMPARE(child(*page, "background")->geometry(), page->rect());
}

void TestSetupUsbTest::widgetsKeepTheirDistance_data()
{
    QTest::addColumn<QString>("press");
    QTest::newRow("normal") << "";
    QTest::newRow("UPHY") << "useUphyBtn";
    QTest::newRow("full speed") << "fullBtn";
    QTest::newRow("device role") << "deviceMode";
}

void TestSetupUsbTest::widgetsKeepTheirDistance()
{
    QFETCH(QString, press);
    const auto page = open();
    if (!press.isEmpty())
        child<QAbstractButton>(*page, press.toLatin1().constData())->click();
    QCOMPARE(tests::overlaps(*page), QStringList());
    QCOMPARE(tests::outsiders(*page), QStringList());
}

void TestSetupUsbTest::imagesExist()
{
    const auto page = open();
    const QString sheet = child(*page, "background")->styleSheet();
    static const QRegularExpression url(QStringLiteral("url\\(([^)]+)\\)"));
    QStringList images;
    for (auto match = url.globalMatch(sheet); match.hasNext();)
        images << match.next().captured(1);
    QVERIFY(images.contains(":/images/06_touch_btn_h"));
    QVERIFY(images.contains(":/images/06_touch_btn1"));
    QVERIFY(images.contains(":/images/05_prev_d.png"));
    images << ":/images/02_btn_n.png"
           << ":/images/05_prev_n.png";
    for (const QString &image : qAsConst(images))
        QVERIFY2(!QImage(image).isNull(), qPrintable(image));
    for (const char *name : {"writeBtn", "readBtn", "returnBtn", "uphyDecBtn", "uphyAddBtn"})
        QVERIFY2(!child<QPushButton>(*page, name)->icon().isNull(), name);
    const QVector<QPair<const char *, const char *>> named = {
        {"writeBtn", ":/images/02_btn_n.png"}, {"returnBtn", ":/images/05_prev_n.png"}};
    for (const auto &[name, image] : named) {
        const auto *button = child<QPushButton>(*page, name);
        const QSize size = button->iconSize();
        QCOMPARE(button->icon().pixmap(size).toImage(), QIcon(image).pixmap(size).toImage());
    }
}

void TestSetupUsbTest::formIsAsItIsKnown()
{
    QWidget bare;
    Ui_SetupUsbForm form;
    form.setupUi(&bare);
    QCOMPARE(bare.windowTitle(), QString("Form"));
    QCOMPARE(bare.size(), QSize(800, 480));
    QCOMPARE(form.horizontalLayout->spacing(), 0);
    QCOMPARE(bare.layout(), form.horizontalLayout);
}

void TestSetupUsbTest::textsAreRedAndGreyWhenDisabled()
{
    const auto page = open();
    const auto shows = [&page](const char *name, QRgb colour) {
        const QImage image = child(*page, name)->grab().toImage();
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                if (image.pixel(x, y) == colour)
                    return true;
            }
        }
        return false;
    };
    const QRgb red = qRgb(255, 0, 0);
    const QRgb grey = qRgb(100, 100, 100);
    QVERIFY(shows("highBtn", red));
    QVERIFY(shows("useUphyBtn", red));
    clickAt(*page, "useUphyBtn");
    QVERIFY(!shows("highBtn", red));
    QVERIFY(shows("highBtn", grey));
    QVERIFY(shows("uphySwingBtn", red));
}

void TestSetupUsbTest::indicatorsAreTheTouchImages_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("image");
    QTest::newRow("checked radio button") << "highBtn"
                                          << ":/images/06_touch_btn_h";
    QTest::newRow("unchecked radio button") << "fullBtn"
                                            << ":/images/06_touch_btn1";
    QTest::newRow("unchecked check box") << "useUphyBtn"
                                         << ":/images/06_touch_btn1";
    QTest::newRow("checked check box") << "useUphyBtn checked"
                                       << ":/images/06_touch_btn_h";
}

void TestSetupUsbTest::indicatorsAreTheTouchImages()
{
    QFETCH(QString, name);
    QFETCH(QString, image);
    const auto page = open();
    if (name.endsWith(" checked"))
        child<QCheckBox>(*page, "useUphyBtn")->setChecked(true);
    auto *button = child<QAbstractButton>(*page, name.section(' ', 0, 0).toLatin1().constData());

    QStyleOptionButton option;
    option.initFrom(button);
    option.state |= button->isChecked() ? QStyle::State_On : QStyle::State_Off;
    const QRect place = button->style()->subElementRect(qobject_cast<QCheckBox *>(button) != nullptr
                                                            ? QStyle::SE_CheckBoxIndicator
                                                            : QStyle::SE_RadioButtonIndicator,
                                                        &option, button);
    QCOMPARE(place.size(), QSize(40, 40));

    const QRect onPage(button->mapTo(page.get(), place.topLeft()), place.size());
    const QImage shown = page->grab(onPage).toImage().convertToFormat(QImage::Format_RGB32);
    QImage expected(40, 40, QImage::Format_RGB32);
    expected.fill(QColor("#101418")); // behind the groups
    QPainter(&expected).drawPixmap(QRect(0, 0, 40, 40), QPixmap(image));
    QCOMPARE(shown, expected);
}

void TestSetupUsbTest::textsCanBeTranslated()
{
    struct Echo : QTranslator
    {
        bool isEmpty() const override { return false; }
        QString translate(const char *context, const char *source, const char *, int) const override
        {
            return QString("%1|%2").arg(context, source);
        }
    } echo;
    QVERIFY(QCoreApplication::installTranslator(&echo));
    const auto page = open();
    QStringList texts;
    for (const auto *button : page->findChildren<QAbstractButton *>())
        texts << button->text();
    for (const auto *group : page->findChildren<QGroupBox *>())
        texts << group->title();
    texts << child<QLabel>(*page, "read_text")->text()
          << child<QLabel>(*page, "write_text")->text();
    texts.removeAll(QString());
    texts.sort();
    hardware().words[0x9C000190] = 0x60;
    clickAt(*page, "readBtn");
    const QString minusZero = child<QLabel>(*page, "uphyData")->text();
    QCoreApplication::removeTranslator(&echo);

    QStringList expected;
    for (const char *text :
         {"Device Mode", "Disconnect", "Eye Diagram", "Full Speed",   "High Speed",     "Host Mode",
          "None",        "Port0",      "Port1",       "Port2",        "Read",           "SE0",
          "Swing",       "Test J",     "Test K",      "Test Pattern", "UPHY Parameter", "USB Port",
          "USB Speed",   "Use UPHY",   "Write"})
        expected << QString("SetupUsbForm|%1").arg(text);
    QCOMPARE(texts, expected);
    QCOMPARE(minusZero, QString("testmode::SetupUsbTest|-0"));
}

void TestSetupUsbTest::speedSwitchOfThePort_data()
{
    QTest::addColumn<QString>("portButton");
    QTest::addColumn<QString>("speedButton");
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("trace");
    const QString command = "shell: echo %1 > /sys/devices/platform/ehci-platform.%2/"
                            "usb_speed_switch";
    const QString high = "change to high speed. %1";
    const QString full = "change to full speed. %1";
    QTest::newRow("0 high") << "port0_Btn"
                            << "highBtn" << command.arg(1).arg(1) << high.arg(0);
    QTest::newRow("0 full") << "port0_Btn"
                            << "fullBtn" << command.arg(0).arg(1) << full.arg(0);
    QTest::newRow("1 high") << "port1_Btn"
                            << "highBtn" << command.arg(1).arg(2) << high.arg(1);
    QTest::newRow("1 full") << "port1_Btn"
                            << "fullBtn" << command.arg(0).arg(2) << full.arg(1);
    QTest::newRow("2 high") << "port2_Btn"
                            << "highBtn" << command.arg(1).arg(3) << high.arg(2);
    QTest::newRow("2 full") << "port2_Btn"
                            << "fullBtn" << command.arg(0).arg(3) << full.arg(2);
}

void TestSetupUsbTest::speedSwitchOfThePort()
{
    QFETCH(QString, portButton);
    QFETCH(QString, speedButton);
    QFETCH(QString, command);
    QFETCH(QString, trace);
    const auto page = open();
    child<QRadioButton>(*page, portButton.toLatin1().constData())->setChecked(true);
    clickAt(*page, speedButton.toLatin1().constData());
    QCOMPARE(calls(), QStringList{command});
    QCOMPARE(said().last(), trace);
}

void TestSetupUsbTest::fullSpeedLeavesOnlyNone()
{
    const auto page = open();
    const auto shownPatterns = [&page] {
        QStringList shown;
        for (const char *name :
             {"test_DiagramBtn", "test_JBtn", "test_KBtn", "test_SE0Btn", "test_PacketBtn"}) {
            if (child(*page, name)->isVisible())
                shown << name;
        }
        return shown;
    };

    clickAt(*page, "fullBtn");
    QCOMPARE(shownPatterns(), QStringList{"test_PacketBtn"});
    QVERIFY(child<QRadioButton>(*page, "test_PacketBtn")->isChecked());
    QCOMPARE(said(),
             (QStringList{"port: 0", "speed: 1", "testPar: 0", "uphyPar: 0", "uphyData: 0",
                          "change to full speed. 0"}));

    clickAt(*page, "highBtn");
    QCOMPARE(shownPatterns(),
             (QStringList{"test_DiagramBtn", "test_JBtn", "test_KBtn", "test_SE0Btn",
                          "test_PacketBtn"}));
    QVERIFY(child<QRadioButton>(*page, "test_DiagramBtn")->isChecked());
}

void TestSetupUsbTest::speedIgnoresOtherSenders()
{
    const auto page = open();
    QPushButton other;
    connect(&other, SIGNAL(clicked()), page.get(), SLOT(speedClicked()));
    other.click();
    page->speedClicked();
    QCOMPARE(calls(), QStringList());
    QCOMPARE(said(), QStringList());
}

void TestSetupUsbTest::fullSpeedWriteClearsTheTestMode()
{
    const auto page = open();
    clickAt(*page, "fullBtn");
    forget();
    clickAt(*page, "writeBtn");
    QCOMPARE(calls(), QStringList{R"(registers.write("0x9c004000+0xa90", "0x0"))"});
    QCOMPARE(said(),
             (QStringList{"readBtnClicked", "port: 0", "speed: 1", "testPar: 4", "uphyPar: 0",
                          "uphyData: 0", "nothing to do."}));
    QCOMPARE(tracedFunctions().last(),
             QStringLiteral("void testmode::SetupUsbTest::writeBtnClicked()"));
}

void TestSetupUsbTest::enteringUphyAtFullSpeedWritesNothing()
{
    const auto page = open();
    clickAt(*page, "fullBtn");
    forget();
    child<QCheckBox>(*page, "useUphyBtn")->click();
    QCOMPARE(calls(), QStringList{R"(registers.read("0x9c000000+0x190"))"});
    const QStringList parameters{"port: 0", "speed: 1", "testPar: 4", "uphyPar: 0", "uphyData: 0"};
    QStringList expected{"modeChange 2", "changeTestMode"};
    expected << parameters << "nothing to do."
             << "readBtnClicked" << parameters << "refreshUphy 0"
             << "1";
    QCOMPARE(said(), expected);
    QCOMPARE(tracedFunctions().value(trace().payloads().indexOf("nothing to do.")),
             QStringLiteral("void testmode::SetupUsbTest::changeTestMode()"));
}

void TestSetupUsbTest::enteringUphyWritesThePatternThenReads()
{
    const auto page = open();
    child<QRadioButton>(*page, "port1_Btn")->setChecked(true);
    child<QRadioButton>(*page, "test_KBtn")->setChecked(true);
    clickAt(*page, "useUphyBtn");
    QCOMPARE(calls(),
             (QStringList{R"(registers.write("0x9c004000+0xb10", "0xa"))",
                          R"(registers.read("0x9c000000+0x190"))"}));
    forget();
    clickAt(*page, "useUphyBtn");
    QCOMPARE(calls(), QStringList());
    QCOMPARE(said(), (QStringList{"modeChange 0", "0"}));
}

void TestSetupUsbTest::uphyModeClosesTheOtherGroups()
{
    const auto page = open();
    child(*page, "readBtn")->setEnabled(false);
    child(*page, "writeBtn")->setEnabled(false);

    clickAt(*page, "useUphyBtn");
    QVERIFY(child(*page, "uphyGroupBox")->isVisible());
    for (const char *group : {"portGroupBox", "speedGroupBox", "testGroupBox"})
        QVERIFY2(!child(*page, group)->isEnabled(), group);
    QVERIFY(child(*page, "readBtn")->isEnabled());
    QVERIFY(child(*page, "writeBtn")->isEnabled());

    child(*page, "readBtn")->setEnabled(false);
    clickAt(*page, "useUphyBtn");
    QVERIFY(child(*page, "uphyGroupBox")->isHidden());
    for (const char *group : {"portGroupBox", "speedGroupBox", "testGroupBox"})
        QVERIFY2(child(*page, group)->isEnabled(), group);
    QVERIFY(!child(*page, "readBtn")->isEnabled()); // its state is left alone
    QVERIFY(child(*page, "writeBtn")->isEnabled());
}

void TestSetupUsbTest::port2IsNeverVisible()
{
    const auto page = open();
    QVERIFY(child(*page, "port2_Btn")->isHidden());
    for (const char *name :
         {"deviceMode", "hostMode", "fullBtn", "highBtn", "useUphyBtn", "useUphyBtn"}) {
        clickAt(*page, name);
        QVERIFY2(child(*page, "port2_Btn")->isHidden(), name);
    }
}

void TestSetupUsbTest::roles()
{
    const auto page = open();
    clickAt(*page, "deviceMode");
    QCOMPARE(calls(), QStringList{"shell: usb_control --uphy_role 1"});
    QCOMPARE(tests::contentOf("/run/unit/uphy_role"), QByteArray("1\n"));
    QCOMPARE(said(), (QStringList{"switchToDeviceMode", "switchToDeviceMode"}));

    forget();
    clickAt(*page, "hostMode");
    QCOMPARE(calls(), QStringList{"shell: usb_control --uphy_role 0"});
    QCOMPARE(tests::contentOf("/run/unit/uphy_role"), QByteArray("0\n"));
    QCOMPARE(said(), (QStringList{"switchToHostMode", "switchToHostMode"}));
}

void TestSetupUsbTest::deviceRoleForcesPort0()
{
    const auto page = open();
    clickAt(*page, "port1_Btn");
    clickAt(*page, "deviceMode");
    QVERIFY(child<QRadioButton>(*page, "port0_Btn")->isChecked());
    QVERIFY(child(*page, "port1_Btn")->isHidden());
    QVERIFY(child(*page, "useUphyBtn")->isHidden());

    clickAt(*page, "hostMode");
    QVERIFY(child<QRadioButton>(*page, "port0_Btn")->isChecked());
    QVERIFY(child(*page, "port1_Btn")->isVisible());
    QVERIFY(child(*page, "useUphyBtn")->isVisible());
}

void TestSetupUsbTest::writeCaptionFollowsTheFinger()
{
    const auto page = open();
    tests::pressAt(*page, "writeBtn");
    QCOMPARE(child(*page, "write_text")->styleSheet(), QString("color:#ffffff;"));
    QCOMPARE(calls(), QStringList());
    tests::releaseAt(*page, "writeBtn");
    QCOMPARE(child(*page, "write_text")->styleSheet(), QString("color:#ff0000;"));
    QCOMPARE(calls().size(), 1);
}

void TestSetupUsbTest::captionsLetThePressThrough()
{
    const auto page = open();
    clickAt(*page, "read_text");
    QCOMPARE(calls(), QStringList{R"(registers.read("0x9c000000+0x190"))"});
    forget();
    clickAt(*page, "write_text");
    QCOMPARE(calls(), QStringList{R"(registers.write("0x9c004000+0xa90", "0x1"))"});
}

void TestSetupUsbTest::leavingTellsThenDeletes()
{
    QPointer<SetupUsbTest> page(open().release());
    bool aliveAtTheSignal = false;
    int told = 0;
    connect(page, &SetupUsbTest::exitEqSig, this, [&] {
        ++told;
        aliveAtTheSignal = !page.isNull();
    });
    child<QPushButton>(*page, "returnBtn")->click();
    QCOMPARE(told, 1);
    QVERIFY(aliveAtTheSignal);
    QCOMPARE(said(), QStringList{"returnBtnClicked"});
    QVERIFY(!page.isNull());
    QTRY_VERIFY(page.isNull());
}

void TestSetupUsbTest::leavingRestoresNothing()
{
    auto page = open();
    page.reset();
    QCOMPARE(calls(), QStringList());
}

TESTMODE_TEST_MAIN(TestSetupUsbTest)
#include "test_setupusbtest.moc"
