#pragma once

#include <QByteArray>

namespace bench::chip {

// XOR of the 16-bit words, low byte first; an odd last byte counts as a word's low half.
quint16 wordChecksum(const QByteArray &bytes);

// Sum of the bytes, wrapping at 32 bits.
quint32 byteSum(const QByteArray &bytes);

} // namespace bench::chip
