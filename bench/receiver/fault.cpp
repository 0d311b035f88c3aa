#include "fault.h"

#include "wire.h"

#include <cmath>

namespace bench {

namespace {

namespace wire = chip::wire;

// What a fault's `value` may be. No value at all: lowest above highest.
struct KindEntry
{
    const char *name;
    double lowest;
    double highest;
};

// In the order of Fault::Kind.
constexpr KindEntry kKinds[] = {
    {"silence", 1, 0},
    {"reset", 1, 0},
    {"baud", 1, 4000000},
    {"garbage", 1, 4096},
    {"flow-byte", wire::kXon, wire::kXoff},
    {"status", 0, 0xFFFF},
    {"checksum", 0, 0xFFFFFFFF},
    {"acknowledge", 0, 0xFF},
    {"nack", 0, 0xFFFFFFFF},
    {"no-write", 1, 0},
    {"repeat", 1, 0},
    {"drop", 1, 0},
    {"double", 1, 0},
    {"flip", 1, 0xFF},
    {"late", 1, 60000},
    {"swap", 1, 0},
};
static_assert(sizeof(kKinds) / sizeof(kKinds[0]) == static_cast<size_t>(Fault::Kind::Swap) + 1);

const KindEntry &entryOf(Fault::Kind kind)
{
    return kKinds[static_cast<int>(kind)];
}

const QString kToReceiver = QStringLiteral("to-receiver");
const QString kToHost = QStringLiteral("to-host");

// Reads the keys of one fault; the first complaint stays.
class Reader
{
public:
    Reader(const QJsonObject &fault, QString *complaint) : object(fault), error(complaint) { }

    bool has(const char *key) const { return object.contains(QLatin1String(key)); }
    bool good() const { return error->isEmpty(); }

    void complain(const char *key, const QString &what)
    {
        if (good())
            *error = QStringLiteral("fault key \"%1\": %2").arg(QLatin1String(key), what);
    }

    QString text(const char *key, const QStringList &choices)
    {
        const QJsonValue value = object.value(QLatin1String(key));
        if (!value.isString() || !choices.contains(value.toString())) {
            complain(key, QStringLiteral("must be one of ") + choices.join(QStringLiteral(", ")));
            return choices.first();
        }
        return value.toString();
    }

    double number(const char *key, double lowest, double highest, bool whole = true)
    {
        const QJsonValue value = object.value(QLatin1String(key));
        const double given = value.toDouble(lowest - 1);
        const bool fits = value.isDouble() && given >= lowest && given <= highest
            && (!whole || given == std::floor(given));
        if (!fits) {
            complain(key,
                     QStringLiteral("must be a %1number from %2 to %3")
                         .arg(whole ? QStringLiteral("whole ") : QString())
                         .arg(lowest, 0, 'g', 12)
                         .arg(highest, 0, 'g', 12));
            return lowest;
        }
        return given;
    }

    void number(const char *key, double lowest, int *target)
    {
        if (has(key))
            *target = static_cast<int>(number(key, lowest, 1000000000));
    }

    void rejectUnknown(const QStringList &known)
    {
        for (auto key = object.begin(); key != object.end(); ++key) {
            if (!known.contains(key.key()))
                complain(qPrintable(key.key()), QStringLiteral("is not known"));
        }
    }

