#include "tests/support/unittest.h"
#include "updateunit.h"

#include "bench/unit/headunit.h"
#include "bench/unit/systemstate.h"
#include "gps/firmwarepackage.h"

#include <QDir>
#include <QFile>
#include <QProgressBar>

using bench::journal;
using tests::UpdateUnit;

namespace {

// An update over the pty takes about two seconds without the line's rate.
constexpr int kUpdateMilliseconds = 60000;

const QStringList kImages = {"bootloader.bin", "partition_table.bin", "gnss_demo.bin",
                             "gnss_config.bin"};

const QString kOtherFolder = QStringLiteral("/tmp/other");

// What the unit finds from now on: images of five bytes.
void useOtherPackage()
{
    const QString folder = kOtherFolder;
    QVERIFY(QDir(folder).removeRecursively());
    QVERIFY(QDir().mkpath(folder));
    QVERIFY(QFile::copy(bench::unit().system.updateFolder + "/flash_download.cfg",
                        folder + "/flash_download.cfg"));
    for (const QString &name : kImages) {
        QFile image(folder + '/' + name);
        QVERIFY(image.open(QIODevice::WriteOnly));
        QCOMPARE(image.write("other"), qint64(5));
    }
    bench::unit().change()->system.updateFolder = folder;
}

// Steps that the download's trace tells of, by their end.
QStringList traced(const bench::TraceLog &log, const char *ending)
{
    QStringList found;
    const QStringList payloads = log.payloads();
    for (const QString &line : payloads) {
        if (line.endsWith(QLatin1String(ending)))
            found << line;
    }
    return found;
}

} // namespace

// Whole updates of the simulated receiver, from the presses on the screen to the flash.
class TestUpdateWhole : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void packageLiesInTheFlashByteForByte();
    void sampleImagesHaveOddSizes();
    void imagesGoOutInTheirOrder();
    void twoUpdatesInARow();
    void updateAfterTheWindowWasBuiltAgain();
    void windowDestroyedInTheMiddle();
    void packageLoadedDuringAnUpdateIsNotThisUpdates();
    void packageChosenRightAfterTheStartIsNotThisUpdates();
    void filesAreNotReadAfterTheChoice_data();
    void filesAreNotReadAfterTheChoice();
    void whatABadPackageLeavesIsFlashed();
    void updateWithoutPackageIsRefused();

private:
    void update(UpdateUnit &unit);
};

void TestUpdateWhole::update(UpdateUnit &unit)
{
    unit.press("pushButton_3");
    QVERIFY(unit.updateRuns());
    QTRY_VERIFY_WITH_TIMEOUT(!unit.updateRuns(), kUpdateMilliseconds);
}

void TestUpdateWhole::packageLiesInTheFlashByteForByte()
{
    UpdateUnit unit;
    QCOMPARE(unit.flash(), UpdateUnit::flashWith({}));
    unit.openUpdatePage();
    journal().clear();
    update(unit);
    QCOMPARE(
        unit.lines(),
        (QStringList{"/dev/ttyS4: started", "/dev/ttyS4: reset succed", "/dev/ttyS4: succed"}));
    QCOMPARE(unit.progress(), 100);
    QCOMPARE(unit.icon(), QColor("green"));
    QCOMPARE(journal().texts(),
             (QStringList{"PlatformService.setGPSResetGPIO(true)",
                          "PlatformService.setGPSResetGPIO(false)"}));
    QVERIFY(unit.flash() == UpdateUnit::flashWith(kImages));
    QCOMPARE(unit.receiver.state().phase, QStringLiteral("finished"));
    QCOMPARE(unit.receiver.state().anomalies, QStringList());
}

