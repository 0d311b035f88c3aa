#include "unitmethods.h"

#include "dispatcher.h"

#include <QFile>
#include <QFileInfo>
#include <QtEndian>

namespace bench {

namespace {

// An answer must fit a line of the monitor, in base64.
constexpr qint64 kFileBytes = 512LL * 1024;

constexpr char kMemory[] = "/dev/mem";
constexpr quint32 kWordBytes = 4;

Parameter path()
{
    return required("path", ParameterType::Text, "absolute, as the plug-in would name it");
}

QString absolutePath(const Arguments &arguments)
{
    QString name = arguments.text("path");
    if (!name.startsWith(QLatin1Char('/')))
        throw CallError(ErrorClass::Argument,
                        QStringLiteral("path is %1, which is not absolute").arg(name));
    return name;
}

[[noreturn]] void fail(const char *action, const QFile &file)
{
    throw CallError(
        ErrorClass::File,
        QStringLiteral("cannot %1 %2: %3").arg(action, file.fileName(), file.errorString()));
}

void open(QFile *file, QIODevice::OpenMode mode)
{
    if (!file->open(mode | QIODevice::Unbuffered))
        fail("open", *file);
}

void checkExists(const QFile &file)
{
    if (!file.exists())
        throw CallError(ErrorClass::NotFound, QStringLiteral("no file %1").arg(file.fileName()));
}

QJsonObject readFile(const Arguments &arguments)
{
    QFile file(absolutePath(arguments));
    checkExists(file);
    open(&file, QIODevice::ReadOnly);
    // Device files give no size, so the limit is found by reading one byte more.
    const QByteArray bytes = file.read(kFileBytes + 1);
    if (file.error() != QFileDevice::NoError)
        fail("read", file);
    if (bytes.size() > kFileBytes)
        throw CallError(
            ErrorClass::Limit,
            QStringLiteral("%1 is longer than %2 bytes").arg(file.fileName()).arg(kFileBytes));
    QJsonObject result{{"base64", QString::fromLatin1(bytes.toBase64())}};
    const QString text = QString::fromUtf8(bytes);
    if (text.toUtf8() == bytes)
        result.insert("text", text);
    return result;
}

QByteArray contentOf(const Arguments &arguments)
{
    if (arguments.has("text") == arguments.has("base64"))
        throw CallError(ErrorClass::Argument, QStringLiteral("one of text and base64 is wanted"));
    if (arguments.has("text"))
        return arguments.text("text").toUtf8();
    const auto decoded = QByteArray::fromBase64Encoding(arguments.text("base64").toLatin1(),
                                                        QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded)
        throw CallError(ErrorClass::Argument, QStringLiteral("base64 is none"));
    return *decoded;
}

QJsonObject writeFile(const Arguments &arguments)
{
    const QByteArray content = contentOf(arguments);
    QFile file(absolutePath(arguments));
    open(&file, QIODevice::WriteOnly | QIODevice::Truncate);
    if (file.write(content) != content.size() || !file.flush())
        fail("write", file);
    return {{"bytes", content.size()}};
}

QJsonObject removeFile(const Arguments &arguments)
{
    QFile file(absolutePath(arguments));
    checkExists(file);
    if (!file.remove())
        fail("remove", file);
    return {};
}

// Opens the memory at the word.
void openMemory(QFile *file, quint32 address, QIODevice::OpenMode mode)
{
    if (address % kWordBytes != 0)
        throw CallError(ErrorClass::Argument,
                        QStringLiteral("address is not a multiple of %1").arg(kWordBytes));
    open(file, mode | QIODevice::ExistingOnly);
    if (qint64(address) + kWordBytes > file->size())
        throw CallError(
            ErrorClass::Argument,
            QStringLiteral("address lies beyond the memory, which has %1 bytes").arg(file->size()));
    if (!file->seek(address))
        fail("seek in", *file);
}

QJsonObject readMemory(const Arguments &arguments)
{
    QFile file(kMemory);
    openMemory(&file, arguments.address("address"), QIODevice::ReadOnly);
    const QByteArray bytes = file.read(kWordBytes);
    if (bytes.size() != int(kWordBytes))
        fail("read", file);
    const quint32 word = qFromLittleEndian<quint32>(bytes.constData());
    return {{"value", double(word)},
            {"hex", QStringLiteral("0x%1").arg(word, 8, 16, QLatin1Char('0'))}};
}

QJsonObject writeMemory(const Arguments &arguments)
{
    QFile file(kMemory);
    openMemory(&file, arguments.address("address"), QIODevice::ReadWrite);
    char bytes[kWordBytes];
    qToLittleEndian(arguments.address("value"), bytes);
    if (file.write(bytes, kWordBytes) != kWordBytes)
        fail("write", file);
    return {};
}

} // namespace

void addFileMethods(Dispatcher *dispatcher)
{
    dispatcher->add({"unit.file.read",
                     {path()},
                     "Content of a file as base64, and as text where it is UTF-8",
                     "path=/sys/module/usbcore/parameters/usb_logo_test_start",
                     direct(readFile)});
    dispatcher->add({"unit.file.write",
                     {path(), optional("text", ParameterType::Text, "content as text"),
                      optional("base64", ParameterType::Text, "content as base64")},
                     "Writes a file whole; one of text and base64",
                     "path=/var/ipt.log text='94.1 Mbits/sec'",
                     direct(writeFile)});
    dispatcher->add(
        {"unit.file.remove", {path()}, "Removes a file", "path=/var/ipt.log", direct(removeFile)});
    dispatcher->add({"unit.memory.read",
                     {required("address", ParameterType::Address, "of a 32-bit word")},
                     "A word of the physical memory",
                     "address=0x9C000000",
                     direct(readMemory)});
    dispatcher->add({"unit.memory.write",
                     {required("address", ParameterType::Address, "of a 32-bit word"),
                      required("value", ParameterType::Address, "the word")},
                     "Writes a word of the physical memory",
                     "address=0x9C000000 value=0x1",
                     direct(writeMemory)});
}

} // namespace bench
