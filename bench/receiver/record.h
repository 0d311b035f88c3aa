#pragma once

#include "receiverstate.h"
#include "step.h"

#include <QElapsedTimer>
#include <QMutex>

#include <functional>

namespace bench::chip {

// What may be known of the receiver from outside: written by its thread, read by any.
class Record
{
public:
    // Called in the receiver's thread.
    std::function<void(const QString &phase)> onPhase;
    std::function<void(const QString &text)> onAnomaly;
    std::function<void(int baud, int hostBaud)> onBaud;                 // either is another one
    std::function<void(int number, const WrittenImage &image)> onImage; // begun, or complete

    void open();    // the line is new: times begin at 0
    void restart(); // the receiver came out of a reset
    void countWatchdogReset();

    void enter(ReceiverPhase phase);
    void enter(ReceiverStep step);
    void anomaly(const QString &text);
    void setBaud(int baud);
    void received(int count, int hostBaud);
    void sent(int count);

    void beginImage(quint32 address, int length);
    void packetWritten();
    void completeImage();

    ReceiverState state() const;
    qint64 elapsed() const; // milliseconds since open()
    void clearAnomalies();

private:
    static constexpr int kMostAnomalies = 1000;

    void tellImage();

    mutable QMutex mutex;
    QElapsedTimer clock;
    ReceiverState now;
    qint64 imageBegan = 0;
};

} // namespace bench::chip
