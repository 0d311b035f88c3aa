#include "bench/unit/gnssstate.h"
#include "bench/unit/systemstate.h"
#include "bench/unit/usbstate.h"
#include "stagedfiles.h"
#include "tests/support/unittest.h"

#include "gps/gpsupdate.h"
#include "plugin/mainwidget.h"

#include <QDir>
#include <QFile>
#include <QScopedPointer>

#include <cstdio>

#include <sys/stat.h>
#include <unistd.h>

using bench::journal;
using testmode::MainWidget;
using tests::kMarker;
using tests::kSlot;
using tests::kStaged;
using tests::plugIn;
using tests::readFile;
using tests::writeFile;

// The way of the update entry for modules that the unit's own updater flashes: a package from a
// USB disk is left in flash, and the unit is reset.
class TestStagedUpdate : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void cleanup();

    void kindDecidesTheWay_data();
    void kindDecidesTheWay();
    void packageIsStagedAndTheUnitReset_data();
    void packageIsStagedAndTheUnitReset();
    void watchdogIsOffBeforeTheMarkerIsWritten();
    void markerIsThereBeforeTheCopy();
    void longerMarkerIsReplacedWhole();
    void withoutDiskOnlyTheMarkerIsWritten();
    void diskWithoutPackageIsReportedAndTheUnitGoesOn();
    void stalePackageResetsTheUnitAllTheSame();
    void unwritableMarkerIsReportedAndTheCopyGoesOn();
    void unwritableMarkerAndNoDiskAreBothReported();
    void diskPathIsPassedInLatin1();
    void diskPathWithAPercentSignIsPassedAsItIs();
    void kindFoundOutLaterCounts();
};

void TestStagedUpdate::cleanup()
{
    for (const char *path : {kMarker, kStaged}) {
        QFile::remove(path);
        QDir().rmdir(path);
    }
    QDir("/media/usb0").removeRecursively();
    QDir("/media/usb1").removeRecursively();
    UnitTest::cleanup();
}

void TestStagedUpdate::kindDecidesTheWay_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<bool>("staged");
    QTest::newRow("kind 0") << 0 << true;
    QTest::newRow("kind 1") << 1 << false;
    QTest::newRow("kind 2") << 2 << true;
    QTest::newRow("not known") << -1 << true;
}

void TestStagedUpdate::kindDecidesTheWay()
{
    QFETCH(int, kind);
    QFETCH(bool, staged);
    bench::unit().change()->gnss.moduleKind = kind;
    MainWidget host(nullptr);
    host.show();
    journal().clear();
    host.onShowGpsUpdateWidget();

    QCOMPARE(journal().texts().first(), QStringLiteral("GpsService.getModualApatation()"));
    QCOMPARE(bench::unit().system.watchdogEnabled, !staged);
    QCOMPARE(QFile::exists(kMarker), staged);
    QCOMPARE(journal().texts().size() == 1, !staged);
    const QWidget *page = host.findChild<testmode::gpsupdate *>();
    QCOMPARE(page == nullptr, staged);
    QVERIFY(host.findChild<QWidget *>("testEntryWidget")->isVisible());
}

void TestStagedUpdate::packageIsStagedAndTheUnitReset_data()
{
    QTest::addColumn<bool>("first");
    QTest::addColumn<bool>("second");
    QTest::addColumn<QStringList>("search");
    QTest::addColumn<QByteArray>("staged");
    QTest::newRow("disk on port 0")
        << true << false
        << QStringList{"DeviceManager.isUsbDiskDeviceExist(0)", "DeviceManager.usbPath(0)",
                       "shell: cp /media/usb0/gps.bin /media/flash/nvm/"}
        << QByteArray("package of port 0");
    QTest::newRow("disk on port 1")
        << false << true
        << QStringList{"DeviceManager.isUsbDiskDeviceExist(0)",
                       "DeviceManager.isUsbDiskDeviceExist(1)", "DeviceManager.usbPath(1)",
                       "shell: cp /media/usb1/gps.bin /media/flash/nvm/"}
        << QByteArray("package of port 1");
    QTest::newRow("disks on both: port 0 wins")
        << true << true
        << QStringList{"DeviceManager.isUsbDiskDeviceExist(0)", "DeviceManager.usbPath(0)",
                       "shell: cp /media/usb0/gps.bin /media/flash/nvm/"}
        << QByteArray("package of port 0");
}

