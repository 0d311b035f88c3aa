#include "imagewriter.h"

#include "checksum.h"
#include "hex.h"
#include "record.h"
#include "wire.h"

namespace bench::chip {

namespace {

constexpr int kBusyBytes = 3;
constexpr auto kPacketSize = static_cast<quint32>(wire::kPacketSize);

} // namespace

ImageWriter::ImageWriter(Conversation &usedConversation, Record &usedRecord, Flash &usedFlash)
    : conversation(usedConversation), logbook(usedRecord), flash(usedFlash)
{
}

void ImageWriter::restart()
{
    image = Image();
    image.number = 1;
    conversation.uart().setImage(image.number);
}

void ImageWriter::download(bool announced)
{
    readArguments();
    if (check(0, badArguments(announced)) && check(1, badRange())) {
        logbook.enter(ReceiverPhase::Writing);
        logbook.beginImage(image.address, static_cast<int>(image.length));
        const int packets = static_cast<int>(image.length / kPacketSize);
        quint32 sum = 0;
        int packet = 1;
        while (packet <= packets && takePacket(packet, &sum))
            ++packet;
        conversation.uart().setPacket(0);
        if (packet > packets && endPackets())
            compareSums(sum);
    }
    conversation.uart().setImage(++image.number);
}

void ImageWriter::readArguments()
{
    image.address = conversation.readLong();
    image.length = conversation.readLong();
    image.packetSize = conversation.readLong();
    overlapReported = 0;
    conversation.heard(QStringLiteral("image of %1 bytes for %2 in packets of %3")
                           .arg(image.length)
                           .arg(hex(image.address, 8))
                           .arg(image.packetSize));
}

std::optional<quint32> ImageWriter::badArguments(bool announced)
{
    if (!announced) {
        conversation.anomaly(QStringLiteral("a download"),
                             QStringLiteral("%1 first").arg(hex(wire::ImageStart, 2)));
        return wire::kCodeOrder;
    }
    if (image.packetSize != kPacketSize) {
        conversation.anomaly(QStringLiteral("packets of %1 bytes").arg(image.packetSize),
                             QStringLiteral("packets of %1 bytes").arg(kPacketSize));
        return wire::kCodeLength;
    }
    if (image.length == 0 || image.length % kPacketSize != 0) {
        conversation.anomaly(QStringLiteral("an image of %1 bytes").arg(image.length),
                             QStringLiteral("whole packets"));
        return wire::kCodeLength;
    }
    return std::nullopt;
}

std::optional<quint32> ImageWriter::badRange()
{
    if (image.address % Flash::kSectorSize != 0) {
        conversation.anomaly(QStringLiteral("an image for ") + hex(image.address, 8),
                             QStringLiteral("a multiple of %1").arg(Flash::kSectorSize));
        return wire::kCodeAlignment;
    }
    if (!Flash::contains(image.address, image.length)) {
        conversation.anomaly(
            QStringLiteral("%1 bytes for %2").arg(image.length).arg(hex(image.address, 8)),
            QStringLiteral("a range of the flash, %1 to %2")
                .arg(hex(Flash::kBase, 8), hex(Flash::kBase + Flash::kSize - 1, 8)));
        return wire::kCodeRange;
    }
    return std::nullopt;
}

bool ImageWriter::check(int index, std::optional<quint32> code)
{
    if (!code)
        code = conversation.faultyRefusal(index);
    if (code) {
        conversation.sendRefusal(*code);
        return false;
    }
    conversation.acknowledge(wire::kAcknowledge,
                             index == 0 ? QStringLiteral("command good")
                                        : QStringLiteral("range good"));
    return true;
}

bool ImageWriter::takePacket(int packet, quint32 *sum)
{
    conversation.uart().setPacket(packet);
    for (;;) {
        conversation.begin(ReceiverStep::Packet);
        const QByteArray bytes = conversation.readBlock(wire::kPacketSize);
        conversation.heard(QStringLiteral("packet %1 of %2 of image %3")
                               .arg(packet)
                               .arg(image.length / kPacketSize)
                               .arg(image.number));
        const std::optional<quint32> code = conversation.faultyRefusal(0);
        if (!code) {
            store(packet, bytes);
            *sum += byteSum(bytes);
            conversation.acknowledge(wire::kAcknowledge, QStringLiteral("packet received"));
            conversation.acknowledge(wire::kPositive, QStringLiteral("packet written"));
            return true;
        }
        conversation.acknowledge(wire::kAcknowledge, QStringLiteral("packet received"));
        conversation.sendRefusal(*code);
        if (!packetComesAgain(*code))
            return false;
    }
}

// The codes that may be repeated are followed by an agreement to do so; after others the
// packet simply comes again.
bool ImageWriter::packetComesAgain(quint32 code)
{
    if (code < wire::kFirstRepeatableCode || code > wire::kLastRepeatableCode)
        return true;
    conversation.begin(ReceiverStep::PacketRepeat);
    if (code == wire::kLastRepeatableCode) {
        for (int i = 0; i < kBusyBytes; ++i)
            conversation.acknowledge(wire::kBusy, QStringLiteral("busy"));
        conversation.acknowledge(wire::kBusyEnd, QStringLiteral("no longer busy"));
    }
    conversation.acknowledge(wire::kAcknowledge, QStringLiteral("send the packet again"));
    for (;;) {
        const quint8 answer = conversation.readByte();
        if (answer == wire::RepeatPacket || answer == wire::GiveUpPacket) {
            const bool again = answer == wire::RepeatPacket;
            conversation.heard(again ? QStringLiteral("the packet comes again")
                                     : QStringLiteral("the host gives up"));
            return again;
        }
        conversation.anomaly(hex(answer, 2),
                             hex(wire::RepeatPacket, 2) + QLatin1String(" or ")
                                 + hex(wire::GiveUpPacket, 2));
        conversation.heard(QStringLiteral("not understood"));
    }
}

void ImageWriter::store(int packet, const QByteArray &bytes)
{
    logbook.packetWritten();
    if (conversation.skipsWrite())
        return;
    const quint32 address = image.address + static_cast<quint32>(packet - 1) * kPacketSize;
    const int before = flash.writeSector(address, bytes, image.number);
    if (before != 0 && before != overlapReported) {
        conversation.anomaly(QStringLiteral("image %1 overwrites image %2 at %3")
                                 .arg(image.number)
                                 .arg(before)
                                 .arg(hex(address, 8)),
                             QStringLiteral("images that do not overlap"));
        overlapReported = before;
    }
}

bool ImageWriter::endPackets()
{
    conversation.begin(ReceiverStep::ImageEnd);
    if (const std::optional<quint32> code = conversation.faultyRefusal(0)) {
        conversation.sendRefusal(*code);
        return false;
    }
    conversation.acknowledge(wire::kAcknowledge, QStringLiteral("all packets written"));
    return true;
}

void ImageWriter::compareSums(quint32 sum)
{
    conversation.begin(ReceiverStep::ImageSum);
    const quint32 hostSum = conversation.readLong();
    conversation.heard(QStringLiteral("sum ") + hex(hostSum, 8));
    const quint32 ownSum = conversation.ownSum(sum);
    if (hostSum != ownSum) {
        if (hostSum != sum)
            conversation.anomaly(QStringLiteral("sum ") + hex(hostSum, 8), hex(sum, 8));
        conversation.sendSumRefusal(ownSum);
        return;
    }
    logbook.completeImage();
    conversation.acknowledge(wire::kAcknowledge, QStringLiteral("sums equal"));
}

} // namespace bench::chip
