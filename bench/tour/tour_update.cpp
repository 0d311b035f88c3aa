#include "tour.h"

#include "bench/flash/flashcomparison.h"

#include <QJsonArray>

namespace bench {

namespace {

// A byte on the line is ten bits.
constexpr double kLineBytesPerSecond = 921600 / 10.0;

} // namespace

void Tour::update()
{
    const QString start = QStringLiteral("pushButton_3");
    step(QStringLiteral("menu: press \"GPS Update\""), [this] {
        openMenu();
        setUnit(QStringLiteral("gnss.module_kind"), 1);
        click(QStringLiteral("key_gps_update"));
        waitFor(QStringLiteral("Gpsupdate"), QStringLiteral("visible"), true);
        return QStringLiteral("the update page is shown");
    });
    step(QStringLiteral("update page: press \"Check\""), [this] {
        click(QStringLiteral("Gpsupdate/pushButton"));
        waitFor(QStringLiteral("lineEdit_2"), QStringLiteral("text"), QStringLiteral("OK"));
        return QStringLiteral("a package is there: OK");
    });
    step(QStringLiteral("update page: press \"选择\""), [this] {
        click(QStringLiteral("pushButton_2"));
        waitFor(QStringLiteral("lineEdit"), QStringLiteral("text"),
                QStringLiteral("/media/update/flash_download.cfg"));
        return textOf(QStringLiteral("lineEdit"));
    });
    step(QStringLiteral("update page: press \"开始\""), [this, start] {
        click(start);
        waitFor(start, QStringLiteral("enabled"), false);
        call(QStringLiteral("receiver.wait"),
             {{"phase", QStringLiteral("stage-2-writing")}, {"timeout_ms", 60000}});
        picture(QStringLiteral("update-running"));
        return QStringLiteral("the receiver takes the first image");
    });
    step(QStringLiteral("update page: wait for the result"), [this, start] {
        waitFor(start, QStringLiteral("enabled"), true, 120);
        picture(QStringLiteral("update"));
        const QString log = textOf(QStringLiteral("textBrowser"));
        expect(log.contains(QLatin1String("succed")) && !log.contains(QLatin1String("failed")),
               QStringLiteral("the page says: %1").arg(log));
        return log.section(QLatin1Char('\n'), -1).trimmed();
    });
    step(QStringLiteral("receiver: the phases of the update"), [this] { return phaseTimes(); });
    step(QStringLiteral("receiver: the rate at which images came"), [this] { return imageRate(); });
    step(QStringLiteral("receiver: compare the flash with the package"),
         [this] { return compareFlash(); });
}

// The receiver's own clock of what it went through since its reset.
QString Tour::phaseTimes()
{
    const QJsonArray phases =
        call(QStringLiteral("receiver.state")).toObject().value("phases").toArray();
    expect(!phases.isEmpty(), QStringLiteral("the receiver knows of no phase"));
    QString seen;
    for (const QJsonValue &value : phases) {
        const QJsonObject phase = value.toObject();
        seen += QStringLiteral("\n        %1 %2 s")
                    .arg(phase.value("phase").toString(), -22)
                    .arg(phase.value("milliseconds").toDouble() / 1000.0, 7, 'f', 3);
    }
    return QStringLiteral("%1 phases%2").arg(phases.size()).arg(seen);
}

QString Tour::imageRate()
{
    const double rate = call(QStringLiteral("receiver.state"))
                            .toObject()
                            .value("image_bytes_per_second")
                            .toDouble();
    expect(rate > 0.0, QStringLiteral("no image was written"));
    return QStringLiteral("%1 bytes/s, %2 % of the line's %3")
        .arg(rate, 0, 'f', 0)
        .arg(100.0 * rate / kLineBytesPerSecond, 0, 'f', 1)
        .arg(kLineBytesPerSecond, 0, 'f', 0);
}

QString Tour::compareFlash()
{
    QString seen;
    for (const ImageComparison &image : bench::compareFlash(&caller)) {
        seen += QStringLiteral("\n        0x%1 %2 %3 bytes\n          file  %4\n          flash %5")
                    .arg(image.address, 8, 16, QLatin1Char('0'))
                    .arg(image.name)
                    .arg(image.bytes)
                    .arg(image.fileSum, image.flashSum);
        expect(image.equal, QStringLiteral("the flash differs from %1%2").arg(image.name, seen));
    }
    return QStringLiteral("equal, SHA-256 of both:") + seen;
}

// The staged path resets the unit: the window that comes back is a new one.
void Tour::stagedUpdate()
{
    step(QStringLiteral("menu: press \"GPS Update\" with a module that the unit's updater flashes, "
                        "a disk on USB port 1"),
         [this] {
             openMenu();
             const QJsonObject package{
                 {"path", QStringLiteral("/media/usb1/gps.bin")},
                 {"text", QStringLiteral("package for the unit's updater\n")}};
             call(QStringLiteral("unit.file.write"), package);
             setUnit(QStringLiteral("usb.1.path"), QStringLiteral("/media/usb1"));
             setUnit(QStringLiteral("usb.1.disk"), true);
             setUnit(QStringLiteral("gnss.module_kind"), 0);
             markJournal();
             click(QStringLiteral("key_gps_update"));
             expectJournal({
                 QStringLiteral("McuService.setWatchDogEnable(false)"),
                 QStringLiteral("DeviceManager.isUsbDiskDeviceExist(1)"),
                 QStringLiteral("DeviceManager.usbPath(1)"),
                 QStringLiteral("shell: cp /media/usb1/gps.bin /media/flash/nvm/"),
                 QStringLiteral("shell: sync"),
                 QStringLiteral("McuService.setResetSystem(1)"),
             });
             const QString staged = call(QStringLiteral("unit.file.read"),
                                         {{"path", QStringLiteral("/media/flash/nvm/gps.bin")}})
                                        .toObject()
                                        .value("text")
                                        .toString();
             expect(staged == package.value("text").toString(),
                    QStringLiteral("the staged copy differs"));
             return QStringLiteral("gps.bin staged, marker written, unit reset");
         });
    step(QStringLiteral("the unit starts anew"), [this] {
        awaitRestart();
        setUnit(QStringLiteral("gnss.module_kind"), 1);
        setUnit(QStringLiteral("usb.1.disk"), false);
        return QStringLiteral("the menu is shown in a new window");
    });
}

} // namespace bench
