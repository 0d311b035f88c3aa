#include "receivermethods.h"

#include "dispatcher.h"
#include "flashmethods.h"
#include "receivercall.h"
#include "receiverwords.h"
#include "unitvalues.h"
#include "waiting.h"

#include "bench/receiver/receiver.h"
#include "bench/receiver/step.h"
#include "bench/unit/unitdocument.h"

namespace bench {

namespace {

// An answer must fit a line of the monitor: so much of text.
constexpr int kAnswerBytes = 512 * 1024;
constexpr int kKeyBytes = 100; // of a frame as an object: what its words do not count

const QString kBranch = QStringLiteral("receiver");

QJsonObject toJson(const WrittenImage &image)
{
    return {{"address", double(image.address)},
            {"length", image.length},
            {"packets", image.packets},
            {"complete", image.complete},
            {"microseconds", image.microseconds}};
}

QJsonArray toJson(const QVector<WrittenImage> &images)
{
    QJsonArray list;
    for (const WrittenImage &image : images)
        list.append(toJson(image));
    return list;
}

QJsonArray toJson(const QVector<PhaseTime> &phases)
{
    QJsonArray list;
    for (const PhaseTime &phase : phases)
        list.append(QJsonObject{
            {"phase", phase.phase}, {"began", phase.began}, {"milliseconds", phase.milliseconds}});
    return list;
}

QJsonObject toJson(const ReceiverState &state)
{
    return {{"phase", state.phase},
            {"step", state.step},
            {"baud", state.baud},
            {"host_baud", state.hostBaud},
            {"resets", state.resets},
            {"watchdog_resets", state.watchdogResets},
            {"bytes_in", state.bytesIn},
            {"bytes_out", state.bytesOut},
            {"packets", state.packets},
            {"images", toJson(state.images)},
            {"phases", toJson(state.phases)},
            {"image_bytes_per_second", state.imageBytesPerSecond},
            {"anomalies", QJsonArray::fromStringList(state.anomalies)}};
}

QJsonArray toJson(const QVector<FaultReport> &reports)
{
    QJsonArray list;
    for (const FaultReport &report : reports) {
        QJsonArray moments;
        for (const qint64 moment : report.moments)
            moments.append(moment);
        list.append(QJsonObject{{"fault", report.fault.toJson()},
                                {"done", report.done},
                                {"deeds", QJsonArray::fromStringList(report.deeds)},
                                {"moments", moments}});
    }
    return list;
}

QJsonObject toJson(const DialogueLine &line)
{
    static const char *const kDirections[] = {"to-receiver", "to-host", "event"};
    return {{"n", line.number},
            {"ms", line.elapsed},
            {"direction", kDirections[line.direction]},
            {"baud", line.baud},
            {"step", line.step},
            {"meaning", line.meaning},
            {"bytes", QString::fromLatin1(line.bytes.toHex(' '))},
            {"length", line.length}};
}

QJsonObject faults(UnitDocument *document, const Receiver &receiver, const Arguments &arguments)
{
    const bool clears = arguments.value("clear").toBool();
    if (arguments.has("set") && clears)
        throw CallError(ErrorClass::Argument, QStringLiteral("one of set and clear is wanted"));
    QJsonObject change;
    if (arguments.has("set") || clears)
        change.insert("faults", arguments.list("set"));
    if (arguments.has("seed"))
        change.insert("seed", arguments.value("seed"));
    setUnitValue(document, kBranch, change);
    return {{"seed", *document->value(QStringLiteral("receiver.seed"))},
            {"faults", toJson(receiver.faultReports())}};
}

QJsonObject dialogue(const Receiver &receiver, const Arguments &arguments)
{
    const int since = arguments.integer("since");
    const bool whole = arguments.value("entries").toBool();
    int bytes = 0;
    int last = since;
    bool more = false;
    QJsonArray lines;
    const QVector<DialogueLine> found = receiver.dialogue(since);
    const int gone = found.isEmpty() ? 0 : found.first().number - since - 1;
    for (const DialogueLine &line : found) {
        const QString text = line.text();
        bytes += text.size() + (whole ? kKeyBytes : 3); // quotes and comma; plain ASCII
        more = bytes > kAnswerBytes;
        if (more)
            break;
        lines.append(whole ? QJsonValue(toJson(line)) : QJsonValue(text));
        last = line.number;
    }
    return {{whole ? "entries" : "lines", lines}, {"gone", gone}, {"next", last}, {"more", more}};
}

void waitForPhase(const Call &call, const Receiver *receiver)
{
    const QString wanted = call.arguments.text("phase");
    if (!phaseNames().contains(wanted))
        throw CallError(ErrorClass::NotFound,
                        QStringLiteral("no phase %1; there are: %2")
                            .arg(wanted, phaseNames().join(QStringLiteral(", "))));
    // A phase may be over before anybody looks, so its coming is listened for.
    const auto listener = std::make_shared<QObject>();
    const auto came = std::make_shared<bool>(receiver->state().phase == wanted);
    QObject::connect(receiver, &Receiver::phaseChanged, listener.get(),
                     [came, wanted](const QString &phase) { *came = *came || phase == wanted; });
    Waiting::start(
        call,
        [listener, came, wanted]() -> std::optional<QJsonObject> {
            return *came ? std::make_optional(QJsonObject{{"phase", wanted}}) : std::nullopt;
        },
        [receiver, wanted] {
            return QStringLiteral("the receiver is not in %1 but in %2")
                .arg(wanted, receiver->state().phase);
        });
}

QVector<Parameter> settingsParameters()
{
    return {optional("powered", ParameterType::Boolean, words::kPowered),
            optional("reset_on_sync", ParameterType::Boolean, words::kResetOnSync),
            optional("line_rate", ParameterType::Boolean, words::kLineRate),
            optional("download_rate", ParameterType::Integer, words::kDownloadRate),
            optional("hw_code", ParameterType::Integer, "of the chip"),
            optional("hw_subcode", ParameterType::Integer, "of the chip"),
            optional("flash_id", ParameterType::List, "three words of 16 bits"),
            optional("watchdog_ms", ParameterType::Integer, words::kWatchdogMs)};
}

Parameter seed()
{
    Parameter parameter = optional("seed", ParameterType::Integer, words::kSeed);
    parameter.minimum = 0;
    return parameter;
}

void addSettings(Dispatcher *dispatcher, UnitDocument *document, Receiver *receiver)
{
    dispatcher->add({"receiver.state",
                     {},
                     "Where the dialogue stands, the baud rates, counts and what went wrong",
                     "",
                     asked(receiver, [receiver](const Call &call) {
                         call.responder.succeed(toJson(receiver->state()));
                     })});
    dispatcher->add({"receiver.set", settingsParameters(),
                     "Changes how the receiver is built; counts from its next use",
                     "line_rate=false", asked(receiver, [document](const Call &call) {
                         setUnitValue(document, kBranch, call.arguments.object());
                         call.responder.succeed();
                     })});
    dispatcher->add({"receiver.reset",
                     {optional("asserted", ParameterType::Boolean,
                               "holds the line, or lets it go; left out: a pulse")},
                     "Drives the reset line",
                     "",
                     asked(receiver, [receiver](const Call &call) {
                         if (call.arguments.has("asserted"))
                             receiver->setReset(call.arguments.value("asserted").toBool());
                         else
                             receiver->pulseReset();
                         call.responder.succeed();
                     })});
    dispatcher->add(
        {"receiver.faults",
         {optional("set", ParameterType::List, "faults to come, in place of those before"),
          optional("clear", ParameterType::Boolean, "takes all faults away"), seed()},
         "Sets faults; answers with each fault, how often it struck and what it did",
         R"(set='[{"kind":"drop","step":"packet","packet":3}]' seed=7)",
         asked(receiver, [document, receiver](const Call &call) {
             call.responder.succeed(faults(document, *receiver, call.arguments));
         })});
}

void addRecord(Dispatcher *dispatcher, Receiver *receiver)
{
    dispatcher->add(
        {"receiver.dialogue",
         {since(),
          optional("entries", ParameterType::Boolean,
                   "true: 'entries', each as in 'receiver.frame', in place of 'lines'")},
         "The frames of both directions, a line of words each; 'more' says that 'next' "
         "asks for a rest",
         "since=0",
         asked(receiver, [receiver](const Call &call) {
             call.responder.succeed(dialogue(*receiver, call.arguments));
         })});
    dispatcher->add(
        {"receiver.wait",
         {required("phase", ParameterType::Text, "a phase of the receiver"), timeout()},
         "Answers when the receiver is in the phase, or passes through it",
         "phase=application timeout_ms=2000",
         asked(receiver, [receiver](const Call &call) { waitForPhase(call, receiver); })});
}

// What happens on the line comes from the receiver's thread, in its order.
void addEvents(Dispatcher *dispatcher, const Receiver *receiver)
{
    dispatcher->addEvent("receiver.phase", "'phase': the receiver has got there");
    dispatcher->addEvent("receiver.anomaly", "'text': what came, and what was expected");
    dispatcher->addEvent("receiver.baud",
                         "'baud', 'host_baud': the rate of the receiver or of the host is another");
    dispatcher->addEvent("receiver.frame",
                         "a frame, or an event beside it: 'n', 'ms', 'direction', 'baud', 'step', "
                         "'meaning', 'bytes' (hex, the first 64), 'length'");
    dispatcher->addEvent("receiver.image",
                         "'image' from 1, with the keys of 'images' in the state: it begins, or is "
                         "complete");
    dispatcher->addEvent("receiver.written",
                         "'address', 'length', 'image': a part of the flash has been written; "
                         "image 0: it was replaced");
    dispatcher->addEvent("receiver.fault",
                         "'number' from 0, 'done', 'deed', 'ms': a fault of the list has struck");
    if (receiver == nullptr)
        return;
    const auto tell = [dispatcher](const char *event, const QJsonObject &params) {
        emit dispatcher->eventHappened(QString::fromLatin1(event), params);
    };
    QObject::connect(receiver, &Receiver::phaseChanged, dispatcher, [tell](const QString &phase) {
        tell("receiver.phase", {{"phase", phase}});
    });
    QObject::connect(receiver, &Receiver::anomalyFound, dispatcher, [tell](const QString &text) {
        tell("receiver.anomaly", {{"text", text}});
    });
    QObject::connect(receiver, &Receiver::baudChanged, dispatcher, [tell](int baud, int hostBaud) {
        tell("receiver.baud", {{"baud", baud}, {"host_baud", hostBaud}});
    });
    QObject::connect(receiver, &Receiver::lineAdded, dispatcher,
                     [tell](const DialogueLine &line) { tell("receiver.frame", toJson(line)); });
    QObject::connect(receiver, &Receiver::imageChanged, dispatcher,
                     [tell](int number, const WrittenImage &image) {
                         QJsonObject params = toJson(image);
                         params.insert("image", number);
                         tell("receiver.image", params);
                     });
    QObject::connect(
        receiver, &Receiver::flashWritten, dispatcher,
        [tell](quint32 address, quint32 length, int image) {
            tell("receiver.written",
                 {{"address", double(address)}, {"length", int(length)}, {"image", image}});
        });
    QObject::connect(receiver, &Receiver::faultStruck, dispatcher,
                     [tell](int number, const FaultReport &lastDeed) {
                         tell("receiver.fault",
                              {{"number", number},
                               {"done", lastDeed.done},
                               {"deed", lastDeed.deeds.value(0)},
                               {"ms", lastDeed.moments.value(0)}});
                     });
}

} // namespace

void addReceiverMethods(Dispatcher *dispatcher, UnitDocument *document, Receiver *receiver)
{
    addSettings(dispatcher, document, receiver);
    addRecord(dispatcher, receiver);
    addFlashMethods(dispatcher, receiver);
    addEvents(dispatcher, receiver);
    dispatcher->addToSchema("phases", QJsonArray::fromStringList(phaseNames()));
    dispatcher->addToSchema("steps", QJsonArray::fromStringList(stepNames()));
    dispatcher->addToSchema("faults", QJsonArray::fromStringList(Fault::kindNames()));
}

} // namespace bench
