#include "stagedfiles.h"
#include "tests/support/unittest.h"

#include "bench/root/privateroot.h"
#include "bench/unit/gnssstate.h"
#include "bench/unit/systemstate.h"
#include "bench/unit/usbstate.h"
#include "plugin/mainwidget.h"

#include <QApplication>

#include <cerrno>
#include <cstdio>
#include <functional>

#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

using bench::journal;
using testmode::MainWidget;
using tests::kMarker;
using tests::kSlot;
using tests::kStaged;
using tests::plugIn;
using tests::readFile;
using tests::writeFile;

namespace {

constexpr size_t kFlashBytes = 1024 * 1024;
constexpr uid_t kNobody = 65534;

const char kNvm[] = "/media/flash/nvm";
const char kPackage0[] = "/media/usb0/gps.bin";

const QString kCopy0 = QStringLiteral("shell: cp /media/usb0/gps.bin /media/flash/nvm/");
const QString kNoFile = QStringLiteral("Error: can not open file");
const QString kNoDisk = QStringLiteral("Error: No USB Device");
const QString kNoCopy = QStringLiteral("Error: file not copy");

const QByteArray kNotThere = "<not there>";

void expectZero(int result)
{
    if (result != 0)
        qFatal("the case cannot be made");
}

void linkTo(const char *path, const char *target)
{
    std::remove(path);
    expectZero(::symlink(target, path));
}

void mountAt(int port, const QString &path)
{
    bench::unit().change()->usb.ports[port].disk = true;
    bench::unit().change()->usb.ports[port].path = path;
}

// Until the flash takes no more byte.
void fillFlash()
{
    std::FILE *filler = std::fopen("/media/flash/filler", "w");
    expectZero(filler == nullptr);
    const QByteArray block(4096, 'x');
    while (std::fwrite(block.constData(), 1, block.size(), filler) > 0
           && std::fflush(filler) == 0) { }
    std::fclose(filler);
}

// A folder of the machine's own, which the private root shows read-only.
void makeFlashReadOnly()
{
    QDir(kNvm).removeRecursively();
    linkTo(kNvm, "/usr/lib");
}

// What happens beyond the marker's "true" in flash, the watchdog and the questions for a disk.
struct Reaction
{
    QStringList popups;
    QStringList commands;
    QByteArray staged; // what stands in flash at the end
    int resets;
};

struct Row
{
    const char *what;
    std::function<void()> prepare;
    Reaction reaction;
};

// A command that leaves no file in flash.
Reaction notCopied(const QString &command = kCopy0)
{
    return {{kNoCopy}, {command, "shell: sync"}, kNotThere, 0};
}

// Kept: what counts is that a file stands in flash, not that it is whole.
Reaction staged(const QByteArray &content, const QStringList &popups = {})
{
    return {popups, {kCopy0, "shell: sync"}, content, 1};
}

// The disk on port 0 is mounted at a path that the shell does not take as one word or as it is.
Row oddPath(const char *what, const QString &path, const QString &command)
{
    return {what,
            [path] {
                QDir().mkpath(path);
                writeFile(path + "/gps.bin", "package");
                mountAt(0, path);
            },
            notCopied("shell: cp " + command + "/gps.bin /media/flash/nvm/")};
}

const QVector<Row> kRows = {
    // disks
    {"disks on both ports",
     [] {
         plugIn(0, "first");
         plugIn(1, "second");
     },
     staged("first")},
    {"disks on both ports, the first without a package",
     [] {
         plugIn(0);
         plugIn(1, "second");
     },
     notCopied()},
    {"no disk", [] {}, {{kNoDisk}, {}, kNotThere, 0}},
    {"a disk without a mount path", [] { mountAt(0, QString()); }, {{kNoDisk}, {}, kNotThere, 0}},
    {"a disk without a mount path before one with a package",
     [] {
         mountAt(0, QString());
         plugIn(1, "second");
     },
     {{kNoDisk}, {}, kNotThere, 0}},
    {"a disk on the second port without a mount path",
     [] { mountAt(1, QString()); },
     {{kNoDisk}, {}, kNotThere, 0}},
    {"a disk that is gone with its mount folder",
     [] {
         plugIn(0, "package");
         QDir("/media/usb0").removeRecursively();
     },
     notCopied()},

    // the package
    {"no package", [] { plugIn(0); }, notCopied()},
    {"no package, but one of an earlier attempt in flash",
     [] {
         plugIn(0);
         writeFile(kStaged, "earlier");
     },
     staged("earlier")},
    {"an empty package",
     [] {
         plugIn(0);
         writeFile(kPackage0, "");
     },
     staged("")},
    {"a folder in its place",
     [] {
         plugIn(0);
         QDir().mkdir(kPackage0);
     },
     notCopied()},
    {"a link to nowhere",
     [] {
         plugIn(0);
         linkTo(kPackage0, "/media/nowhere");
     },
     notCopied()},
    {"a device without content",
     [] {
         plugIn(0);
         linkTo(kPackage0, "/dev/null");
     },
     staged("")},
    {"a device without an end",
     [] {
         plugIn(0);
         linkTo(kPackage0, "/dev/zero");
     },
     staged(QByteArray(kFlashBytes - 4096, '\0'))}, // a block is the marker's
    {"a package that cannot be read",
     [] {
         plugIn(0);
         linkTo(kPackage0, "/proc/self/mem"); // its first page: EIO
     },
     staged("")},
    {"a package larger than the flash", [] { plugIn(0, QByteArray(3 << 20, 'p')); },
     staged(QByteArray(kFlashBytes - 4096, 'p'))},

    // names
    oddPath("a blank in the path", "/media/usb 0", "/media/usb 0"),
    oddPath("a double quote in the path", "/media/usb\"0", "/media/usb\"0"),
    oddPath("a single quote in the path", "/media/usb'0", "/media/usb'0"),
    oddPath("a dollar sign in the path", "/media/usb$0", "/media/usb$0"),
    // a byte that is no UTF-8, as the journal shows it
    oddPath("a path of Latin-1, whose name on the disk is UTF-8", "/media/M\u00fcller",
            "/media/M\ufffdller"),
    oddPath("a path beyond Latin-1", QStringLiteral("/media/固件"), "/media/??"),

    // the flash
    {"a full flash",
     [] {
         plugIn(0, "package");
         fillFlash();
     },
     staged("", {kNoFile})},
    {"a full flash with a package of an earlier attempt",
     [] {
         plugIn(0, "package");
         writeFile(kStaged, "earlier");
         fillFlash();
     },
     staged("package", {kNoFile})}, // in the block of the earlier one
    {"a full flash and no package",
     [] {
         plugIn(0);
         fillFlash();
     },
     {{kNoFile, kNoCopy}, {kCopy0, "shell: sync"}, kNotThere, 0}},
    {"a full flash and no disk", fillFlash, {{kNoFile, kNoDisk}, {}, kNotThere, 0}},
    {"a marker that takes no byte",
     [] {
         plugIn(0, "package");
         linkTo(kMarker, "/dev/full");
     },
     staged("package", {kNoFile})},
    {"a read-only flash",
     [] {
         plugIn(0, "package");
         makeFlashReadOnly();
     },
     {{kNoFile, kNoCopy}, {kCopy0, "shell: sync"}, kNotThere, 0}},
    {"a flash without its folder",
     [] {
         plugIn(0, "package");
         QDir(kNvm).removeRecursively();
     },
     {{kNoFile, kNoCopy}, {kCopy0, "shell: sync"}, kNotThere, 0}},
};

// Set while the close of the marker fails: some file systems tell only then that nothing was kept.
bool closeFails = false;

bool isTheMarker(int descriptor)
{
    const QByteArray entry = "/proc/self/fd/" + QByteArray::number(descriptor);
    char path[sizeof kMarker] = {};
    return ::readlink(entry.constData(), path, sizeof path) == ssize_t(qstrlen(kMarker))
        && qstrncmp(path, kMarker, sizeof kMarker - 1) == 0;
}

} // namespace

