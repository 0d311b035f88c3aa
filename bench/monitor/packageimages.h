#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>

namespace bench {

// One image of an update package: its file, and where an update writes it.
struct PackageImage
{
    QString file;
    quint32 address;
    QByteArray content; // empty where the file cannot be read
};

// The four images in the order in which an update writes them.
QVector<PackageImage> packageImages();

// The same with what `folder` holds of them.
QVector<PackageImage> readPackage(const QString &folder);

} // namespace bench
