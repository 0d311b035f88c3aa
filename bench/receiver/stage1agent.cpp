#include "stage1agent.h"

#include "hex.h"
#include "record.h"
#include "wire.h"

namespace bench::chip {

namespace {

ReceiverStep stepOf(quint8 command)
{
    switch (command) {
    case wire::LoadShort:
        return ReceiverStep::LoadStage2;
    case wire::Jump:
        return ReceiverStep::Jump;
    default:
        return ReceiverStep::Command;
    }
}

} // namespace

Stage1Agent::Stage1Agent(Conversation &usedConversation, Record &usedRecord,
                         const Guarded<ReceiverSettings> &usedSettings)
    : conversation(usedConversation), logbook(usedRecord), settings(usedSettings),
      loader(usedConversation)
{
}

void Stage1Agent::run()
{
    loaded = false;
    greet();
    switchRate();
    checkLine();
    report();
    bool started = false;
    while (!started)
        takeCommand(&started);
}

void Stage1Agent::greet()
{
    // A refused status leaves the agent where it is.
    do {
        conversation.await(ReceiverStep::Stage1Greeting, {wire::kGreeting},
                           QStringLiteral("greeting"));
        conversation.echo();
    } while (!conversation.sendStatus(wire::kStatusGood));

    do {
        awaitWord(ReceiverStep::Stage1Announce, wire::kAnnounce, QStringLiteral("announcement"));
    } while (!conversation.sendStatus(wire::kStatusGood));

    do {
        conversation.await(ReceiverStep::Stage1Confirm, {wire::kGreeting},
                           QStringLiteral("confirmation"));
        conversation.echo();
    } while (!conversation.sendStatus(wire::kStatusGood));
}

void Stage1Agent::switchRate()
{
    awaitWord(ReceiverStep::Stage1Switch, wire::kSwitchRate, QStringLiteral("switch the rate"));
    conversation.uart().setBaud(settings.get().downloadRate);
    logbook.enter(ReceiverPhase::Stage1Fast);
}

void Stage1Agent::awaitWord(ReceiverStep step, quint16 expected, const QString &meaning)
{
    for (;;) {
        conversation.begin(step);
        const quint16 word = conversation.echoedWord(meaning);
        if (word == expected)
            return;
        conversation.anomaly(hex(word, 4), hex(expected, 4));
        conversation.sendStatus(wire::kStatusRefusedValue);
    }
}

void Stage1Agent::checkLine()
{
    for (;;) {
        conversation.begin(ReceiverStep::LineCheck);
        bool good = true;
        for (const quint8 expected : wire::kLineCheck) {
            const quint8 byte = conversation.readByte();
            if (conversation.uart().baud() == Uart::kAnyBaud)
                conversation.uart().setBaud(conversation.uart().lastByteBaud());
            conversation.heard(QStringLiteral("line check"));
            conversation.echo();
            if (byte != expected)
                conversation.anomaly(hex(byte, 2), hex(expected, 2));
            good = good && byte == expected;
        }
        const quint16 status = good ? wire::kStatusGood : wire::kStatusRefusedValue;
        if (conversation.sendStatus(status))
            return;
    }
}

void Stage1Agent::report()
{
    do {
        conversation.await(ReceiverStep::Stage1Ready, {wire::kGreeting},
                           QStringLiteral("is the line good"));
    } while (!conversation.sendStatus(wire::kStatusGood));

    for (const ReceiverStep step : {ReceiverStep::Stage1First, ReceiverStep::Stage1Second}) {
        do {
            conversation.await(step, {wire::kGreeting}, QStringLiteral("report"));
            conversation.sendWords({0, 0}, QStringLiteral("report"));
        } while (!conversation.sendStatus(wire::kStatusGood));
    }
}

void Stage1Agent::takeCommand(bool *started)
{
    const quint8 command = conversation.readCommand(stepOf);
    switch (command) {
    case wire::LoadShort:
        loaded = loader.load(1);
        return;
    case wire::Jump:
        return jump(started);
    default:
        conversation.anomaly(hex(command, 2), hex(loaded ? wire::Jump : wire::LoadShort, 2));
        conversation.heard(QStringLiteral("not understood"));
    }
}

void Stage1Agent::jump(bool *started)
{
    conversation.heard(QStringLiteral("jump"));
    conversation.echo();
    const quint32 address = conversation.echoedLong(QStringLiteral("address"));
    if (!loaded || address != loader.address()) {
        conversation.anomaly(QStringLiteral("a jump to ") + hex(address, 8),
                             loaded ? QStringLiteral("a jump to ") + hex(loader.address(), 8)
                                    : QStringLiteral("the second agent first"));
        conversation.sendStatus(loaded ? wire::kStatusRefusedRange : wire::kStatusRefusedOrder);
        return;
    }
    *started = conversation.sendStatus(wire::kStatusGood);
}

} // namespace bench::chip
