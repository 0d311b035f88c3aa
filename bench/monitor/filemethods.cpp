#include "unitmethods.h"

#include "dispatcher.h"

#include <QFile>
#include <QFileInfo>

namespace bench {

namespace {

// An answer must fit a line of the monitor, in base64.
constexpr qint64 kFileBytes = 512LL * 1024;

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
}

} // namespace bench
