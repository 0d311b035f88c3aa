#pragma once

#include "gps/firmwarepackage.h"

#include <QByteArray>
#include <QString>

namespace tests {

// What became of an update, of which the matrix counts the first five.
enum class Outcome {
    Untouched,  // the faults found no occasion
    Recovered,  // success, and the flash holds the package
    Failed,     // one result, in time: no success
    Endless,    // repeats or waits without limit, as it is defined
    WrongFlash, // success, and the flash holds something else
    Wrong       // none of that: a fault of the host
};

QString outcomeName(Outcome outcome);

// What is known of an update when it is over.
struct Observation
{
    int results = 0; // that it told
    bool success = false;
    bool endless = false;       // was told to end
    bool drawnForEver = false;  // by codes that are not listed
    bool senderStopped = false; // by an XOFF that nobody had to take back
    qint64 milliseconds = 0;
    qint64 budget = 0;               // what time-outs and rests add up to
    int faultsDone = 0;              // how often any struck
    int packetsLost = 0;             // acknowledged and not written
    bool answersMeddledWith = false; // the host was told what the receiver did not mean
    bool addressMeddledWith = false; // the receiver was told to write elsewhere
    QByteArray flash;
    QByteArray flashBefore;
};

struct Verdict
{
    Outcome outcome = Outcome::Wrong;
    QString reason; // of Wrong and WrongFlash
};

// `package` is the one that this update had to write.
Verdict judge(const Observation &seen, const file &package);

} // namespace tests
