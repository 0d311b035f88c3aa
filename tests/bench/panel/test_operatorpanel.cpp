#include "tests/support/unittest.h"

#include "bench/host/host.h"
#include "bench/monitor/unitmethods.h"
#include "bench/panel/journalview.h"
#include "bench/panel/operatorpanel.h"
#include "bench/panel/operatorwindow.h"
#include "bench/panel/receiverview.h"
#include "bench/receiver/receiver.h"
#include "bench/serial/resetprompt.h"
#include "bench/unit/gnssstate.h"
#include "bench/unit/unitdocument.h"
#include "bench/unit/unitpaths.h"
#include "bench/unit/usbstate.h"
#include "gpsservice/gpsservice.h"
#include "tests/bench/monitor/calls.h"

#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
#include <QTemporaryDir>

// What the operator does beside the screen reaches the unit, and what he sees is true.
class TestOperatorPanel : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void homeLeadsToTheMenu();
    void backAndKeysShowTheAnswer();
    void gnssSettingsReachTheUnit();
    void disksArePluggedAndPulled_data();
    void disksArePluggedAndPulled();
    void panelBeginsWithTheStateOfTheUnit();
    void panelFollowsWhoeverChangesTheUnit();
    void screenshotGoesToTheFolder();
    void screenshotWithoutFolderGoesToTheClipboard();
    void windowLeavesTheScreenToTheHost();

    void journalGrowsOnScreen();
    void receiverIsShownWhereItStands();
    void realReceiverIsSaidToBeOne();
    void resetByHandIsAskedFor();

private:
    template <typename Widget>
    Widget *find(const char *name) const
    {
        return panel->findChild<Widget *>(QLatin1String(name));
    }
    void press(const char *name) const { find<QPushButton>(name)->click(); }
    void makePanel(const QString &pictures = QString());
    QString result() const { return find<QLabel>("panel_result")->text(); }

    std::unique_ptr<bench::UnitDocument> document;
    std::unique_ptr<bench::Dispatcher> dispatcher; // what a script says
    std::unique_ptr<bench::Host> host;
    std::unique_ptr<bench::OperatorPanel> panel;
};

void TestOperatorPanel::init()
{
    UnitTest::init();
    host = std::make_unique<bench::Host>();
    QString error;
    QVERIFY2(host->load(QStringLiteral(TESTMODE_PLUGIN), &error), qPrintable(error));
    host->home();
    host->screen()->show();
    document = std::make_unique<bench::UnitDocument>(bench::pathsOf(&bench::unit()));
    dispatcher = std::make_unique<bench::Dispatcher>();
    bench::addUnitMethods(dispatcher.get(), document.get());
    makePanel();
}

void TestOperatorPanel::cleanup()
{
    panel.reset();
    dispatcher.reset();
    document.reset();
    host.reset();
    UnitTest::cleanup();
}

void TestOperatorPanel::makePanel(const QString &pictures)
{
    bench::Bench parts;
    parts.host = host.get();
    parts.pictures = pictures;
    parts.document = document.get();
    panel = std::make_unique<bench::OperatorPanel>(parts);
}

void TestOperatorPanel::homeLeadsToTheMenu()
{
    auto *menu = host->screen()->findChild<QWidget *>("testEntryWidget");
    host->screen()->findChild<QPushButton *>("key_tools")->click();
    QVERIFY(!menu->isVisible());
    press("panel_home");
    QVERIFY(menu->isVisible());
}

void TestOperatorPanel::backAndKeysShowTheAnswer()
{
    press("panel_back");
    QCOMPARE(result(), QString("backEvent answered 1"));
    find<QSpinBox>("panel_key_code")->setValue(27);
    press("panel_send_key");
    QCOMPARE(result(), QString("keyEvent answered -1 to key 27"));
    QCOMPARE(bench::journal().texts().filter("framework."),
             QStringList({"framework.backEvent(1)", "framework.keyEvent(27, -1)"}));
}

void TestOperatorPanel::gnssSettingsReachTheUnit()
{
    QSignalSpy found(gpsservice::GpsService::instance(),
                     &gpsservice::GpsService::modualApatationCompelete);
    find<QComboBox>("panel_antenna")->setCurrentText("Short");
    QCOMPARE(bench::unit().gnss.antenna, QString("Short"));
    find<QSpinBox>("panel_module_kind")->setValue(2);
    QCOMPARE(bench::unit().gnss.moduleKind, 2);
    QCOMPARE(found, QList<QVariantList>({{2}}));
    find<QCheckBox>("panel_sky")->click();
    QVERIFY(bench::unit().gnss.followsSky);
    find<QCheckBox>("panel_sky")->click();
    QVERIFY(!bench::unit().gnss.followsSky);
}

void TestOperatorPanel::disksArePluggedAndPulled_data()
{
    QTest::addColumn<int>("port");
    QTest::newRow("port 0") << 0;
    QTest::newRow("port 1") << 1;
}

void TestOperatorPanel::disksArePluggedAndPulled()
{
    QFETCH(int, port);
    auto *disk = find<QCheckBox>(port == 0 ? "panel_usb0" : "panel_usb1");
    disk->click();
    QVERIFY(bench::unit().usb.ports[port].disk);
    QCOMPARE(bench::unit().usb.ports[port].path, QString("/media/usb%1").arg(port));
    QVERIFY(!bench::unit().usb.ports[1 - port].disk);
    disk->click();
    QVERIFY(!bench::unit().usb.ports[port].disk);
}

