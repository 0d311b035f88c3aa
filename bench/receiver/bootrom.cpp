#include "bootrom.h"

#include "hex.h"
#include "record.h"
#include "wire.h"

namespace bench::chip {

namespace {

// What the two identity registers hold; nothing decides by them.
constexpr quint16 kIdentity = 0x2C40;
constexpr quint16 kRevision = 0x0001;

// A host repeats the first byte until it sees the answer. Repetitions that crossed with the
// answer are not answered again: the answers would stay one behind the host for good.
constexpr std::chrono::milliseconds kCrossing(100);

ReceiverStep stepOf(quint8 command)
{
    switch (command) {
    case wire::Read16:
        return ReceiverStep::Read16;
    case wire::Read32:
        return ReceiverStep::Read32;
    case wire::Write16:
        return ReceiverStep::Write16;
    case wire::Write32:
        return ReceiverStep::Write32;
    case wire::Configuration:
        return ReceiverStep::Configuration;
    case wire::LoadLong:
        return ReceiverStep::LoadStage1;
    case wire::LoadShort:
        return ReceiverStep::LoadStage2;
    case wire::Jump:
        return ReceiverStep::Jump;
    default:
        return ReceiverStep::Command;
    }
}

} // namespace

BootRom::BootRom(Conversation &usedConversation, Record &usedRecord,
                 const Guarded<ReceiverSettings> &usedSettings)
    : conversation(usedConversation), logbook(usedRecord), settings(usedSettings),
      loader(usedConversation)
{
}

void BootRom::run()
{
    do {
        watchdogRegister = 0;
        synchronise();
        logbook.enter(ReceiverPhase::Commands);
        conversation.uart().armWatchdog(settings.get().watchdogTime);
    } while (!takeCommands());
}

bool BootRom::takeCommands()
{
    bool agentLoaded = false;
    while (!agentLoaded) {
        // A host that missed the last answer begins again, and waits long before it does.
        if (conversation.uart().peek() == wire::kSync[0]) {
            conversation.uart().disarmWatchdog();
            logbook.enter(ReceiverPhase::BootRom);
            return false;
        }
        takeCommand(&agentLoaded);
    }
    return true;
}

void BootRom::synchronise()
{
    Uart &uart = conversation.uart();
    conversation.begin(ReceiverStep::Sync);
    uart.strikeHere();
    size_t next = 0; // into kSync
    Clock::time_point answered;
    while (next < wire::kSync.size()) {
        const bool again = next > 0 && uart.peek() == wire::kSync[0];
        if (again && next == 1 && Clock::now() - answered < kCrossing) {
            conversation.readByte();
            conversation.heard(QStringLiteral("repeated before it saw the answer"));
            continue;
        }
        if (again) { // the host starts over
            conversation.begin(ReceiverStep::Sync);
            next = 0;
        }
        const quint8 byte = conversation.readByte();
        if (byte != wire::kSync[next]) {
            conversation.anomaly(hex(byte, 2), hex(wire::kSync[next], 2));
            conversation.heard(QStringLiteral("not understood"));
            uart.setBaud(Uart::kAnyBaud);
            next = 0;
            continue;
        }
        if (next == 0)
            uart.setBaud(uart.lastByteBaud());
        conversation.heard(QStringLiteral("synchronise"));
        conversation.acknowledge(static_cast<quint8>(~byte), QStringLiteral("in step"));
        answered = Clock::now();
        ++next;
    }
}

void BootRom::takeCommand(bool *agentLoaded)
{
    const quint8 command = conversation.readCommand(stepOf);
    switch (command) {
    case wire::Read16:
        return readRegister(16);
    case wire::Read32:
        return readRegister(32);
    case wire::Write16:
        return writeRegister(16);
    case wire::Write32:
        return writeRegister(32);
    case wire::Configuration:
        return reportConfiguration();
    case wire::LoadLong:
        *agentLoaded = loader.load(2);
        return;
    case wire::LoadShort:
        conversation.anomaly(QStringLiteral("the second agent"), QStringLiteral("the first agent"));
        return loader.refuse(1, wire::kStatusRefusedOrder);
    case wire::Jump:
        conversation.anomaly(QStringLiteral("a jump"), QStringLiteral("the first agent"));
        conversation.heard(QStringLiteral("jump"));
        conversation.echo();
        conversation.echoedLong(QStringLiteral("address"));
        conversation.sendStatus(wire::kStatusRefusedOrder);
        return;
    default:
        conversation.anomaly(hex(command, 2), QStringLiteral("a command of the boot ROM"));
        conversation.heard(QStringLiteral("not understood"));
    }
}

bool BootRom::readArguments(bool writing, quint32 *address)
{
    conversation.heard(writing ? QStringLiteral("write a register")
                               : QStringLiteral("read a register"));
    conversation.echo();
    *address = conversation.echoedLong(QStringLiteral("address"));
    const quint32 count = conversation.echoedLong(QStringLiteral("count"));
    if (count != 1) {
        conversation.anomaly(QStringLiteral("count %1").arg(count), QStringLiteral("count 1"));
        conversation.sendStatus(wire::kStatusRefusedValue);
        return false;
    }
    if (!registerValue(*address)) {
        conversation.anomaly(QStringLiteral("register ") + hex(*address, 8),
                             QStringLiteral("a register of the receiver"));
        conversation.sendStatus(wire::kStatusRefusedRange);
        return false;
    }
    return conversation.sendStatus(wire::kStatusGood);
}

std::optional<quint16> BootRom::registerValue(quint32 address) const
{
    switch (address) {
    case wire::kIdentityRegister:
        return kIdentity;
    case wire::kRevisionRegister:
        return kRevision;
    case wire::kHardwareCodeRegister:
        return settings.get().hwCode;
    case wire::kHardwareSubcodeRegister:
        return settings.get().hwSubcode;
    case wire::kWatchdogRegister:
        return watchdogRegister;
    default:
        return std::nullopt;
    }
}

void BootRom::readRegister(int bits)
{
    quint32 address = 0;
    if (!readArguments(false, &address))
        return;
    const quint16 value = registerValue(address).value_or(0);
    const QString meaning = QStringLiteral("value ") + hex(value, bits / 4);
    if (bits == 16)
        conversation.sendWords({value}, meaning);
    else
        conversation.sendLong(value, meaning);
    conversation.sendStatus(wire::kStatusGood);
}

void BootRom::writeRegister(int bits)
{
    quint32 address = 0;
    if (!readArguments(true, &address))
        return;
    const QString name = QStringLiteral("value");
    const quint32 value =
        bits == 16 ? conversation.echoedWord(name) : conversation.echoedLong(name);
    if (address != wire::kWatchdogRegister) {
        conversation.anomaly(QStringLiteral("a value for register ") + hex(address, 8),
                             QStringLiteral("the watchdog's register"));
        conversation.sendStatus(wire::kStatusRefusedRange);
        return;
    }
    watchdogRegister = static_cast<quint16>(value);
    if (watchdogRegister == wire::kWatchdogOff)
        conversation.uart().disarmWatchdog();
    else
        conversation.anomaly(QStringLiteral("watchdog ") + hex(value, 4),
                             hex(wire::kWatchdogOff, 4));
    conversation.sendStatus(wire::kStatusGood);
}

void BootRom::reportConfiguration()
{
    conversation.heard(QStringLiteral("report the configuration"));
    conversation.echo();
    conversation.sendWords({0, 0}, QStringLiteral("configuration"));
    conversation.sendStatus(wire::kStatusGood);
}

} // namespace bench::chip
