#include "tests/support/unittest.h"

#include "gps/firmwarepackage.h"
#include "gps/gpsupdate.h"

#include <QDir>
#include <QFile>

using testmode::gpsupdate;

namespace {

const QString kFolder = QStringLiteral("/run/unit/package");

void writeFile(const QString &path, const QByteArray &content)
{
    QFile target(path);
    QVERIFY2(target.open(QIODevice::WriteOnly), qPrintable(path));
    QCOMPARE(target.write(content), qint64(content.size()));
}

// Each file holds its own name and size enough to be told apart.
void writePackage(const QString &folder)
{
    QVERIFY(QDir().mkpath(folder));
    writeFile(folder + "/flash_download.cfg", "configuration\n\0text");
    writeFile(folder + "/partition_table.bin", "partition table");
    writeFile(folder + "/bootloader.bin", QByteArray("boot\0loader", 11));
    writeFile(folder + "/gnss_demo.bin", "application!");
    writeFile(folder + "/gnss_config.bin", "config");
}

// A record that holds the package before, so that what stays of it can be seen.
file earlier()
{
    return {"old boot", "old partition", "old app", "old config"};
}

QList<QByteArray> images(const file &package)
{
    return {package.bootloader_bin, package.partition_bin, package.app_bin, package.config_bin};
}

} // namespace

// Finding a package's folder and reading its files.
class TestFirmwarePackage : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void initTestCase();
    void folderOfAPath_data();
    void folderOfAPath();
    void recordStartsEmpty();
    void packageIsReadWhole();
    void sizesAreTracedInTheOrderOfReading();
    void configurationIsReadRaw();
    void emptyPathDoesNothing();
    void missingFileEndsTheReading_data();
    void missingFileEndsTheReading();
    void everyMissingFileHasItsMessage();
    void missingConfigurationStillMovesTheFolder();
    void folderInPlaceOfAnImageIsReported();
    void emptyImageIsAccepted();
    void pathWithoutFolderReadsTheWorkingDirectory();
    void namesBeyondAsciiAreRead();
    void largerImageIsReplacedByASmallerOne();
    void boxStandsBeforeThePage();
    void pageMayGoWhileTheBoxIsOpen();
    void openFilesYieldsNothing();
};

void TestFirmwarePackage::init()
{
    UnitTest::init();
    writePackage(kFolder);
    save_path.clear();
    filevalues.clear();
    downloadfile = file();
}

void TestFirmwarePackage::cleanup()
{
    QDir(kFolder).removeRecursively();
    UnitTest::cleanup();
}

// Before anything is read.
void TestFirmwarePackage::initTestCase()
{
    QVERIFY(save_path.isEmpty());
    QVERIFY(filevalues.isEmpty());
    QVERIFY(filevalues_list.isEmpty());
    QCOMPARE(images(downloadfile), (QList<QByteArray>{"", "", "", ""}));
}

void TestFirmwarePackage::folderOfAPath_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("folder");
    QTest::newRow("folder and file") << "/media/usb/flash_download.cfg"
                                     << "/media/usb/";
    QTest::newRow("relative") << "media/usb/file"
                              << "media/usb/";
    QTest::newRow("no folder") << "flash_download.cfg"
                               << "";
    QTest::newRow("ends in a slash") << "/media/usb/"
                                     << "/media/usb/";
    QTest::newRow("in the root") << "/file"
                                 << "/";
    QTest::newRow("root") << "/"
                          << "/";
    QTest::newRow("empty") << ""
                           << "";
    QTest::newRow("empty parts are kept") << "//media//usb/file"
                                          << "//media//usb/";
    QTest::newRow("dots stay") << "../a/./b"
                               << "../a/./";
}

void TestFirmwarePackage::folderOfAPath()
{
    QFETCH(QString, path);
    QFETCH(QString, folder);
    QCOMPARE(testmode::path_change(path), folder);
}

void TestFirmwarePackage::recordStartsEmpty()
{
    const file package;
    QCOMPARE(images(package), (QList<QByteArray>{"", "", "", ""}));
    const file named = {"0", "1", "2", "3"}; // the order of the fields is the images' index
    QCOMPARE(images(named), (QList<QByteArray>{"0", "1", "2", "3"}));
    static_assert(std::is_same_v<binfile, file>, "two names of one record");
}

