#pragma once

#include "fault.h"

#include <QMutex>

#include <atomic>
#include <functional>
#include <random>
#include <vector>

namespace bench::chip {

// Where the dialogue stands, as faults name it.
struct Place
{
    ReceiverStep step = ReceiverStep::Sync;
    int count = 0;   // of this step since the reset
    int image = 0;   // since the reset; 0: none yet
    int packet = 0;  // of the image; 0: none under way
    int bytesIn = 0; // of this step
    int bytesOut = 0;

    QString text() const; // "packet 3 (image 1, packet 3)"
};

// A fault that strikes.
struct Struck
{
    int number = 0; // in the list
    int list = 0;   // the how-manieth that was set
    Fault fault;
    quint32 dice = 0; // from the seed, for what the fault leaves open
};

// The faults to come: the one place that knows whether one strikes, draws from the seed
// and counts. Whoever asks carries it out and tells what was done. Any thread.
class Faults
{
public:
    // Called in the receiver's thread: the place in the list, and the last deed of the fault there.
    std::function<void(int number, const FaultReport &report)> onStruck;

    void set(const QVector<Fault> &faults, quint32 seed);
    QVector<FaultReport> reports() const;

    // The first fault of this kind that strikes here. `index`: which place, answer or byte
    // of the step this is. Counts as done from tell() on, which has to follow.
    std::optional<Struck> strike(Fault::Kind kind, const Place &place, int index);
    std::optional<Struck> strikeByte(Fault::Direction direction, const Place &place, int index,
                                     bool hasNeighbour);

    // Would Swap like this byte? Tells whether it is worth waiting for a neighbour.
    bool mayStrike(Fault::Kind kind, Fault::Direction direction, const Place &place,
                   int index) const;

    bool empty() const { return kindsSet == 0; }

    // `elapsed`: milliseconds since the line was opened.
    void tell(const Struck &struck, const QString &deed, qint64 elapsed);

private:
    static constexpr int kMostDeeds = 1000;

    struct Entry
    {
        FaultReport report;
        int strikes = 0;   // told or about to be
        std::mt19937 dice; // one each, so that faults do not disturb one another
    };

    bool isSet(Fault::Kind kind) const { return (kindsSet >> static_cast<int>(kind) & 1U) != 0; }
    static bool fits(const Entry &entry, const Place &place, int index);
    static bool draw(Entry *entry);
    Struck struckBy(size_t number);

    mutable QMutex mutex;
    std::vector<Entry> entries;
    int listNumber = 0;
    std::atomic<quint32> kindsSet{0}; // a bit each; asked at every byte, so without the lock
};

// What a fault of a byte makes of it.
struct ByteEffect
{
    QByteArray bytes;
    int lateMilliseconds = 0; // before the bytes
    bool tookNeighbour = false;
    QString deed; // "0x5A became 0x4A"
};
ByteEffect effectOf(const Struck &struck, quint8 value, std::optional<quint8> neighbour);

// Bytes that say nothing, without XON and XOFF: those are a fault of their own.
QByteArray noise(int count, quint32 dice);

} // namespace bench::chip