void TestUpdateWhole::sampleImagesHaveOddSizes()
{
    for (const QString &name : kImages) {
        const int size = UpdateUnit::packageFile(name).size();
        QVERIFY2(size > 0 && size % 2 == 1, qPrintable(name));
    }
    // the application ends before the boot loader begins, whole packets counted
    QVERIFY(UpdateUnit::packageFile("gnss_demo.bin").size() <= 0x08030000 - 0x08013000);
    QVERIFY(UpdateUnit::packageFile("partition_table.bin").size() <= 0x13000);
    QVERIFY(UpdateUnit::packageFile("gnss_config.bin").size() <= 0x1000);
}

void TestUpdateWhole::imagesGoOutInTheirOrder()
{
    UpdateUnit unit;
    unit.openUpdatePage();
    update(unit);
    QCOMPARE(trace().payloads().filter("Start Download Image"),
             (QStringList{"Start Download Image (bootloader.bin)",
                          "Start Download Image (partition_table.bin)",
                          "Start Download Image (gnss_demo.bin)",
                          "Start Download Image (gnss_config.bin)"}));
    QVERIFY(trace().payloads().contains("hdl_connect success"));
    QVERIFY(trace().payloads().contains("hdl_download success"));
    QCOMPARE(traced(trace(), " fail"), QStringList());
    QVector<quint32> addresses;
    const auto images = unit.receiver.state().images;
    for (const bench::WrittenImage &image : images) {
        QVERIFY(image.complete);
        addresses << image.address;
    }
    QCOMPARE(addresses, (QVector<quint32>{0x08030000, 0x08000000, 0x08013000, 0x083FF000}));
}

void TestUpdateWhole::twoUpdatesInARow()
{
    UpdateUnit unit;
    unit.openUpdatePage();
    update(unit);
    update(unit);
    QCOMPARE(
        unit.lines(),
        (QStringList{"/dev/ttyS4: started", "/dev/ttyS4: reset succed", "/dev/ttyS4: succed",
                     "/dev/ttyS4: started", "/dev/ttyS4: reset succed", "/dev/ttyS4: succed"}));
    QVERIFY(unit.flash() == UpdateUnit::flashWith(kImages));
    QCOMPARE(unit.receiver.state().resets, 2);
    QCOMPARE(unit.receiver.state().anomalies, QStringList());
}

void TestUpdateWhole::updateAfterTheWindowWasBuiltAgain()
{
    UpdateUnit unit;
    unit.openUpdatePage();
    unit.destroyWindow();
    unit.createWindow();
    unit.openUpdatePage();
    update(unit);
    QCOMPARE(unit.lines().last(), QStringLiteral("/dev/ttyS4: succed"));
    QVERIFY(unit.flash() == UpdateUnit::flashWith(kImages));
}

void TestUpdateWhole::windowDestroyedInTheMiddle()
{
    UpdateUnit unit;
    unit.openUpdatePage();
    unit.press("pushButton_3");
    QTRY_VERIFY(unit.receiver.state().packets >= 3);
    unit.destroyWindow();
    QVERIFY(unit.receiver.state().phase != "finished");
    // the worker ends what it began
    QTRY_COMPARE_WITH_TIMEOUT(unit.receiver.state().phase, QStringLiteral("finished"),
                              kUpdateMilliseconds);
    QVERIFY(unit.flash() == UpdateUnit::flashWith(kImages));

    unit.createWindow();
    unit.openUpdatePage();
    QTRY_VERIFY(traced(trace(), "hdl_download success").size() == 1);
    update(unit);
    QCOMPARE(unit.lines().last(), QStringLiteral("/dev/ttyS4: succed"));
}

// A technician takes another package out of the list while one is being written.
void TestUpdateWhole::packageLoadedDuringAnUpdateIsNotThisUpdates()
{
    UpdateUnit unit;
    unit.openUpdatePage();
    unit.press("pushButton_3");
    QTRY_VERIFY(unit.receiver.state().packets >= 1);
    QVERIFY(!unit.receiver.state().images.first().complete);
    useOtherPackage();
    unit.press("pushButton_2");
    QCOMPARE(downloadfile.app_bin, QByteArray("other"));
    QTRY_VERIFY_WITH_TIMEOUT(!unit.updateRuns(), kUpdateMilliseconds);
    QCOMPARE(unit.lines().last(), QStringLiteral("/dev/ttyS4: succed"));
    QVERIFY(unit.flash() == UpdateUnit::flashWith(kImages));

    update(unit); // the next one's
    QCOMPARE(unit.lines().last(), QStringLiteral("/dev/ttyS4: succed"));
    QCOMPARE(unit.flash().mid(0x13000, 6), QByteArray("other\xFF"));
}

