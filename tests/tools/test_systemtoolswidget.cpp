#include "bench/unit/settingsstate.h"
#include "bench/unit/systemstate.h"
#include "tests/support/connections.h"
#include "tests/support/touch.h"
#include "tests/support/unittest.h"

#include "tools/systemtoolswidget.h"
#include "ui_systemtoolswidget.h"

#include <QFile>

// The page of the unit's own tools: what it shows of the settings, and what each
// button does in which order.
class TestSystemToolsWidget : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void slotsStandInOrder();
    void buttonsAreConnectedInOrder();
    void formHoldsThreeGroups_data();
    void formHoldsThreeGroups();
    void buttonsCarryTheFaceAndNoText_data();
    void buttonsCarryTheFaceAndNoText();
    void captionsLieOverTheirButtons_data();
    void captionsLieOverTheirButtons();
    void noTextIsCutOffAndNothingOverlaps();
    void faceShowsTheStateOfItsButton();

    void showingAsksTheSettings();
    void showingChecksTheStoredScreenShotState_data();
    void showingChecksTheStoredScreenShotState();
    void showingOpensCopyLogOnlyWithTheLogService_data();
    void showingOpensCopyLogOnlyWithTheLogService();
    void openedLogServiceShowsAtTheNextShowing();

    void buttonsCallTheUnit_data();
    void buttonsCallTheUnit();
    void disabledCopyLogDoesNothing();
    void logServiceCommandsSucceed_data();
    void logServiceCommandsSucceed();
    void failedCommandChangesNothing();
    void settingIsStoredAsItsKind_data();
    void settingIsStoredAsItsKind();
    void usbLogSlotStoresAnInteger();
};

namespace {

// What follows the two questions that every showing asks.
QStringList callsAfterShowing()
{
    return bench::journal().texts().mid(2);
}

void storeLogService(bool on)
{
    bench::unit().change()->settings.func.insert("ToolsUSBLogEnable", {false, on});
}

void storeScreenShots(bool on)
{
    bench::unit().change()->settings.cache.insert("ToolsScreenShotEnable", {false, on});
}

template <typename Widget>
Widget *find(const QWidget &page, const char *name)
{
    return page.findChild<Widget *>(QString::fromLatin1(name));
}

} // namespace

void TestSystemToolsWidget::slotsStandInOrder()
{
    QCOMPARE(
        tests::slotsOf(SystemToolsWidget::staticMetaObject),
        QStringList({"onScreenShotClicked()", "onCopyLogClicked()", "onCarPlayDumpStartClicked()",
                     "onCarPlayDumpEndClicked()", "onOpenLogServiceClicked()",
                     "onCloseLogServiceClicked()", "onUsbLogClicked()"}));
}

void TestSystemToolsWidget::buttonsAreConnectedInOrder()
{
    const SystemToolsWidget page;
    QCOMPARE(tests::connectionsInto(page, trace()),
             (QStringList{"screenShotDisBtn: clicked(bool) -> onScreenShotClicked()",
                          "screenShotEnBtn: clicked(bool) -> onScreenShotClicked()",
                          "readBtn: clicked(bool) -> onCopyLogClicked()",
                          "CPDumpStartBtn: clicked(bool) -> onCarPlayDumpStartClicked()",
                          "CPDumpEndBtn: clicked(bool) -> onCarPlayDumpEndClicked()",
                          "openLogBtn: clicked(bool) -> onOpenLogServiceClicked()",
                          "closeLogBtn: clicked(bool) -> onCloseLogServiceClicked()"}));
}

void TestSystemToolsWidget::formHoldsThreeGroups_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QStringList>("children");
    QTest::newRow("screenShotGroupBox")
        << "Screen Shot" << QStringList{"screenShotEnBtn Enable", "screenShotDisBtn Disable"};
    QTest::newRow("usbLogGroupBox")
        << "USB Log"
        << QStringList{"read_text Copy log", "open_log_txt Open ", "close_log_txt Close"};
    QTest::newRow("cpDumpGroupBox")
        << "CarPlay Dump" << QStringList{"CPDumpStartTxt Start", "CPDumpEndTxt End"};
}

