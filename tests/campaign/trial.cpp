#include "trial.h"

#include "livingchip.h"
#include "packages.h"
#include "seamport.h"
#include "timebudget.h"

#include "bench/receiver/terminal.h"
#include "gnss_download/ugrade_thread.h"
#include "tools/common.h"

#include <QCoreApplication>

#include <optional>

namespace tests {

namespace {

using bench::Fault;

// Between two looks at a worker.
constexpr unsigned long kLookMilliseconds = 1000;

// What the host may take beside its time-outs.
constexpr qint64 kSlackMilliseconds = 50;

// The page's, after "Check".
void prepareSettings()
{
    com_set = config();
    com_set.baudRate = 115200;
    br = QStringLiteral("921600");
}

// While images are written. What came before is thrown away at the next image's beginning.
bool strikesAnImage(const Fault &fault)
{
    using bench::ReceiverStep;
    return fault.step && *fault.step >= ReceiverStep::Download
        && *fault.step <= ReceiverStep::ImageSum;
}

// The host may have heard of an image what the receiver did not say, or twice, or of something
// else.
bool meddlesWithAnswers(const Fault &fault)
{
    if (!strikesAnImage(fault))
        return false;
    switch (fault.kind) {
    case Fault::Kind::Garbage:
    case Fault::Kind::Acknowledge:
    case Fault::Kind::Checksum:
    case Fault::Kind::Repeat:
        return true;
    default:
        return Fault::ofByte(fault.kind) && fault.direction == Fault::Direction::ToHost;
    }
}

} // namespace

// One of the two kinds of line.
struct Rig::Ends
{
    bool onTerminal;
    bench::chip::Terminal terminal;
    SeamLine seam;

    explicit Ends(bool terminalWanted) : onTerminal(terminalWanted)
    {
        QString error;
        if (onTerminal && !terminal.open(&error))
            qFatal("%s", qPrintable(error));
    }
    bench::chip::Line &line()
    {
        if (onTerminal)
            return terminal;
        return seam;
    }
};

Rig::Rig(bool onTerminal) : line(std::make_unique<Ends>(onTerminal))
{
    prepareSettings();
    receiver = std::make_unique<LivingChip>(line->line());
    flash = flashWith(campaignPackage(1));
    chip().flash.load(flash);
}

Rig::~Rig() = default;

Verdict Rig::run(const FaultCase &trial, Observation *seen)
{
    const file &package = campaignPackage(0);
    chip().dialogue.clear();
    chip().logbook.clearAnomalies();
    chip().faults.set(trial.faults, trial.seed);
    Observation observation = update(package);
    noteFaults(&observation);
    Verdict verdict = judge(observation, package);
    if (seen != nullptr)
        *seen = observation;

    const file &other = campaignPackage(1);
    chip().faults.set({}, 0);
    if (observation.addressMeddledWith) {
        // What was written beside the images would stay there for good.
        flash.fill('\xFF');
        chip().flash.load(flash);
    }
    const Verdict next = judge(update(other), other);
    if (verdict.outcome == Outcome::Wrong || next.outcome == Outcome::Untouched)
        return verdict;
    return {Outcome::Wrong, QStringLiteral("the next update: ") + next.reason};
}

bench::chip::Chip &Rig::chip()
{
    return receiver->chip;
}

Observation Rig::update(const file &package)
{
    Observation seen;
    seen.flashBefore = flash;
    downloadfile = package;
    const qint64 begun = clock.microseconds();
    qint64 ended = begun;
    {
        ugrade_thread worker(line->terminal.path());
        std::optional<SeamPort> port;
        if (!line->onTerminal)
            port.emplace(&line->seam, &worker);
        const TimeBudget budget(&worker);
        QObject::connect(
            &worker, &ugrade_thread::signals_success, &worker,
            [&](const QString &, bool ok) {
                ++seen.results;
                seen.success = ok;
                ended = clock.microseconds();
            },
            Qt::DirectConnection);
        worker.start();
        while (!worker.wait(kLookMilliseconds) && !seen.endless)
            seen.endless = isEndless(budget, (clock.microseconds() - begun) / 1000);
        seen.drawnForEver = budget.repeatsWithoutEnd();
        if (seen.endless)
            QMetaObject::invokeMethod(qApp, "aboutToQuit");
        seen.budget = budget.milliseconds() + kSlackMilliseconds;
    }
    seen.milliseconds = (ended - begun) / 1000;
    flash = receiver->chip.flash.read(bench::chip::Flash::kBase,
                                      static_cast<int>(bench::chip::Flash::kSize));
    seen.flash = flash;
    downloadfile = file();
    return seen;
}

bool Rig::isEndless(const TimeBudget &budget, qint64 milliseconds) const
{
    return budget.repeatsWithoutEnd() || milliseconds > kLongestUpdateMilliseconds;
}

void Rig::noteFaults(Observation *seen)
{
    deeds.clear();
    const QVector<bench::FaultReport> reports = chip().faults.reports();
    for (const bench::FaultReport &report : reports) {
        const Fault &fault = report.fault;
        deeds += report.deeds;
        seen->faultsDone += report.done;
        if (fault.kind == Fault::Kind::NoWrite)
            seen->packetsLost += report.done;
        if (report.done > 0 && meddlesWithAnswers(fault))
            seen->answersMeddledWith = true;
        const bool toReceiver =
            Fault::ofByte(fault.kind) && fault.direction == Fault::Direction::ToReceiver;
        if (report.done > 0 && toReceiver && fault.step == bench::ReceiverStep::Download)
            seen->addressMeddledWith = true;
        const bool stops =
            fault.kind == Fault::Kind::FlowByte && fault.value.value_or(0x13) == 0x13;
        if (report.done > 0 && stops && fault.resumeMilliseconds == 0)
            seen->senderStopped = true;
        // A byte on its way to the host may become an XOFF.
        if (!report.deeds.filter(QStringLiteral("became 0x13")).isEmpty())
            seen->senderStopped = true;
        // Bytes that are held up hold the sender up.
        const quint32 late = fault.kind == Fault::Kind::Late ? fault.value.value_or(50) : 0;
        seen->budget += report.done * (qint64(late) + fault.resumeMilliseconds);
    }
}

} // namespace tests
