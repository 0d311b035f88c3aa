#include "bench/unit/gnssstate.h"
#include "bench/unit/settingsstate.h"
#include "bench/unit/systemstate.h"
#include "tests/support/clock/virtualclock.h"
#include "tests/support/unittest.h"

#include "gps/gpsitemdelegate.h"
#include "gps/satelliteslistmodel.h"
#include "plugin/mainwidget.h"
#include "shownpage.h"

#include <QCoreApplication>
#include <QItemSelectionModel>
#include <QMouseEvent>
#include <QPushButton>
#include <QTimer>

using gpsservice::GpsService;
using testmode::gps_test;
using namespace tests;

// The page of the GNSS receiver: its set-up, its life and its buttons.
class TestGpsTest : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void slotsAndSignalsInOrder();
    void callsOfTheConstruction();
    void captions_data();
    void captions();
    void listIsSetUp();
    void dragLeavesTheViewsSelection();
    void listFollowsItsSignalToo();
    void showingHidesTheStatusBarAndAsksForTheVersion();
    void hidingBringsTheStatusBarBack();
    void hostShowsAndLeavesThePage();
    void resetChangesNothing();
    void serviceSignalReachesThePage();
    void versionIsLoggedAndShown();
    void versionButtonAsks();
    void resetInstallWaitsASecondBeforeTheReboot();
    void coldStart();
    void recordingToggles();
    void recordingLabelTellsTheStoredState_data();
    void recordingLabelTellsTheStoredState();
    void saveCopiesTheData();
};

void TestGpsTest::slotsAndSignalsInOrder()
{
    QCOMPARE(
        tests::slotsOf(gps_test::staticMetaObject),
        QStringList({"onNmeaUpdate(krnmINFO)", "ongpsFirmwareVersion(QString)",
                     "ongpsLatitudeInfo(double,double)", "ongpsOnlineStatellites(int)",
                     "ongpsSatellitesOnView(int)", "ongpsSpeed(double)", "ongpsSatellitesInfoPre()",
                     "onTimeSync()", "on_resetinstall_brn_clicked()", "on_btn_version_clicked()",
                     "on_btn_save_nmea_clicked()", "on_coldstart_btn_clicked()",
                     "on_gpslog_btn_clicked()"}));
    QCOMPARE(tests::signalsOf(gps_test::staticMetaObject), QStringList{"initSatellitesList()"});
    QCOMPARE(gps_test::staticMetaObject.className(), "testmode::gps_test");
}

void TestGpsTest::callsOfTheConstruction()
{
    const gps_test page;
    QCOMPARE(calls(),
             QStringList({"ListviewScroller.ListviewScroller(\"satellitesListView\", \"gps_test\")",
                          "ListviewScroller.setSelectionModel(true)"}));
}

void TestGpsTest::captions_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("text");
    const char *const rows[][2] = {
        {"numInView_txt", "numberInView"},
        {"numInView_vol", ""},
        {"numInUse_txt", "numberInUse"},
        {"numInUse_vol", ""},
        {"latitude_txt", "Latitude"},
        {"latitude_vol", ""},
        {"longitude_txt", "Longitude"},
        {"longitude_vol", ""},
        {"speedbu_txt", "Speed"},
        {"speed_vol", ""},
        {"antenna", ""},
        {"time_system", ""},
        {"time_duration", ""},
        {"time_gps", ""},
        {"install_mode", ""},
        {"satelliteID", "Satellites ID"},
        {"satellitesSig", "Satellites Sig"},
        {"resetinstall_txt", "Reset Install"},
        {"btn_txt_version", "Version:"},
        {"txt_version", ""},
        {"coldstart_txt", "Cold Start"},
        {"gpslog_txt", "Open"},
    };
    for (const auto &row : rows)
        QTest::newRow(row[0]) << row[0] << row[1];
}

void TestGpsTest::captions()
{
    QFETCH(QString, name);
    QFETCH(QString, text);
    const ShownPage page;
    QCOMPARE(page.text(qPrintable(name)), text);
}