void TestSystemToolsWidget::formHoldsThreeGroups()
{
    QFETCH(QString, title);
    QWidget host;
    Ui_SystemToolsWidget form;
    form.setupUi(&host);
    QCOMPARE(host.objectName(), QString("SystemToolsWidget"));
    QCOMPARE(host.windowTitle(), QString("Form"));
    QCOMPARE(host.size(), QSize(1024, 600));
    QVERIFY(form.screenShotEnBtn->group() != nullptr);
    QCOMPARE(form.screenShotEnBtn->group(), form.screenShotDisBtn->group());

    const auto *group = find<QGroupBox>(host, QTest::currentDataTag());
    QVERIFY(group != nullptr);
    QCOMPARE(group->title(), title);
    QVERIFY(qobject_cast<QVBoxLayout *>(group->layout()) != nullptr);
    QStringList texts;
    for (const QWidget *child : group->findChildren<QWidget *>()) {
        const QString text = child->property("text").toString();
        if (!text.isEmpty())
            texts << child->objectName() + " " + text;
    }
    QTEST(texts, "children");
}

void TestSystemToolsWidget::buttonsCarryTheFaceAndNoText_data()
{
    QTest::addColumn<QString>("parent");
    for (const char *button : {"readBtn", "openLogBtn", "closeLogBtn"})
        QTest::newRow(button) << "widget";
    for (const char *button : {"CPDumpStartBtn", "CPDumpEndBtn"})
        QTest::newRow(button) << "widget_dump";
}

void TestSystemToolsWidget::buttonsCarryTheFaceAndNoText()
{
    const SystemToolsWidget page;
    const auto *button = find<QPushButton>(page, QTest::currentDataTag());
    QTEST(button->parentWidget()->objectName(), "parent");
    QCOMPARE(button->text(), QString());
    QCOMPARE(button->icon().pixmap(211, 49).toImage(), QPixmap(":/images/02_btn_n.png").toImage());
}

void TestSystemToolsWidget::captionsLieOverTheirButtons_data()
{
    QTest::addColumn<QByteArray>("button");
    QTest::newRow("read_text") << QByteArray("readBtn");
    QTest::newRow("open_log_txt") << QByteArray("openLogBtn");
    QTest::newRow("close_log_txt") << QByteArray("closeLogBtn");
    QTest::newRow("CPDumpStartTxt") << QByteArray("CPDumpStartBtn");
    QTest::newRow("CPDumpEndTxt") << QByteArray("CPDumpEndBtn");
}

void TestSystemToolsWidget::captionsLieOverTheirButtons()
{
    QFETCH(QByteArray, button);
    storeLogService(true);
    SystemToolsWidget page;
    page.show();
    const auto *caption = find<QLabel>(page, QTest::currentDataTag());
    auto *beneath = find<QPushButton>(page, button);
    QVERIFY(beneath->geometry().contains(caption->geometry()));

    const QObjectList siblings = caption->parent()->children();
    QVERIFY(siblings.indexOf(const_cast<QLabel *>(caption)) > siblings.indexOf(beneath));

    QSignalSpy clicks(beneath, &QPushButton::clicked);
    tests::tap(const_cast<QLabel *>(caption));
    QCOMPARE(clicks.size(), 1);
}

void TestSystemToolsWidget::noTextIsCutOffAndNothingOverlaps()
{
    SystemToolsWidget page;
    page.show();
    for (const QLabel *label : page.findChildren<QLabel *>())
        QVERIFY2(tests::showsItsWholeText(label), qPrintable(label->objectName()));
    for (const QRadioButton *button : page.findChildren<QRadioButton *>())
        QVERIFY2(button->width() >= button->sizeHint().width(), qPrintable(button->objectName()));

    const auto groups = page.findChildren<QGroupBox *>();
    QCOMPARE(groups.size(), 3);
    for (const QGroupBox *group : groups) {
        QVERIFY2(page.rect().contains(group->geometry()), qPrintable(group->objectName()));
        for (const QWidget *child : group->findChildren<QWidget *>()) {
            const QRect place(child->mapTo(group, QPoint()), child->size());
            QVERIFY2(group->contentsRect().contains(place), qPrintable(child->objectName()));
        }
    }
    QVERIFY(groups[0]->geometry().right() < groups[1]->geometry().left());
    QVERIFY(groups[1]->geometry().right() < groups[2]->geometry().left());
}