    bool always(const char *key) const
    {
        return object.value(QLatin1String(key)).toString() == QLatin1String("always");
    }

private:
    const QJsonObject &object;
    QString *error;
};

void readValue(Reader *reader, Fault *fault)
{
    const KindEntry &entry = entryOf(fault->kind);
    if (!reader->has("value"))
        return;
    if (entry.lowest > entry.highest) {
        reader->complain(
            "value",
            QStringLiteral("a fault of kind %1 takes none").arg(QString::fromLatin1(entry.name)));
        return;
    }
    fault->value = static_cast<quint32>(reader->number("value", entry.lowest, entry.highest));
    if (fault->kind == Fault::Kind::FlowByte && *fault->value != wire::kXon
        && *fault->value != wire::kXoff)
        reader->complain("value", QStringLiteral("must be 17 or 19"));
}

void readResume(Reader *reader, Fault *fault)
{
    reader->number("resume_ms", 1, &fault->resumeMilliseconds);
    const bool stops =
        fault->kind == Fault::Kind::FlowByte && fault->value.value_or(wire::kXoff) == wire::kXoff;
    if (reader->has("resume_ms") && !stops)
        reader->complain("resume_ms", QStringLiteral("is for an XOFF byte"));
}

void readPlace(Reader *reader, Fault *fault)
{
    if (reader->has("step"))
        fault->step = stepFromName(reader->text("step", stepNames()));
    reader->number("count", 1, &fault->count);
    reader->number("index", 0, &fault->index);
    reader->number("image", 1, &fault->image);
    reader->number("packet", 1, &fault->packet);
    if (!reader->has("direction"))
        return;
    if (!Fault::ofByte(fault->kind))
        reader->complain("direction", QStringLiteral("is for faults of a byte"));
    if (reader->text("direction", {kToReceiver, kToHost}) == kToHost)
        fault->direction = Fault::Direction::ToHost;
}

void readFrequency(Reader *reader, Fault *fault)
{
    if (reader->always("times"))
        fault->times = 0;
    else
        reader->number("times", 1, &fault->times);
    if (reader->has("probability"))
        fault->probability = reader->number("probability", 0, 1, false);
}

} // namespace

std::optional<Fault> Fault::fromJson(const QJsonObject &object, QString *error)
{
    static const QStringList known = {
        QStringLiteral("kind"),        QStringLiteral("step"),      QStringLiteral("count"),
        QStringLiteral("index"),       QStringLiteral("image"),     QStringLiteral("packet"),
        QStringLiteral("value"),       QStringLiteral("direction"), QStringLiteral("times"),
        QStringLiteral("probability"), QStringLiteral("resume_ms")};
    error->clear();
    Reader reader(object, error);
    reader.rejectUnknown(known);
    Fault fault;
    fault.kind = static_cast<Kind>(kindNames().indexOf(reader.text("kind", kindNames())));
    readValue(&reader, &fault);
    readResume(&reader, &fault);
    readPlace(&reader, &fault);
    readFrequency(&reader, &fault);
    if (!reader.good())
        return std::nullopt;
    return fault;
}

QJsonObject Fault::toJson() const
{
    const Fault usual;
    QJsonObject object{{QStringLiteral("kind"), kindName(kind)}};
    if (step)
        object[QStringLiteral("step")] = stepName(*step);
    if (count != usual.count)
        object[QStringLiteral("count")] = count;
    if (index != usual.index)
        object[QStringLiteral("index")] = index;
    if (image != usual.image)
        object[QStringLiteral("image")] = image;
    if (packet != usual.packet)
        object[QStringLiteral("packet")] = packet;
    if (value)
        object[QStringLiteral("value")] = static_cast<double>(*value);
    if (resumeMilliseconds > 0)
        object[QStringLiteral("resume_ms")] = resumeMilliseconds;
    if (ofByte(kind))
        object[QStringLiteral("direction")] =
            direction == Direction::ToHost ? kToHost : kToReceiver;
    object[QStringLiteral("times")] =
        times == 0 ? QJsonValue(QStringLiteral("always")) : QJsonValue(times);
    if (probability < usual.probability)
        object[QStringLiteral("probability")] = probability;
    return object;
}

QString Fault::kindName(Kind kind)
{
    return QString::fromLatin1(entryOf(kind).name);
}

bool Fault::ofByte(Kind kind)
{
    return kind >= Kind::Drop;
}

QStringList Fault::kindNames()
{
    QStringList names;
    for (const KindEntry &entry : kKinds)
        names << QString::fromLatin1(entry.name);
    return names;
}

} // namespace bench
