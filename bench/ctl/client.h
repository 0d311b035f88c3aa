#pragma once

#include "callline.h"

#include "bench/root/exitstatus.h"

#include <QJsonObject>
#include <QLocalSocket>

namespace ctl {

// How a run ended: kCheckFailed for a call that failed or a result that could not be written,
// kNotThere for no bench on the socket or no file of calls, kTimedOut for no answer in time.
using bench::ExitStatus;

// One connection to a bench. Blocks; needs no event loop.
class Client
{
public:
    // `patience`: milliseconds to wait for an answer, beyond what the call itself may wait.
    explicit Client(int patience) : patienceMilliseconds(patience) { }

    // True once the bench has said hello. Otherwise status() and error() tell why, here and below.
    bool connectTo(const QString &socketPath);

    // The result of the call goes to `result`.
    bool call(const CallLine &call, QJsonObject *result);

    ExitStatus status() const { return lastStatus; }
    QString error() const { return lastError; }

private:
    bool readMessage(int milliseconds, QJsonObject *message);
    bool fail(ExitStatus status, const QString &error);

    int patienceMilliseconds;
    QLocalSocket socket;
    int lastId = 0;
    ExitStatus lastStatus = bench::kDone;
    QString lastError;
};

} // namespace ctl