void TestSystemToolsWidget::faceShowsTheStateOfItsButton()
{
    storeLogService(true);
    SystemToolsWidget page;
    page.show();
    auto *button = find<QPushButton>(page, "readBtn");
    const QImage up = button->grab().toImage();
    button->setDown(true);
    const QImage down = button->grab().toImage();
    button->setDown(false);
    QCOMPARE(button->grab().toImage(), up);
    button->setEnabled(false);
    const QImage disabled = button->grab().toImage();
    QVERIFY(down != up);
    QVERIFY(disabled != up);
    QVERIFY(disabled != down);
}

void TestSystemToolsWidget::showingAsksTheSettings()
{
    SystemToolsWidget page;
    QCOMPARE(bench::journal().texts(), QStringList());
    page.show();
    const QStringList questions{"SettingsCache.getValue(\"ToolsScreenShotEnable\", false)",
                                "SettingsFunc.getValue(\"ToolsUSBLogEnable\", false)"};
    QCOMPARE(bench::journal().texts(), questions);
    page.hide();
    page.show();
    QCOMPARE(bench::journal().texts(), questions + questions);
}

void TestSystemToolsWidget::showingChecksTheStoredScreenShotState_data()
{
    QTest::addColumn<bool>("stored");
    QTest::addColumn<bool>("enabled");
    QTest::newRow("nothing stored") << false << false;
    QTest::newRow("off") << true << false;
    QTest::newRow("on") << true << true;
}

void TestSystemToolsWidget::showingChecksTheStoredScreenShotState()
{
    QFETCH(bool, stored);
    QFETCH(bool, enabled);
    SystemToolsWidget page;
    find<QRadioButton>(page, enabled ? "screenShotDisBtn" : "screenShotEnBtn")->setChecked(true);
    if (stored)
        storeScreenShots(enabled);
    page.show();
    QCOMPARE(find<QRadioButton>(page, "screenShotEnBtn")->isChecked(), enabled);
    QCOMPARE(find<QRadioButton>(page, "screenShotDisBtn")->isChecked(), !enabled);
    QCOMPARE(callsAfterShowing(), QStringList()); // showing stores nothing
}

void TestSystemToolsWidget::showingOpensCopyLogOnlyWithTheLogService_data()
{
    QTest::addColumn<bool>("stored");
    QTest::addColumn<bool>("on");
    QTest::addColumn<QString>("traced");
    QTest::newRow("nothing stored") << false << false << "=====en log :  false";
    QTest::newRow("off") << true << false << "=====en log :  false";
    QTest::newRow("on") << true << true << "=====en log :  true";
}

void TestSystemToolsWidget::showingOpensCopyLogOnlyWithTheLogService()
{
    QFETCH(bool, stored);
    QFETCH(bool, on);
    if (stored)
        storeLogService(on);
    SystemToolsWidget page;
    find<QPushButton>(page, "readBtn")->setEnabled(!on);
    page.show();
    QCOMPARE(find<QPushButton>(page, "readBtn")->isEnabled(), on);
    QTEST(trace().payloads().join('|'), "traced");
    QCOMPARE(tracedFunctions(),
             QStringList{"virtual void SystemToolsWidget::showEvent(QShowEvent*)"});
}

void TestSystemToolsWidget::openedLogServiceShowsAtTheNextShowing()
{
    SystemToolsWidget page;
    page.show();
    auto *copy = find<QPushButton>(page, "readBtn");
    QVERIFY(!copy->isEnabled());
    tests::tap(find<QPushButton>(page, "openLogBtn"));
    QVERIFY(!copy->isEnabled());
    page.hide();
    page.show();
    QVERIFY(copy->isEnabled());
    tests::tap(find<QPushButton>(page, "closeLogBtn"));
    page.hide();
    page.show();
    QVERIFY(!copy->isEnabled());
}

