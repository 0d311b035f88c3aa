#pragma once

#include <QByteArray>
#include <QObject>

#include <atomic>
#include <cstdint>

class ugrade_thread;

namespace tests {

// What an update may take: counts what its worker asks of the transport. Works in the worker's
// thread; read it when the worker is at rest, but for repeatsWithoutEnd().
class TimeBudget : public QObject
{
    Q_OBJECT

public:
    explicit TimeBudget(ugrade_thread *worker);

    // Milliseconds that time-outs and rests add up to. Beyond it are writes that are held up.
    qint64 milliseconds() const;

    // One packet was drawn by codes that are not listed, more often than by any fault that ends.
    bool repeatsWithoutEnd() const { return sameAgain > kRepeats; }

private:
    static constexpr int kRepeats = 50;

    void readFor(uint32_t polls) { polled += polls; }
    void told(const uint32_t *code);
    void sent(uint8_t *bytes, uint32_t count);

    qint64 polled = 0;
    int drains = 0;
    int packets = 0;
    QByteArray lastPacket;
    bool drawnAgain = false; // by the last code
    std::atomic<int> sameAgain{0};
};

// Longer than any update in which nothing repeats without limit and nobody stops the sender.
constexpr qint64 kLongestUpdateMilliseconds = 900000;

} // namespace tests
