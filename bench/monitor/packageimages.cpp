#include "packageimages.h"

#include <QDir>
#include <QFile>

namespace bench {

QVector<PackageImage> packageImages()
{
    return {
        {QStringLiteral("bootloader.bin"), 0x08030000, {}},
        {QStringLiteral("partition_table.bin"), 0x08000000, {}},
        {QStringLiteral("gnss_demo.bin"), 0x08013000, {}},
        {QStringLiteral("gnss_config.bin"), 0x083FF000, {}},
    };
}

QVector<PackageImage> readPackage(const QString &folder)
{
    QVector<PackageImage> images = packageImages();
    for (PackageImage &image : images) {
        QFile file(QDir(folder).filePath(image.file));
        if (file.open(QIODevice::ReadOnly))
            image.content = file.readAll();
    }
    return images;
}

} // namespace bench
