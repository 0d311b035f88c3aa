#include "conversation.h"

#include "hex.h"
#include "wire.h"

#include <QtEndian>

#include <algorithm>

namespace bench::chip {

namespace {

template <typename Word>
QByteArray bigEndian(Word value)
{
    QByteArray bytes(static_cast<int>(sizeof value), '\0');
    qToBigEndian(value, bytes.data());
    return bytes;
}

QString changed(const QString &what, const QString &right, const QString &sent)
{
    return QStringLiteral("%1 %2 sent as %3").arg(what, right, sent);
}

} // namespace

Conversation::Conversation(Uart &usedUart, Faults &usedFaults) : port(usedUart), faults(usedFaults)
{
}

void Conversation::restart()
{
    port.restart();
    frame.clear();
    lastFrame.clear();
}

void Conversation::begin(ReceiverStep step)
{
    port.begin(step);
    statuses = 0;
    acknowledgements = 0;
    answers = 0;
}

quint8 Conversation::readCommand(ReceiverStep (*stepOf)(quint8 command))
{
    begin(stepOf(port.peek()));
    const quint8 command = readByte();
    const ReceiverStep step = stepOf(command);
    if (step != port.place().step) // a fault made another byte of it
        begin(step);
    return command;
}

quint8 Conversation::readByte()
{
    const quint8 byte = port.receive();
    frame.append(static_cast<char>(byte));
    return byte;
}

quint16 Conversation::readWord()
{
    const quint16 high = readByte();
    return static_cast<quint16>(high << 8 | readByte());
}

quint32 Conversation::readLong()
{
    const quint32 high = readWord();
    return high << 16 | readWord();
}

QByteArray Conversation::readBlock(int length)
{
    const int begin = frame.size();
    frame.reserve(begin + length);
    for (int i = 0; i < length; ++i)
        readByte();
    return frame.mid(begin);
}

void Conversation::heard(const QString &meaning)
{
    port.record(DialogueLine::ToReceiver, meaning, frame);
    lastFrame = frame;
    frame.clear();
}

quint8 Conversation::await(ReceiverStep step, std::initializer_list<quint8> bytes,
                           const QString &meaning)
{
    begin(step);
    for (;;) {
        const quint8 byte = readByte();
        if (std::find(bytes.begin(), bytes.end(), byte) != bytes.end()) {
            heard(meaning);
            return byte;
        }
        QStringList expected;
        for (const quint8 good : bytes)
            expected << hex(good, 2);
        anomaly(hex(byte, 2), expected.join(QLatin1String(" or ")));
        heard(QStringLiteral("not understood"));
    }
}

void Conversation::echo()
{
    send(lastFrame, QStringLiteral("echo"));
}

quint16 Conversation::echoedWord(const QString &name)
{
    const quint16 value = readWord();
    heard(name + QLatin1Char(' ') + hex(value, 4));
    echo();
    return value;
}

quint32 Conversation::echoedLong(const QString &name)
{
    const quint32 value = readLong();
    heard(name + QLatin1Char(' ') + hex(value, 8));
    echo();
    return value;
}

bool Conversation::sendStatus(quint16 status)
{
    if (const auto struck = faults.strike(Fault::Kind::Status, port.place(), statuses++)) {
        const auto wrong = static_cast<quint16>(struck->fault.value.value_or(wire::kStatusLimit));
        port.report(*struck, changed(QStringLiteral("status"), hex(status, 4), hex(wrong, 4)));
        status = wrong;
    }
    const bool good = status < wire::kStatusLimit;
    send(bigEndian(status),
         QStringLiteral("status %1, %2")
             .arg(hex(status, 4), good ? QStringLiteral("good") : QStringLiteral("refused")));
    return good;
}

void Conversation::sendChecksum(quint16 checksum)
{
    if (const auto struck = faults.strike(Fault::Kind::Checksum, port.place(), 0)) {
        const auto wrong = static_cast<quint16>(struck->fault.value.value_or(checksum ^ 1U));
        port.report(*struck, changed(QStringLiteral("checksum"), hex(checksum, 4), hex(wrong, 4)));
        checksum = wrong;
    }
    send(bigEndian(checksum), QStringLiteral("checksum ") + hex(checksum, 4));
}

void Conversation::sendWords(std::initializer_list<quint16> words, const QString &meaning)
{
    QByteArray answer;
    for (const quint16 word : words)
        answer += bigEndian(word);
    send(answer, meaning);
}

void Conversation::sendLong(quint32 value, const QString &meaning)
{
    send(bigEndian(value), meaning);
}

void Conversation::acknowledge(quint8 byte, const QString &meaning)
{
    const auto struck = faults.strike(Fault::Kind::Acknowledge, port.place(), acknowledgements++);
    if (!struck) {
        send(QByteArray(1, static_cast<char>(byte)), meaning);
        return;
    }
    const auto wrong = static_cast<quint8>(struck->fault.value.value_or(0));
    port.report(*struck, changed(QStringLiteral("acknowledgement"), hex(byte, 2), hex(wrong, 2)));
    send(QByteArray(1, static_cast<char>(wrong)), QStringLiteral("wrong acknowledgement"));
}

void Conversation::sendRefusal(quint32 code)
{
    send(QByteArray(1, static_cast<char>(wire::kNack)) + bigEndian(code),
         QStringLiteral("refused with code %1").arg(code));
}

void Conversation::sendSumRefusal(quint32 sum)
{
    send(QByteArray(1, static_cast<char>(wire::kNack)) + bigEndian(sum),
         QStringLiteral("own sum is ") + hex(sum, 8));
}

quint32 Conversation::ownSum(quint32 sum)
{
    const auto struck = faults.strike(Fault::Kind::Checksum, port.place(), 0);
    if (!struck)
        return sum;
    const quint32 wrong = struck->fault.value.value_or(sum ^ 1U);
    port.report(*struck, changed(QStringLiteral("sum"), hex(sum, 8), hex(wrong, 8)));
    return wrong;
}

std::optional<quint32> Conversation::faultyRefusal(int index)
{
    const auto struck = faults.strike(Fault::Kind::Nack, port.place(), index);
    if (!struck)
        return std::nullopt;
    const quint32 code = struck->fault.value.value_or(wire::kFirstRepeatableCode);
    port.report(*struck, QStringLiteral("refused with code %1").arg(code));
    return code;
}

bool Conversation::skipsWrite()
{
    const auto struck = faults.strike(Fault::Kind::NoWrite, port.place(), 0);
    if (struck)
        port.report(*struck, QStringLiteral("acknowledged and not written"));
    return struck.has_value();
}

void Conversation::send(const QByteArray &answer, const QString &meaning)
{
    port.send(answer, meaning);
    if (const auto struck = faults.strike(Fault::Kind::Repeat, port.place(), answers++)) {
        port.report(*struck, QStringLiteral("the answer is sent twice"));
        port.send(answer, meaning + QLatin1String(", again"));
    }
}

} // namespace bench::chip