void TestFirmwarePackage::packageIsReadWhole()
{
    gpsupdate page;
    file package = earlier();
    page.GetBinfile(kFolder + "/flash_download.cfg", &package);
    QCOMPARE(images(package),
             (QList<QByteArray>{QByteArray("boot\0loader", 11), "partition table", "application!",
                                "config"}));
    QCOMPARE(save_path, QStringLiteral("/run/unit/package/"));
    QCOMPARE(images(downloadfile), (QList<QByteArray>{"", "", "", ""})); // only the one asked for
}

void TestFirmwarePackage::sizesAreTracedInTheOrderOfReading()
{
    gpsupdate page;
    trace().clear();
    page.GetBinfile(kFolder + "/flash_download.cfg", &downloadfile);
    QCOMPARE(trace().payloads(),
             (QStringList{"partition_binfile:  15", "bootloader_binfile:  11", "app_binfile:  12",
                          "config_binfile:  6"}));
}

void TestFirmwarePackage::configurationIsReadRaw()
{
    const QByteArray raw("\xff\0{not: [read\r\n", 15);
    writeFile(kFolder + "/flash_download.cfg", raw);
    filevalues = "earlier";
    gpsupdate page;
    page.GetBinfile(kFolder + "/flash_download.cfg", &downloadfile);
    QCOMPARE(filevalues, raw);
    QVERIFY(filevalues_list.isEmpty());
}

void TestFirmwarePackage::emptyPathDoesNothing()
{
    save_path = "before/";
    filevalues = "before";
    gpsupdate page;
    trace().clear();
    file package = earlier();
    page.GetBinfile(QString(), &package);
    QCOMPARE(images(package), images(earlier()));
    QCOMPARE(save_path, QStringLiteral("before/"));
    QCOMPARE(filevalues, QByteArray("before"));
    QCOMPARE(trace().lines(), QStringList());
}

void TestFirmwarePackage::missingFileEndsTheReading_data()
{
    QTest::addColumn<QString>("missing");
    QTest::addColumn<QString>("message");
    QTest::addColumn<QList<QByteArray>>("left"); // boot loader, partition table, app, config
    const QByteArray boot("boot\0loader", 11);
    QTest::newRow("configuration")
        << "flash_download.cfg"
        << "Not open cfg_file!"
        << QList<QByteArray>{"old boot", "old partition", "old app", "old config"};
    QTest::newRow("partition table")
        << "partition_table.bin"
        << "Not open partition_file!"
        << QList<QByteArray>{"old boot", "old partition", "old app", "old config"};
    QTest::newRow("boot loader") << "bootloader.bin"
                                 << "Not open bootloader_file!"
                                 << QList<QByteArray>{"old boot", "partition table", "old app",
                                                      "old config"};
    QTest::newRow("application") << "gnss_demo.bin"
                                 << "Not open app_file!"
                                 << QList<QByteArray>{boot, "partition table", "old app",
                                                      "old config"};
    QTest::newRow("configuration image")
        << "gnss_config.bin"
        << "Not open cfg_path!"
        << QList<QByteArray>{boot, "partition table", "application!", "old config"};
}

void TestFirmwarePackage::missingFileEndsTheReading()
{
    QFETCH(QString, missing);
    QFETCH(QString, message);
    QFETCH(QList<QByteArray>, left);
    QVERIFY(QFile::remove(kFolder + "/" + missing));
    gpsupdate page;
    file package = earlier();
    filevalues = "earlier";
    boxes().expect("Error", message);
    page.GetBinfile(kFolder + "/flash_download.cfg", &package);
    QCOMPARE(images(package), left);
    QCOMPARE(save_path, QStringLiteral("/run/unit/package/"));
    QCOMPARE(filevalues == "earlier", missing == "flash_download.cfg");
}

void TestFirmwarePackage::everyMissingFileHasItsMessage()
{
    gpsupdate page;
    for (const char *message :
         {"Not open cfg_file!", "Not open partition_file!", "Not open bootloader_file!",
          "Not open app_file!", "Not open cfg_path!"})
        boxes().expect("Error", message);
    // what is missing first is what is reported: put the files back one by one
    const QString folder = "/run/unit/half";
    QDir().mkpath(folder);
    for (const char *name : {"flash_download.cfg", "partition_table.bin", "bootloader.bin",
                             "gnss_demo.bin", "gnss_config.bin"}) {
        page.GetBinfile(folder + "/flash_download.cfg", &downloadfile);
        QVERIFY(QFile::copy(kFolder + "/" + name, folder + "/" + name));
    }
    page.GetBinfile(folder + "/flash_download.cfg", &downloadfile);
    QCOMPARE(boxes().seen().size(), 5);
    QDir(folder).removeRecursively();
}

