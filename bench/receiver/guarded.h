#pragma once

#include <QMutex>

namespace bench::chip {

// A value that threads hand one another by copy.
template <typename Value>
class Guarded
{
public:
    Value get() const
    {
        const QMutexLocker lock(&mutex);
        return held;
    }

    void set(const Value &value)
    {
        const QMutexLocker lock(&mutex);
        held = value;
    }

private:
    mutable QMutex mutex;
    Value held;
};

} // namespace bench::chip