void TestOperatorPanel::panelBeginsWithTheStateOfTheUnit()
{
    bench::unit().change()->usb.ports[1].disk = true;
    bench::unit().change()->gnss.moduleKind = 5;
    bench::unit().change()->gnss.antenna = "Open";
    bench::unit().followSky(true);
    makePanel();
    QVERIFY(find<QCheckBox>("panel_sky")->isChecked());
    QVERIFY(find<QCheckBox>("panel_usb1")->isChecked());
    QCOMPARE(find<QSpinBox>("panel_module_kind")->value(), 5);
    QCOMPARE(find<QComboBox>("panel_antenna")->currentText(), QString("Open"));
}

void TestOperatorPanel::panelFollowsWhoeverChangesTheUnit()
{
    QSignalSpy announced(gpsservice::GpsService::instance(),
                         &gpsservice::GpsService::modualApatationCompelete);
    tests::resultOf(dispatcher.get(), "unit.set", "{'path': 'gnss.sky', 'value': true}");
    QVERIFY(find<QCheckBox>("panel_sky")->isChecked());
    tests::resultOf(dispatcher.get(), "unit.set",
                    "{'path': 'gnss', 'value': {'module_kind': 3, 'antenna': 'Short'}}");
    QCOMPARE(find<QSpinBox>("panel_module_kind")->value(), 3);
    QCOMPARE(find<QComboBox>("panel_antenna")->currentText(), QString("Short"));
    QVERIFY2(announced.isEmpty(), "a service has spoken though nobody asked");

    bench::unit().change()->usb.ports[1].disk = true;
    QVERIFY(find<QCheckBox>("panel_usb1")->isChecked());
    QVERIFY(!find<QCheckBox>("panel_usb0")->isChecked());
    bench::unit().powerOn();
    QVERIFY(!find<QCheckBox>("panel_usb1")->isChecked());
    QVERIFY(!find<QCheckBox>("panel_sky")->isChecked());
}

void TestOperatorPanel::screenshotGoesToTheFolder()
{
    QTemporaryDir folder;
    makePanel(folder.path());
    press("panel_screenshot");
    press("panel_screenshot");
    QCOMPARE(result(), folder.filePath("unit-2.png"));
    QCOMPARE(QImage(folder.filePath("unit-1.png")).size(), QSize(1024, 600));
    QVERIFY(QFile::exists(folder.filePath("unit-2.png")));
}

void TestOperatorPanel::screenshotWithoutFolderGoesToTheClipboard()
{
    press("panel_screenshot");
    QCOMPARE(QApplication::clipboard()->image().size(), QSize(1024, 600));
    QCOMPARE(result(), QString("The picture is in the clipboard."));
}

void TestOperatorPanel::windowLeavesTheScreenToTheHost()
{
    const QPointer<QWidget> screen = host->screen();
    {
        bench::Bench parts;
        parts.host = host.get();
        parts.document = document.get();
        bench::OperatorWindow window(parts);
        window.show();
        QVERIFY(screen->isVisible());
        QCOMPARE(screen->size(), QSize(1024, 600));
        QCOMPARE(screen->window(), static_cast<QWidget *>(&window));
    }
    QVERIFY(screen);
    QCOMPARE(host->screen(), screen.data());
}

void TestOperatorPanel::journalGrowsOnScreen()
{
    bench::JournalView view;
    const QStringList before = view.toPlainText().split('\n');
    QVERIFY2(before.last().endsWith("BaseWindow.onShow(\"\")"), qPrintable(before.last()));
    bench::journal().call("McuService", "setResetSystem", {1});
    bench::journal().call("shell", "sync");
    QTRY_COMPARE(view.blockCount(), before.size() + 2);
    QVERIFY(view.toPlainText().contains("McuService.setResetSystem(1)"));
    QVERIFY(view.toPlainText().endsWith("shell: sync"));
}

void TestOperatorPanel::receiverIsShownWhereItStands()
{
    bench::Receiver receiver;
    QString error;
    QVERIFY2(!receiver.open(&error).isEmpty(), qPrintable(error));
    bench::ReceiverView view(&receiver);
    auto *phase = view.findChild<QLabel *>("panel_receiver_phase");
    auto *reset = view.findChild<QLabel *>("panel_receiver_reset");
    QTRY_COMPARE(phase->text(), QString("application"));

    connect(&bench::unit(), &bench::HeadUnit::gnssResetChanged, &receiver,
            &bench::Receiver::setReset, Qt::DirectConnection);
    bench::unit().setGnssReset(true);
    QTRY_COMPARE(reset->text(), QString("asserted"));
    QTRY_COMPARE(phase->text(), QString("reset"));
    bench::unit().setGnssReset(false);
    QTRY_COMPARE(reset->text(), QString("released"));
    QTRY_VERIFY(phase->text() != "reset");
}

void TestOperatorPanel::realReceiverIsSaidToBeOne()
{
    const bench::ReceiverView view(nullptr);
    QCOMPARE(view.findChild<QLabel *>("panel_receiver_phase")->text(), QString("a real device"));
}

void TestOperatorPanel::resetByHandIsAskedFor()
{
    bench::ResetPrompt prompt;
    const bench::ReceiverView view(nullptr, &prompt);
    const auto *reset = view.findChild<QLabel *>("panel_receiver_reset");
    emit prompt.told("pull it");
    QCOMPARE(reset->text(), QString("pull it"));
    bench::unit().setGnssReset(true); // what the unit does is not what the hand does
    QCOMPARE(reset->text(), QString("pull it"));
}

TESTMODE_TEST_MAIN(TestOperatorPanel)
#include "test_operatorpanel.moc"
