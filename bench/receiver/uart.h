#pragma once

#include "faults.h"
#include "guarded.h"
#include "line.h"
#include "pins.h"
#include "receiverstate.h"

#include <deque>
#include <map>

namespace bench::chip {

class Dialogue;
class Record;

// Thrown where the receiver waits: the reset line, the supply or the thread's end changed.
struct PinsChanged
{
};

// Thrown where the dialogue is left in its middle; `next` is what the receiver does then.
struct Left
{
    ReceiverPhase next;
};

// The receiver's UART: bytes at the rate in force, at the pace of the line, through the
// faults. Whatever waits in it ends with PinsChanged or Left when the receiver is reset,
// switched off, or bitten by its watchdog. Receiver's thread.
class Uart
{
public:
    // Rate at which any byte is understood: the next one is measured.
    static constexpr int kAnyBaud = 0;

    Uart(Line &usedLine, Pins &usedPins, Faults &usedFaults, Dialogue &usedDialogue,
         Record &usedRecord, const Guarded<ReceiverSettings> &usedSettings);

    // Out of reset: any rate, no watchdog, nothing in the buffers but the bytes that were taken
    // for a reset.
    void restart();

    // What the receiver does now, for the reset by the synchronisation's first byte.
    void setPhase(ReceiverPhase now) { phase = now; }

    // Where the dialogue stands.
    const Place &place() const { return here; }
    void begin(ReceiverStep step);
    void setImage(int image) { here.image = image; }
    void setPacket(int packet) { here.packet = packet; }

    // Faults at the place where the dialogue stands; done by receive() and send() for
    // themselves. A step that waits before its first byte asks for it.
    void strikeHere();

    int baud() const { return ownBaud; }
    void setBaud(int rate); // without effect while a fault holds another rate
    int lastByteBaud() const { return lastBaud; }

    quint8 peek();    // the next byte that comes, before faults; waits for it
    quint8 receive(); // waits for it
    void send(const QByteArray &answer, const QString &meaning);

    void pause(int milliseconds);
    QByteArray receiveAnything(std::optional<Clock::time_point> until); // empty: time is up

    void armWatchdog(int milliseconds);
    void disarmWatchdog() { watchdog.reset(); }

    // Into the dialogue: what the receiver made of bytes that it took.
    void record(DialogueLine::Direction direction, const QString &meaning,
                const QByteArray &bytes = QByteArray());
    void report(const Struck &struck, const QString &deed);
    void anomaly(const QString &came, const QString &expected);

private:
    struct RawByte
    {
        quint8 value;
        int baud; // of the host
        Clock::time_point arrived;
    };

    struct Piece
    {
        QByteArray bytes;
        int lateMilliseconds; // before them
    };

    void wait(std::optional<Clock::time_point> until, bool forBytes);
    void readLine();
    bool opensDialogue(const QByteArray &bytes, int hostBaud, Clock::time_point now) const;
    const RawByte &nextUnderstood();
    void dropMisread();
    bool understood(const RawByte &byte) const;
    void disturb(const RawByte &byte);
    bool neighbourComes();
    void bite();
    std::vector<Piece> disturbed(const QByteArray &answer);
    void checkFlowControl(const QByteArray &answer);
    void transmit(const QByteArray &bytes);

    Line &line;
    Pins &pins;
    Faults &faults;
    Dialogue &dialogue;
    Record &logbook;
    const Guarded<ReceiverSettings> &settings;

    ReceiverPhase phase = ReceiverPhase::Application;
    Place here;
    std::map<ReceiverStep, int> counts;
    LineClock fromHost;
    LineClock toHost;
    std::deque<RawByte> arrivals;       // read from the line, not yet looked at
    std::deque<quint8> understoodBytes; // behind the faults
    std::deque<RawByte> opening;        // taken for a reset: the first bytes after it
    Clock::time_point busyAt;           // when a byte last passed in either direction
    Clock::time_point heardAt;          // when the last byte that was taken had arrived
    int ownBaud = kAnyBaud;
    int lastBaud = kAnyBaud;
    int forcedBaud = 0; // by a fault; 0: none
    int struckAt = -1;  // byte of the step whose place was tried for faults
    bool misreadReported = false;
    std::optional<Clock::time_point> watchdog;
};

} // namespace bench::chip
