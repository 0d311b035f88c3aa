#include "lmplfctrl/lmplatformcontrol.h"

#include "bench/unit/headunit.h"
#include "bench/unit/journal.h"
#include "bench/unit/usbstate.h"

#include <QFile>
#include <QThread>

namespace lmplfctrl {

using bench::journal;
using bench::NetworkTestState;
using bench::unit;

namespace {

const QString kReportFile = QStringLiteral("/var/ipt.log");

const NetworkTestState &tests()
{
    return unit().usb.networkTests;
}

void setServer(const QString &title)
{
    unit().change()->usb.networkTests.server = title;
}

// One line a second, then the sum; a run of the unit measures ten seconds.
QString report(const QString &title, double megabitsPerSecond)
{
    QString text = title + QLatin1Char('\n');
    for (int second = 0; second < 10; ++second)
        text += QStringLiteral("%1-%2 s  %3 Mbit/s\n")
                    .arg(second, 2)
                    .arg(second + 1, 2)
                    .arg(megabitsPerSecond - 0.1 * (second % 3), 6, 'f', 1);
    return text + QStringLiteral("average %1 Mbit/s\n").arg(megabitsPerSecond - 0.1, 0, 'f', 1);
}

// False when the report cannot be stored: the run has then failed.
bool store(const QString &text)
{
    if (!tests().writesLog)
        return true;
    const QByteArray bytes = (tests().log.isEmpty() ? text : tests().log).toUtf8();
    QFile file(kReportFile);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.flush();
}

// Journals the call; what it is to return.
int begin(const QString &operation)
{
    journal().call(QStringLiteral("LMPlatformControl"), operation);
    return tests().results.value(operation, 0);
}

class PlatformControl final : public LMPlatformControl
{
public:
    int startTcpServer() override
    {
        return serve(QStringLiteral("startTcpServer"), QStringLiteral("TCP server"));
    }

    int startUdpServer() override
    {
        return serve(QStringLiteral("startUdpServer"), QStringLiteral("UDP server"));
    }

    int stopNetTest() override
    {
        const int result = begin(QStringLiteral("stopNetTest"));
        if (result != 0)
            return result;
        const QString server = tests().server;
        setServer(QString());
        const QString text =
            server.isEmpty() ? QStringLiteral("no test was running\n") : report(server, 93.4);
        return store(text) ? 0 : -1;
    }

    int startUdp50Client() override
    {
        return measure(QStringLiteral("startUdp50Client"), QStringLiteral("UDP client, 50 Mbit/s"),
                       50.0);
    }

    int startUdp100Client() override
    {
        return measure(QStringLiteral("startUdp100Client"),
                       QStringLiteral("UDP client, 100 Mbit/s"), 99.8);
    }

    int startTcpClient() override
    {
        return measure(QStringLiteral("startTcpClient"), QStringLiteral("TCP client"), 187.2);
    }

private:
    // A server is up at once and runs until it is stopped.
    static int serve(const QString &operation, const QString &title)
    {
        const int result = begin(operation);
        if (result == 0)
            setServer(title);
        return result;
    }

    // A client's call blocks for the whole run, also for one that fails.
    static int measure(const QString &operation, const QString &title, double megabitsPerSecond)
    {
        const int result = begin(operation);
        QThread::msleep(static_cast<unsigned long>(tests().runDuration.count()));
        if (result != 0)
            return result;
        return store(report(title, megabitsPerSecond)) ? 0 : -1;
    }
};

} // namespace

LMPlatformControl *LMPlatformControl::GetInstance()
{
    static PlatformControl control;
    return &control;
}

} // namespace lmplfctrl
