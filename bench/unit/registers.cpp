#include "registers.h"

#include <algorithm>

namespace bench {

namespace {

constexpr int kPorts = 3;
constexpr quint32 kPortStride = 0x80;

// 0x40 to 0x5F are +0 to +31, 0x60 to 0x7F are -0 to -31.
QString swing(quint32 code)
{
    if (code == 0)
        return QStringLiteral("not set");
    if (code < 0x40 || code > 0x7F)
        return QStringLiteral("no swing code");
    return QStringLiteral("%1%2").arg(code < 0x60 ? "+" : "-").arg(code & 0x1F);
}

QString pattern(quint32 selector)
{
    switch (selector) {
    case 0:
        return QStringLiteral("none");
    case 1:
        return QStringLiteral("eye diagram, high speed");
    case 4:
        return QStringLiteral("eye diagram, full speed");
    case 7:
        return QStringLiteral("SE0");
    case 9:
        return QStringLiteral("test J, high speed");
    case 10:
        return QStringLiteral("test K, high speed");
    case 11:
        return QStringLiteral("test J, full speed");
    case 12:
        return QStringLiteral("test K, full speed");
    default:
        return QStringLiteral("no pattern");
    }
}

QString onOrOff(quint32 bit)
{
    return bit != 0 ? QStringLiteral("on") : QStringLiteral("off");
}

QVector<RegisterField> aFieldAPort(int lowest, int bits, RegisterField::Meaning meaning)
{
    QVector<RegisterField> fields;
    for (int port = 0; port < kPorts; ++port)
        fields.append({QStringLiteral("port_%1").arg(port), lowest + port * bits, bits, meaning});
    return fields;
}

QVector<RegisterWord> makeRegisters()
{
    QVector<RegisterWord> words{
        {QStringLiteral("debug_select"), 0x9C000088, {{QStringLiteral("select"), 0, 32, nullptr}}},
        {QStringLiteral("debug_route"), 0x9C0000A0,
         QVector<RegisterField>{{QStringLiteral("route"), 0, 16, nullptr}}
             + aFieldAPort(18, 1, onOrOff)},
        {QStringLiteral("swing"), 0x9C000190, aFieldAPort(0, 8, swing)},
    };
    for (quint32 port = 0; port < kPorts; ++port) {
        const QString number = QStringLiteral(".%1").arg(port);
        const quint32 offset = kPortStride * port;
        words.append({QStringLiteral("debug_enable") + number,
                      0x9C004A8C + offset,
                      {{QStringLiteral("enable"), 0, 1, onOrOff}}});
        words.append({QStringLiteral("test_mode") + number,
                      0x9C004A90 + offset,
                      {{QStringLiteral("pattern"), 0, 32, pattern}}});
        words.append({QStringLiteral("disconnect") + number,
                      0x9C004A9C + offset,
                      {{QStringLiteral("threshold"), 0, 5, nullptr}}});
    }
    return words;
}

} // namespace

quint32 RegisterField::valueIn(quint32 word) const
{
    return (word >> lowest) & (0xFFFFFFFFU >> (32 - bits));
}

quint32 RegisterField::insertedIn(quint32 word, quint32 value) const
{
    const quint32 mask = (0xFFFFFFFFU >> (32 - bits)) << lowest;
    return (word & ~mask) | ((value << lowest) & mask);
}

QString RegisterField::words(quint32 value) const
{
    return meaning != nullptr ? meaning(value) : QString::number(value);
}

const QVector<RegisterWord> &registers()
{
    static const QVector<RegisterWord> words = makeRegisters();
    return words;
}

const RegisterWord *registerNamed(const QString &name)
{
    const QVector<RegisterWord> &words = registers();
    const auto found = std::find_if(words.begin(), words.end(),
                                    [&](const RegisterWord &word) { return word.name == name; });
    return found == words.end() ? nullptr : &*found;
}

} // namespace bench
