// Updates of a simulated receiver, for the thread sanitizer: worker and transport as the update
// page uses them, over a real pseudo-terminal.
//
//   races RECEIVER UPDATES [count | settings]
//
// RECEIVER is the program testmode-receiver. The last word plants a race, to see it found.

#include "handover.h"

#include "gnss_download/serial_thread.h"
#include "gnss_download/ugrade_thread.h"
#include "platformservice/platformservice.h"
#include "tools/common.h"

#include <QPointer>
#include <QProcess>
#include <QTimer>

#include <csignal>
#include <cstdio>
#include <memory>
#include <random>

#include <sys/prctl.h>

file downloadfile; // the package's one instance, else in gps/

namespace platform {

// The receiver resets itself at the first byte after silence.
PlatformService *PlatformService::instance()
{
    static PlatformService service;
    return &service;
}

void PlatformService::setGPSResetGPIO(bool) { }

} // namespace platform

namespace {

// An update takes a second; one whose synchronisation fails would go on for two minutes.
constexpr int kLongestMilliseconds = 8000;

// How the page lets go of a worker.
enum class Parting {
    Result,      // it waits for the result and deletes the worker
    PageGoes,    // the page has gone; the worker deletes itself
    WorkerGoes,  // the worker is deleted in its work
    ProcessEnds, // the process is told to end in its work
};

int plantedCount = 0;

void readPlantedCount()
{
    if (plantedCount < 0)
        std::puts("");
}

void raisePlantedCount()
{
    ++plantedCount;
}

class Updates : public QObject
{
public:
    Updates(QString device, QString race) : port(std::move(device)), planted(std::move(race)) { }

    // Returns whether the update has succeeded.
    bool run(Parting parting)
    {
        succeeded = false;
        auto page = std::make_unique<QObject>();
        QPointer<ugrade_thread> worker = start(page.get());
        QEventLoop loop;
        connect(worker, &QObject::destroyed, &loop, &QEventLoop::quit);
        const int moment =
            parting == Parting::Result ? kLongestMilliseconds : static_cast<int>(dice() % 900);
        QTimer::singleShot(moment, &loop, [&] {
            if (parting == Parting::PageGoes)
                page.reset();
            else if (parting == Parting::ProcessEnds)
                QMetaObject::invokeMethod(qApp, "aboutToQuit");
            else
                delete worker;
        });
        QTimer::singleShot(2 * kLongestMilliseconds, &loop, [&] { delete worker; });
        loop.exec();
        return succeeded;
    }

private:
    ugrade_thread *start(QObject *page)
    {
        auto *worker = new ugrade_thread(port);
        connect(worker, &ugrade_thread::signals_success, page,
                [this, worker](const QString &, bool ok) {
                    succeeded = ok;
                    delete worker;
                });
        connect(worker, &ugrade_thread::signals_reset_success, page, [] {});
        connect(worker, &QThread::finished, worker, &QObject::deleteLater);
        if (planted == QLatin1String("count")) {
            connect(worker, &ugrade_thread::hdl_uart_put_byte, worker, raisePlantedCount,
                    Qt::DirectConnection);
            auto *timer = new QTimer(page);
            connect(timer, &QTimer::timeout, timer, readPlantedCount);
            timer->start(1);
        }
        worker->start(QThread::TimeCriticalPriority);
        if (planted == QLatin1String("settings"))
            com_set.baudRate = 115200; // the transport may read it by now
        return worker;
    }

    QString port;
    QString planted;
    bool succeeded = false;
    std::mt19937 dice{1};
};

// Goes with this process, which the sanitizer may end.
class Receiver : public QProcess
{
protected:
    void setupChildProcess() override { ::prctl(PR_SET_PDEATHSIG, SIGTERM); }
};

void say(QtMsgType type, const QMessageLogContext &, const QString &text)
{
    if (type != QtDebugMsg)
        std::fprintf(stderr, "%s\n", qPrintable(text));
}

int fail(const char *what)
{
    std::fprintf(stderr, "races: %s\n", what);
    return 1;
}

} // namespace

int main(int argc, char **argv)
{
    qInstallMessageHandler(say);
    tests::HandoverApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments();
    if (words.size() < 3)
        return fail("usage: races RECEIVER UPDATES [count | settings]");

    Receiver receiver;
    receiver.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    receiver.start(words.at(1), {QStringLiteral("--full-speed")});
    if (!receiver.waitForReadyRead())
        return fail("the receiver does not start");
    const QString port = QString::fromLocal8Bit(receiver.readLine()).trimmed();

    downloadfile = {"boot", QByteArray(4096, 'p'), QByteArray(9000, 'a'), "configuration"};
    br = QStringLiteral("921600");
    com_set.baudRate = 115200;
    Updates updates(port, words.value(3));
    int good = 0;
    const int wanted = words.at(2).toInt();
    int made = 0;
    // On a loaded machine a synchronisation may fail.
    for (; made < wanted || (good == 0 && made < 3 * wanted); ++made)
        good += updates.run(static_cast<Parting>(made % 4)) ? 1 : 0;
    std::printf("%d updates, %d of them to the end\n", made, good);
    receiver.terminate();
    receiver.waitForFinished();
    return good > 0 ? 0 : fail("no update came to its end: the machine was too slow for it");
}
