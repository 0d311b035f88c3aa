#include "tests/support/unittest.h"

#include "bench/host/host.h"
#include "bench/unit/settingsstate.h"
#include "bench/unit/systemstate.h"
#include "framework/events.h"

#include <QDialog>
#include <QLabel>
#include <QLibraryInfo>
#include <QMessageBox>
#include <QPushButton>

// The framework's side: the real plug-in in the host window.
class TestHost : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void loadsThePluginAndShowsItsMenu();
    void refusesWhatIsNoTestMode_data();
    void refusesWhatIsNoTestMode();
    void withoutWindowKeysGoNowhere();
    void keysReachTheWindow();
    void homeLeadsBackToTheMenu();
    void quitLeavesToTheHomeScreenAndTheTileLeadsBack();
    void otherTouchesAreOnlyRecorded();
    void taskEventIsRecorded();
    void touchWithoutPayloadIsRecordedAsSuch();

    void destroyedWindowIsBuiltAnew();
    void windowAskedForWhileTheOldOneGoesComesAfterIt();
    void openBoxIsClosedBeforeTheWindowGoes();
    void hostTakesItsWindowAlong();

    void restartComesAfterTheRequest_data();
    void restartComesAfterTheRequest();
    void twoRequestsAreOneRestart();
    void restartWaitsForAnOpenBox();
    void unitWithoutWindowStartsWithOne();

    void statusBarLiesOverTheApplicationAndHides();
    void popupGoesByItself();
    void popupWrapsOnlyWhatIsTooLong();
    void pictureShowsOpenBoxes();
};

namespace {

const QString kPlugin = QStringLiteral(TESTMODE_PLUGIN);

QWidget *find(const bench::Host &host, const char *name)
{
    return host.screen()->findChild<QWidget *>(QLatin1String(name));
}

// A host with the plug-in's window on its screen.
struct RunningHost : bench::Host
{
    RunningHost()
    {
        QString error;
        if (!load(kPlugin, &error))
            qFatal("%s", qPrintable(error));
        home();
        screen()->show();
    }
};

} // namespace

void TestHost::loadsThePluginAndShowsItsMenu()
{
    bench::Host host;
    QString error;
    QVERIFY2(host.load(kPlugin, &error), qPrintable(error));
    QCOMPARE(host.metaData().value("IID").toString(), QString("com.corvane.Qt.testmodePlugin"));
    QVERIFY(!host.hasWindow());

    host.createWindow();
    QVERIFY(host.hasWindow());
    host.showWindow();
    host.screen()->show();
    QCOMPARE(host.mainWidget()->size(), QSize(1024, 600));
    QVERIFY(find(host, "testEntryWidget")->isVisible());
    QCOMPARE(bench::journal().texts(),
             QStringList({"BaseWindow.setBackgroundVisible(4, false)", "BaseWindow.onCreate()",
                          "GpsService.getModualApatation()", "BaseWindow.setMainWidget(38)",
                          "BaseWindow.onShow(\"\")"}));
}

void TestHost::refusesWhatIsNoTestMode_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("start");
    const QString offscreen =
        QLibraryInfo::location(QLibraryInfo::PluginsPath) + "/platforms/libqoffscreen.so";
    QTest::newRow("no library") << "/etc/passwd"
                                << "/etc/passwd is no plug-in that loads (";
    QTest::newRow("not there") << "/none.so"
                               << "/none.so is no plug-in that loads (";
    QTest::newRow("another plug-in")
        << offscreen
        << offscreen + " is a plug-in, but offers no window 38; name the test mode's plug-in";
}

void TestHost::refusesWhatIsNoTestMode()
{
    QFETCH(QString, file);
    QFETCH(QString, start);
    bench::Host host;
    QString error;
    QVERIFY(!host.load(file, &error));
    QVERIFY2(error.startsWith(start), qPrintable(error));
    QVERIFY(!error.contains('\n'));
    host.home();
    QVERIFY(!host.hasWindow());
}

void TestHost::withoutWindowKeysGoNowhere()
{
    bench::Host host;
    QCOMPARE(host.back(), 0);
    QCOMPARE(host.key(5), 0);
    QCOMPARE(bench::journal().texts(), QStringList());
}

void TestHost::keysReachTheWindow()
{
    RunningHost host;
    const int before = bench::journal().lastNumber();
    QCOMPARE(host.back(), 1);
    QCOMPARE(host.key(5), -1);
    QCOMPARE(bench::journal().texts(before),
             QStringList({"framework.backEvent(1)", "framework.keyEvent(5, -1)"}));
    QVERIFY(trace().payloads().contains("5 1007"));
}

void TestHost::homeLeadsBackToTheMenu()
{
    RunningHost host;
    const QWidget *page = host.mainWidget();
    qobject_cast<QPushButton *>(find(host, "key_tools"))->click();
    QVERIFY(!find(host, "testEntryWidget")->isVisible());
    host.home();
    QVERIFY(find(host, "testEntryWidget")->isVisible());
    QCOMPARE(host.mainWidget(), page);
}

