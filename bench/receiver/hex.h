#pragma once

#include <QString>

namespace bench::chip {

// "0x0A50" with `digits` 4.
inline QString hex(quint32 value, int digits)
{
    return QStringLiteral("0x")
        + QString::number(value, 16).toUpper().rightJustified(digits, QLatin1Char('0'));
}

} // namespace bench::chip
