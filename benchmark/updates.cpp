// benchmark_updates: whole updates of simulated receivers at 921600 baud, by the plug-in's own
// worker and transport or by a bare host. Prints one JSON object a round. script/benchmark runs it.

#include "lineclock.h"
#include "rawhost.h"
#include "resident.h"

#include "bench/receiver/receiver.h"
#include "bench/unit/headunit.h"
#include "bench/unit/journal.h"
#include "gnss_download/serial_thread.h"
#include "gnss_download/ugrade_thread.h"
#include "tools/common.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <thread>
#include <vector>

#include <time.h>

namespace benchmark {

namespace {

qint64 threadNanoseconds()
{
    timespec used = {};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
    return qint64(used.tv_sec) * 1000000000 + used.tv_nsec;
}

// The plug-in makes its traces; where they go is its host's to pay for.
void dropTraces(QtMsgType type, const QMessageLogContext &, const QString &text)
{
    if (type != QtDebugMsg)
        std::fprintf(stderr, "%s\n", qPrintable(text));
}

// A package whose images differ in every byte from what an erased flash holds.
file packageOf(int appBytes)
{
    const auto filled = [](int bytes, int seed) {
        QByteArray content(bytes, '\0');
        for (int i = 0; i < bytes; ++i)
            content[i] = static_cast<char>((i * 7 + i / 251 + seed) % 250);
        return content;
    };
    return {filled(4096, 1), filled(4096, 2), filled(appBytes, 3), filled(4096, 4)};
}

// An erased flash with a package's images, written in this order: a long application reaches over
// the bootloader.
QByteArray flashOf(const file &package)
{
    constexpr int kBase = 0x08000000;
    QByteArray flash(bench::Receiver::flashSize(), '\xff');
    const auto write = [&flash](int address, const QByteArray &image) {
        flash.replace(address - kBase, image.size(), image);
    };
    write(0x08030000, package.bootloader_bin);
    write(0x08000000, package.partition_bin);
    write(0x08013000, package.app_bin);
    write(0x083FF000, package.config_bin);
    return flash;
}

// One receiver and what became of its update.
struct Station
{
    bench::Receiver receiver;
    QString port;
    std::unique_ptr<ugrade_thread> worker;
    bool succeeded = false;
    qint64 milliseconds = 0;
    qint64 workerNanoseconds = 0;
    qint64 transportNanoseconds = 0;
    double fixedMilliseconds = 0; // of a raw host

    bool open()
    {
        port = receiver.open();
        return !port.isEmpty();
    }

