#include "programloader.h"

#include "checksum.h"
#include "hex.h"
#include "wire.h"

namespace bench::chip {

namespace {

bool inMemory(quint32 address, quint32 length)
{
    using namespace wire;
    return length > 0 && length <= kMemorySize && address >= kMemoryBase
        && address - kMemoryBase <= kMemorySize - length;
}

} // namespace

bool ProgramLoader::load(int furtherWords)
{
    const quint32 length = readArguments(furtherWords);
    if (!inMemory(programAddress, length)) {
        conversation.anomaly(
            QStringLiteral("%1 bytes for %2").arg(length).arg(hex(programAddress, 8)),
            QStringLiteral("a range of the memory at %1").arg(hex(wire::kMemoryBase, 8)));
        conversation.sendStatus(wire::kStatusRefusedRange);
        return false;
    }
    if (!conversation.sendStatus(wire::kStatusGood))
        return false;

    const QByteArray program = conversation.readBlock(static_cast<int>(length));
    conversation.heard(QStringLiteral("program of %1 bytes").arg(length));
    conversation.sendChecksum(wordChecksum(program));
    return conversation.sendStatus(wire::kStatusGood);
}

void ProgramLoader::refuse(int furtherWords, quint16 status)
{
    readArguments(furtherWords);
    conversation.sendStatus(status);
}

quint32 ProgramLoader::readArguments(int furtherWords)
{
    conversation.heard(QStringLiteral("load a program"));
    conversation.echo();
    programAddress = conversation.echoedLong(QStringLiteral("address"));
    const quint32 length = conversation.echoedLong(QStringLiteral("length"));
    for (int i = 0; i < furtherWords; ++i) {
        const quint32 word = conversation.echoedLong(QStringLiteral("further word"));
        if (word != 0)
            conversation.anomaly(QStringLiteral("further word ") + hex(word, 8), hex(0, 8));
    }
    return length;
}

} // namespace bench::chip
