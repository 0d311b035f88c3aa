#include "flashmethods.h"

#include "dispatcher.h"
#include "packageimages.h"
#include "receivercall.h"

#include <QCryptographicHash>
#include <QFile>
#include <QSaveFile>

#include <cstring>

namespace bench {

namespace {

constexpr quint32 kBase = 0x08000000;
constexpr int kSectorBytes = 4096;

// Base64 of so much fits a line of the monitor.
constexpr int kAnswerBytes = 512 * 1024;

constexpr int kMostDifferences = 4096; // that one answer lists

const char *const kPackage = "folder of an update package to compare with";

QString sha256(const QByteArray &bytes)
{
    return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex());
}

// What a whole update with the package would leave in the range; where none of its images lies,
// what is there.
QByteArray afterUpdate(const QVector<PackageImage> &images, quint32 address, QByteArray there)
{
    for (const PackageImage &image : images) {
        const qint64 start = qint64(image.address) - address; // in `there`
        const int first = int(qMax<qint64>(0, start));
        const int end = int(qMin<qint64>(there.size(), start + image.content.size()));
        if (first < end)
            there.replace(first, end - first, image.content.constData() + (first - start),
                          end - first);
    }
    return there;
}

QJsonArray differences(const QByteArray &flash, const QByteArray &wanted, quint32 address)
{
    QJsonArray list;
    for (int i = 0; i < flash.size() && list.size() < kMostDifferences; ++i) {
        if (flash.at(i) != wanted.at(i))
            list.append(QJsonObject{{"address", double(address + quint32(i))},
                                    {"flash", quint8(flash.at(i))},
                                    {"package", quint8(wanted.at(i))}});
    }
    return list;
}

QJsonObject content(const Receiver &receiver, const Arguments &arguments)
{
    const int length = arguments.integer("length");
    const quint32 address = arguments.address("address");
    const bool withContent = arguments.value("content").toBool(true);
    if (withContent && length > kAnswerBytes)
        throw CallError(ErrorClass::Limit,
                        QStringLiteral("an answer holds %1 bytes of flash; content=false gives the "
                                       "SHA-256 of more")
                            .arg(kAnswerBytes));
    const QByteArray bytes = receiver.flash(address, length);
    if (bytes.size() != length)
        throw CallError(
            ErrorClass::Argument,
            QStringLiteral("the range leaves the flash, which has 4 MiB at 0x08000000"));
    QJsonObject result{{"sha256", sha256(bytes)}};
    if (withContent)
        result.insert("base64", QString::fromLatin1(bytes.toBase64()));
    if (arguments.has("package")) {
        const QByteArray wanted =
            afterUpdate(readPackage(arguments.text("package")), address, bytes);
        result.insert("differences", differences(bytes, wanted, address));
    }
    return result;
}

QJsonArray describe(const QVector<PackageImage> &images, const QByteArray &whole)
{
    QJsonArray list;
    for (const PackageImage &image : images) {
        const int bytes = image.content.size();
        const bool equal =
            bytes > 0 && whole.mid(int(image.address - kBase), bytes) == image.content;
        list.append(QJsonObject{{"file", image.file},
                                {"address", double(image.address)},
                                {"bytes", bytes},
                                {"equal", equal}});
    }
    return list;
}

// The sectors that hold something, and those that a package wants otherwise.
QJsonObject map(const Receiver &receiver, const Arguments &arguments)
{
    const QVector<FlashSector> sectors = receiver.flashSectors();
    const QByteArray whole = receiver.wholeFlash();
    const QVector<PackageImage> images =
        arguments.has("package") ? readPackage(arguments.text("package")) : QVector<PackageImage>();
    const QByteArray wanted = afterUpdate(images, kBase, whole);
    QJsonArray list;
    for (int i = 0; i < sectors.size(); ++i) {
        const int place = i * kSectorBytes;
        const bool differs =
            std::memcmp(whole.constData() + place, wanted.constData() + place, kSectorBytes) != 0;
        if (sectors.at(i).erased && sectors.at(i).times == 0 && !differs)
            continue;
        list.append(QJsonObject{{"address", double(kBase + quint32(place))},
                                {"image", sectors.at(i).image},
                                {"times", sectors.at(i).times},
                                {"erased", sectors.at(i).erased},
                                {"differs", differs}});
    }
    return {{"sectors", list}, {"images", describe(images, whole)}};
}

[[noreturn]] void fail(const char *action, const QFileDevice &file)
{
    throw CallError(
        ErrorClass::File,
        QStringLiteral("cannot %1 %2: %3").arg(action, file.fileName(), file.errorString()));
}

// The file has all of it, or is as it was.
void save(const Receiver &receiver, const QString &name)
{
    QSaveFile file(name);
    const QByteArray whole = receiver.wholeFlash();
    if (!file.open(QIODevice::WriteOnly) || file.write(whole) != whole.size() || !file.commit())
        fail("write", file);
}

void load(Receiver *receiver, const QString &name)
{
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly))
        fail("read", file);
    const QByteArray whole = file.read(Receiver::flashSize() + 1);
    if (file.error() != QFileDevice::NoError)
        fail("read", file);
    if (!receiver->setFlash(whole))
        throw CallError(ErrorClass::Argument,
                        QStringLiteral("%1 is no image of the whole flash, which has %2 bytes")
                            .arg(name)
                            .arg(Receiver::flashSize()));
}

