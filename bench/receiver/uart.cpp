#include "uart.h"

#include "dialogue.h"
#include "hex.h"
#include "record.h"
#include "wire.h"

#include <algorithm>
#include <utility>

namespace bench::chip {

namespace {

// How long a byte waits for the one that it is to change places with.
constexpr std::chrono::milliseconds kNeighbourPatience(50);

constexpr quint32 kGarbageBytes = 8;

// How long a reset of its own takes: one that resets itself for ever must not take a core.
constexpr int kSelfResetMilliseconds = 10;

// A host that begins anew has been quiet before: shorter than the reset pulse that it gives.
constexpr std::chrono::milliseconds kSilence(90);

// What a byte looks like that is read at another rate than it was sent at.
QByteArray garbled(const QByteArray &bytes)
{
    QByteArray other = bytes;
    for (char &byte : other)
        byte = static_cast<char>(0x80 | static_cast<quint8>(byte) >> 1);
    return other;
}

} // namespace

Uart::Uart(Line &usedLine, Pins &usedPins, Faults &usedFaults, Dialogue &usedDialogue,
           Record &usedRecord, const Guarded<ReceiverSettings> &usedSettings)
    : line(usedLine), pins(usedPins), faults(usedFaults), dialogue(usedDialogue),
      logbook(usedRecord), settings(usedSettings)
{
}

void Uart::restart()
{
    here = Place();
    counts.clear();
    arrivals = std::exchange(opening, {});
    understoodBytes.clear();
    fromHost.restart();
    toHost.restart();
    heardAt = Clock::now();
    forcedBaud = 0;
    setBaud(kAnyBaud);
    watchdog.reset();
}

void Uart::begin(ReceiverStep step)
{
    here.step = step;
    here.count = ++counts[step];
    here.bytesIn = 0;
    here.bytesOut = 0;
    struckAt = -1;
    misreadReported = false;
    logbook.enter(step);
}

void Uart::setBaud(int rate)
{
    ownBaud = forcedBaud > 0 ? forcedBaud : rate;
    logbook.setBaud(ownBaud);
}

quint8 Uart::peek()
{
    return understoodBytes.empty() ? nextUnderstood().value : understoodBytes.front();
}

quint8 Uart::receive()
{
    while (understoodBytes.empty()) {
        nextUnderstood();
        strikeHere();
        const RawByte byte = nextUnderstood(); // a fault may have changed the rate
        arrivals.pop_front();
        disturb(byte);
    }
    const quint8 value = understoodBytes.front();
    understoodBytes.pop_front();
    return value;
}

void Uart::send(const QByteArray &answer, const QString &meaning)
{
    strikeHere();
    checkFlowControl(answer);
    QByteArray sent;
    for (const Piece &piece : disturbed(answer)) {
        if (piece.lateMilliseconds > 0)
            pause(piece.lateMilliseconds);
        transmit(piece.bytes);
        sent += piece.bytes;
    }
    record(DialogueLine::ToHost, meaning, sent);
}

void Uart::pause(int milliseconds)
{
    wait(Clock::now() + std::chrono::milliseconds(milliseconds), false);
    heardAt = Clock::now();
}

QByteArray Uart::receiveAnything(std::optional<Clock::time_point> until)
{
    arrivals.clear();
    understoodBytes.clear();
    wait(until, true);
    readLine();
    QByteArray bytes;
    for (const RawByte &byte : arrivals)
        bytes.append(static_cast<char>(byte.value));
    arrivals.clear();
    return bytes;
}

void Uart::armWatchdog(int milliseconds)
{
    if (milliseconds > 0)
        watchdog = Clock::now() + std::chrono::milliseconds(milliseconds);
}

void Uart::anomaly(const QString &came, const QString &expected)
{
    logbook.anomaly(QStringLiteral("%1: %2, expected %3").arg(stepName(here.step), came, expected));
}

void Uart::wait(std::optional<Clock::time_point> until, bool forBytes)
{
    for (;;) {
        if (pins.changed())
            throw PinsChanged();
        const Clock::time_point now = Clock::now();
        if (watchdog && now >= *watchdog)
            bite();
        if (until && now >= *until)
            return;
        std::optional<Clock::time_point> deadline = until;
        if (watchdog && (!deadline || *watchdog < *deadline))
            deadline = watchdog;
        if (line.wait(pins.wakeDescriptor(), deadline, forBytes) == Line::Event::Bytes)
            return;
    }
}

void Uart::bite()
{
    watchdog.reset();
    logbook.countWatchdogReset();
    anomaly(QStringLiteral("the watchdog reset the receiver"),
            QStringLiteral("%1 written to %2 in time")
                .arg(hex(wire::kWatchdogOff, 4), hex(wire::kWatchdogRegister, 8)));
    record(DialogueLine::Event, QStringLiteral("the watchdog resets the receiver"));
    throw Left{ReceiverPhase::BootRom};
}

void Uart::readLine()
{
    const QByteArray bytes = line.read();
    if (bytes.isEmpty())
        return;
    const Clock::time_point now = Clock::now();
    const int hostBaud = line.hostBaud();
    const bool keepLineRate = settings.get().keepLineRate;
    const int rate = ownBaud != kAnyBaud ? ownBaud : hostBaud;
    for (const char byte : bytes) {
        const Clock::time_point arrived = keepLineRate ? fromHost.arrival(now, rate) : now;
        arrivals.push_back({static_cast<quint8>(byte), hostBaud, arrived});
    }
    const bool opens = opensDialogue(bytes, hostBaud, now);
    busyAt = now;
    logbook.received(bytes.size(), hostBaud);
    if (!opens)
        return;
    record(DialogueLine::Event,
           QStringLiteral("a synchronisation after silence resets the receiver"));
    opening = std::exchange(arrivals, {});
    throw Left{ReceiverPhase::BootRom};
}

// Within a dialogue no host sends this byte alone after a silence. A boot ROM that waits for
// it hears it anyway, unless it listens at another rate.
bool Uart::opensDialogue(const QByteArray &bytes, int hostBaud, Clock::time_point now) const
{
    const bool deaf = phase == ReceiverPhase::Reset || phase == ReceiverPhase::Off;
    const bool heardAnyway = phase == ReceiverPhase::BootRom && here.step == ReceiverStep::Sync
        && (ownBaud == kAnyBaud || hostBaud == 0 || hostBaud == ownBaud);
    return settings.get().resetOnSync && !deaf && !heardAnyway && now - busyAt >= kSilence
        && bytes.count(static_cast<char>(wire::kSync[0])) == bytes.size();
}

const Uart::RawByte &Uart::nextUnderstood()
{
    for (;;) {
        while (arrivals.empty()) {
            wait(std::nullopt, true);
            readLine();
        }
        if (understood(arrivals.front())) {
            misreadReported = false;
            return arrivals.front();
        }
        dropMisread();
    }
}

bool Uart::understood(const RawByte &byte) const
{
    return ownBaud == kAnyBaud || byte.baud == 0 || byte.baud == ownBaud;
}

void Uart::dropMisread()
{
    const int hostBaud = arrivals.front().baud;
    lastBaud = hostBaud;
    QByteArray bytes;
    while (!arrivals.empty() && !understood(arrivals.front())) {
        bytes.append(static_cast<char>(arrivals.front().value));
        heardAt = arrivals.front().arrived;
        arrivals.pop_front();
    }
    record(DialogueLine::ToReceiver,
           QStringLiteral("not understood: sent at %1 baud").arg(hostBaud), bytes);
    if (!misreadReported) {
        anomaly(QStringLiteral("bytes at %1 baud").arg(hostBaud),
                QStringLiteral("%1 baud").arg(ownBaud));
    }
    misreadReported = true;
}

void Uart::strikeHere()
{
    if (struckAt == here.bytesIn || faults.empty())
        return;
    struckAt = here.bytesIn;
    if (const auto struck = faults.strike(Fault::Kind::Baud, here, here.bytesIn)) {
        forcedBaud = static_cast<int>(struck->fault.value.value_or(9600));
        setBaud(forcedBaud);
        report(*struck, QStringLiteral("now at %1 baud").arg(forcedBaud));
    }
    if (const auto struck = faults.strike(Fault::Kind::Garbage, here, here.bytesIn)) {
        const QByteArray bytes =
            noise(static_cast<int>(struck->fault.value.value_or(kGarbageBytes)), struck->dice);
        report(*struck, QStringLiteral("noise ") + QString::fromLatin1(bytes.toHex(' ')));
        transmit(bytes);
    }
    if (const auto struck = faults.strike(Fault::Kind::FlowByte, here, here.bytesIn)) {
        const quint32 value = struck->fault.value.value_or(wire::kXoff);
        report(*struck, QStringLiteral("sent ") + hex(value, 2));
        transmit(QByteArray(1, static_cast<char>(value)));
        if (struck->fault.resumeMilliseconds > 0) {
            pause(struck->fault.resumeMilliseconds);
            transmit(QByteArray(1, static_cast<char>(wire::kXon)));
        }
    }
    if (const auto struck = faults.strike(Fault::Kind::Reset, here, here.bytesIn)) {
        report(*struck, QStringLiteral("the receiver resets itself"));
        pause(kSelfResetMilliseconds);
        throw Left{ReceiverPhase::BootRom};
    }
    if (const auto struck = faults.strike(Fault::Kind::Silence, here, here.bytesIn)) {
        report(*struck, QStringLiteral("silent from here on"));
        throw Left{ReceiverPhase::Silent};
    }
}

void Uart::disturb(const RawByte &byte)
{
    const int index = here.bytesIn++;
    const auto direction = Fault::Direction::ToReceiver;
    heardAt = byte.arrived;
    lastBaud = byte.baud;
    if (faults.empty()) {
        understoodBytes.push_back(byte.value);
        return;
    }
    const bool neighbour =
        faults.mayStrike(Fault::Kind::Swap, direction, here, index) && neighbourComes();
    const auto struck = faults.strikeByte(direction, here, index, neighbour);
    if (!struck) {
        understoodBytes.push_back(byte.value);
        return;
    }
    const std::optional<quint8> next =
        neighbour ? std::make_optional(arrivals.front().value) : std::nullopt;
    const ByteEffect effect = effectOf(*struck, byte.value, next);
    report(*struck, QStringLiteral("byte %1 from the host, %2").arg(index).arg(effect.deed));
    if (effect.lateMilliseconds > 0)
        pause(effect.lateMilliseconds);
    if (effect.tookNeighbour) {
        heardAt = arrivals.front().arrived;
        arrivals.pop_front();
        ++here.bytesIn;
    }
    understoodBytes.insert(understoodBytes.end(), effect.bytes.begin(), effect.bytes.end());
}

bool Uart::neighbourComes()
{
    if (arrivals.empty()) {
        wait(Clock::now() + kNeighbourPatience, true);
        readLine();
    }
    return !arrivals.empty() && understood(arrivals.front());
}

std::vector<Uart::Piece> Uart::disturbed(const QByteArray &answer)
{
    std::vector<Piece> pieces = {Piece()};
    for (int i = 0; i < answer.size(); ++i) {
        const auto value = static_cast<quint8>(answer.at(i));
        const int index = here.bytesOut++;
        const bool last = i + 1 == answer.size();
        const auto struck = faults.empty()
            ? std::nullopt
            : faults.strikeByte(Fault::Direction::ToHost, here, index, !last);
        if (!struck) {
            pieces.back().bytes.append(answer.at(i));
            continue;
        }
        const std::optional<quint8> next =
            last ? std::nullopt : std::make_optional(static_cast<quint8>(answer.at(i + 1)));
        const ByteEffect effect = effectOf(*struck, value, next);
        report(*struck, QStringLiteral("byte %1 to the host, %2").arg(index).arg(effect.deed));
        if (effect.lateMilliseconds > 0)
            pieces.push_back({QByteArray(), effect.lateMilliseconds});
        if (effect.tookNeighbour) {
            ++i;
            ++here.bytesOut;
        }
        pieces.back().bytes += effect.bytes;
    }
    return pieces;
}

void Uart::checkFlowControl(const QByteArray &answer)
{
    if (!answer.contains(static_cast<char>(wire::kXon))
        && !answer.contains(static_cast<char>(wire::kXoff)))
        return;
    if (line.hostFlowControl()) {
        anomaly(QStringLiteral("the answer %1 holds a byte of the host's flow control")
                    .arg(QString::fromLatin1(answer.toHex(' '))),
                QStringLiteral("none of 0x11 and 0x13"));
    }
}

void Uart::transmit(const QByteArray &bytes)
{
    if (bytes.isEmpty())
        return;
    if (settings.get().keepLineRate)
        wait(toHost.departure(heardAt, bytes.size(), ownBaud), false);
    const int hostBaud = line.hostBaud();
    const bool readable = ownBaud == kAnyBaud || hostBaud == 0 || hostBaud == ownBaud;
    if (!readable) {
        anomaly(QStringLiteral("an answer at %1 baud meets a host at %2 baud")
                    .arg(ownBaud)
                    .arg(hostBaud),
                QStringLiteral("the host at %1 baud").arg(ownBaud));
    }
    busyAt = Clock::now();
    const int written = line.write(readable ? bytes : garbled(bytes));
    logbook.sent(written);
    if (written < bytes.size())
        anomaly(QStringLiteral("an answer found no room"), QStringLiteral("a host that reads"));
}

void Uart::report(const Struck &struck, const QString &deed)
{
    faults.tell(struck, here.text() + QLatin1String(": ") + deed, logbook.elapsed());
    record(DialogueLine::Event, QStringLiteral("fault: ") + deed);
}

void Uart::record(DialogueLine::Direction direction, const QString &meaning,
                  const QByteArray &bytes)
{
    DialogueLine entry;
    entry.elapsed = logbook.elapsed();
    entry.direction = direction;
    entry.baud = direction == DialogueLine::ToReceiver ? lastBaud : ownBaud;
    entry.step = stepName(here.step);
    entry.meaning = meaning;
    entry.bytes = bytes;
    dialogue.add(entry);
}

} // namespace bench::chip