// The program's own comes before the C library's, for the libraries too.
extern "C" int close(int descriptor)
{
    const bool fails = closeFails && isTheMarker(descriptor);
    const auto result = static_cast<int>(::syscall(SYS_close, descriptor));
    if (!fails)
        return result;
    errno = EIO;
    return -1;
}

// The staged update with packages, disks and a flash that are not as they should be, on a unit
// whose flash holds 1 MiB.
class TestBadStagedPackages : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void rowHasItsReaction_data();
    void rowHasItsReaction();
    void markerThatFailsAtItsEndIsReported();
    void packageWithoutPermissionIsNotCopied();

private:
    void stage();
    void verifyReaction(const Reaction &reaction);
};

void TestBadStagedPackages::init()
{
    UnitTest::init();
    bench::unit().change()->gnss.moduleKind = 0;
    QVERIFY(QDir().mkpath(kNvm));
    QCOMPARE(::chmod(kNvm, 0777), 0);
}

void TestBadStagedPackages::cleanup()
{
    std::remove("/media/flash/filler");
    std::remove(kNvm); // where it is a link
    QDir(kNvm).removeRecursively();
    const QStringList disks = QDir("/media").entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString &disk : disks) {
        if (disk != "flash")
            QDir("/media/" + disk).removeRecursively();
    }
    UnitTest::cleanup();
}

