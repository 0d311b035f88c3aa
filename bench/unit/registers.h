#pragma once

#include <QString>
#include <QVector>

namespace bench {

// Bits of a register that belong together.
struct RegisterField
{
    using Meaning = QString (*)(quint32 value);

    QString name;
    int lowest = 0; // bit
    int bits = 32;
    Meaning meaning = nullptr; // of its value, in words; null: the number says it all

    quint32 valueIn(quint32 word) const;
    quint32 insertedIn(quint32 word, quint32 value) const;
    QString words(quint32 value) const;
};

// A word of the physical memory that has a name.
struct RegisterWord
{
    QString name;
    quint32 address = 0;
    QVector<RegisterField> fields;
};

// The USB PHYs' registers, in the order of their addresses; names of a port's own end in ".0" to
// ".2".
const QVector<RegisterWord> &registers();

// Null for a name that is none.
const RegisterWord *registerNamed(const QString &name);

} // namespace bench
