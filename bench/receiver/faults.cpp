#include "faults.h"

#include "hex.h"
#include "wire.h"

namespace bench::chip {

namespace {

constexpr quint32 kLateMilliseconds = 50;

// Faults at a place strike at one byte of the step, not at each.
bool atPlace(Fault::Kind kind)
{
    switch (kind) {
    case Fault::Kind::Silence:
    case Fault::Kind::Reset:
    case Fault::Kind::Baud:
    case Fault::Kind::Garbage:
    case Fault::Kind::FlowByte:
        return true;
    default:
        return false;
    }
}

// Where a fault strikes that does not say where; none: anywhere.
std::optional<ReceiverStep> usualStep(Fault::Kind kind)
{
    switch (kind) {
    case Fault::Kind::Garbage:
        return ReceiverStep::Sync;
    case Fault::Kind::Nack:
        return ReceiverStep::Packet;
    default:
        return std::nullopt;
    }
}

} // namespace

QString Place::text() const
{
    QString words = QStringLiteral("%1 %2").arg(stepName(step)).arg(count);
    if (packet > 0)
        words += QStringLiteral(" (image %1, packet %2)").arg(image).arg(packet);
    else if (step >= ReceiverStep::ImageStart && step <= ReceiverStep::ImageSum)
        words += QStringLiteral(" (image %1)").arg(image);
    return words;
}

void Faults::set(const QVector<Fault> &faults, quint32 seed)
{
    const QMutexLocker lock(&mutex);
    entries.clear();
    quint32 kinds = 0;
    for (int i = 0; i < faults.size(); ++i) {
        Entry entry;
        entry.report.fault = faults.at(i);
        kinds |= 1U << static_cast<int>(faults.at(i).kind);
        std::seed_seq mixed{seed, static_cast<quint32>(i)};
        entry.dice.seed(mixed);
        entries.push_back(entry);
    }
    kindsSet = kinds;
    ++listNumber;
}

QVector<FaultReport> Faults::reports() const
{
    const QMutexLocker lock(&mutex);
    QVector<FaultReport> list;
    for (const Entry &entry : entries)
        list.append(entry.report);
    return list;
}

std::optional<Struck> Faults::strike(Fault::Kind kind, const Place &place, int index)
{
    if (!isSet(kind))
        return std::nullopt;
    const QMutexLocker lock(&mutex);
    for (size_t i = 0; i < entries.size(); ++i) {
        Entry &entry = entries[i];
        if (entry.report.fault.kind == kind && fits(entry, place, index) && draw(&entry))
            return struckBy(i);
    }
    return std::nullopt;
}

std::optional<Struck> Faults::strikeByte(Fault::Direction direction, const Place &place, int index,
                                         bool hasNeighbour)
{
    const QMutexLocker lock(&mutex);
    for (size_t i = 0; i < entries.size(); ++i) {
        Entry &entry = entries[i];
        const Fault &fault = entry.report.fault;
        if (!Fault::ofByte(fault.kind) || fault.direction != direction
            || !fits(entry, place, index))
            continue;
        if (fault.kind == Fault::Kind::Swap && !hasNeighbour)
            continue;
        if (draw(&entry))
            return struckBy(i);
    }
    return std::nullopt;
}

bool Faults::mayStrike(Fault::Kind kind, Fault::Direction direction, const Place &place,
                       int index) const
{
    if (!isSet(kind))
        return false;
    const QMutexLocker lock(&mutex);
    for (const Entry &entry : entries) {
        const Fault &fault = entry.report.fault;
        if (fault.kind == kind && fault.direction == direction && fits(entry, place, index))
            return true;
    }
    return false;
}

void Faults::tell(const Struck &struck, const QString &deed, qint64 elapsed)
{
    FaultReport told;
    {
        const QMutexLocker lock(&mutex);
        if (struck.list != listNumber)
            return; // another list was set meanwhile
        FaultReport &report = entries[static_cast<size_t>(struck.number)].report;
        ++report.done;
        if (report.deeds.size() < kMostDeeds) {
            report.deeds << deed;
            report.moments << elapsed;
        }
        told = {report.fault, report.done, {deed}, {elapsed}};
    }
    if (onStruck)
        onStruck(struck.number, told);
}

bool Faults::fits(const Entry &entry, const Place &place, int index)
{
    const Fault &fault = entry.report.fault;
    if (fault.times > 0 && entry.strikes >= fault.times)
        return false;
    if (fault.step && *fault.step != place.step)
        return false;
    if (!fault.step && usualStep(fault.kind).value_or(place.step) != place.step)
        return false;
    if (fault.index >= 0 ? fault.index != index : atPlace(fault.kind) && index != 0)
        return false;
    return (fault.count == 0 || fault.count == place.count)
        && (fault.image == 0 || fault.image == place.image)
        && (fault.packet == 0 || fault.packet == place.packet);
}

bool Faults::draw(Entry *entry)
{
    const double probability = entry->report.fault.probability;
    // 2^32 possible draws; the standard distributions differ between libraries.
    return probability >= 1.0 || static_cast<double>(entry->dice()) < probability * 4294967296.0;
}

Struck Faults::struckBy(size_t number)
{
    Entry &entry = entries[number];
    ++entry.strikes;
    return {static_cast<int>(number), listNumber, entry.report.fault,
            static_cast<quint32>(entry.dice())};
}

ByteEffect effectOf(const Struck &struck, quint8 value, std::optional<quint8> neighbour)
{
    ByteEffect effect;
    effect.bytes.append(static_cast<char>(value));
    switch (struck.fault.kind) {
    case Fault::Kind::Drop:
        effect.bytes.clear();
        effect.deed = hex(value, 2) + QLatin1String(" dropped");
        break;
    case Fault::Kind::Double:
        effect.bytes.append(static_cast<char>(value));
        effect.deed = hex(value, 2) + QLatin1String(" doubled");
        break;
    case Fault::Kind::Flip: {
        const quint32 mask = struck.fault.value.value_or(1U << struck.dice % 8);
        effect.bytes[0] = static_cast<char>(value ^ mask);
        effect.deed = hex(value, 2) + QLatin1String(" became ") + hex(value ^ mask, 2);
        break;
    }
    case Fault::Kind::Late:
        effect.lateMilliseconds = static_cast<int>(struck.fault.value.value_or(kLateMilliseconds));
        effect.deed = hex(value, 2) + QStringLiteral(" %1 ms late").arg(effect.lateMilliseconds);
        break;
    case Fault::Kind::Swap:
        effect.bytes.prepend(static_cast<char>(*neighbour));
        effect.tookNeighbour = true;
        effect.deed = hex(value, 2) + QLatin1String(" came after ") + hex(*neighbour, 2);
        break;
    default: // the others are of no single byte
        break;
    }
    return effect;
}

QByteArray noise(int count, quint32 dice)
{
    std::mt19937 source(dice);
    QByteArray bytes;
    while (bytes.size() < count) {
        const auto byte = static_cast<quint8>(source() & 0xFF);
        if (byte != wire::kXon && byte != wire::kXoff)
            bytes.append(static_cast<char>(byte));
    }
    return bytes;
}

} // namespace bench::chip