void TestStagedUpdate::packageIsStagedAndTheUnitReset()
{
    QFETCH(bool, first);
    QFETCH(bool, second);
    QFETCH(QStringList, search);
    QFETCH(QByteArray, staged);
    bench::unit().change()->gnss.moduleKind = 0;
    if (first)
        plugIn(0, "package of port 0");
    if (second)
        plugIn(1, "package of port 1");
    MainWidget host(nullptr);
    journal().clear();
    trace().clear();
    host.onShowGpsUpdateWidget();

    QCOMPARE(journal().texts(),
             (QStringList{"GpsService.getModualApatation()", "McuService.setWatchDogEnable(false)"}
              + search + QStringList{"shell: sync", "McuService.setResetSystem(1)"}));
    QCOMPARE(trace().payloads(), QStringList{"========enter RX452 update============"});
    QCOMPARE(readFile(kMarker), QByteArray("true"));
    QCOMPARE(readFile(kStaged), staged);
    QCOMPARE(bench::unit().system.systemResets, 1);
}

void TestStagedUpdate::watchdogIsOffBeforeTheMarkerIsWritten()
{
    bench::unit().change()->gnss.moduleKind = 0;
    MainWidget host(nullptr);
    trace().clear();
    QByteArray marker;
    QStringList traced;
    const auto watch = connect(&journal(), &bench::Journal::added, this, [&](int number) {
        if (journal().texts(number - 1).first() != "McuService.setWatchDogEnable(false)")
            return;
        marker = readFile(kMarker);
        traced = trace().payloads();
    });
    host.onShowGpsUpdateWidget();
    disconnect(watch);
    QCOMPARE(marker, QByteArray("<not there>"));
    QCOMPARE(traced, QStringList{"========enter RX452 update============"});
}

void TestStagedUpdate::markerIsThereBeforeTheCopy()
{
    bench::unit().change()->gnss.moduleKind = 0;
    plugIn(0, "package");
    QByteArray atTheCopy;
    const auto watch = connect(&journal(), &bench::Journal::added, this, [&atTheCopy](int number) {
        if (journal().texts(number - 1).first().startsWith("shell: cp "))
            atTheCopy = readFile(kMarker);
    });
    MainWidget host(nullptr);
    host.onShowGpsUpdateWidget();
    disconnect(watch);
    QCOMPARE(atTheCopy, QByteArray("true"));
}

void TestStagedUpdate::longerMarkerIsReplacedWhole()
{
    bench::unit().change()->gnss.moduleKind = 0;
    writeFile(kMarker, "something longer\n");
    MainWidget host(nullptr);
    host.onShowGpsUpdateWidget();
    QCOMPARE(readFile(kMarker), QByteArray("true"));
}

void TestStagedUpdate::withoutDiskOnlyTheMarkerIsWritten()
{
    bench::unit().change()->gnss.moduleKind = 0;
    MainWidget host(nullptr);
    journal().clear();
    trace().clear();
    host.onShowGpsUpdateWidget();
    QCOMPARE(journal().texts(),
             (QStringList{"GpsService.getModualApatation()", "McuService.setWatchDogEnable(false)",
                          "DeviceManager.isUsbDiskDeviceExist(0)",
                          "DeviceManager.isUsbDiskDeviceExist(1)",
                          "OutputLogsUsb.tipsMessagePopup(\"Error: No USB Device\")"}));
    QCOMPARE(trace().payloads(), QStringList{"========enter RX452 update============"});
    QCOMPARE(readFile(kMarker), QByteArray("true"));
    QVERIFY(!bench::unit().system.watchdogEnabled);
    QCOMPARE(bench::unit().system.systemResets, 0);
}

void TestStagedUpdate::diskWithoutPackageIsReportedAndTheUnitGoesOn()
{
    bench::unit().change()->gnss.moduleKind = 0;
    plugIn(1);
    MainWidget host(nullptr);
    journal().clear();
    trace().clear();
    host.onShowGpsUpdateWidget();
    QCOMPARE(journal().texts().mid(5),
             (QStringList{"shell: cp /media/usb1/gps.bin /media/flash/nvm/", "shell: sync",
                          "OutputLogsUsb.tipsMessagePopup(\"Error: file not copy\")"}));
    QCOMPARE(trace().payloads(),
             (QStringList{"========enter RX452 update============", "===file not copy========"}));
    QCOMPARE(tracedFunctions(), (QStringList{kSlot, kSlot}));
    QCOMPARE(readFile(kMarker), QByteArray("true"));
    QVERIFY(!bench::unit().system.watchdogEnabled);
    QCOMPARE(bench::unit().system.systemResets, 0);
}

