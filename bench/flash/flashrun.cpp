#include "flashrun.h"

#include "flashcomparison.h"

#include <QJsonArray>

#include <utility>

namespace bench {

namespace {

// Ends the flash: the page cannot be used as it should.
struct PageFailure
{
    QString why;
};

const QString kStart = QStringLiteral("pushButton_3");

constexpr int kPageMilliseconds = 5000;

// How often the trace is looked at while an update runs.
constexpr int kLookMilliseconds = 100;

// An update that is to end and does not get on for so long is left to the plug-in, which ends it.
constexpr int kIdleMilliseconds = 7000;

constexpr int kTimeoutCode = -32008; // of the monitor's calls

} // namespace

FlashRun::FlashRun(Dispatcher *dispatcher, FlashOrder flashOrder, EventSink eventSink,
                   QObject *parent)
    : QThread(parent), caller(dispatcher), order(std::move(flashOrder)), sink(std::move(eventSink)),
      reader([this](const Event &event) { report(event); }), log(order.log)
{
}

void FlashRun::run()
{
    clock.start();
    report({{"kind", "start"},
            {"package", order.package},
            {"attempts", order.attempts},
            {"log", order.log}});
    log.open(QIODevice::WriteOnly | QIODevice::Append);
    tellOfLog();
    QString why;
    try {
        openPage();
        loadPackage();
        good = attemptAsOrdered();
    } catch (const PageFailure &failure) {
        readTrace();
        why = failure.why;
        report({{"kind", "failure"},
                {"phase", nameOf(UpdatePhase::Package)},
                {"step", ""},
                {"text", why},
                {"said", ""}});
    }
    Event result{{"kind", "result"}, {"ok", good}, {"attempts", attempts}, {"log", order.log}};
    if (!good && !order.capsule.isEmpty())
        result.insert(QStringLiteral("capsule"), order.capsule);
    report(result);
}

void FlashRun::openPage()
{
    call(QStringLiteral("window.home"));
    waitFor(QStringLiteral("testEntryWidget"), QStringLiteral("visible"), true, kPageMilliseconds);
    // The kind of module that the test mode flashes itself.
    call(QStringLiteral("unit.set"), {{"path", "gnss.module_kind"}, {"value", 1}});
    click(QStringLiteral("key_gps_update"));
    if (!waitFor(QStringLiteral("Gpsupdate"), QStringLiteral("visible"), true, kPageMilliseconds))
        throw PageFailure{QStringLiteral("the update page does not open")};
}

void FlashRun::loadPackage()
{
    click(QStringLiteral("Gpsupdate/pushButton"));
    const QString found = textOf(QStringLiteral("lineEdit_2"));
    if (found != QLatin1String("OK"))
        throw PageFailure{QStringLiteral("the page finds no package: %1").arg(found)};
    click(QStringLiteral("pushButton_2"));
    readTrace();
    if (answerBoxes())
        throw PageFailure{QStringLiteral("the page cannot read the package")};
    report({{"kind", "phase"},
            {"phase", nameOf(UpdatePhase::Package)},
            {"bytes", reader.bytesInAll()},
            {"text", QStringLiteral("package read, %1 bytes").arg(reader.bytesInAll())}});
}

bool FlashRun::attemptAsOrdered()
{
    while (attempts < order.attempts && !stopping) {
        ++attempts;
        report({{"kind", "attempt"}, {"attempt", attempts}, {"of", order.attempts}});
        if (attempt())
            return true;
    }
    return false;
}

bool FlashRun::attempt()
{
    reader.beginAttempt();
    writingSince = -1;
    click(kStart);
    if (!awaitEnd())
        return false;
    if (!pageSaysSuccess()) {
        reader.tellFailure();
        return false;
    }
    return !order.uart.isEmpty() || flashIsEqual();
}

// False: it was left before its end.
bool FlashRun::awaitEnd()
{
    for (;;) {
        const bool ended = waitFor(kStart, QStringLiteral("enabled"), true, kLookMilliseconds);
        readTrace();
        reportWhatWasTold();
        answerBoxes();
        if (ended)
            return true;
        if (stopping && mayLeave())
            return false;
    }
}

// What the plug-in would finish when the process ends is finished while the page can still tell.
bool FlashRun::mayLeave()
{
    const bool finishes = reader.phase() > UpdatePhase::LoadStage1;
    if (!std::exchange(stopTold, true))
        report({{"kind", "stop"},
                {"text",
                 finishes ? QStringLiteral("told to end: the update is finished first")
                          : QStringLiteral("told to end: the update is left")}});
    return !finishes || idle.elapsed() > kIdleMilliseconds;
}

bool FlashRun::pageSaysSuccess()
{
    const QString last =
        textOf(QStringLiteral("textBrowser")).trimmed().section(QLatin1Char('\n'), -1);
    return last.contains(QLatin1String(": succed "));
}

bool FlashRun::flashIsEqual()
{
    bool equal = true;
    QJsonArray images;
    for (const ImageComparison &image : compareFlash(&caller)) {
        equal = equal && image.equal;
        images.append(QJsonObject{{"image", image.name},
                                  {"equal", image.equal},
                                  {"file_sha256", image.fileSum},
                                  {"flash_sha256", image.flashSum}});
    }
    report({{"kind", "flash"},
            {"equal", equal},
            {"images", images},
            {"text",
             equal ? QStringLiteral("the receiver's flash equals the files, byte for byte")
                   : QStringLiteral("the receiver's flash differs from the files")}});
    return equal;
}

void FlashRun::report(Event event)
{
    if (event.value("phase").toString() == nameOf(UpdatePhase::Write) && writingSince < 0)
        writingSince = clock.elapsed();
    const QString kind = event.value("kind").toString();
    if (kind == QLatin1String("progress"))
        addRate(&event);
    if (kind == QLatin1String("progress") || kind == QLatin1String("phase"))
        idle.start();
    event.insert(QStringLiteral("uart"), order.uart);
    event.insert(QStringLiteral("ms"), clock.elapsed());
    sink(event);
}

void FlashRun::tell(const Event &event)
{
    const QMutexLocker lock(&telling);
    told.append(event);
}

void FlashRun::reportWhatWasTold()
{
    QVector<Event> events;
    {
        const QMutexLocker lock(&telling);
        events.swap(told);
    }
    for (const Event &event : qAsConst(events))
        report(event);
}

void FlashRun::addRate(Event *progress)
{
    const qint64 spent = qMax<qint64>(1, clock.elapsed() - writingSince);
    const double rate = progress->value("bytes").toDouble() * 1000.0 / static_cast<double>(spent);
    const double left = progress->value("total").toDouble() - progress->value("bytes").toDouble();
    progress->insert(QStringLiteral("bytes_per_second"), qRound64(rate));
    progress->insert(QStringLiteral("seconds_left"), rate > 0.0 ? left / rate : 0.0);
}

void FlashRun::readTrace()
{
    for (bool more = true; more;) {
        const QJsonObject page = call(QStringLiteral("trace.read"), {{"since", traceRead}});
        const QJsonArray lines = page.value("lines").toArray();
        for (const QJsonValue &line : lines) {
            log.write(line.toString().toUtf8() + '\n');
            reader.read(line.toString());
        }
        traceRead = page.value("next").toInt();
        more = page.value("more").toBool();
    }
    log.flush();
    tellOfLog();
}

// A log that cannot be written (any more) is told of once; the update goes on.
void FlashRun::tellOfLog()
{
    if (log.error() == QFileDevice::NoError || std::exchange(logTold, true))
        return;
    report({{"kind", "note"},
            {"text", QStringLiteral("the log cannot be written: %1").arg(log.errorString())}});
}

// True when there was one. The page waits until it is answered.
bool FlashRun::answerBoxes()
{
    bool answered = false;
    for (;;) {
        const QJsonArray boxes = call(QStringLiteral("ui.boxes")).value("boxes").toArray();
        if (boxes.isEmpty())
            return answered;
        const QJsonObject box = boxes.last().toObject();
        report({{"kind", "message"}, {"title", box.value("title")}, {"text", box.value("text")}});
        call(QStringLiteral("ui.answer"), {{"button", box.value("buttons").toArray().first()}});
        answered = true;
    }
}

QJsonObject FlashRun::call(const QString &method, const QJsonObject &parameters)
{
    const QJsonObject reply = caller.call(method, parameters);
    if (reply.contains(QStringLiteral("error")))
        throw PageFailure{QStringLiteral("%1: %2").arg(
            method, reply.value("error").toObject().value("message").toString())};
    return reply.value("result").toObject();
}

void FlashRun::click(const QString &object)
{
    call(QStringLiteral("ui.click"), {{"object", object}});
}

bool FlashRun::waitFor(const QString &object, const QString &property, const QJsonValue &value,
                       int milliseconds)
{
    const QJsonObject reply = caller.call(QStringLiteral("ui.wait"),
                                          {{"object", object},
                                           {"property", property},
                                           {"value", value},
                                           {"timeout_ms", milliseconds}});
    const QJsonObject error = reply.value("error").toObject();
    if (!error.isEmpty() && error.value("code").toInt() != kTimeoutCode)
        throw PageFailure{error.value("message").toString()};
    return error.isEmpty();
}

QString FlashRun::textOf(const QString &object)
{
    return call(QStringLiteral("ui.state"), {{"object", object}}).value("text").toString();
}

} // namespace bench
