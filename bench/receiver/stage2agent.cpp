#include "stage2agent.h"

#include "hex.h"
#include "record.h"
#include "wire.h"

namespace bench::chip {

namespace {

constexpr int kStartMilliseconds = 5; // from the jump to the agent's first byte

ReceiverStep stepOf(quint8 command)
{
    switch (command) {
    case wire::ImageStart:
        return ReceiverStep::ImageStart;
    case wire::DownloadImage:
        return ReceiverStep::Download;
    case wire::Disconnect:
        return ReceiverStep::Disconnect;
    case wire::Finish:
        return ReceiverStep::Finish;
    case wire::ArmWatchdog:
        return ReceiverStep::Watchdog;
    default:
        return ReceiverStep::Command;
    }
}

} // namespace

Stage2Agent::Stage2Agent(Conversation &usedConversation, Record &usedRecord, Flash &usedFlash,
                         const Guarded<ReceiverSettings> &usedSettings)
    : conversation(usedConversation), logbook(usedRecord), settings(usedSettings),
      writer(usedConversation, usedRecord, usedFlash)
{
}

ReceiverPhase Stage2Agent::run()
{
    imageAnnounced = false;
    leaving = false;
    conversation.uart().pause(kStartMilliseconds);
    if (!handshake())
        return ReceiverPhase::Silent;
    logbook.enter(ReceiverPhase::AgentSync);
    learn();
    logbook.enter(ReceiverPhase::Ready);
    writer.restart();
    for (;;) {
        if (const std::optional<ReceiverPhase> next = takeCommand())
            return *next;
    }
}

bool Stage2Agent::handshake()
{
    conversation.begin(ReceiverStep::Handshake);
    for (const quint8 byte : wire::kHandshake) {
        conversation.acknowledge(byte, QStringLiteral("handshake"));
        const auto expected = static_cast<quint8>(~byte);
        const quint8 answer = conversation.readByte();
        conversation.heard(QStringLiteral("handshake"));
        if (answer != expected) {
            conversation.anomaly(hex(answer, 2), hex(expected, 2));
            return false;
        }
    }
    conversation.acknowledge(wire::kAcknowledge, QStringLiteral("handshake complete"));
    return true;
}

void Stage2Agent::learn()
{
    conversation.await(ReceiverStep::Logging, {0x00, 0x01}, QStringLiteral("logging off or on"));
    conversation.acknowledge(wire::kPositive, QStringLiteral("yes"));

    conversation.await(ReceiverStep::PowerKey, {0x00},
                       QStringLiteral("no long press of the power key"));
    conversation.acknowledge(wire::kPositive, QStringLiteral("yes"));

    conversation.await(ReceiverStep::FlashId, {wire::ReadFlashId},
                       QStringLiteral("identify the flash"));
    const auto id = settings.get().flashId;
    conversation.sendWords({id[0], id[1], id[2]}, QStringLiteral("identity of the flash"));

    learnParameters();
}

void Stage2Agent::learnParameters()
{
    for (;;) {
        conversation.await(ReceiverStep::Parameters, {wire::SetParameters},
                           QStringLiteral("parameters"));
        conversation.echo();
        const QByteArray block = conversation.readBlock(static_cast<int>(wire::kParameters.size()));
        conversation.heard(QStringLiteral("parameters"));
        bool good = true;
        for (int i = 0; good && i < block.size(); ++i) {
            const auto byte = static_cast<quint8>(block.at(i));
            const quint8 expected = wire::kParameters[static_cast<size_t>(i)];
            good = byte == expected;
            if (!good)
                conversation.anomaly(QStringLiteral("%1 as byte %2").arg(hex(byte, 2)).arg(i),
                                     hex(expected, 2));
        }
        conversation.sendWords({0}, QStringLiteral("parameters taken"));
        good = conversation.sendStatus(good ? wire::kStatusGood : wire::kStatusRefusedValue);
        conversation.acknowledge(wire::kAcknowledge, QStringLiteral("end of the parameters"));
        if (good)
            return;
    }
}

std::optional<ReceiverPhase> Stage2Agent::takeCommand()
{
    const quint8 command = conversation.readCommand(stepOf);
    switch (command) {
    case wire::ImageStart: // said before each image, and answered by nothing
        conversation.heard(QStringLiteral("an image follows"));
        imageAnnounced = true;
        return std::nullopt;
    case wire::DownloadImage:
        writer.download(imageAnnounced);
        imageAnnounced = false;
        logbook.enter(ReceiverPhase::Ready);
        return std::nullopt;
    case wire::Disconnect:
        conversation.heard(QStringLiteral("the end comes"));
        conversation.acknowledge(wire::kAcknowledge, QStringLiteral("yes"));
        leaving = true;
        return std::nullopt;
    case wire::Finish:
    case wire::ArmWatchdog:
        return end(command);
    default:
        conversation.anomaly(hex(command, 2), QStringLiteral("a command of the second agent"));
        conversation.heard(QStringLiteral("not understood"));
        return std::nullopt;
    }
}

std::optional<ReceiverPhase> Stage2Agent::end(quint8 command)
{
    const bool finish = command == wire::Finish;
    const quint16 value = finish ? conversation.readByte() : conversation.readWord();
    conversation.heard(finish ? QStringLiteral("finish, option %1").arg(value)
                              : QStringLiteral("end by the watchdog, %1").arg(value));
    if (!leaving) {
        conversation.anomaly(hex(command, 2),
                             QStringLiteral("%1 first").arg(hex(wire::Disconnect, 2)));
        conversation.acknowledge(wire::kRefused, QStringLiteral("refused"));
        return std::nullopt;
    }
    if (finish && value > 1)
        conversation.anomaly(QStringLiteral("option %1").arg(value), QStringLiteral("0 or 1"));
    conversation.acknowledge(wire::kAcknowledge, QStringLiteral("yes"));
    watchdogValue = value;
    return finish ? ReceiverPhase::Finished : ReceiverPhase::WatchdogEnds;
}

} // namespace bench::chip
