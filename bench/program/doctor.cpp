#include "doctor.h"

#include "appearance.h"

#include "bench/root/bubblewrap.h"
#include "bench/root/exitstatus.h"
#include "bench/root/privateroot.h"

#include <QApplication>
#include <QFontDatabase>
#include <QProcess>
#include <QStandardPaths>
#include <QVersionNumber>

#include <cstdio>
#include <filesystem>

#include <unistd.h>

namespace bench {

namespace {

// What was looked at, and what was found: words where all is well, else the trouble and the cure.
struct Finding
{
    const char *what;
    bool well;
    std::string words;
};

const QString kBubblewrap = QStringLiteral("bwrap");

// The oldest that the bench was tried with.
const QVersionNumber kOldestBubblewrap(0, 8, 0);
const QVersionNumber kOldestQt(5, 15, 0);

Finding bubblewrap()
{
    const QString program = QStandardPaths::findExecutable(kBubblewrap);
    return {"bubblewrap", !program.isEmpty(),
            program.isEmpty() ? "bwrap is not in PATH; install the package bubblewrap"
                              : program.toStdString()};
}

Finding namespaces()
{
    const std::string refused = refusal(rootCommand(RootLayout()));
    return {"namespaces", refused.empty(),
            refused.empty() ? "a private root can be made" : refused};
}

Finding fonts()
{
    const QStringList chinese = QFontDatabase().families(QFontDatabase::SimplifiedChinese);
    return {"fonts", !chinese.isEmpty(),
            chinese.isEmpty()
                ? "no font with Chinese characters; install the package fonts-wqy-microhei"
                : chinese.first().toStdString() + " has Chinese characters"};
}

Finding display()
{
    if (!hasDisplay())
        return {"display", true, "none; --flash, --tour and --monitor need none"};
    return {"display", isOnDisplay(),
            isOnDisplay() ? QGuiApplication::platformName().toStdString()
                          : "cannot be opened; see to DISPLAY or WAYLAND_DISPLAY, or unset them"};
}

// Where other programs tell that they use a serial device.
Finding lockFolders()
{
    for (const char *folder : {"/run/lock", "/var/lock"}) {
        if (::access(folder, R_OK | X_OK) == 0)
            return {"lock folders", true, folder};
    }
    return {"lock folders", false,
            "neither /run/lock nor /var/lock can be read, so a serial device in use is not seen; "
            "make /run/lock, readable for all"};
}

// Not opened: that would move the modem lines of whatever hangs on the adapter.
Finding serialDevices()
{
    std::string usable;
    std::error_code error;
    for (const auto &entry : std::filesystem::directory_iterator("/dev", error)) {
        const std::string name = entry.path().filename().string();
        if (name.rfind("ttyUSB", 0) != 0 && name.rfind("ttyACM", 0) != 0)
            continue;
        if (::access(entry.path().c_str(), R_OK | W_OK) != 0)
            return {"serial", false,
                    entry.path().string()
                        + " may not be read and written; join its group (often dialout)"};
        usable += (usable.empty() ? "" : ", ") + entry.path().string();
    }
    return {"serial", true, usable.empty() ? "no adapter is plugged in" : usable};
}

// What bwrap says of itself; null if it says nothing.
QVersionNumber versionOfBubblewrap()
{
    QProcess process;
    process.start(kBubblewrap, {QStringLiteral("--version")});
    process.waitForFinished();
    const QString said = QString::fromUtf8(process.readAllStandardOutput()).trimmed();
    return QVersionNumber::fromString(said.section(QLatin1Char(' '), -1));
}

Finding versions()
{
    const QVersionNumber qt = QVersionNumber::fromString(QString::fromLatin1(qVersion()));
    const QVersionNumber root = versionOfBubblewrap();
    const std::string words = "testmode-bench " TESTMODE_VERSION ", Qt "
        + qt.toString().toStdString() + ", bubblewrap "
        + (root.isNull() ? "unknown" : root.toString().toStdString());
    if (qt < kOldestQt || root < kOldestBubblewrap)
        return {"versions", false, words + "; wanted are Qt 5.15 and bubblewrap 0.8.0 or later"};
    return {"versions", true, words};
}

} // namespace

int examineMachine()
{
    choosePlatform();
    char name[] = "testmode-bench";
    char *words[] = {name, nullptr};
    int count = 1;
    const QApplication application(count, words); // for fonts and display

    int status = kDone;
    for (const auto look :
         {bubblewrap, namespaces, fonts, display, lockFolders, serialDevices, versions}) {
        const Finding finding = look();
        std::printf("%-3s %-13s %s\n", finding.well ? "ok" : "NO", finding.what,
                    finding.words.c_str());
        if (!finding.well)
            status = kPrivateRootRefused;
    }
    return status;
}

} // namespace bench
