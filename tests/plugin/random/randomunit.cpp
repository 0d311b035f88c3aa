#include "randomunit.h"

#include "bench/unit/gnssstate.h"
#include "bench/unit/headunit.h"
#include "bench/unit/systemstate.h"
#include "bench/unit/usbstate.h"
#include "gpsservice/gpsservice.h"

#include <QDir>
#include <QFile>
#include <QVector>

#include <algorithm>

using bench::Fault;
using bench::unit;
using gpsservice::GpsService;

namespace tests {

namespace {

const QString kPort = QStringLiteral("/dev/ttyS4");
const QString kPackage = QStringLiteral("/media/package");
const QString kDisk = QStringLiteral("/media/disk");

// A package that is flashed in a moment: none of the images fills its last packet.
struct Image
{
    QString file;
    quint32 address;
    QByteArray bytes;
};

const QVector<Image> &images()
{
    static const QVector<Image> all = {
        {kPackage + "/bootloader.bin", 0x08030000, QByteArray(5000, 'b')},
        {kPackage + "/partition_table.bin", 0x08000000, QByteArray(100, 'p')},
        {kPackage + "/gnss_demo.bin", 0x08013000, QByteArray(8193, 'a')},
        {kPackage + "/gnss_config.bin", 0x083FF000, QByteArray(1, 'c')},
    };
    return all;
}

void write(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(path.left(path.lastIndexOf('/')));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        qFatal("cannot write %s", qPrintable(path));
    file.write(bytes);
}

// Files that come, go and change; what stands in them when all is well.
struct UnitFile
{
    QString path;
    QByteArray bytes;
};

QVector<UnitFile> unitFiles()
{
    QVector<UnitFile> files = {
        {"/sys/devices/platform/ehci-platform.2/usb_speed_switch", "1\n"},
        {"/sys/module/usbcore/parameters/usb_logo_test_start", "0\n"},
        {"/var/ipt.log", "12.3 Mbit/s\n"},
        {kDisk + "/gps.bin", "package of the unit's own updater"},
        {kPackage + "/flash_download.cfg", "# configuration\n"},
    };
    for (const Image &image : images())
        files.append({image.file, image.bytes});
    return files;
}

} // namespace

RandomUnit::RandomUnit(Dice *throws) : dice(throws)
{
    bench::ReceiverSettings settings = receiver.settings();
    settings.keepLineRate = false; // the presses do not wait for a line
    receiver.setSettings(settings);
    QObject::connect(
        &unit(), &bench::HeadUnit::gnssResetChanged, &receiver,
        [this](bool asserted) { receiver.setReset(asserted); }, Qt::DirectConnection);
    heal();
}

RandomUnit::~RandomUnit()
{
    QFile::remove(kPort);
}

void RandomUnit::heal()
{
    unit().change()->gnss.moduleKind = 1;
    unit().change()->gnss.versionDelay = 1;
    unit().change()->usb.networkTests.runDuration = std::chrono::milliseconds(1);
    unit().change()->system.updateFolder = kPackage;
    for (const UnitFile &file : unitFiles())
        write(file.path, file.bytes);
    QDir().mkpath(QStringLiteral("/media/flash/nvm"));
    QFile::rename(QStringLiteral("/dev/mem.away"), QStringLiteral("/dev/mem"));

    bench::ReceiverSettings settings = receiver.settings();
    settings.powered = true;
    receiver.setSettings(settings);
    // An update that has been waiting for it gets on, or ends; also one that an XOFF has stopped,
    // which any byte releases.
    Fault release;
    release.kind = Fault::Kind::FlowByte;
    release.value = 0x11;
    release.step = bench::ReceiverStep::Sync;
    receiver.setFaults({release});
    attachReceiver();
    receiver.setReset(true);
    receiver.setReset(false);
}

void RandomUnit::attachReceiver()
{
    QString error;
    const QString line = receiver.open(&error);
    QFile::remove(kPort);
    if (line.isEmpty() || !QFile::link(line, kPort))
        qFatal("no receiver on the port: %s", qPrintable(error));
}

bool RandomUnit::flashHoldsPackage() const
{
    return std::all_of(images().begin(), images().end(), [this](const Image &image) {
        return receiver.flash(image.address, image.bytes.size()) == image.bytes;
    });
}

QString RandomUnit::changeState()
{
    bench::UnitChange change = unit().change();
    bench::UsbPortState &port = change->usb.ports[dice->below(2)];
    switch (dice->below(8)) {
    case 0:
        change->gnss.moduleKind = dice->pick(QVector<int>{1, 1, 1, 0, 2, -1});
        return QStringLiteral("module of kind %1").arg(unit().gnss.moduleKind);
    case 1:
        port.disk = !port.disk;
        port.path = dice->pick(QStringList{kDisk, "/media/gone", ""});
        return QStringLiteral("disk in %1: %2").arg(port.path).arg(port.disk);
    case 2:
        port.chargingMode = dice->below(5) - 1;
        return QStringLiteral("charging mode %1").arg(port.chargingMode);
    case 3:
        change->usb.certification = dice->pick(QVector<int>{77, 79, 84, 0});
        return QStringLiteral("certification %1").arg(unit().usb.certification);
    case 4:
        change->system.updateFolder = dice->pick(QStringList{kPackage, kPackage, "/gone", ""});
        return QStringLiteral("package in \"%1\"").arg(unit().system.updateFolder);
    case 5:
        change->gnss.satellites.resize(dice->below(41));
        return QStringLiteral("%1 satellites").arg(unit().gnss.satellites.size());
    case 6:
        change->gnss.info.satellitesInView = dice->below(40) - 2;
        return QStringLiteral("%1 satellites in the record").arg(unit().gnss.info.satellitesInView);
    default:
        return changeNetworkTests();
    }
}

QString RandomUnit::changeNetworkTests()
{
    bench::UnitChange change = unit().change();
    bench::NetworkTestState &tests = change->usb.networkTests;
    tests.log = dice->pick(QStringList{"", "12.3 Mbit/s\n", QString(3000, 'x')});
    tests.writesLog = !dice->oneIn(3);
    const QString operation =
        dice->pick(QStringList{"startTcpServer", "startUdpServer", "stopNetTest",
                               "startUdp50Client", "startUdp100Client", "startTcpClient"});
    tests.results[operation] = dice->below(3) - 1;
    return QStringLiteral("%1 returns %2").arg(operation).arg(tests.results[operation]);
}

QString RandomUnit::letServiceSpeak()
{
    GpsService *service = GpsService::instance();
    switch (dice->below(3)) {
    case 0:
        emit service->modualApatationCompelete(dice->below(4) - 1);
        return QStringLiteral("the service has found the module's kind");
    case 1:
        emit service->gpsFirmwareVersion(
            dice->pick(QStringList{"", "SIM-GNSS 1.0", QString(500, 'V')}));
        return QStringLiteral("the service tells the version");
    default:
        krnmINFO info = unit().gnss.info;
        info.satellitesInUse = dice->below(40) - 2;
        info.speed = dice->below(1000) / 7.0;
        info.utcMonth = dice->below(100) - 1;
        emit service->krnmInfoRefresh(info);
        return QStringLiteral("the service sends a record");
    }
}

QString RandomUnit::changeFile()
{
    if (dice->oneIn(8)) {
        const bool away = QFile::rename("/dev/mem", "/dev/mem.away");
        if (!away)
            QFile::rename("/dev/mem.away", "/dev/mem");
        return away ? QStringLiteral("no memory device") : QStringLiteral("a memory device");
    }
    if (dice->oneIn(8)) {
        QDir flash(QStringLiteral("/media/flash/nvm"));
        const bool there = flash.removeRecursively() && dice->oneIn(2) && flash.mkpath(".");
        return there ? QStringLiteral("an empty flash folder") : QStringLiteral("no flash folder");
    }
    const UnitFile file = dice->pick(unitFiles());
    switch (dice->below(4)) {
    case 0:
        QFile::remove(file.path);
        return QStringLiteral("no file %1").arg(file.path);
    case 1:
        write(file.path, QByteArray());
        return QStringLiteral("empty file %1").arg(file.path);
    case 2:
        write(file.path, QByteArray(3000, '\xFE'));
        return QStringLiteral("noise in %1").arg(file.path);
    default:
        write(file.path, file.bytes);
        return QStringLiteral("good file %1").arg(file.path);
    }
}

QString RandomUnit::changeReceiver()
{
    // Rare: it costs an update the longest of all waits, nearly two minutes. The line stays up, as
    // a real one does: on one that hangs up, the waits stretch to many minutes.
    if (dice->oneIn(40)) {
        bench::ReceiverSettings settings = receiver.settings();
        settings.powered = false;
        receiver.setSettings(settings);
        return QStringLiteral("the receiver is off");
    }
    switch (dice->below(6)) {
    case 0:
        QFile::remove(kPort);
        return QStringLiteral("no port");
    case 1:
        QFile::remove(kPort);
        write(kPort, "not a serial device");
        return QStringLiteral("a port that is a file");
    case 2:
    case 3:
        heal();
        return QStringLiteral("all is well");
    default:
        return spoilDialogue();
    }
}

QString RandomUnit::spoilDialogue()
{
    Fault fault;
    fault.kind = dice->pick(QVector<Fault::Kind>{
        Fault::Kind::Reset, Fault::Kind::Garbage, Fault::Kind::FlowByte, Fault::Kind::Status,
        Fault::Kind::Checksum, Fault::Kind::Acknowledge, Fault::Kind::Nack, Fault::Kind::NoWrite,
        Fault::Kind::Repeat, Fault::Kind::Drop, Fault::Kind::Double, Fault::Kind::Flip,
        Fault::Kind::Late, Fault::Kind::Swap});
    if (dice->oneIn(2))
        fault.step = bench::stepFromName(dice->pick(bench::stepNames()));
    fault.direction = dice->oneIn(2) ? Fault::Direction::ToHost : Fault::Direction::ToReceiver;
    fault.times = 1 + dice->below(3);
    attachReceiver();
    receiver.setFaults({fault}, static_cast<quint32>(dice->below(1000)));
    return QStringLiteral("receiver with the fault %1").arg(Fault::kindName(fault.kind));
}

} // namespace tests
