#pragma once

#include "updatephase.h"

#include <QString>
#include <QStringList>

namespace bench {

// A step of the dialogue that failed, as the trace knows it.
struct FailedStep
{
    UpdatePhase phase;
    QString label;         // of the trace; some labels are borrowed from other steps
    int stepsBefore = 0;   // that succeeded in this phase
    bool dataSent = false; // of the agent that was being loaded
    QString image;         // that was being written
    int packet = 0;        // of it, from 1; 0: none yet
    int packets = 0;
};

// What did not work, in words for a person at the cable.
QString failureWords(const FailedStep &step);

// What the receiver said in answer, from the hexadecimal digits of what was read since the
// step began. A read that brought nothing shows in the trace as what its variable held before.
QString saidWords(const QStringList &readings);

} // namespace bench
