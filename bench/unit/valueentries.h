#pragma once

#include "unitdocument.h"

#include <chrono>
#include <cmath>
#include <initializer_list>
#include <limits>

// Rows of the document over single values of the model.
namespace bench::entries {

using Entry = UnitDocument::Entry;

constexpr int kNoMaximum = std::numeric_limits<int>::max();

// What a row says of a value that does not fit.
inline QString wanted(const QString &type)
{
    return QStringLiteral(": wanted is ") + type;
}

inline bool isWhole(const QJsonValue &value, double minimum, double maximum)
{
    const double number = value.toDouble(std::nan(""));
    return number >= minimum && number <= maximum && std::trunc(number) == number;
}

Entry boolean(const char *path, bool *value, const char *description);
Entry integer(const char *path, int *value, int minimum, int maximum, const char *description);
Entry milliseconds(const char *path, std::chrono::milliseconds *value, const char *description);
Entry oneOf(const char *path, int *value, std::initializer_list<int> codes,
            const char *description);
Entry number(const char *path, double *value, const char *description);
Entry number(const char *path, float *value, const char *description);
Entry text(const char *path, QString *value, const char *description);

} // namespace bench::entries
