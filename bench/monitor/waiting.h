#pragma once

#include "method.h"

#include <QElapsedTimer>
#include <QTimer>

#include <functional>
#include <optional>

namespace bench {

// Answers a call when something holds, or fails it with Timeout. Deletes itself;
// ends with the client that waits. GUI thread.
class Waiting : public QObject
{
    Q_OBJECT

public:
    // The answer, once there is one; throws CallError when waiting is in vain.
    using Probe = std::function<std::optional<QJsonObject>()>;
    // What to say when the time is over.
    using Complaint = std::function<QString()>;

    static void start(const Call &call, Probe probe, Complaint complaint);

private:
    Waiting(const Call &call, Probe probe, Complaint complaint);
    void look();

    Responder responder;
    Probe probe;
    Complaint complaint;
    int longest; // milliseconds
    QElapsedTimer clock;
    QTimer timer;
};

} // namespace bench