// Two presses that were waiting while the GUI thread was busy.
void TestUpdateWhole::packageChosenRightAfterTheStartIsNotThisUpdates()
{
    UpdateUnit unit;
    unit.openUpdatePage();
    useOtherPackage();
    unit.press("pushButton_3");
    unit.press("pushButton_2");
    QCOMPARE(downloadfile.app_bin, QByteArray("other"));
    QTRY_VERIFY_WITH_TIMEOUT(!unit.updateRuns(), kUpdateMilliseconds);
    QCOMPARE(unit.lines().last(), QStringLiteral("/dev/ttyS4: succed"));
    QVERIFY(unit.flash() == UpdateUnit::flashWith(kImages));
}

void TestUpdateWhole::filesAreNotReadAfterTheChoice_data()
{
    QTest::addColumn<bool>("stickStays");
    QTest::newRow("other files in their place") << true;
    QTest::newRow("gone with their stick") << false;
}

void TestUpdateWhole::filesAreNotReadAfterTheChoice()
{
    QFETCH(bool, stickStays);
    UpdateUnit unit;
    useOtherPackage();
    unit.openUpdatePage();
    if (stickStays) {
        QFile image(kOtherFolder + "/gnss_demo.bin");
        QVERIFY(image.open(QIODevice::WriteOnly));
        QCOMPARE(image.write("changed"), qint64(7));
    } else {
        QVERIFY(QDir(kOtherFolder).removeRecursively());
    }
    update(unit);
    QCOMPARE(unit.lines().last(), QStringLiteral("/dev/ttyS4: succed"));
    QCOMPARE(unit.flash().mid(0x13000, 6), QByteArray("other\xFF"));
    QCOMPARE(unit.flash().mid(0x30000, 6), QByteArray("other\xFF"));
}

// Kept: what was read before the bad file goes out with what is left of the package before.
void TestUpdateWhole::whatABadPackageLeavesIsFlashed()
{
    UpdateUnit unit;
    unit.openUpdatePage();
    useOtherPackage();
    QVERIFY(QFile::remove(kOtherFolder + "/gnss_demo.bin"));
    boxes().expect("Error", "Not open app_file!");
    unit.press("pushButton_2");
    update(unit);
    QCOMPARE(unit.lines().last(), QStringLiteral("/dev/ttyS4: succed"));
    QCOMPARE(unit.flash().mid(0, 6), QByteArray("other\xFF"));
    QCOMPARE(unit.flash().mid(0x30000, 6), QByteArray("other\xFF"));
    const QByteArray application = UpdateUnit::packageFile("gnss_demo.bin");
    QVERIFY(unit.flash().mid(0x13000, application.size()) == application);
    const QByteArray configuration = UpdateUnit::packageFile("gnss_config.bin");
    QVERIFY(unit.flash().mid(0x3FF000, configuration.size()) == configuration);
}

// Nothing was chosen: the worker gets empty images, and the receiver refuses their range.
void TestUpdateWhole::updateWithoutPackageIsRefused()
{
    UpdateUnit unit;
    unit.press("key_gps_update");
    unit.press("pushButton");
    update(unit);
    QCOMPARE(unit.lines().last(), QStringLiteral("/dev/ttyS4: failed"));
    QVERIFY(unit.flash() == UpdateUnit::flashWith({}));
}

TESTMODE_TEST_MAIN(TestUpdateWhole)
#include "test_update_whole.moc"
