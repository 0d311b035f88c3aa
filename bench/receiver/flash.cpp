#include "flash.h"

#include <cstring>
#include <utility>

namespace bench::chip {

Flash::Flash() : history(static_cast<int>(kSize / kSectorSize)) { }

// The lock is held.
QByteArray &Flash::memory() const
{
    if (content.isEmpty())
        content.fill('\xFF', static_cast<int>(kSize));
    return content;
}

bool Flash::contains(quint32 address, quint32 length)
{
    return address >= kBase && length <= kSize && address - kBase <= kSize - length;
}

int Flash::writeSector(quint32 address, const QByteArray &bytes, int image)
{
    Q_ASSERT(contains(address, kSectorSize) && (address - kBase) % kSectorSize == 0);
    Q_ASSERT(bytes.size() == static_cast<int>(kSectorSize));
    int before = 0;
    {
        const QMutexLocker lock(&mutex);
        memory().replace(static_cast<int>(address - kBase), bytes.size(), bytes);
        FlashSector &sector = history[static_cast<int>((address - kBase) / kSectorSize)];
        before = std::exchange(sector.image, image);
        ++sector.times;
    }
    if (onWritten)
        onWritten(address, kSectorSize, image);
    return before == image ? 0 : before;
}

bool Flash::load(const QByteArray &whole)
{
    if (whole.size() != static_cast<int>(kSize))
        return false;
    {
        const QMutexLocker lock(&mutex);
        content = whole;
        history.fill({});
    }
    if (onWritten)
        onWritten(kBase, kSize, 0);
    return true;
}

QByteArray Flash::read(quint32 address, int length) const
{
    if (length < 0 || !contains(address, static_cast<quint32>(length)))
        return QByteArray();
    const QMutexLocker lock(&mutex);
    return memory().mid(static_cast<int>(address - kBase), length);
}

QVector<FlashSector> Flash::sectors() const
{
    static const QByteArray erased(static_cast<int>(kSectorSize), '\xFF');
    const QMutexLocker lock(&mutex);
    QVector<FlashSector> all = history;
    const QByteArray &whole = memory();
    for (int i = 0; i < all.size(); ++i) {
        const char *first = whole.constData() + i * erased.size();
        all[i].erased = std::memcmp(first, erased.constData(), size_t(erased.size())) == 0;
    }
    return all;
}

void Flash::forgetImages()
{
    const QMutexLocker lock(&mutex);
    history.fill({});
}

} // namespace bench::chip