void TestGpsTest::listIsSetUp()
{
    const ShownPage page;
    const QListView *view = page.list();
    QVERIFY(qobject_cast<testmode::SatellitesListModel *>(view->model()));
    QCOMPARE(view->model()->parent(), &page);
    const auto *delegate = qobject_cast<testmode::GpsItemDelegate *>(view->itemDelegate());
    QVERIFY(delegate);
    QCOMPARE(delegate->parent(), &page);
    QCOMPARE(view->verticalScrollMode(), QAbstractItemView::ScrollPerPixel);
    QCOMPARE(view->horizontalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
    QCOMPARE(view->verticalScrollBar(), page.bar());
    QVERIFY(!page.bar()->testAttribute(Qt::WA_OpaquePaintEvent));
    QVERIFY(page.bar()->isHidden());
}

// What the scroller was given is the selection of the view itself.
void TestGpsTest::dragLeavesTheViewsSelection()
{
    ShownPage page;
    setSatellites(10);
    emit page.initSatellitesList();
    QListView *view = page.list();
    QItemSelectionModel *selection = view->selectionModel();
    const QModelIndex kept = view->model()->index(0, 0);
    const QModelIndex touched = view->model()->index(1, 0);
    selection->select(kept, QItemSelectionModel::ClearAndSelect);
    const QPoint start(20, 100);
    QTest::mousePress(view->viewport(), Qt::LeftButton, Qt::NoModifier, start);
    selection->select(touched, QItemSelectionModel::ClearAndSelect);
    // with the button held, which the library's own helper leaves out
    QMouseEvent move(QEvent::MouseMove, start - QPoint(0, 60), Qt::NoButton, Qt::LeftButton,
                     Qt::NoModifier);
    QCoreApplication::sendEvent(view->viewport(), &move);
    QTest::mouseRelease(view->viewport(), Qt::LeftButton, Qt::NoModifier, start - QPoint(0, 60));
    // by its range: a satellite's line is not selectable, and would not be listed
    QCOMPARE(selection->selection().size(), 1);
    QCOMPARE(selection->selection().first().top(), 0);
}

void TestGpsTest::listFollowsItsSignalToo()
{
    ShownPage page;
    setSatellites(2);
    emit page.initSatellitesList();
    QCOMPARE(page.list()->model()->rowCount(), 2);
}

void TestGpsTest::showingHidesTheStatusBarAndAsksForTheVersion()
{
    gps_test page;
    bench::journal().clear();
    page.show();
    QCOMPARE(calls(),
             QStringList({"StatusBarControl.sethide(true)", "GpsService.read_set_CMD_VERSION()",
                          "SettingsCache.getValue(\"SetupRecordKrnmData\", false)"}));
    QVERIFY(bench::unit().system.statusBarHidden);
}

void TestGpsTest::hidingBringsTheStatusBarBack()
{
    ShownPage page;
    page.hide();
    QCOMPARE(calls(), QStringList{"StatusBarControl.sethide(false)"});
    QVERIFY(!bench::unit().system.statusBarHidden);
}

void TestGpsTest::hostShowsAndLeavesThePage()
{
    testmode::MainWidget host(nullptr);
    host.resize(1024, 600);
    host.show();
    host.onShowGpstestWidget();
    const auto *page = host.findChild<gps_test *>();
    QVERIFY(page->isVisible());
    QCOMPARE(page->geometry(), QRect(0, 0, 1024, 600));
    QVERIFY(bench::unit().system.statusBarHidden);
    host.resume();
    QVERIFY(!page->isVisible());
    QVERIFY(!bench::unit().system.statusBarHidden);
}

void TestGpsTest::resetChangesNothing()
{
    ShownPage page;
    page.reset();
    QCOMPARE(calls(), QStringList());
}

void TestGpsTest::serviceSignalReachesThePage()
{
    const ShownPage page;
    krnmINFO info = {};
    info.speed = 12.5;
    report(info);
    QCOMPARE(page.text("speed_vol"), QString("12.5"));
    emit GpsService::instance()->gpsFirmwareVersion("V1");
    QCOMPARE(page.text("txt_version"), QString("V1"));
}

void TestGpsTest::versionIsLoggedAndShown()
{
    bench::unit().change()->gnss.versionDelay = 1;
    bench::unit().change()->gnss.version = "SIM 2.0 <b>";
    gps_test page;
    page.show();
    const auto *version = page.findChild<QLabel *>("txt_version");
    QTRY_COMPARE(version->text(), QString("SIM 2.0 <b>"));
    QCOMPARE(version->textFormat(), Qt::PlainText);
    QCOMPARE(trace().payloads(), QStringList{"\"SIM 2.0 <b>\""});
    QVERIFY(
        trace().lines().last().contains("void testmode::gps_test::ongpsFirmwareVersion(QString)"));
}

void TestGpsTest::versionButtonAsks()
{
    ShownPage page;
    page.tap("btn_txt_version");
    QCOMPARE(calls(), QStringList{"GpsService.read_set_CMD_VERSION()"});
    QCOMPARE(trace().payloads(), QStringList{"read_set_CMD_VERSION------------------"});
}

void TestGpsTest::resetInstallWaitsASecondBeforeTheReboot()
{
    const tests::VirtualClock clock;
    ShownPage page;
    const auto *key = page.child<QPushButton>("resetinstall_brn");
    bool interrupted = false;
    bool interruptedMeanwhile = true;
    connect(key, &QPushButton::released, &page,
            [&] { QTimer::singleShot(0, &page, [&interrupted] { interrupted = true; }); });
    connect(key, &QPushButton::clicked, &page, [&] { interruptedMeanwhile = interrupted; });
    page.tap("resetinstall_txt");

    QVERIFY(!interruptedMeanwhile);
    QCOMPARE(calls(),
             QStringList({"GpsService.read_set_CMD_RESET_CALIBRATION()",
                          "GpsService.read_set_CMD_RESET_REBOOT()"}));
    const QVector<bench::JournalEntry> entries = bench::journal().entries();
    QCOMPARE(entries.last().elapsed - entries.first().elapsed, 1000);
    QCOMPARE(trace().payloads(),
             QStringList({"reset GPS Calibration------------------", "reboot"}));
}

void TestGpsTest::coldStart()
{
    ShownPage page;
    page.tap("coldstart_txt");
    QCOMPARE(calls(), QStringList{"GpsService.read_set_CMD_COLD_START()"});
    QCOMPARE(trace().payloads(), QStringList());
}

void TestGpsTest::recordingToggles()
{
    ShownPage page;
    page.tap("gpslog_txt");
    QCOMPARE(calls(),
             QStringList({"SettingsCache.getValue(\"SetupRecordKrnmData\", false)",
                          "SettingsCache.setValue(\"SetupRecordKrnmData\", false, true)",
                          "SettingsCache.getValue(\"SetupRecordKrnmData\", false)"}));
    QCOMPARE(page.text("gpslog_txt"), QString("Close"));
    bench::journal().clear();
    page.tap("gpslog_txt");
    QCOMPARE(calls().at(1),
             QString("SettingsCache.setValue(\"SetupRecordKrnmData\", false, false)"));
    QCOMPARE(page.text("gpslog_txt"), QString("Open"));
}

void TestGpsTest::recordingLabelTellsTheStoredState_data()
{
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<QString>("label");
    QTest::newRow("never stored") << QVariant() << "Open";
    QTest::newRow("off") << QVariant(false) << "Open";
    QTest::newRow("on") << QVariant(true) << "Close";
}

void TestGpsTest::recordingLabelTellsTheStoredState()
{
    QFETCH(QVariant, stored);
    QFETCH(QString, label);
    if (stored.isValid())
        bench::unit().change()->settings.cache.insert("SetupRecordKrnmData", {QVariant(), stored});
    const ShownPage page;
    QCOMPARE(page.text("gpslog_txt"), label);
}

void TestGpsTest::saveCopiesTheData()
{
    ShownPage page;
    QVERIFY(QMetaObject::invokeMethod(&page, "on_btn_save_nmea_clicked"));
    QCOMPARE(calls(), QStringList{"GpsService.saveNmeaData2USB()"});
    QVERIFY(!page.findChild<QObject *>("btn_save_nmea"));
}

TESTMODE_TEST_MAIN(TestGpsTest)
#include "test_gps_test.moc"
