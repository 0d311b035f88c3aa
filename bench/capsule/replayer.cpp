#include "replayer.h"

#include "recorder.h"
#include "touches.h"

#include "bench/flash/terminal.h"
#include "bench/monitor/inputrun.h"
#include "bench/root/exitstatus.h"
#include "bench/root/privateroot.h"
#include "bench/unit/unitdocument.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QSemaphore>

#include <memory>

namespace bench {

namespace {

constexpr unsigned long kLookMilliseconds = 2;

// What a slower machine may take beyond twice the time that it took.
constexpr qint64 kPatienceMilliseconds = 10000;
// Once an input could not be made as it was, the later ones' states may never come.
constexpr qint64 kHinderedMilliseconds = 1000;

// Why an input cannot be made yet: the page or box that it is for is on its way.
const QStringList kPassing = {QStringLiteral("NotFound"), QStringLiteral("Hidden"),
                              QStringLiteral("Disabled"), QStringLiteral("Covered"),
                              QStringLiteral("WrongState")};

QString writePackage(const QVector<Capsule::PackageFile> &package, const QString &folder)
{
    for (const Capsule::PackageFile &each : package) {
        QFile file(folder + QLatin1Char('/') + each.name);
        const bool written = file.open(QIODevice::WriteOnly)
            && file.write(each.bytes) == each.bytes.size() && file.resize(each.size);
        if (!written)
            return QStringLiteral("%1 cannot be written (%2)")
                .arg(file.fileName(), file.errorString());
    }
    return QString();
}

QString inputText(const Capsule::Input &input)
{
    return QStringLiteral("%1 %2").arg(
        input.call,
        QString::fromUtf8(QJsonDocument(input.arguments).toJson(QJsonDocument::Compact)));
}

// How far the run in the capsule had come when it was told to end, or was killed.
Progress endOf(const Capsule &capsule)
{
    if (capsule.end)
        return *capsule.end;
    ProgressCounter counter;
    for (const Capsule::JournalEntry &entry : capsule.journal)
        counter.countJournal(entry.service);
    for (const Capsule::Frame &frame : capsule.frames)
        counter.countFrame(frame.direction, frame.step);
    for (const QString &line : capsule.trace)
        counter.countTrace(line);
    return counter.now();
}

qint64 lastMoment(const Capsule &capsule)
{
    qint64 last = capsule.inputs.isEmpty() ? 0 : capsule.inputs.last().ms;
    if (!capsule.frames.isEmpty())
        last = std::max(last, capsule.frames.last().ms);
    if (!capsule.journal.isEmpty())
        last = std::max(last, capsule.journal.last().ms);
    return last;
}

} // namespace

Replayer::Replayer(Dispatcher *destination, QWidget *unitScreen, QObject *parent)
    : QThread(parent), caller(destination), dispatcher(destination), screen(unitScreen),
      output(takeStandardOutput())
{
}

QString Replayer::load(const QString &file, UnitDocument *document)
{
    const QString trouble = readCapsule(file, &capsule);
    if (!trouble.isEmpty())
        return trouble;
    if (capsule.meta.value(QStringLiteral("receiver")) != QLatin1String("simulated"))
        return QStringLiteral(
                   "%1 was captured at a real receiver, which nobody can repeat; look at it "
                   "with any SQLite browser")
            .arg(file);
    const UnitDocument::Problem problem = document->setValue(QString(), capsule.unit);
    if (problem.kind != UnitDocument::Problem::None)
        return QStringLiteral(
                   "%1: the unit at its start does not fit this bench: %2; use the bench "
                   "that wrote it")
            .arg(file, problem.message);
    return writePackage(capsule.package, QLatin1String(kPackageFolder));
}

void Replayer::start(const Recorder *own)
{
    recorder = own;
    QThread::start();
}

void Replayer::run()
{
    qint64 before = 0;
    for (const Capsule::Input &input : qAsConst(capsule.inputs)) {
        if (input.refused)
            continue;
        awaitTurn(input, before);
        make(input, before);
        before = input.ms;
    }
    awaitEnd();
}

qint64 Replayer::patience(qint64 took) const
{
    return (hindrance ? kHinderedMilliseconds : kPatienceMilliseconds) + 2 * took;
}

void Replayer::awaitTurn(const Capsule::Input &input, qint64 before)
{
    Progress then;
    then.journal = input.journal;
    then.frames = input.frames;
    QElapsedTimer clock;
    clock.start();
    while (!then.isReachedBy(recorder->progress())) {
        if (clock.elapsed() > patience(input.ms - before)) {
            const Progress now = recorder->progress();
            note(input,
                 QStringLiteral("made after %1 entries of the journal and %2 frames in place of %3 "
                                "and %4")
                     .arg(now.journal)
                     .arg(now.frames)
                     .arg(input.journal)
                     .arg(input.frames));
            return;
        }
        msleep(kLookMilliseconds);
    }
}

void Replayer::make(const Capsule::Input &input, qint64 before)
{
    if (isTouch(input.call)) {
        makeTouch(input);
        return;
    }
    QElapsedTimer clock;
    clock.start();
    for (;;) {
        const QJsonObject error =
            caller.call(input.call, input.arguments).value(QStringLiteral("error")).toObject();
        if (error.isEmpty())
            return;
        const QString kind = error["data"].toObject()["class"].toString();
        if (!kPassing.contains(kind) || clock.elapsed() > patience(input.ms - before)) {
            note(input, error["message"].toString());
            return;
        }
        msleep(kLookMilliseconds);
    }
}

void Replayer::makeTouch(const Capsule::Input &input)
{
    const auto done = std::make_shared<QSemaphore>();
    QMetaObject::invokeMethod(
        dispatcher,
        [this, input, done] {
            InputRun::start(
                [this, input] {
                    if (screen)
                        repeatTouch(screen, input.call, input.arguments);
                },
                [done] { done->release(); });
        },
        Qt::QueuedConnection);
    done->acquire();
}

// Until as much has happened, or the updates are over whatever they came to.
void Replayer::awaitEnd()
{
    const Progress end = endOf(capsule);
    const qint64 last = lastMoment(capsule);
    const qint64 took = last - (capsule.inputs.isEmpty() ? 0 : capsule.inputs.last().ms);
    QElapsedTimer clock;
    clock.start();
    while (!hasEnded(end) && clock.elapsed() < patience(took))
        msleep(kLookMilliseconds);
}

bool Replayer::hasEnded(const Progress &end) const
{
    const Progress now = recorder->progress();
    const bool updatesOver = end.updatesEnded > 0 && end.updatesBegun == end.updatesEnded
        && now.updatesBegun == now.updatesEnded;
    return now.journal >= end.journal && now.updatesEnded >= end.updatesEnded
        && (now.frames >= end.frames || updatesOver);
}

void Replayer::note(const Capsule::Input &input, const QString &is)
{
    if (!hindrance)
        hindrance = Difference{
            QStringLiteral("input %1").arg(input.number), input.ms, {}, inputText(input), is};
}

int Replayer::compare(const QString &replayed) const
{
    Capsule now;
    const QString trouble = readCapsule(replayed, &now);
    if (!trouble.isEmpty()) {
        std::fprintf(stderr, "testmode-bench: %s\n", qUtf8Printable(trouble));
        return kFault;
    }
    const std::optional<Difference> verdict = otherVerdict(capsule, now);
    const std::optional<Difference> first = hindrance ? hindrance : firstDifference(capsule, now);
    if (first)
        std::fprintf(output, "first difference: %s\n", qUtf8Printable(wordsOf(*first)));
    if (verdict)
        std::fprintf(output, "another verdict: %s\n", qUtf8Printable(wordsOf(*verdict)));
    for (auto each = now.verdicts.constBegin(); each != now.verdicts.constEnd(); ++each)
        std::fprintf(output, "%s: %s\n", qUtf8Printable(each.key()), qUtf8Printable(each.value()));
    std::fprintf(output, "%s%s\n", verdict ? "another verdict" : "the same verdict",
                 capsule.isComplete() ? "" : ", as far as the capsule goes: its bench was killed");
    std::fflush(output);
    return verdict ? kCheckFailed : kDone;
}

} // namespace bench