    QJsonObject report() const
    {
        qint64 bytes = 0;
        qint64 microseconds = 0;
        QJsonArray each;
        const auto images = receiver.state().images;
        for (const bench::WrittenImage &image : images) {
            bytes += image.length;
            microseconds += image.microseconds;
            each << image.microseconds;
        }
        return {{"succeeded", succeeded},
                {"milliseconds", milliseconds},
                {"image_bytes", bytes},
                {"image_microseconds", microseconds},
                {"each_image_microseconds", each},
                {"fixed_milliseconds", fixedMilliseconds},
                {"worker_nanoseconds", workerNanoseconds},
                {"transport_nanoseconds", transportNanoseconds}};
    }
};

using Stations = std::vector<std::unique_ptr<Station>>;

// All at once; each worker resets the receiver at its own port.
void updateByPlugin(const Stations &stations)
{
    const auto resetOwn = [&stations](bool asserted) {
        for (const auto &station : stations) {
            if (QThread::currentThread() == station->worker.get())
                station->receiver.setReset(asserted);
        }
    };
    const auto resets =
        QObject::connect(&bench::unit(), &bench::HeadUnit::gnssResetChanged, resetOwn);
    QElapsedTimer clock;
    clock.start();
    for (const auto &owned : stations) {
        Station *station = owned.get();
        station->worker = std::make_unique<ugrade_thread>(station->port);
        // After the transport's own: the worker has the byte when this is called.
        QObject::connect(
            station->worker.get(), &ugrade_thread::hdl_uart_get_byte, station->worker.get(),
            [] { LineClock::hostHasRead(); }, Qt::DirectConnection);
        // In the worker: what its threads used is known while they still live.
        QObject::connect(
            station->worker.get(), &ugrade_thread::signals_success, station->worker.get(),
            [station, &clock](const QString &, bool ok) {
                station->succeeded = ok;
                station->milliseconds = clock.elapsed();
                station->workerNanoseconds = threadNanoseconds();
                QMetaObject::invokeMethod(
                    station->worker->transport(),
                    [station] { station->transportNanoseconds = threadNanoseconds(); },
                    Qt::BlockingQueuedConnection);
            },
            Qt::DirectConnection);
    }
    for (const auto &station : stations)
        station->worker->start(QThread::TimeCriticalPriority);
    for (const auto &station : stations)
        station->worker->wait();
    for (const auto &station : stations)
        station->worker.reset();
    QObject::disconnect(resets);
}

void updateByRawHost(const Stations &stations, const file &package)
{
    std::vector<std::thread> hosts;
    for (const auto &owned : stations) {
        Station *station = owned.get();
        hosts.emplace_back([station, &package] {
            QElapsedTimer clock;
            clock.start();
            RawHost host(station->port,
                         [station](bool asserted) { station->receiver.setReset(asserted); });
            station->succeeded = host.update(package);
            station->milliseconds = clock.elapsed();
            station->workerNanoseconds = threadNanoseconds();
            station->fixedMilliseconds = host.fixedMilliseconds();
        });
    }
    for (std::thread &host : hosts)
        host.join();
}

QJsonArray numbers(const QVector<double> &values)
{
    QJsonArray array;
    for (const double value : values)
        array << value;
    return array;
}

int updatesMain(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    qInstallMessageHandler(dropTraces);
    QCommandLineParser words;
    words.setApplicationDescription(QStringLiteral("Times whole updates of simulated receivers."));
    words.addHelpOption();
    words.addOption({"host", "plugin or raw", "host", "plugin"});
    words.addOption({"receivers", "how many at once", "number", "1"});
    words.addOption({"app-bytes", "of the application image", "bytes", "1048576"});
    words.addOption({"rounds", "one after the other", "number", "1"});
    words.addOption({"full-speed", "the receiver does not keep to the line's rate"});
    words.process(application);

    const file package = packageOf(words.value("app-bytes").toInt());
    const QByteArray wanted = flashOf(package);
    downloadfile = package;
    br = QStringLiteral("921600");
    Stations stations;
    for (int i = 0; i < words.value("receivers").toInt(); ++i) {
        stations.push_back(std::make_unique<Station>());
        bench::ReceiverSettings settings = stations.back()->receiver.settings();
        settings.keepLineRate = !words.isSet("full-speed");
        stations.back()->receiver.setSettings(settings);
        if (!stations.back()->open()) {
            std::fputs("benchmark_updates: this machine gives no pseudo-terminal\n", stderr);
            return 1;
        }
    }

    for (int round = 0; round < words.value("rounds").toInt(); ++round) {
        for (const auto &station : stations) // an older round's content is no proof
            station->receiver.setFlash(QByteArray(wanted.size(), '\xff'));
        const LineClock line;
        if (words.value("host") == QLatin1String("raw"))
            updateByRawHost(stations, package);
        else
            updateByPlugin(stations);
        QJsonArray reports;
        bool whole = true;
        for (const auto &station : stations) {
            whole = whole && station->succeeded
                && station->receiver.flash(0x08000000, wanted.size()) == wanted;
            reports << station->report();
            station->receiver.clearRecord();
        }
        bench::journal().clear(); // what the simulation has noted is nobody's growth
        const bool single = stations.size() == 1;
        const QJsonObject report = {
            {"whole", whole},
            {"stations", reports},
            {"resident_kibibytes", residentKibibytes()},
            {"pauses_microseconds", single ? numbers(line.pauses()) : QJsonArray()},
            {"turnarounds_microseconds", single ? numbers(line.turnarounds()) : QJsonArray()}};
        std::printf("%s\n", QJsonDocument(report).toJson(QJsonDocument::Compact).constData());
    }
    return 0;
}

} // namespace

} // namespace benchmark

int main(int argc, char **argv)
{
    return benchmark::updatesMain(argc, argv);
}