void TestHost::quitLeavesToTheHomeScreenAndTheTileLeadsBack()
{
    RunningHost host;
    QSignalSpy touched(&host, &bench::Host::touchEvent);
    qobject_cast<QPushButton *>(find(host, "key_quit"))->click();
    QCOMPARE(touched, QList<QVariantList>({{9, -1, -1}}));
    QCOMPARE(bench::journal().texts().last(), QString("framework.TouchEvent(1008, 9, -1, -1)"));
    QVERIFY(!host.mainWidget()->isVisible());
    QVERIFY(find(host, "unit_home")->isVisible());

    qobject_cast<QPushButton *>(find(host, "tile_test_mode"))->click();
    QVERIFY(host.mainWidget()->isVisible());
    QVERIFY(!find(host, "unit_home")->isVisible());
}

void TestHost::otherTouchesAreOnlyRecorded()
{
    RunningHost host;
    QSignalSpy touched(&host, &bench::Host::touchEvent);
    TouchEvent event(static_cast<Qx::Touch>(3), 10, -20);
    QVERIFY(QCoreApplication::sendEvent(qApp, &event));
    QCOMPARE(touched, QList<QVariantList>({{3, 10, -20}}));
    QCOMPARE(bench::journal().texts().last(), QString("framework.TouchEvent(1008, 3, 10, -20)"));
    QVERIFY(host.mainWidget()->isVisible());
}

void TestHost::taskEventIsRecorded()
{
    RunningHost host;
    TaskEvent event(Qx::TaskIdle);
    QVERIFY(QCoreApplication::sendEvent(qApp, &event));
    QCOMPARE(bench::journal().texts().last(), QString("framework.TaskEvent(1009, 0)"));
}

void TestHost::touchWithoutPayloadIsRecordedAsSuch()
{
    RunningHost host;
    QSignalSpy touched(&host, &bench::Host::touchEvent);
    TouchEvent event(Qx::TouchLeaveTestMode, -1, -1);
    event.payload.chop(4);
    QCoreApplication::sendEvent(qApp, &event);
    QCOMPARE(bench::journal().texts().last(),
             QString("framework.TouchEvent(\"payload of 12 bytes\")"));
    QVERIFY(touched.isEmpty());
    QVERIFY(host.mainWidget()->isVisible());
}

void TestHost::destroyedWindowIsBuiltAnew()
{
    RunningHost host;
    const QPointer<QWidget> first = host.mainWidget();
    host.destroyWindow();
    QVERIFY(!host.hasWindow());
    QVERIFY(find(host, "unit_home")->isVisible());
    QTRY_VERIFY(first.isNull());
    host.home();
    QVERIFY(host.mainWidget()->isVisible());
}

void TestHost::windowAskedForWhileTheOldOneGoesComesAfterIt()
{
    RunningHost host;
    const QPointer<QWidget> first = host.mainWidget();
    host.destroyWindow();
    host.createWindow();
    host.showWindow();
    QVERIFY(!host.hasWindow());
    QVERIFY(first);
    QTRY_VERIFY(host.hasWindow());
    QVERIFY(first.isNull());
    QVERIFY(host.mainWidget()->isVisible());
}

// The box is opened by a slot of the plug-in, which still stands on its page when
// the box returns.
void TestHost::openBoxIsClosedBeforeTheWindowGoes()
{
    boxes().leaveAlone();
    RunningHost host;
    QPointer<QWidget> page = host.mainWidget();
    bool pageStoodWhenTheBoxReturned = false;
    QTimer::singleShot(0, &host, [&] {
        QMessageBox box(QMessageBox::Information, "title", "text", QMessageBox::Ok, page);
        QTimer::singleShot(0, &host, &bench::Host::destroyWindow);
        box.exec();
        pageStoodWhenTheBoxReturned = !page.isNull();
    });
    QTRY_VERIFY(page.isNull());
    QVERIFY(pageStoodWhenTheBoxReturned);
    QVERIFY(!host.hasWindow());
}

void TestHost::hostTakesItsWindowAlong()
{
    QPointer<QWidget> page;
    {
        RunningHost host;
        page = host.mainWidget();
        QVERIFY(page);
    }
    QVERIFY(page.isNull());
    QVERIFY(bench::journal().texts().contains("BaseWindow.deleteDelay()"));
}

void TestHost::restartComesAfterTheRequest_data()
{
    QTest::addColumn<QString>("why");
    QTest::addColumn<bool>("keepsStoredSettings");
    QTest::newRow("system reset") << "System reset" << true;
    QTest::newRow("reboot") << "Reboot" << true;
    QTest::newRow("factory reset") << "Factory reset" << false;
}

