#include "sidebyside.h"

#include "bench/root/exitstatus.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>

#include <csignal>

#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace bench {

namespace {

sigset_t stopSignals()
{
    sigset_t set;
    ::sigemptyset(&set);
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        ::sigaddset(&set, number);
    return set;
}

const QByteArray kProgramName = "testmode-bench: ";

} // namespace

// In a process group of its own: what a terminal sends to the whole group comes to the
// parent alone, which hands it on once.
void FlashProcess::setupChildProcess()
{
    ::setpgid(0, 0);
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    const sigset_t set = stopSignals();
    ::sigprocmask(SIG_UNBLOCK, &set, nullptr);
}

SideBySide::SideBySide(const QString &program, const QVector<Order> &orders, Report *eventReport)
    : report(eventReport), lines(static_cast<size_t>(orders.size()))
{
    clock.start();
    const sigset_t set = stopSignals();
    ::sigprocmask(SIG_BLOCK, &set, nullptr);
    stopRequests =
        std::make_unique<QSocketNotifier>(::signalfd(-1, &set, SFD_CLOEXEC), QSocketNotifier::Read);
    connect(stopRequests.get(), &QSocketNotifier::activated, this, &SideBySide::stopAll);
    for (int line = 0; line < orders.size(); ++line) {
        lines[line].uart = orders.at(line).uart;
        start(line, program, orders.at(line).words);
    }
}

SideBySide::~SideBySide()
{
    ::close(static_cast<int>(stopRequests->socket()));
}

void SideBySide::start(int line, const QString &program, const QStringList &words)
{
    lines[line].process = std::make_unique<FlashProcess>();
    FlashProcess *process = lines[line].process.get();
    connect(process, &QProcess::readyReadStandardOutput, this, [=] { readOutput(line); });
    connect(process, &QProcess::readyReadStandardError, this, [=] { readErrors(line); });
    connect(process, &QProcess::errorOccurred, this, [=](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            processEnded(line);
    });
    connect(process, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), this,
            [=] { processEnded(line); });
    ++running;
    process->start(program, words, QIODevice::ReadOnly);
}

int SideBySide::run()
{
    if (running > 0)
        QCoreApplication::exec();
    summarise();
    return commonStatus();
}

void SideBySide::readOutput(int line)
{
    QProcess *process = lines[line].process.get();
    process->setReadChannel(QProcess::StandardOutput);
    while (process->canReadLine())
        take(line, QJsonDocument::fromJson(process->readLine()).object());
}

// Each line on standard error is told as a note of that receiver.
void SideBySide::readErrors(int line)
{
    QProcess *process = lines[line].process.get();
    process->setReadChannel(QProcess::StandardError);
    while (process->canReadLine()) {
        QByteArray text = process->readLine().trimmed();
        if (text.startsWith(kProgramName))
            text.remove(0, kProgramName.size());
        lines[line].complaints << QString::fromUtf8(text);
        take(line,
             {{"kind", "note"}, {"text", lines[line].complaints.last()}, {"ms", clock.elapsed()}});
    }
}

void SideBySide::take(int line, Event event)
{
    Line &of = lines[line];
    const QString kind = event.value("kind").toString();
    if (kind == QLatin1String("failure"))
        of.failure = wordsOf(event);
    if (kind == QLatin1String("result"))
        of.result = event;
    event.insert(QStringLiteral("uart"), of.uart);
    report->take(line, event);
}

// One that has not told its result has none to show: it counts as failed.
void SideBySide::processEnded(int line)
{
    readOutput(line);
    readErrors(line);
    Line &of = lines[line];
    const bool byItself = of.process->exitStatus() == QProcess::NormalExit;
    of.status = byItself ? of.process->exitCode() : -1;
    if (of.result.isEmpty()) {
        of.failure = byItself && !of.complaints.isEmpty() ? of.complaints.last()
                                                          : QStringLiteral("its bench has gone");
        take(line, {{"kind", "result"}, {"ok", false}, {"attempts", 0}, {"ms", clock.elapsed()}});
    }
    if (--running == 0)
        QCoreApplication::quit();
}

void SideBySide::stopAll()
{
    signalfd_siginfo request;
    if (::read(static_cast<int>(stopRequests->socket()), &request, sizeof request) <= 0)
        return;
    stopRequests->setEnabled(false);
    for (const Line &line : lines)
        line.process->terminate();
}

void SideBySide::summarise()
{
    int good = 0;
    QJsonArray receivers;
    for (const Line &line : lines) {
        const bool ok = line.status == kDone && line.result.value("ok").toBool();
        good += ok ? 1 : 0;
        receivers.append(QJsonObject{{"uart", line.uart},
                                     {"ok", ok},
                                     {"attempts", line.result.value("attempts")},
                                     {"text", ok ? QString() : line.failure},
                                     {"log", line.result.value("log")},
                                     {"capsule", line.result.value("capsule")}});
    }
    report->take(Report::kAll,
                 {{"kind", "summary"},
                  {"good", good},
                  {"of", static_cast<int>(lines.size())},
                  {"receivers", receivers},
                  {"ms", clock.elapsed()}});
}

int SideBySide::commonStatus() const
{
    const int first = lines.empty() ? kDone : lines.front().status;
    for (const Line &line : lines) {
        if (line.status != first || line.status < 0)
            return kCheckFailed;
    }
    return first;
}

} // namespace bench
