#pragma once

#include "bench/unit/headunit.h"
#include "bench/unit/usbstate.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QString>
#include <QtTest>

// The files of the staged update, and the disks that a package comes from.
namespace tests {

constexpr char kMarker[] = "/media/flash/nvm/gpsupdate.cfg";
constexpr char kStaged[] = "/media/flash/nvm/gps.bin";

// Every line of this way is the slot's own.
const QString kSlot = QStringLiteral("void testmode::MainWidget::onShowGpsUpdateWidget()");

inline void writeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    QVERIFY2(file.open(QIODevice::WriteOnly), qPrintable(path));
    QCOMPARE(file.write(content), qint64(content.size()));
}

inline QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<not there>");
}

// A disk on a port, empty or with a package.
inline void plugIn(int port, const QByteArray &package = QByteArray())
{
    const QString folder = QStringLiteral("/media/usb%1").arg(port);
    QDir().mkpath(folder);
    if (!package.isEmpty())
        writeFile(folder + "/gps.bin", package);
    bench::unit().change()->usb.ports[port].disk = true;
    bench::unit().change()->usb.ports[port].path = folder;
}

} // namespace tests
