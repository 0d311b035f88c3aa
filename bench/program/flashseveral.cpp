#include "flashseveral.h"

#include "bench/flash/report.h"
#include "bench/flash/sidebyside.h"

#include <QCoreApplication>

#include <csignal>
#include <filesystem>
#include <memory>

namespace bench {

namespace {

// `run.log` of the receiver on /dev/ttyUSB0 is `run-ttyUSB0.log`.
std::string fileOf(const std::string &uart, const std::string &file)
{
    if (file.empty())
        return file;
    const std::filesystem::path path = file;
    const std::string name = path.stem().string() + "-"
        + std::filesystem::path(uart).filename().string() + path.extension().string();
    return path.parent_path() / name;
}

SideBySide::Order orderFor(const std::string &uart, CommandLine options)
{
    options.uarts = {uart};
    options.format = "json";
    options.log = fileOf(uart, options.log);
    options.capture = fileOf(uart, options.capture);
    QStringList words;
    for (const std::string &word : commandLineWords(options))
        words << QString::fromLocal8Bit(word.c_str());
    return {QString::fromLocal8Bit(uart.c_str()), words.mid(1)};
}

} // namespace

int flashSeveral(const CommandLine &options)
{
    ::signal(SIGPIPE, SIG_IGN); // as each bench does
    char name[] = "testmode-bench";
    char *words[] = {name, nullptr};
    int count = 1;
    QCoreApplication application(count, words);

    QVector<SideBySide::Order> orders;
    QStringList names;
    for (const std::string &uart : options.uarts) {
        orders.append(orderFor(uart, options));
        names << orders.last().uart;
    }
    const std::unique_ptr<Report> report = makeReport({stdout, names, options.format == "json"});
    return SideBySide(QCoreApplication::applicationFilePath(), orders, report.get()).run();
}

} // namespace bench