void TestBadStagedPackages::stage()
{
    MainWidget host(nullptr);
    host.show();
    journal().clear();
    trace().clear();
    host.onShowGpsUpdateWidget();
    QVERIFY(host.findChild<QWidget *>("testEntryWidget")->isVisible());
    QVERIFY(host.findChild<QWidget *>("Gpsupdate") == nullptr);
}

void TestBadStagedPackages::verifyReaction(const Reaction &reaction)
{
    QStringList popups;
    for (const QString &text : reaction.popups)
        popups << "OutputLogsUsb.tipsMessagePopup(\"" + text + "\")";
    const QStringList calls = journal().texts();
    QCOMPARE(calls.filter("Popup"), popups);
    QCOMPARE(calls.filter("shell: "), reaction.commands);
    QCOMPARE(bench::unit().system.systemResets, reaction.resets);
    QCOMPARE(calls.filter("setResetSystem(1)").size(), reaction.resets);
    QCOMPARE(readFile(kStaged), reaction.staged);

    // the same every time
    QCOMPARE(
        calls.mid(0, 2),
        (QStringList{"GpsService.getModualApatation()", "McuService.setWatchDogEnable(false)"}));
    QVERIFY(!bench::unit().system.watchdogEnabled);
    QCOMPARE(calls.filter("McuService").size(), 1 + reaction.resets);
    const int known = 2 + popups.size() + reaction.commands.size() + reaction.resets;
    QCOMPARE(calls.size(), known + calls.filter("DeviceManager").size());
    QStringList traced = {"========enter RX452 update============"};
    if (reaction.popups.contains(kNoFile))
        traced << "==can not open file===";
    else
        QCOMPARE(readFile(kMarker), QByteArray("true"));
    if (reaction.popups.contains(kNoCopy))
        traced << "===file not copy========";
    QCOMPARE(trace().payloads(), traced);
    for (const QString &function : tracedFunctions())
        QCOMPARE(function, kSlot);
}

void TestBadStagedPackages::rowHasItsReaction_data()
{
    QTest::addColumn<int>("row");
    for (int row = 0; row < kRows.size(); ++row)
        QTest::newRow(kRows.at(row).what) << row;
}

void TestBadStagedPackages::rowHasItsReaction()
{
    QFETCH(int, row);
    kRows.at(row).prepare();
    stage();
    verifyReaction(kRows.at(row).reaction);
}

void TestBadStagedPackages::markerThatFailsAtItsEndIsReported()
{
    plugIn(0, "package");
    closeFails = true;
    stage();
    closeFails = false;
    verifyReaction(staged("package", {kNoFile}));
}

// For the superuser no file is without permission: the commands run as another user. All three ids,
// because a shell gives an effective one of its own back.
void TestBadStagedPackages::packageWithoutPermissionIsNotCopied()
{
    plugIn(0, "package");
    QCOMPARE(::chmod(kPackage0, 0), 0);
    const bool superuser = ::geteuid() == 0;
    if (superuser)
        QCOMPARE(::setresuid(kNobody, kNobody, 0), 0);
    stage();
    if (superuser)
        QCOMPARE(::setresuid(0, 0, 0), 0);
    verifyReaction(notCopied());
}

int main(int argc, char **argv)
{
    bench::RootLayout layout;
    layout.flashBytes = kFlashBytes;
    bench::enterPrivateRoot(argv, layout);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("LC_ALL", "C.UTF-8");
    QApplication application(argc, argv);
    TestBadStagedPackages test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_badstagedpackages.moc"
