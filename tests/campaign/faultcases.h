#pragma once

#include "bench/receiver/fault.h"

#include <QString>
#include <QVector>

namespace tests {

// One trial of the campaign: what is wrong on the line, and the cell of the matrix it counts in.
struct FaultCase
{
    QString name; // "e17" of the enumerated, "r523" of the random ones
    QString kind; // row of the matrix
    QString phase;
    QVector<bench::Fault> faults;
    quint32 seed = 0;        // of the receiver's dice
    bool onTerminal = false; // over transport and pseudo-terminal
};

// Every kind of fault at every exchange, in both directions, with its usual values, at the first,
// middle and last byte, once and always. In rounds: the first cases cover each cell once.
QVector<FaultCase> enumeratedCases();

// One to three faults anywhere; the number and the seed of the campaign say which. Counts in the
// cell of its only fault, or in one of "two faults" and "three faults".
FaultCase randomCase(int number, quint32 seed);

// The matrix's rows.
QStringList faultKinds();

} // namespace tests
