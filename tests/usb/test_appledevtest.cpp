#include "bench/unit/systemstate.h"
#include "bench/unit/usbstate.h"
#include "tests/support/clock/virtualclock.h"
#include "tests/support/unittest.h"

#include "framework/events.h"
#include "lmplfctrl/lmplatformcontrol.h"
#include "mem/settingscache.h"
#include "pagehelpers.h"
#include "usb/appledevtest.h"

#include <QAbstractButton>
#include <QDir>
#include <QLabel>
#include <QRadioButton>
#include <QScrollBar>
#include <QScroller>
#include <QTextEdit>

#include <memory>

#include <dlfcn.h>

using testmode::AppleDevTest;
using tests::child;
using tests::clickAt;

namespace {

const char kSwitch2[] = "/sys/devices/platform/ehci-platform.2/usb_speed_switch";

const QStringList kUsbWidgets{"radioButton_usb_normal",
                              "radioButton_usb_tid",
                              "radioButton_usb_mif",
                              "radioButton_cdp",
                              "radioButton_dcp",
                              "radioButton_sdp",
                              "frame",
                              "frame_2"};
const QStringList kNetworkWidgets{
    "result_view",   "scrollbar",    "btn_s_udp",    "btn_s_tcp",    "btn_s_stop",
    "btn_c_udp50",   "btn_c_tcp",    "btn_c_udp100", "btn_c_stop",   "radioButton",
    "radioButton_2", "btn_c_ncm_sw", "ncm_sw_state", "btn_c_usb_sw", "usb_sw_state",
    "s_udp_text",    "s_tcp_text",   "s_stop_text",  "c_udp50_text", "c_tcp_text",
    "c_udp100_text", "c_stop_text",  "usb_sw_text",  "ncm_sw_text",  "result_text"};

// How often the service was asked for, over the whole process.
int controlsAskedFor = 0;

// Everything that is sent to the application object.
class ApplicationEvents : public QObject
{
public:
    ApplicationEvents() { qApp->installEventFilter(this); }

    QList<int> taskValues;
    QList<int> payloadSizes;

protected:
    bool eventFilter(QObject *object, QEvent *event) override
    {
        if (object == qApp && event->type() == 1009) {
            taskValues << static_cast<TaskEvent *>(event)->value;
            payloadSizes << static_cast<TaskEvent *>(event)->payload.size();
        }
        return QObject::eventFilter(object, event);
    }
};

} // namespace

// The program's own stands before the library's, which it asks in turn.
lmplfctrl::LMPlatformControl *lmplfctrl::LMPlatformControl::GetInstance()
{
    ++controlsAskedFor;
    using Ask = LMPlatformControl *(*)();
    const auto ask = reinterpret_cast<Ask>(
        ::dlsym(RTLD_NEXT, "_ZN9lmplfctrl17LMPlatformControl11GetInstanceEv"));
    return ask();
}

// What the page is, its two faces, and the switches and modes of the USB port.
class TestAppleDevTest : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void slotsInOrder();
    void widgetsOfTheForm_data();
    void widgetsOfTheForm();
    void slotsAreConnectedByName();
    void startsWithNcmOff();
    void resultView();
    void asksForItsManager();
    void asksForItsControlOnceAProcess();
    void fitsTheScreen();
    void widgetsKeepTheirDistance_data();
    void widgetsKeepTheirDistance();
    void imagesExist();
    void appleFace_data();
    void appleFace();
    void usbFace();
    void usbFaceShowsTheModes_data();
    void usbFaceShowsTheModes();
    void unknownModeUnchecksAll();
    void firstFaceDecides_data();
    void firstFaceDecides();
    void showingAgainKeepsTheSwitches();
    void speedSwitchWritesTheStateBefore();
    void speedSwitchWithoutItsFile();
    void chargingModes_data();
    void chargingModes();
    void chargingModeShowsItselfAlone_data();
    void chargingModeShowsItselfAlone();
    void certificationEndsInAFactoryReset_data();
    void certificationEndsInAFactoryReset();
    void deletionTellsTheFramework();

private:
    // The page shown for the entry of that code, with the calls of its creation behind it.
    void open(int pageCode);
    void resumeAs(int pageCode);
    QStringList shown(const QStringList &names) const;
    QString checkedOf(const QStringList &names) const;
    QStringList calls() const { return bench::journal().texts(mark); }
    QStringList said() { return trace().payloads(traceMark); }
    void forget();

    std::unique_ptr<AppleDevTest> page;
    int mark = 0;
    int traceMark = 0;
};

