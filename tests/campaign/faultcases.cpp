#include "faultcases.h"

#include "exchanges.h"

#include <algorithm>
#include <iterator>
#include <random>

namespace tests {

namespace {

using bench::Fault;
using Kind = Fault::Kind;
using Direction = Fault::Direction;

// Of twenty trials this one goes over a pseudo-terminal.
constexpr int kOneIn = 20;
constexpr int kThisOne = 7;

const char *const kTwoFaults = "two faults";
const char *const kThreeFaults = "three faults";

struct KindOfFault
{
    Kind kind;
    Direction direction;
};

// In the order of the matrix's rows.
QVector<KindOfFault> kindsOfFaults()
{
    QVector<KindOfFault> kinds;
    for (int kind = 0; kind <= static_cast<int>(Kind::Swap); ++kind) {
        const auto which = static_cast<Kind>(kind);
        kinds.append({which, Direction::ToReceiver});
        if (Fault::ofByte(which))
            kinds.append({which, Direction::ToHost});
    }
    return kinds;
}

QString nameOf(const KindOfFault &kind)
{
    QString name = Fault::kindName(kind.kind);
    if (Fault::ofByte(kind.kind))
        name += kind.direction == Direction::ToHost ? QLatin1String(" to-host")
                                                    : QLatin1String(" to-receiver");
    return name;
}

// How often such a fault may find its sort of answer or byte in the exchange.
int occasions(const KindOfFault &kind, const Exchange &exchange)
{
    switch (kind.kind) {
    case Kind::Silence:
    case Kind::Reset:
    case Kind::Baud:
    case Kind::Garbage:
    case Kind::FlowByte:
        return exchange.bytesIn + 1;
    case Kind::Status:
        return exchange.statuses;
    case Kind::Checksum:
        return exchange.sums ? 1 : 0;
    case Kind::Acknowledge:
        return exchange.acknowledgements;
    case Kind::Nack:
        if (!exchange.mayBeRefused())
            return 0;
        return exchange.step == bench::ReceiverStep::Download ? 2 : 1;
    case Kind::NoWrite:
        return exchange.step == bench::ReceiverStep::Packet ? 1 : 0;
    case Kind::Repeat:
        return exchange.bytesOut > 0 ? 1 : 0;
    default:
        return kind.direction == Direction::ToHost ? exchange.bytesOut : exchange.bytesIn;
    }
}

// What such faults are tried with.
QVector<quint32> valuesOf(Kind kind)
{
    switch (kind) {
    case Kind::Baud:
        return {9600, 230400};
    case Kind::Garbage:
        return {8, 1, 2, 36, 37, 600}; // from 37 on a read throws away what it does not want
    case Kind::FlowByte:
        return {0x13, 0x11};
    case Kind::Status:
        return {0x1000, 0x0FFF, 0xFFFF};
    case Kind::Checksum:
        return {0, 0xFFFFFFFF};
    case Kind::Acknowledge:
        return {0x00, 0xA5, 0x5A, 0x69, 0x96, 0xE1};
    case Kind::Nack:
        return {3061, 3065, 7, 3062, 3063, 3064, 3060, 3066, 0};
    case Kind::Flip:
        return {0x01, 0x80, 0xFF};
    case Kind::Late:
        return {50, 400, 1000, 4000};
    default:
        return {0};
    }
}

bool takesValue(Kind kind)
{
    return valuesOf(kind).size() > 1;
}

Fault faultAt(const KindOfFault &kind, const Exchange &exchange)
{
    Fault fault;
    fault.kind = kind.kind;
    fault.direction = kind.direction;
    fault.step = exchange.step;
    fault.count = exchange.count;
    fault.image = exchange.image;
    fault.packet = exchange.packet;
    return fault;
}

void setValue(Fault *fault, quint32 value)
{
    if (!takesValue(fault->kind))
        return;
    fault->value = fault->kind == Kind::Checksum && fault->step != bench::ReceiverStep::ImageSum
        ? value & 0xFFFF
        : value;
}

// What follows a refused packet has to be refused first.
QVector<Fault> withCause(const Fault &fault)
{
    if (fault.step != bench::ReceiverStep::PacketRepeat)
        return {fault};
    Fault refusal;
    refusal.kind = Kind::Nack;
    refusal.image = fault.image;
    refusal.packet = fault.packet;
    refusal.value = 3065;
    return {refusal, fault};
}

// All forms of one kind of fault in one exchange, the plainest first.
QVector<Fault> variants(const KindOfFault &kind, const Exchange &exchange)
{
    const int count = occasions(kind, exchange);
    QVector<int> indices;
    for (const int index : {0, count - 1, count / 2, 1}) {
        if (index >= 0 && index < count && !indices.contains(index))
            indices << index;
    }
    QVector<Fault> list;
    for (const quint32 value : valuesOf(kind.kind)) {
        for (const int index : qAsConst(indices)) {
            for (const int times : {1, 0}) {
                Fault fault = faultAt(kind, exchange);
                setValue(&fault, value);
                fault.index = index;
                fault.times = times;
                list << fault;
                if (kind.kind == Kind::FlowByte && value == 0x13) {
                    fault.resumeMilliseconds = 500;
                    list << fault;
                }
            }
        }
    }
    return list;
}

bool onTerminal(int number)
{
    return number % kOneIn == kThisOne;
}

QVector<KindOfFault> kindsPossibleIn(const Exchange &exchange)
{
    QVector<KindOfFault> possible;
    const QVector<KindOfFault> all = kindsOfFaults();
    std::copy_if(all.begin(), all.end(), std::back_inserter(possible),
                 [&exchange](const KindOfFault &kind) { return occasions(kind, exchange) > 0; });
    return possible;
}

// The standard distributions differ between libraries.
class Dice
{
public:
    explicit Dice(std::initializer_list<quint32> seeds)
    {
        std::seed_seq mixed(seeds);
        source.seed(mixed);
    }

