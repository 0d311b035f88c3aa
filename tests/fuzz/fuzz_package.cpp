// A folder with a package, as the update page reads it. Input: for each of the five files what it
// is and two bytes of length, then the contents.

#include "expect.h"
#include "input.h"

#include "gps/gpsupdate.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <sys/stat.h>
#include <unistd.h>

using tests::Input;

namespace {

const char *const kNames[] = {"flash_download.cfg", "partition_table.bin", "bootloader.bin",
                              "gnss_demo.bin", "gnss_config.bin"};
constexpr qint64 kTooLarge = qint64(32) * 1024 * 1024 + 1;

enum What { Regular, Missing, Folder, Pipe, Link, LinkInCircle, Large };
constexpr int kWhats = Large + 1;

struct Entry
{
    What what = Regular;
    QByteArray content;
};

QStringList complaints;

void write(const QByteArray &path, const Entry &entry)
{
    QFile file(QFile::decodeName(path));
    EXPECT(file.open(QIODevice::WriteOnly));
    EXPECT(file.write(entry.content) == entry.content.size());
    if (entry.what == Large)
        EXPECT(file.resize(kTooLarge));
}

void make(const QByteArray &path, const Entry &entry)
{
    switch (entry.what) {
    case Missing:
        return;
    case Folder:
        EXPECT(::mkdir(path.constData(), 0700) == 0);
        return;
    case Pipe:
        EXPECT(::mkfifo(path.constData(), 0600) == 0);
        return;
    case Link:
        write(path + ".target", entry);
        EXPECT(::symlink((path + ".target").constData(), path.constData()) == 0);
        return;
    case LinkInCircle:
        EXPECT(::symlink(path.constData(), path.constData()) == 0);
        return;
    default:
        write(path, entry);
    }
}

bool isReadable(const Entry &entry)
{
    return entry.what == Regular || entry.what == Link;
}

} // namespace

// In the place of the page's box, which would wait for a finger.
extern "C" void
__wrap__ZN8testmode9gpsupdate16showPackageErrorERK7QString(testmode::gpsupdate *, // NOLINT
                                                           const QString &text)
{
    complaints << text;
}

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static int none = 0;
    static QApplication application(none, nullptr);
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static testmode::gpsupdate page;
    const QTemporaryDir folder(QStringLiteral("/dev/shm/fuzz-package"));
    EXPECT(folder.isValid());

    Input input(data, size);
    Entry entries[5];
    int lengths[5] = {};
    for (int i = 0; i < 5; ++i) {
        entries[i].what = static_cast<What>(input.byte() % kWhats);
        lengths[i] = input.word();
    }
    for (int i = 0; i < 5; ++i) {
        entries[i].content = input.bytes(lengths[i]);
        make(QFile::encodeName(folder.filePath(QLatin1String(kNames[i]))), entries[i]);
    }

    complaints.clear();
    file package = {"1", "2", "3", "4"};
    page.GetBinfile(folder.filePath(QLatin1String(kNames[0])), &package);

    // Up to the first that cannot be read each is whole, and those after it are as they were.
    int readable = 0;
    while (readable < 5 && isReadable(entries[readable]))
        ++readable;
    EXPECT(complaints.size() == (readable < 5 ? 1 : 0));
    const QByteArray images[] = {package.partition_bin, package.bootloader_bin, package.app_bin,
                                 package.config_bin};
    const char *const before[] = {"2", "1", "3", "4"};
    for (int i = 1; i < 5; ++i)
        EXPECT(images[i - 1] == (i < readable ? entries[i].content : QByteArray(before[i - 1])));
    return 0;
}