void TestAppleDevTest::open(int pageCode)
{
    page = std::make_unique<AppleDevTest>(nullptr);
    resumeAs(pageCode);
    page->show();
    forget();
}

void TestAppleDevTest::resumeAs(int pageCode)
{
    mem::SettingsCache::instance()->setValue("TEST_MODE", 0, pageCode);
    forget();
    page->resume();
}

void TestAppleDevTest::forget()
{
    mark = bench::journal().lastNumber();
    traceMark = trace().payloads().size();
}

QStringList TestAppleDevTest::shown(const QStringList &names) const
{
    QStringList visible;
    for (const QString &name : names) {
        if (child(*page, name.toLatin1().constData())->isVisible())
            visible << name;
    }
    return visible;
}

QString TestAppleDevTest::checkedOf(const QStringList &names) const
{
    QStringList checked;
    for (const QString &name : names) {
        if (child<QRadioButton>(*page, name.toLatin1().constData())->isChecked())
            checked << name;
    }
    return checked.join(' ');
}

void TestAppleDevTest::slotsInOrder()
{
    QCOMPARE(tests::signalsOf(AppleDevTest::staticMetaObject), QStringList());
    QCOMPARE(tests::slotsOf(AppleDevTest::staticMetaObject),
             (QStringList{"on_btn_s_udp_clicked()", "on_btn_s_tcp_clicked()",
                          "on_btn_s_stop_clicked()", "on_btn_c_udp50_clicked()",
                          "on_btn_c_udp100_clicked()", "on_btn_c_tcp_clicked()",
                          "on_btn_c_stop_clicked()", "on_radioButton_clicked()",
                          "on_radioButton_2_clicked()", "on_btn_c_usb_sw_clicked()",
                          "on_btn_c_ncm_sw_clicked()", "on_radioButton_cdp_clicked()",
                          "on_radioButton_dcp_clicked()", "on_radioButton_sdp_clicked()",
                          "on_radioButton_usb_normal_clicked()", "on_radioButton_usb_tid_clicked()",
                          "on_radioButton_usb_mif_clicked()", "onReboot()"}));
}

void TestAppleDevTest::widgetsOfTheForm_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, const char *type, const char *text) {
        QTest::newRow(name) << QString(type) << QString(text);
    };
    row("title_text", "QLabel", "Apple Test");
    row("result_view", "QTextEdit", "");
    row("scrollbar", "QScrollBar", "");
    row("radioButton", "QRadioButton", "Client");
    row("radioButton_2", "QRadioButton", "Server");
    row("btn_s_udp", "QPushButton", "");
    row("s_udp_text", "QLabel", "UDP");
    row("btn_s_tcp", "QPushButton", "");
    row("s_tcp_text", "QLabel", "TCP");
    row("btn_s_stop", "QPushButton", "");
    row("s_stop_text", "QLabel", "STOP");
    row("btn_c_udp50", "QPushButton", "");
    row("c_udp50_text", "QLabel", "UDP 50");
    row("btn_c_tcp", "QPushButton", "");
    row("c_tcp_text", "QLabel", "TCP");
    row("btn_c_udp100", "QPushButton", "");
    row("c_udp100_text", "QLabel", "UDP 100");
    row("btn_c_stop", "QPushButton", "");
    row("c_stop_text", "QLabel", "STOP");
    row("result_text", "QLabel", "Test Result:");
    row("busy_text", "QLabel", "Testing, please wait...");
    row("btn_c_usb_sw", "QPushButton", "");
    row("usb_sw_text", "QLabel", "USB Speed Sw");
    row("usb_sw_state", "QLabel", "OFF");
    row("btn_c_ncm_sw", "QPushButton", "");
    row("ncm_sw_text", "QLabel", "NCM Sw");
    row("ncm_sw_state", "QLabel", "NCM OFF");
    row("radioButton_cdp", "QRadioButton", "USB 0 CDP MODE");
    row("radioButton_dcp", "QRadioButton", "USB 0 DCP MODE");
    row("radioButton_sdp", "QRadioButton", "USB 0 SDP MODE");
    row("radioButton_usb_tid", "QRadioButton", "USB TID");
    row("radioButton_usb_normal", "QRadioButton", "USB NORMAL");
    row("radioButton_usb_mif", "QRadioButton", "USB MIF");
    row("frame", "QFrame", "");
    row("frame_2", "QFrame", "");
}