void TestFirmwarePackage::missingConfigurationStillMovesTheFolder()
{
    gpsupdate page;
    save_path = "before/";
    boxes().expect("Error", "Not open cfg_file!");
    page.GetBinfile("/media/nowhere/flash_download.cfg", &downloadfile);
    QCOMPARE(save_path, QStringLiteral("/media/nowhere/"));
}

void TestFirmwarePackage::folderInPlaceOfAnImageIsReported()
{
    QVERIFY(QFile::remove(kFolder + "/gnss_demo.bin"));
    QVERIFY(QDir().mkdir(kFolder + "/gnss_demo.bin"));
    gpsupdate page;
    boxes().expect("Error", "Not open app_file!");
    page.GetBinfile(kFolder + "/flash_download.cfg", &downloadfile);
    QCOMPARE(downloadfile.app_bin, QByteArray());
}

void TestFirmwarePackage::emptyImageIsAccepted()
{
    writeFile(kFolder + "/bootloader.bin", QByteArray());
    gpsupdate page;
    trace().clear();
    file package = earlier();
    page.GetBinfile(kFolder + "/flash_download.cfg", &package);
    QCOMPARE(images(package), (QList<QByteArray>{"", "partition table", "application!", "config"}));
    QCOMPARE(trace().payloads().value(1), QStringLiteral("bootloader_binfile:  0"));
}

void TestFirmwarePackage::pathWithoutFolderReadsTheWorkingDirectory()
{
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(kFolder));
    gpsupdate page;
    page.GetBinfile("flash_download.cfg", &downloadfile);
    QVERIFY(QDir::setCurrent(before));
    QCOMPARE(save_path, QString());
    QCOMPARE(downloadfile.app_bin, QByteArray("application!"));
    QCOMPARE(downloadfile.config_bin, QByteArray("config"));
}

void TestFirmwarePackage::namesBeyondAsciiAreRead()
{
    const QString folder = QStringLiteral("/run/unit/固件 é");
    writePackage(folder);
    QVERIFY(QFile::exists(QString::fromUtf8("/run/unit/\xe5\x9b\xba\xe4\xbb\xb6 \xc3\xa9")));
    gpsupdate page;
    page.GetBinfile(folder + "/flash_download.cfg", &downloadfile);
    QCOMPARE(downloadfile.config_bin, QByteArray("config"));
    QCOMPARE(save_path, folder + "/");
    QDir(folder).removeRecursively();
}

void TestFirmwarePackage::largerImageIsReplacedByASmallerOne()
{
    gpsupdate page;
    downloadfile.app_bin = QByteArray(100000, 'x');
    page.GetBinfile(kFolder + "/flash_download.cfg", &downloadfile);
    QCOMPARE(downloadfile.app_bin, QByteArray("application!"));
}

void TestFirmwarePackage::boxStandsBeforeThePage()
{
    gpsupdate page;
    page.show();
    boxes().expect("Error", "Not open cfg_file!");
    page.GetBinfile("/nowhere/flash_download.cfg", &downloadfile);
    const tests::ModalBoxes::Box box = boxes().seen().value(0);
    QCOMPARE(box.buttons, QStringList{"Close"});
    QCOMPARE(box.icon, QMessageBox::Information);
    QVERIFY(box.modal);
    QCOMPARE(box.parent, &page);
}

// The framework may destroy the window at any time.
void TestFirmwarePackage::pageMayGoWhileTheBoxIsOpen()
{
    auto *page = new gpsupdate;
    const QPointer<gpsupdate> guard = page;
    boxes().expect("Error", "Not open cfg_file!");
    boxes().onShown([page] { delete page; });
    page->on_pushButton_2_clicked(); // no package: "/flash_download.cfg"
    QVERIFY(guard.isNull());
    QCOMPARE(boxes().seen().size(), 1);
}

void TestFirmwarePackage::openFilesYieldsNothing()
{
    gpsupdate page;
    trace().clear();
    QCOMPARE(page.OpenFiles(), QString());
    QCOMPARE(trace().lines(), QStringList());
    QCOMPARE(bench::journal().texts(), QStringList());
}

TESTMODE_TEST_MAIN(TestFirmwarePackage)
#include "test_firmwarepackage.moc"
