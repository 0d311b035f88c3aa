#pragma once

#include <QVector>

#include <algorithm>
#include <deque>

namespace bench {

// Entries in order, numbered from 1 without gaps. A bench that runs for days must not grow for
// days: beyond the limit the oldest go. Journal, trace and dialogue are kept so. Callers lock.
template <typename Entry>
class NumberedLog
{
public:
    static constexpr int kKept = 20000;

    // Returns the entry's number.
    int append(Entry entry)
    {
        if (entries.size() == kKept) {
            entries.pop_front();
            ++gone;
        }
        entries.push_back(std::move(entry));
        return lastNumber();
    }

    int lastNumber() const { return gone + int(entries.size()); }

    // Null when the entry has gone.
    Entry *find(int number)
    {
        return number > gone && number <= lastNumber() ? &entries[size_t(number - gone - 1)]
                                                       : nullptr;
    }

    // What is kept of the entries with a number above `since`, and how many of them have gone.
    QVector<Entry> after(int since) const
    {
        const auto skipped = std::min(size_t(std::max(since - gone, 0)), entries.size());
        return QVector<Entry>(entries.begin() + std::ptrdiff_t(skipped), entries.end());
    }
    int goneAfter(int since) const { return std::max(gone - since, 0); }

    void clear() // numbers go on
    {
        gone = lastNumber();
        entries.clear();
    }

private:
    std::deque<Entry> entries;
    int gone = 0;
};

} // namespace bench
