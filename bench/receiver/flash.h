#pragma once

#include "receiverstate.h"

#include <QByteArray>
#include <QMutex>
#include <QVector>

#include <functional>

namespace bench::chip {

// The receiver's flash: 4 MiB at 0x08000000, 0xFF where erased. Any thread.
class Flash
{
public:
    static constexpr quint32 kBase = 0x08000000;
    static constexpr quint32 kSize = 4 * 1024 * 1024;
    static constexpr quint32 kSectorSize = 4096; // erased as a whole before it is written

    Flash();

    // Called in the thread that wrote; `image` as writeSector() was told, 0 for a load().
    std::function<void(quint32 address, quint32 length, int image)> onWritten;

    static bool contains(quint32 address, quint32 length);

    // Replaces one sector. Returns the number of the image that wrote it since the last
    // reset, when that was another one; else 0. The address is a sector's, in the flash.
    int writeSector(quint32 address, const QByteArray &bytes, int image);

    // Replaces the whole content; false when it has another size.
    bool load(const QByteArray &whole);

    // Empty when the range leaves the flash.
    QByteArray read(quint32 address, int length) const;

    // All of them, in the order of their addresses.
    QVector<FlashSector> sectors() const;

    void forgetImages(); // a reset

private:
    QByteArray &memory() const;

    mutable QMutex mutex;
    mutable QByteArray content;   // empty until it is first asked for: many receivers never are
    QVector<FlashSector> history; // of each sector since the reset
};

} // namespace bench::chip