Parameter length()
{
    Parameter parameter = required("length", ParameterType::Integer, "bytes");
    parameter.minimum = 0;
    parameter.maximum = Receiver::flashSize();
    return parameter;
}

void addLooks(Dispatcher *dispatcher, const Receiver *receiver)
{
    dispatcher->add(
        {"receiver.flash",
         {required("address", ParameterType::Address, "of the first byte"), length(),
          optional("content", ParameterType::Boolean, "false: only the SHA-256"),
          optional("package", ParameterType::Text, kPackage)},
         "Content of the flash as base64, and its SHA-256; with a package 'differences', the bytes "
         "that are not its images'",
         "address=0x08000000 length=16",
         asked(receiver, [receiver](const Call &call) {
             call.responder.succeed(content(*receiver, call.arguments));
         })});
    dispatcher->add(
        {"receiver.flash.map",
         {optional("package", ParameterType::Text, kPackage)},
         "The sectors that hold something or differ from the package: 'image' that wrote it last "
         "since the reset, 0 for none, and how many 'times'; the package's images",
         "package=/media/update",
         asked(receiver, [receiver](const Call &call) {
             call.responder.succeed(map(*receiver, call.arguments));
         })});
}

void addDeeds(Dispatcher *dispatcher, Receiver *receiver)
{
    dispatcher->add({"receiver.flash.save",
                     {required("file", ParameterType::Text, "file to write")},
                     "Writes the whole flash, 4 MiB, to a file",
                     "file=flash.bin",
                     asked(receiver, [receiver](const Call &call) {
                         save(*receiver, call.arguments.text("file"));
                         call.responder.succeed();
                     })});
    dispatcher->add(
        {"receiver.flash.load",
         {required("file", ParameterType::Text, "of 4 MiB, as 'receiver.flash.save' writes it")},
         "Replaces the whole flash by a file",
         "file=flash.bin",
         asked(receiver, [receiver](const Call &call) {
             load(receiver, call.arguments.text("file"));
             call.responder.succeed();
         })});
    dispatcher->add({"receiver.flash.erase",
                     {},
                     "Erases the whole flash: every byte is 0xFF",
                     "",
                     asked(receiver, [receiver](const Call &call) {
                         receiver->setFlash(QByteArray(Receiver::flashSize(), '\xFF'));
                         call.responder.succeed();
                     })});
}

} // namespace

void addFlashMethods(Dispatcher *dispatcher, Receiver *receiver)
{
    addLooks(dispatcher, receiver);
    addDeeds(dispatcher, receiver);
}

} // namespace bench
