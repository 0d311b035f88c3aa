#pragma once

#include <QCoreApplication>

namespace tests {

// Tells the thread sanitizer where Qt orders threads: Qt itself is not compiled for it, so neither
// its queued calls nor the end of its threads would count. What a sender did before it emitted is
// done before the receiver's slot; what a blocking signal's slot did, before the signal returns;
// what a thread did, before wait() for it returns. Only between worker, transport and the GUI
// thread, and nothing else is ordered by it: what these three do outside of their signals may race.
class HandoverApplication : public QCoreApplication
{
public:
    HandoverApplication(int &argc, char **argv);

    bool notify(QObject *receiver, QEvent *event) override;
};

} // namespace tests
