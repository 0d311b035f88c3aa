#include "waiting.h"

#include "dispatcher.h"

#include <QCoreApplication>

namespace bench {

namespace {

// A person cannot tell this from at once, and a waiting bench stays idle.
constexpr int kLookEvery = 20; // milliseconds

} // namespace

void Waiting::start(const Call &call, Probe probe, Complaint complaint)
{
    auto *waiting = new Waiting(call, std::move(probe), std::move(complaint));
    waiting->look();
}

Waiting::Waiting(const Call &call, Probe wanted, Complaint whenLate)
    : QObject(call.client != nullptr ? static_cast<QObject *>(call.client)
                                     : QCoreApplication::instance()),
      responder(call.responder), probe(std::move(wanted)), complaint(std::move(whenLate)),
      longest(call.arguments.integer("timeout_ms"))
{
    clock.start();
    connect(&timer, &QTimer::timeout, this, &Waiting::look);
    timer.start(kLookEvery);
}

void Waiting::look()
{
    try {
        if (const std::optional<QJsonObject> answer = probe())
            responder.succeed(*answer);
        else if (clock.elapsed() >= longest)
            throw CallError(ErrorClass::Timeout,
                            QStringLiteral("%1 after %2 ms").arg(complaint()).arg(longest));
        else
            return;
    } catch (const CallError &error) {
        responder.fail(error);
    }
    timer.stop();
    deleteLater();
}

} // namespace bench
