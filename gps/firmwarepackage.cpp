#include "firmwarepackage.h"

#include "gpsupdate.h"
#include "tools/debugtrace.h"

#include <QFile>
#include <QStringList>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

file downloadfile;
QString save_path;
QByteArray filevalues;
QList<QByteArray> filevalues_list;

namespace testmode {

namespace {

// Far above the receiver's flash of 4 MiB: only what can be no image is turned away, because a read
// of it could take all of the framework's memory.
constexpr qint64 kLargestFile = qint64(32) * 1024 * 1024;
constexpr int kBlockBytes = 64 * 1024;

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
    {"partition_table.bin", &file::partition_bin,
     QT_TRANSLATE_NOOP("testmode::gpsupdate", "Not open partition_file!"), "partition_binfile: "},
    {"bootloader.bin", &file::bootloader_bin,
     QT_TRANSLATE_NOOP("testmode::gpsupdate", "Not open bootloader_file!"), "bootloader_binfile: "},
    {"gnss_demo.bin", &file::app_bin,
     QT_TRANSLATE_NOOP("testmode::gpsupdate", "Not open app_file!"), "app_binfile: "},
    {"gnss_config.bin", &file::config_bin,
     QT_TRANSLATE_NOOP("testmode::gpsupdate", "Not open cfg_path!"), "config_binfile: "},
};

// Opens what is a file and not larger than what is read. Its name is UTF-8 whatever the locale.
bool openFile(const QString &path, QFile *source)
{
    // Without waiting: a pipe in its place may have nobody at its other end.
    const int descriptor = ::open(path.toUtf8().constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0)
        return false;
    if (!source->open(descriptor, QIODevice::ReadOnly | QIODevice::Unbuffered,
                      QFileDevice::AutoCloseHandle)) {
        ::close(descriptor);
        return false;
    }
    struct stat found = {};
    return ::fstat(descriptor, &found) == 0 && S_ISREG(found.st_mode)
        && source->size() <= kLargestFile;
}

// Replaces `content` by the whole file, or leaves it as it is when not every byte can be had: the
// disk may be pulled at any of them.
bool readWhole(const QString &path, QByteArray *content)
{
    QFile source;
    if (!openFile(path, &source))
        return false;
    const qint64 size = source.size();
    QByteArray taken;
    taken.reserve(static_cast<int>(size));
    char block[kBlockBytes];
    qint64 count = 0;
    while (taken.size() <= kLargestFile && (count = source.read(block, sizeof block)) > 0)
        taken.append(block, static_cast<int>(count));
    if (count != 0 || taken.size() < size)
        return false;
    *content = taken;
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
        showPackageError(tr("Not open cfg_file!"));
        return;
    }
    for (const ImageSource &source : kImages) {
        QByteArray &image = out->*source.image;
        if (!readWhole(save_path + QLatin1String(source.name), &image)) {
            showPackageError(tr(source.complaint));
            return;
        }
        DBG << source.traced << image.size();
    }
}

} // namespace testmode