void TestSystemToolsWidget::buttonsCallTheUnit_data()
{
    QTest::addColumn<QStringList>("calls");
    QTest::newRow("screenShotEnBtn")
        << QStringList{R"(SettingsCache.setValue("ToolsScreenShotEnable", false, true))"};
    QTest::newRow("screenShotDisBtn")
        << QStringList{R"(SettingsCache.setValue("ToolsScreenShotEnable", false, false))"};
    QTest::newRow("readBtn") << QStringList{"OutputLogsUsb.updateLogToUsb(true)"};
    QTest::newRow("CPDumpStartBtn") << QStringList{"OutputLogsUsb.startDumpsys(true)"};
    QTest::newRow("CPDumpEndBtn") << QStringList{"OutputLogsUsb.endDumpsys(true)"};
    QTest::newRow("openLogBtn") << QStringList{
        "shell: logset NAND_FILE_OUTPUT y\n", "McuService.setResetSystem(1)",
        R"(SettingsFunc.setValue("ToolsUSBLogEnable", false, true, true))"};
    QTest::newRow("closeLogBtn") << QStringList{
        R"(SettingsFunc.setValue("ToolsUSBLogEnable", false, false, true))",
        "shell: logset NAND_FILE_OUTPUT n\n", "McuService.setResetSystem(1)"};
}

void TestSystemToolsWidget::buttonsCallTheUnit()
{
    storeLogService(true);
    SystemToolsWidget page;
    page.show();
    tests::tap(find<QWidget>(page, QTest::currentDataTag()));
    QTEST(callsAfterShowing(), "calls");
}

void TestSystemToolsWidget::disabledCopyLogDoesNothing()
{
    SystemToolsWidget page;
    page.show();
    tests::tap(find<QLabel>(page, "read_text"));
    QCOMPARE(callsAfterShowing(), QStringList());
}

void TestSystemToolsWidget::logServiceCommandsSucceed_data()
{
    QTest::addColumn<int>("entry");
    QTest::addColumn<QByteArray>("written");
    QTest::newRow("openLogBtn") << 2 << QByteArray("y\n");
    QTest::newRow("closeLogBtn") << 3 << QByteArray("n\n");
}

void TestSystemToolsWidget::logServiceCommandsSucceed()
{
    QFETCH(int, entry);
    SystemToolsWidget page;
    page.show();
    tests::tap(find<QWidget>(page, QTest::currentDataTag()));
    QCOMPARE(bench::journal().entries().at(entry).arguments, QJsonArray{0});
    QFile output("/run/unit/nand_file_output");
    QVERIFY(output.open(QIODevice::ReadOnly));
    QTEST(output.readAll(), "written");
    QCOMPARE(bench::unit().system.systemResets, 1);
}

void TestSystemToolsWidget::failedCommandChangesNothing()
{
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", "/nowhere");
    SystemToolsWidget page;
    page.show();
    tests::tap(find<QWidget>(page, "openLogBtn"));
    qputenv("PATH", path);
    QCOMPARE(bench::journal().entries().at(2).arguments, QJsonArray{127});
    QCOMPARE(bench::unit().system.systemResets, 1);
    QVERIFY(bench::unit().settings.func.value("ToolsUSBLogEnable").value.toBool());
}

void TestSystemToolsWidget::settingIsStoredAsItsKind_data()
{
    QTest::addColumn<bool>("value");
    QTest::newRow("screenShotEnBtn") << true;
    QTest::newRow("screenShotDisBtn") << false;
    QTest::newRow("openLogBtn") << true;
    QTest::newRow("closeLogBtn") << false;
}

void TestSystemToolsWidget::settingIsStoredAsItsKind()
{
    QFETCH(bool, value);
    SystemToolsWidget page;
    page.show();
    tests::tap(find<QWidget>(page, QTest::currentDataTag()));
    const auto &stores = bench::unit().settings;
    const auto setting = stores.cache.isEmpty() ? stores.func.value("ToolsUSBLogEnable")
                                                : stores.cache.value("ToolsScreenShotEnable");
    QCOMPARE(setting.first, QVariant(false));
    QCOMPARE(setting.value, QVariant(value));
    QCOMPARE(setting.value.userType(), static_cast<int>(QMetaType::Bool));
}

void TestSystemToolsWidget::usbLogSlotStoresAnInteger()
{
    SystemToolsWidget page;
    QVERIFY(QMetaObject::invokeMethod(&page, "onUsbLogClicked"));
    QCOMPARE(bench::journal().texts(),
             QStringList{R"(SettingsFunc.setValue("ToolsUSBLogEnable", false, 1, true))"});
    const bench::Setting setting = bench::unit().settings.func.value("ToolsUSBLogEnable");
    QCOMPARE(setting.value.userType(), static_cast<int>(QMetaType::Int));
    QCOMPARE(setting.value.toInt(), 1);
}

TESTMODE_TEST_MAIN(TestSystemToolsWidget)
#include "test_systemtoolswidget.moc"