void TestAppleDevTest::widgetsOfTheForm()
{
    page = std::make_unique<AppleDevTest>(nullptr);
    const QWidget *widget = child(*page, QTest::currentDataTag());
    QTEST(QString(widget->metaObject()->className()), "type");
    QTEST(widget->property("text").toString(), "text");
    QCOMPARE(page->windowTitle(), QString("Form"));
    QCOMPARE(page->objectName(), QString("apple_dev_test"));
}

void TestAppleDevTest::slotsAreConnectedByName()
{
    open(9);
    QStringList expected;
    for (const char *name :
         {"btn_s_udp", "btn_s_tcp", "btn_s_stop", "btn_c_udp50", "btn_c_udp100", "btn_c_tcp",
          "btn_c_stop", "radioButton", "radioButton_2", "btn_c_usb_sw", "btn_c_ncm_sw",
          "radioButton_cdp", "radioButton_dcp", "radioButton_sdp", "radioButton_usb_normal",
          "radioButton_usb_tid", "radioButton_usb_mif"})
        expected << QString("%1: clicked(bool) -> on_%1_clicked()").arg(name);
    QCOMPARE(tests::connectionsInto(*page, trace()), expected);
}

void TestAppleDevTest::startsWithNcmOff()
{
    page = std::make_unique<AppleDevTest>(nullptr);
    page->show();
    for (const char *name : {"btn_s_udp", "btn_s_tcp", "btn_s_stop", "btn_c_udp50", "btn_c_tcp",
                             "btn_c_udp100", "btn_c_stop", "radioButton", "radioButton_2"})
        QVERIFY2(!child(*page, name)->isEnabled(), name);
    QVERIFY(child<QRadioButton>(*page, "radioButton")->isChecked());
    QVERIFY(!child<QRadioButton>(*page, "radioButton_2")->isChecked());
    QVERIFY(child(*page, "busy_text")->isHidden());
    QVERIFY(child(*page, "btn_c_usb_sw")->isEnabled());
    QVERIFY(child(*page, "btn_c_ncm_sw")->isEnabled());
    for (const char *name :
         {"radioButton_usb_normal", "radioButton_usb_tid", "radioButton_usb_mif"})
        QVERIFY2(child<QRadioButton>(*page, name)->isCheckable(), name);
    for (const char *name :
         {"title_text", "s_udp_text", "s_tcp_text", "s_stop_text", "c_udp50_text", "c_tcp_text",
          "c_udp100_text", "c_stop_text", "usb_sw_state", "ncm_sw_state"})
        QVERIFY2(child(*page, name)->testAttribute(Qt::WA_TransparentForMouseEvents), name);
}

