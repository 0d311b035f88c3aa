#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVector>

#include <array>

namespace bench {

// How the simulated receiver is built and set. A change counts from its next use.
struct ReceiverSettings
{
    bool powered = true;       // off: silent, but the line stays up
    bool resetOnSync = false;  // the synchronisation's first byte after silence counts as a reset
    bool keepLineRate = true;  // answers wait until the bytes would have passed the line
    int downloadRate = 921600; // baud after the switch; 0: takes the rate that the host then uses
    quint16 hwCode = 0x2C40;
    quint16 hwSubcode = 0x8A02;
    std::array<quint16, 3> flashId = {0x0057, 0x0040, 0x0016};
    int watchdogTime = 10000; // milliseconds from the synchronisation to a reset; 0: none
};

// One image as the receiver got it since its last reset.
struct WrittenImage
{
    quint32 address = 0;
    int length = 0;          // bytes that the host announced, whole packets
    int packets = 0;         // written so far
    bool complete = false;   // the sums were equal
    qint64 microseconds = 0; // from the download command to the sum
};

// One sector of the flash.
struct FlashSector
{
    int image = 0; // that wrote it last since the reset, from 1; 0: none
    int times = 0; // written since the reset
    bool erased = true;
};

// A phase of the receiver since its last reset.
struct PhaseTime
{
    QString phase;
    qint64 began = 0;        // milliseconds since the line was opened
    qint64 milliseconds = 0; // how long it lasted; so far, for the last one
};

// What the receiver knows of itself and of the line.
struct ReceiverState
{
    QString phase;    // one of phaseNames()
    QString step;     // one of stepNames(); empty before the first exchange
    int baud = 0;     // rate that the receiver listens at; 0: not measured yet
    int hostBaud = 0; // rate of the last bytes from the host; 0: none, or not to be known
    int resets = 0;   // since the line was opened: by the line, the watchdog or a fault
    int watchdogResets = 0;

    // since the last reset
    qint64 bytesIn = 0;
    qint64 bytesOut = 0;
    int packets = 0; // accepted
    QVector<WrittenImage> images;
    QVector<PhaseTime> phases;
    double imageBytesPerSecond = 0.0; // over the complete images; 0 without one

    // since the line was opened or clearRecord(): what came, and what was expected
    QStringList anomalies;
};

// One frame of the dialogue, or an event beside it.
struct DialogueLine
{
    enum Direction {
        ToReceiver,
        ToHost,
        Event // reset, power, a fault that struck
    };

    int number = 0;     // from 1
    qint64 elapsed = 0; // milliseconds since the line was opened
    Direction direction = Event;
    int baud = 0;
    QString step; // one of stepNames(); empty outside an exchange
    QString meaning;
    QByteArray bytes; // the first ones, at most 64
    int length = 0;   // of the whole frame

    QString text() const; // all of it as one line of words
};

} // namespace bench
