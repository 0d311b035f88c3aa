#include "packages.h"

#include "exchanges.h"

#include "bench/receiver/receiver.h"

#include <random>

namespace tests {

namespace {

constexpr int kPacketBytes = 4096;

// Each byte's highest bit tells the packages apart.
QByteArray image(int which, int number, int bytes)
{
    std::mt19937 source(static_cast<quint32>(number));
    QByteArray content(bytes, '\0');
    for (char &byte : content)
        byte = static_cast<char>((source() & 0x7F) | (which == 0 ? 0x00 : 0x80));
    return content;
}

QByteArray padded(const QByteArray &image)
{
    const int packets = (image.size() - 1) / kPacketBytes + 1;
    return image.leftJustified(packets * kPacketBytes, '\xFF');
}

file madePackage(int which)
{
    // The first is of whole packets, the others end within one.
    const int lengths[] = {kPackets[0] * kPacketBytes, kPackets[1] * kPacketBytes - 1,
                           kPackets[2] * kPacketBytes - 4095, kPackets[3] * kPacketBytes - 1000};
    return {image(which, 1, lengths[0]), image(which, 2, lengths[1]), image(which, 3, lengths[2]),
            image(which, 4, lengths[3])};
}

QByteArray madeFlash(const file &package)
{
    QByteArray content(bench::Receiver::flashSize(), '\xFF');
    const QVector<FlashImage> images = flashImages(package);
    for (const FlashImage &image : images)
        content.replace(image.offset, image.bytes.size(), image.bytes);
    return content;
}

} // namespace

const file &campaignPackage(int which)
{
    static const file packages[] = {madePackage(0), madePackage(1)};
    return packages[which];
}

QVector<FlashImage> flashImages(const file &package)
{
    return {{0x30000, padded(package.bootloader_bin)},
            {0x00000, padded(package.partition_bin)},
            {0x13000, padded(package.app_bin)},
            {0x3FF000, padded(package.config_bin)}};
}

QByteArray flashWith(const file &package)
{
    static const QByteArray contents[] = {madeFlash(campaignPackage(0)),
                                          madeFlash(campaignPackage(1))};
    return contents[&package == &campaignPackage(0) ? 0 : 1];
}

} // namespace tests
