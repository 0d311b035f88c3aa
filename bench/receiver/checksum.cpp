#include "checksum.h"

#include <numeric>

namespace bench::chip {

quint16 wordChecksum(const QByteArray &bytes)
{
    quint8 halves[2] = {0, 0};
    for (int i = 0; i < bytes.size(); ++i)
        halves[i % 2] ^= static_cast<quint8>(bytes.at(i));
    return static_cast<quint16>(halves[0] | halves[1] << 8);
}

quint32 byteSum(const QByteArray &bytes)
{
    return std::accumulate(bytes.begin(), bytes.end(), quint32(0),
                           [](quint32 sum, char byte) { return sum + static_cast<quint8>(byte); });
}

} // namespace bench::chip