void TestHost::restartComesAfterTheRequest()
{
    QFETCH(QString, why);
    RunningHost host;
    QSignalSpy restarted(&host, &bench::Host::restarted);
    const QPointer<QWidget> page = host.mainWidget();
    bench::unit().change()->system.watchdogEnabled = false;
    bench::unit().change()->settings.cache.insert("cache", {QVariant(), 1});
    bench::unit().change()->settings.func.insert("func", {QVariant(), 1});

    if (why == "Reboot")
        bench::unit().requestReboot();
    else if (why == "System reset")
        bench::unit().requestSystemReset(1);
    else
        bench::unit().requestFactoryReset();

    // the page that asked goes on for now
    QVERIFY(page && host.hasWindow());
    QVERIFY(find(host, "unit_restart")->isVisible());
    QCOMPARE(static_cast<QLabel *>(find(host, "unit_restart"))->text(),
             why + QString::fromUtf8(" …"));
    QVERIFY(!bench::unit().settings.cache.isEmpty());

    QTRY_COMPARE(restarted, QList<QVariantList>({{why}}));
    QVERIFY(page.isNull());
    QVERIFY(host.mainWidget()->isVisible());
    QVERIFY(!find(host, "unit_restart")->isVisible());
    QVERIFY(bench::unit().system.watchdogEnabled);
    QVERIFY(bench::unit().settings.cache.isEmpty());
    QTEST(bench::unit().settings.func.contains("func"), "keepsStoredSettings");
    QVERIFY(bench::journal().texts().contains("framework.restart(\"" + why + "\")"));
}

void TestHost::twoRequestsAreOneRestart()
{
    RunningHost host;
    QSignalSpy restarted(&host, &bench::Host::restarted);
    bench::unit().change()->settings.func.insert("func", {QVariant(), 1});
    bench::unit().requestFactoryReset();
    bench::unit().requestReboot();
    QTRY_COMPARE(restarted, QList<QVariantList>({{"Reboot"}}));
    QVERIFY(bench::unit().settings.func.isEmpty());
    QCOMPARE(bench::journal().texts().filter("framework.restart"),
             QStringList{"framework.restart(\"Reboot\")"});
}

void TestHost::restartWaitsForAnOpenBox()
{
    boxes().leaveAlone();
    RunningHost host;
    QSignalSpy restarted(&host, &bench::Host::restarted);
    QPointer<QWidget> page = host.mainWidget();
    bool pageStoodWhenTheBoxReturned = false;
    QTimer::singleShot(0, &host, [&] {
        bench::unit().requestSystemReset(1);
        QMessageBox box(QMessageBox::Information, "title", "text", QMessageBox::Ok, page);
        box.exec();
        pageStoodWhenTheBoxReturned = !page.isNull();
    });
    QTRY_COMPARE(restarted.size(), 1);
    QVERIFY(pageStoodWhenTheBoxReturned);
}

void TestHost::unitWithoutWindowStartsWithOne()
{
    RunningHost host;
    host.destroyWindow();
    QSignalSpy restarted(&host, &bench::Host::restarted);
    bench::unit().requestSystemReset(1);
    QTRY_COMPARE(restarted.size(), 1);
    QVERIFY(host.mainWidget()->isVisible());
}

void TestHost::statusBarLiesOverTheApplicationAndHides()
{
    RunningHost host;
    QWidget *bar = find(host, "unit_status_bar");
    QVERIFY(bar->isVisible());
    const QObjectList layers = host.screen()->children();
    QVERIFY(layers.indexOf(bar) > layers.indexOf(host.mainWidget()));
    QVERIFY(host.screen()->childAt(bar->geometry().center()) != bar); // touches go through

    bench::unit().setStatusBarHidden(true);
    QVERIFY(!bar->isVisible());
    bench::unit().setStatusBarHidden(false);
    QVERIFY(bar->isVisible());
}

void TestHost::popupGoesByItself()
{
    RunningHost host;
    auto *popup = static_cast<QLabel *>(find(host, "unit_popup"));
    QVERIFY(!popup->isVisible());
    bench::unit().showPopup("Error: No USB Device");
    QVERIFY(popup->isVisible());
    QCOMPARE(popup->text(), QString("Error: No USB Device"));
    QVERIFY(host.screen()->rect().contains(popup->geometry()));
    const QObjectList layers = host.screen()->children();
    QVERIFY(layers.indexOf(popup) > layers.indexOf(host.mainWidget()));
    QTRY_VERIFY(!popup->isVisible());
}

void TestHost::popupWrapsOnlyWhatIsTooLong()
{
    RunningHost host;
    const auto *popup = static_cast<QLabel *>(find(host, "unit_popup"));
    bench::unit().showPopup("x");
    const int oneLine = popup->height();
    bench::unit().showPopup("Error: can not open file");
    QCOMPARE(popup->height(), oneLine);
    bench::unit().showPopup(QString("word ").repeated(60));
    QVERIFY(popup->height() > oneLine);
    QVERIFY(host.screen()->rect().contains(popup->geometry()));
}

void TestHost::pictureShowsOpenBoxes()
{
    RunningHost host;
    QDialog box(host.mainWidget());
    box.setPalette(Qt::red);
    box.resize(200, 100);
    box.move(host.screen()->mapToGlobal(QPoint(300, 200)));
    const QColor before = host.picture().pixelColor(400, 250);
    box.show();
    const QImage after = host.picture();
    QCOMPARE(after.size(), QSize(1024, 600));
    QCOMPARE(after.pixelColor(400, 250), QColor(Qt::red));
    QVERIFY(before != QColor(Qt::red));
}

TESTMODE_TEST_MAIN(TestHost)
#include "test_host.moc"