void TestAppleDevTest::resultView()
{
    open(9);
    auto *view = child<QTextEdit>(*page, "result_view");
    auto *bar = child<QScrollBar>(*page, "scrollbar");
    QVERIFY(view->isReadOnly());
    QVERIFY(!view->isEnabled());
    QCOMPARE(view->toPlainText(), QString());
    QCOMPARE(view->verticalScrollBar(), bar);
    QCOMPARE(view->horizontalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
    QVERIFY(!bar->testAttribute(Qt::WA_OpaquePaintEvent));
    QCOMPARE(bar->parentWidget(), page.get());
    QVERIFY(bar->isEnabled());
    QVERIFY(bar->isVisible());
    QVERIFY(bar->geometry().left() > view->geometry().right());
    QCOMPARE(bar->geometry().top(), view->geometry().top());
    QCOMPARE(bar->geometry().bottom(), view->geometry().bottom());
    QVERIFY(QScroller::hasScroller(view));
    QCOMPARE(QScroller::scroller(view)
                 ->scrollerProperties()
                 .scrollMetric(QScrollerProperties::VerticalOvershootPolicy)
                 .value<QScrollerProperties::OvershootPolicy>(),
             QScrollerProperties::OvershootAlwaysOff);
}

void TestAppleDevTest::asksForItsManager()
{
    page = std::make_unique<AppleDevTest>(nullptr);
    QCOMPARE(bench::journal().texts(), QStringList{R"(LMUsbManager.create("2.12"))"});
}

void TestAppleDevTest::asksForItsControlOnceAProcess()
{
    for (int i = 0; i < 3; ++i)
        open(9);
    QCOMPARE(controlsAskedFor, 1);
}

void TestAppleDevTest::fitsTheScreen()
{
    open(9);
    QCOMPARE(page->pos(), QPoint(0, 104));
    QCOMPARE(page->size(), QSize(1024, 496));
}

void TestAppleDevTest::widgetsKeepTheirDistance_data()
{
    QTest::addColumn<int>("pageCode");
    QTest::newRow("Apple face") << 9;
    QTest::newRow("USB face") << 13;
}

void TestAppleDevTest::widgetsKeepTheirDistance()
{
    QFETCH(int, pageCode);
    open(pageCode);
    if (pageCode == 9)
        child(*page, "busy_text")->show();
    QCOMPARE(tests::overlaps(*page), QStringList());
    QCOMPARE(tests::outsiders(*page), QStringList());
}

void TestAppleDevTest::imagesExist()
{
    page = std::make_unique<AppleDevTest>(nullptr);
    for (const char *image :
         {":/images/02_btn_n.png", ":/images/02_btn_p.png", ":/images/02_btn_d.png",
          ":/images/06_touch_btn_h", ":/images/06_touch_btn1"})
        QVERIFY2(!QImage(image).isNull(), image);
    const auto buttons = page->findChildren<QPushButton *>();
    QCOMPARE(buttons.size(), 9);
    for (const QPushButton *button : buttons)
        QVERIFY2(!button->icon().isNull(), qPrintable(button->objectName()));
}

void TestAppleDevTest::appleFace_data()
{
    QTest::addColumn<int>("pageCode");
    QTest::newRow("NCM test") << 9;
    QTest::newRow("nothing stored") << 0;
    QTest::newRow("below the USB test") << 12;
    QTest::newRow("above the USB test") << 14;
}

void TestAppleDevTest::appleFace()
{
    QFETCH(int, pageCode);
    open(pageCode);
    QCOMPARE(child<QLabel>(*page, "title_text")->text(), QString("Apple Test"));
    QCOMPARE(shown(kNetworkWidgets), kNetworkWidgets);
    QCOMPARE(shown(kUsbWidgets), QStringList());

    forget();
    page->resume();
    QCOMPARE(calls(), QStringList{R"(SettingsCache.getValue("TEST_MODE", 0))"});
    QCOMPARE(said(), QStringList());
}

void TestAppleDevTest::usbFace()
{
    bench::unit().change()->usb.certification = 84;
    bench::unit().change()->usb.ports[0].chargingMode = 1;
    open(13);
    QCOMPARE(child<QLabel>(*page, "title_text")->text(), QString("USB Test"));
    QCOMPARE(shown(kUsbWidgets), kUsbWidgets);
    QCOMPARE(shown(kNetworkWidgets), QStringList());
    QVERIFY(child(*page, "busy_text")->isHidden());
    QCOMPARE(checkedOf(kUsbWidgets.mid(0, 6)), QString("radioButton_usb_tid radioButton_dcp"));

    forget();
    page->resume();
    QCOMPARE(calls(),
             (QStringList{R"(SettingsCache.getValue("TEST_MODE", 0))",
                          "DeviceManager.getUsbCertification()", "DeviceManager.getUsbBcMode(0)"}));
    QCOMPARE(said(), QStringList{"54"});
    QCOMPARE(tracedFunctions(traceMark), QStringList{"void testmode::AppleDevTest::resume()"});
}

void TestAppleDevTest::usbFaceShowsTheModes_data()
{
    QTest::addColumn<int>("certification");
    QTest::addColumn<int>("charging");
    QTest::addColumn<QString>("checkedCertification");
    QTest::addColumn<QString>("checkedCharging");
    QTest::addColumn<QString>("logged");
    QTest::newRow("normal, CDP") << 79 << 0 << "radioButton_usb_normal"
                                 << "radioButton_cdp"
                                 << "4f";
    QTest::newRow("TID, DCP") << 84 << 1 << "radioButton_usb_tid"
                              << "radioButton_dcp"
                              << "54";
    QTest::newRow("MIF, SDP") << 77 << 2 << "radioButton_usb_mif"
                              << "radioButton_sdp"
                              << "4d";
    QTest::newRow("unknown") << 78 << 3 << ""
                             << ""
                             << "4e";
    QTest::newRow("zero") << 0 << -1 << ""
                          << ""
                          << "0";
}

void TestAppleDevTest::usbFaceShowsTheModes()
{
    QFETCH(int, certification);
    QFETCH(int, charging);
    QFETCH(QString, logged);
    bench::unit().change()->usb.certification = certification;
    bench::unit().change()->usb.ports[0].chargingMode = charging;
    bench::unit().change()->usb.ports[1].chargingMode = (charging + 1) % 3;
    page = std::make_unique<AppleDevTest>(nullptr);
    resumeAs(13);
    QTEST(checkedOf(kUsbWidgets.mid(0, 3)), "checkedCertification");
    QTEST(checkedOf(kUsbWidgets.mid(3, 3)), "checkedCharging");
    QCOMPARE(said(), QStringList{logged});
}

void TestAppleDevTest::unknownModeUnchecksAll()
{
    open(13);
    QCOMPARE(checkedOf(kUsbWidgets.mid(0, 6)), QString("radioButton_usb_normal radioButton_sdp"));
    bench::unit().change()->usb.certification = 1;
    bench::unit().change()->usb.ports[0].chargingMode = 9;
    resumeAs(13);
    QCOMPARE(checkedOf(kUsbWidgets.mid(0, 6)), QString());
}

void TestAppleDevTest::firstFaceDecides_data()
{
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("second");
    QTest::addColumn<QString>("title");
    QTest::newRow("Apple first") << 9 << 13 << "USB Test";
    QTest::newRow("USB first") << 13 << 9 << "Apple Test";
}

void TestAppleDevTest::firstFaceDecides()
{
    QFETCH(int, first);
    QFETCH(int, second);
    open(first);
    resumeAs(second);
    QTEST(child<QLabel>(*page, "title_text")->text(), "title");
    QCOMPARE(shown(kNetworkWidgets), QStringList());
    QCOMPARE(shown(kUsbWidgets), QStringList());
}

void TestAppleDevTest::showingAgainKeepsTheSwitches()
{
    open(9);
    clickAt(*page, "btn_c_ncm_sw");
    clickAt(*page, "btn_c_usb_sw");
    page->hide();
    resumeAs(9);
    page->show();
    QCOMPARE(child<QLabel>(*page, "title_text")->text(), QString("Apple Test"));
    QCOMPARE(child<QLabel>(*page, "ncm_sw_state")->text(), QString("NCM ON"));
    QCOMPARE(child<QLabel>(*page, "usb_sw_state")->text(), QString("ON"));
    QVERIFY(child(*page, "btn_c_tcp")->isEnabled());
    forget();
    clickAt(*page, "btn_c_ncm_sw");
    QCOMPARE(calls(), QStringList{"LMUsbManager.switchUsbMode(7)"});
}

void TestAppleDevTest::speedSwitchWritesTheStateBefore()
{
    tests::writeFile(kSwitch2, "9\n");
    open(9);
    auto *state = child<QLabel>(*page, "usb_sw_state");
    clickAt(*page, "btn_c_usb_sw");
    QCOMPARE(tests::contentOf(kSwitch2), QByteArray("0"));
    QCOMPARE(state->text(), QString("ON"));
    clickAt(*page, "usb_sw_state"); // the label lets the press through
    QCOMPARE(tests::contentOf(kSwitch2), QByteArray("1"));
    QCOMPARE(state->text(), QString("OFF"));
    clickAt(*page, "btn_c_usb_sw");
    QCOMPARE(tests::contentOf(kSwitch2), QByteArray("0"));
    QCOMPARE(said(), QStringList());
}

void TestAppleDevTest::speedSwitchWithoutItsFile()
{
    const QString controller = "/sys/devices/platform/ehci-platform.2";
    open(9);
    QVERIFY(QDir().rename(controller, controller + ".aside"));
    clickAt(*page, "btn_c_usb_sw");
    const QStringList lines = said();
    const QStringList functions = tracedFunctions(traceMark);
    const QString shownState = child<QLabel>(*page, "usb_sw_state")->text();
    QVERIFY(QDir().rename(controller + ".aside", controller));
    QCOMPARE(lines, QStringList{"file not exit"});
    QCOMPARE(functions, QStringList{"void testmode::AppleDevTest::on_btn_c_usb_sw_clicked()"});
    QCOMPARE(shownState, QString("OFF"));

    // The state did not toggle: the next press is the first.
    clickAt(*page, "btn_c_usb_sw");
    QCOMPARE(tests::contentOf(kSwitch2), QByteArray("0"));
    QCOMPARE(child<QLabel>(*page, "usb_sw_state")->text(), QString("ON"));
}

void TestAppleDevTest::chargingModes_data()
{
    QTest::addColumn<QString>("call");
    QTest::newRow("radioButton_cdp") << "DeviceManager.setUsbBcMode(0, 0)";
    QTest::newRow("radioButton_dcp") << "DeviceManager.setUsbBcMode(0, 1)";
    QTest::newRow("radioButton_sdp") << "DeviceManager.setUsbBcMode(0, 2)";
}

void TestAppleDevTest::chargingModes()
{
    const char *button = QTest::currentDataTag();
    open(13);
    for (const char *before : {"radioButton_cdp", "radioButton_dcp", "radioButton_sdp"}) {
        clickAt(*page, before);
        forget();
        clickAt(*page, button);
        QTEST(calls().join(' '), "call");
        QCOMPARE(checkedOf(kUsbWidgets.mid(3, 3)), QString(button));
    }
    QCOMPARE(checkedOf(kUsbWidgets.mid(0, 3)), QString("radioButton_usb_normal"));
}

void TestAppleDevTest::chargingModeShowsItselfAlone_data()
{
    QTest::addColumn<QByteArray>("slot");
    for (const char *button : {"radioButton_cdp", "radioButton_dcp", "radioButton_sdp"})
        QTest::newRow(button) << "on_" + QByteArray(button) + "_clicked";
}

// By the slot alone: no press has checked the button, or unchecked the others.
void TestAppleDevTest::chargingModeShowsItselfAlone()
{
    QFETCH(QByteArray, slot);
    open(13);
    for (const char *before : {"radioButton_cdp", "radioButton_dcp", "radioButton_sdp"}) {
        clickAt(*page, before);
        QVERIFY(QMetaObject::invokeMethod(page.get(), slot.constData()));
        QCOMPARE(checkedOf(kUsbWidgets.mid(3, 3)), QString(QTest::currentDataTag()));
    }
}

void TestAppleDevTest::certificationEndsInAFactoryReset_data()
{
    QTest::addColumn<int>("code");
    QTest::newRow("radioButton_usb_normal") << 79;
    QTest::newRow("radioButton_usb_tid") << 84;
    QTest::newRow("radioButton_usb_mif") << 77;
}

void TestAppleDevTest::certificationEndsInAFactoryReset()
{
    QFETCH(int, code);
    const tests::VirtualClock clock;
    bench::unit().change()->usb.certification = code; // set already: the reset comes all the same
    open(13);
    clickAt(*page, QTest::currentDataTag());
    QCOMPARE(calls(), QStringList{QString("DeviceManager.setUsbCertification(%1)").arg(code)});
    QCOMPARE(checkedOf(kUsbWidgets.mid(0, 3)), QString(QTest::currentDataTag()));

    QTRY_COMPARE(calls().size(), 2);
    const auto entries = bench::journal().entries(mark);
    QCOMPARE(entries.last().text(), QString("McuService.factoryReset()"));
    const qint64 waited = entries.last().elapsed - entries.first().elapsed;
    QVERIFY2(waited == 1000 || waited == 1001,
             qPrintable(QString::number(waited))); // Qt's rounding
    QCOMPARE(bench::unit().system.factoryResets, 1);
    QCOMPARE(bench::unit().system.systemResets, 0);
}

void TestAppleDevTest::deletionTellsTheFramework()
{
    open(9);
    const ApplicationEvents events;
    page.reset();
    QCOMPARE(events.taskValues, QList<int>{0});
    QCOMPARE(events.payloadSizes, QList<int>{0});
    QCOMPARE(calls(), QStringList());
}

TESTMODE_TEST_MAIN(TestAppleDevTest)
#include "test_appledevtest.moc"
