#include "service.h"

#include "flashimage.h"

#include "bench/monitor/receivermethods.h"
#include "bench/monitor/receiverpaths.h"
#include "bench/monitor/unitvalues.h"
#include "bench/root/exitstatus.h"
#include "bench/serial/serialdevice.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <cstdio>

namespace bench {

namespace {

int complain(const QString &line, int status)
{
    std::fprintf(stderr, "testmode-receiver: %s\n", qPrintable(line));
    return status;
}

// Prefix of the words about one option.
QString about(const char *option, const QString &trouble)
{
    return trouble.isEmpty() ? trouble : QStringLiteral("--%1: %2").arg(option, trouble);
}

} // namespace

ReceiverService::ReceiverService(const ReceiverOptions &receiverOptions) : options(receiverOptions)
{
    ReceiverSettings settings;
    settings.resetOnSync = true;
    settings.keepLineRate = !options.fullSpeed;
    receiver.setSettings(settings);

    addReceiverPaths(&document, &receiver);
    addReceiverMethods(&dispatcher, &document, &receiver);
    dispatcher.addToSchema("paths", describePaths(document));
    connect(&dispatcher, &Dispatcher::quitRequested, qApp, &QCoreApplication::quit,
            Qt::QueuedConnection);
    connect(&requests, &Requests::endRequested, qApp, &QCoreApplication::quit);
    connect(&requests, &Requests::resetRequested, &receiver, &Receiver::pulseReset);
}

int ReceiverService::run()
{
    for (const auto step :
         {&ReceiverService::loadState, &ReceiverService::openLine, &ReceiverService::listen}) {
        const QString trouble = (this->*step)();
        if (!trouble.isEmpty())
            return complain(trouble, kNotThere);
    }
    // A script reads this line to know that the receiver serves.
    std::printf("%s\n", qPrintable(receiver.path()));
    std::fflush(stdout);
    QCoreApplication::exec();

    receiver.close();
    const QString trouble = options.flashImage.isEmpty()
        ? QString()
        : about("flash-image", writeFlashImage(options.flashImage, receiver.wholeFlash()));
    return trouble.isEmpty() ? kDone : complain(trouble, kNotThere);
}

QString ReceiverService::loadState()
{
    if (!options.flashImage.isEmpty()) {
        QByteArray content;
        const QString trouble = readFlashImage(options.flashImage, Receiver::flashSize(), &content);
        if (!trouble.isEmpty())
            return about("flash-image", trouble);
        if (!content.isEmpty())
            receiver.setFlash(content);
    }
    if (options.unit.isEmpty())
        return QString();
    if (!QFileInfo(options.unit).isFile())
        return about("unit",
                     options.unit
                         + QStringLiteral(" is no file; name a file with the receiver's state"));
    const QString trouble = loadUnitFile(&document, options.unit);
    return trouble.isEmpty()
        ? trouble
        : about("unit", trouble + QStringLiteral("; keys below \"receiver\" are taken"));
}

QString ReceiverService::openLine()
{
    QString trouble;
    if (!options.tty.isEmpty()) {
        trouble = QString::fromStdString(claimSerialDevice(options.tty.toStdString()));
        if (trouble.isEmpty())
            receiver.openDevice(options.tty, &trouble);
        return about("tty", trouble);
    }
    receiver.open(&trouble);
    if (trouble.isEmpty() && !options.link.isEmpty())
        trouble = about("link", link.make(options.link, receiver.path()));
    return trouble;
}

QString ReceiverService::listen()
{
    if (options.monitor.isEmpty())
        return QString();
    monitor = std::make_unique<MonitorServer>(
        &dispatcher,
        QJsonObject{{"bench", QCoreApplication::applicationVersion()},
                    {"protocol", 1},
                    {"receiver", receiver.path()},
                    {"pid", QCoreApplication::applicationPid()}});
    QString trouble;
    monitor->listen(options.monitor, &trouble);
    return about("monitor", trouble);
}

} // namespace bench
