#pragma once

#include "capsule.h"

#include <optional>

namespace bench {

// Where two runs part: what came, and what had come.
struct Difference
{
    QString subject;    // "dialogue", "journal", "input 3", "update 1"
    qint64 ms = 0;      // of the capsule
    QStringList before; // five lines at most that both have
    QString was;        // in the capsule; empty: nothing more
    QString is;         // now; empty: nothing more
};

// The first difference in journal or dialogue, times and repeats left out. A capsule whose bench
// was killed is compared as far as it goes.
std::optional<Difference> firstDifference(const Capsule &was, const Capsule &is);

// The first verdict that is another one.
std::optional<Difference> otherVerdict(const Capsule &was, const Capsule &is);

// As a person reads it.
QString wordsOf(const Difference &difference);

} // namespace bench
