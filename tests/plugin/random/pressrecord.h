#pragma once

#include <QString>

namespace tests {

// What a random test did last, printed on standard error when the process dies under it
// or the test says so. One at a time; any thread may die.
class PressRecord
{
public:
    // `replay`: how to run the same presses again.
    explicit PressRecord(const QString &replay);
    ~PressRecord();

    void add(const QString &press);
    void print() const;
};

} // namespace tests
