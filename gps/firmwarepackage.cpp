#include "firmwarepackage.h"

#include "gpsupdate.h"
#include "tools/debugtrace.h"

#include <QFile>
#include <QStringList>

file downloadfile;
QString save_path;
QByteArray filevalues;
QList<QByteArray> filevalues_list;

namespace testmode {

namespace {

// One image of a package, in the order in which a package is read: what the user is told and what
// is replaced when a later one is missing depend on it.
struct ImageSource
{
    const char *name;
    QByteArray file::*image;
    const char *complaint;
    const char *traced;
};

constexpr ImageSource kImages[] = {
    {"partition_table.bin", &file::partition_bin, "Not open partition_file!",
     "partition_binfile: "},
    {"bootloader.bin", &file::bootloader_bin, "Not open bootloader_file!", "bootloader_binfile: "},
    {"gnss_demo.bin", &file::app_bin, "Not open app_file!", "app_binfile: "},
    {"gnss_config.bin", &file::config_bin, "Not open cfg_path!", "config_binfile: "},
};

// Replaces `content` by the whole file; leaves it as it is when the file cannot be opened.
bool readWhole(const QString &path, QByteArray *content)
{
    QFile source(path);
    if (!source.open(QIODevice::ReadOnly))
        return false;
    *content = source.readAll();
    source.close();
    return true;
}

} // namespace

QString path_change(QString path)
{
    QStringList parts = path.split(QLatin1Char('/'));
    parts.removeLast();
    QString folder;
    for (const QString &part : qAsConst(parts))
        folder += part + QLatin1Char('/');
    return folder;
}

// What was read before a failure stays. No check of sizes or contents: an empty image is accepted.
void gpsupdate::GetBinfile(QString cfgPath, file *out)
{
    if (cfgPath.isEmpty())
        return;
    save_path = path_change(cfgPath);
    if (!readWhole(cfgPath, &filevalues)) {
        showPackageError(QStringLiteral("Not open cfg_file!"));
        return;
    }
    for (const ImageSource &source : kImages) {
        QByteArray &image = out->*source.image;
        if (!readWhole(save_path + QLatin1String(source.name), &image)) {
            showPackageError(QLatin1String(source.complaint));
            return;
        }
        DBG << source.traced << image.size();
    }
}

} // namespace testmode