    int below(int limit) { return static_cast<int>(source() % static_cast<quint32>(limit)); }
    quint32 number() { return source(); }

    template <typename List>
    auto oneOf(const List &list)
    {
        return list.at(below(list.size()));
    }

private:
    std::mt19937 source;
};

Fault randomFault(Dice *dice, const KindOfFault &kind, const Exchange &exchange)
{
    Fault fault = faultAt(kind, exchange);
    setValue(&fault, dice->oneOf(valuesOf(kind.kind)));
    const int count = occasions(kind, exchange);
    fault.index = dice->below(count);
    const int often = dice->below(10);
    fault.times = often < 6 ? 1 : often < 8 ? 2 + dice->below(4) : 0;
    const bool stops = kind.kind == Kind::FlowByte && *fault.value == 0x13;
    if (stops && dice->below(2) == 0)
        fault.resumeMilliseconds = 1 + dice->below(2000);
    return fault;
}

} // namespace

QStringList faultKinds()
{
    QStringList names;
    const QVector<KindOfFault> kinds = kindsOfFaults();
    for (const KindOfFault &kind : kinds)
        names << nameOf(kind);
    return names << QLatin1String(kTwoFaults) << QLatin1String(kThreeFaults);
}

QVector<FaultCase> enumeratedCases()
{
    struct Ranked
    {
        int round; // the how-manieth of its cell
        FaultCase trial;
    };
    QVector<Ranked> list;
    QHash<QString, int> ofCell;
    const QVector<KindOfFault> kinds = kindsOfFaults();
    const QVector<Exchange> all = exchanges();
    for (const KindOfFault &kind : kinds) {
        for (const Exchange &exchange : all) {
            const QVector<Fault> faults = variants(kind, exchange);
            for (const Fault &fault : faults) {
                FaultCase trial;
                trial.kind = nameOf(kind);
                trial.phase = exchange.phase;
                trial.faults = withCause(fault);
                const int round = ofCell[trial.kind + QLatin1Char('/') + trial.phase]++;
                list.append({round, trial});
            }
        }
    }
    std::stable_sort(list.begin(), list.end(),
                     [](const Ranked &a, const Ranked &b) { return a.round < b.round; });
    QVector<FaultCase> cases;
    for (int i = 0; i < list.size(); ++i) {
        cases << list.at(i).trial;
        cases.last().name = QStringLiteral("e%1").arg(i);
        cases.last().onTerminal = onTerminal(i);
    }
    return cases;
}

FaultCase randomCase(int number, quint32 seed)
{
    static const QVector<Exchange> all = exchanges();
    Dice dice{seed, static_cast<quint32>(number)};
    FaultCase trial;
    trial.name = QStringLiteral("r%1").arg(number);
    trial.onTerminal = onTerminal(number);
    trial.seed = dice.number();
    const int count = 1 + dice.below(3);
    for (int i = 0; i < count; ++i) {
        const Exchange exchange = dice.oneOf(all);
        const KindOfFault kind = dice.oneOf(kindsPossibleIn(exchange));
        trial.faults += withCause(randomFault(&dice, kind, exchange));
        if (i == 0) {
            trial.phase = exchange.phase;
            trial.kind = nameOf(kind);
        }
    }
    if (count > 1)
        trial.kind = QLatin1String(count == 2 ? kTwoFaults : kThreeFaults);
    return trial;
}

} // namespace tests