void TestStagedUpdate::stalePackageResetsTheUnitAllTheSame()
{
    bench::unit().change()->gnss.moduleKind = 0;
    plugIn(0);
    writeFile(kStaged, "from an earlier attempt");
    MainWidget host(nullptr);
    journal().clear();
    host.onShowGpsUpdateWidget();
    QCOMPARE(journal().texts().mid(4),
             (QStringList{"shell: cp /media/usb0/gps.bin /media/flash/nvm/", "shell: sync",
                          "McuService.setResetSystem(1)"}));
    QVERIFY(journal().entries().at(4).arguments != QJsonArray{0}); // the copy did fail
    QCOMPARE(readFile(kStaged), QByteArray("from an earlier attempt"));
    QCOMPARE(bench::unit().system.systemResets, 1);
}

void TestStagedUpdate::unwritableMarkerIsReportedAndTheCopyGoesOn()
{
    bench::unit().change()->gnss.moduleKind = 0;
    plugIn(0, "package");
    QVERIFY(QDir().mkdir(kMarker)); // a folder in its place cannot be opened
    MainWidget host(nullptr);
    journal().clear();
    trace().clear();
    host.onShowGpsUpdateWidget();
    QCOMPARE(journal().texts(),
             (QStringList{"GpsService.getModualApatation()", "McuService.setWatchDogEnable(false)",
                          "OutputLogsUsb.tipsMessagePopup(\"Error: can not open file\")",
                          "DeviceManager.isUsbDiskDeviceExist(0)", "DeviceManager.usbPath(0)",
                          "shell: cp /media/usb0/gps.bin /media/flash/nvm/", "shell: sync",
                          "McuService.setResetSystem(1)"}));
    QCOMPARE(trace().payloads(),
             (QStringList{"========enter RX452 update============", "==can not open file==="}));
    QCOMPARE(tracedFunctions(), (QStringList{kSlot, kSlot}));
    QCOMPARE(readFile(kStaged), QByteArray("package"));
}

void TestStagedUpdate::unwritableMarkerAndNoDiskAreBothReported()
{
    bench::unit().change()->gnss.moduleKind = 0;
    QVERIFY(QDir().mkdir(kMarker));
    MainWidget host(nullptr);
    journal().clear();
    host.onShowGpsUpdateWidget();
    QCOMPARE(journal().texts().filter("Popup"),
             (QStringList{"OutputLogsUsb.tipsMessagePopup(\"Error: can not open file\")",
                          "OutputLogsUsb.tipsMessagePopup(\"Error: No USB Device\")"}));
}

void TestStagedUpdate::diskPathIsPassedInLatin1()
{
    const QByteArray folder = "/media/usb0/M\xfcller";
    bench::unit().change()->gnss.moduleKind = 0;
    plugIn(0, "package");
    QCOMPARE(::mkdir(folder.constData(), 0755), 0);
    QCOMPARE(::rename("/media/usb0/gps.bin", folder + "/gps.bin"), 0);
    bench::unit().change()->usb.ports[0].path = QString::fromLatin1(folder);
    MainWidget host(nullptr);
    host.onShowGpsUpdateWidget();
    QCOMPARE(readFile(kStaged), QByteArray("package"));
    QCOMPARE(::remove(folder + "/gps.bin"), 0);
    QCOMPARE(::rmdir(folder.constData()), 0);
}

void TestStagedUpdate::diskPathWithAPercentSignIsPassedAsItIs()
{
    bench::unit().change()->gnss.moduleKind = 0;
    plugIn(0);
    bench::unit().change()->usb.ports[0].path = "/media/usb0/%1%2";
    MainWidget host(nullptr);
    host.onShowGpsUpdateWidget();
    QVERIFY(journal().texts().contains("shell: cp /media/usb0/%1%2/gps.bin /media/flash/nvm/"));
}

void TestStagedUpdate::kindFoundOutLaterCounts()
{
    bench::unit().change()->gnss.moduleKind = 0;
    MainWidget host(nullptr);
    host.show();
    host.onShowGpsUpdateWidget();
    QVERIFY(host.findChild<testmode::gpsupdate *>() == nullptr);
    bench::unit().change()->gnss.moduleKind = 1;
    host.onShowGpsUpdateWidget();
    QVERIFY(host.findChild<testmode::gpsupdate *>() != nullptr);
    // and back: the page stays as it is, the package is staged
    bench::unit().change()->gnss.moduleKind = 0;
    journal().clear();
    host.onShowGpsUpdateWidget();
    QVERIFY(journal().texts().contains("McuService.setWatchDogEnable(false)"));
}

TESTMODE_TEST_MAIN(TestStagedUpdate)
#include "test_stagedupdate.moc"
