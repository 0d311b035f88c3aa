#pragma once

#include <QObject>
#include <QTimer>

namespace bench {

// What the simulated receiver does by itself: it answers a while after it was asked,
// and reports once a second while it follows the sky. GUI thread.
class GnssReceiver : public QObject
{
public:
    GnssReceiver();

    // The version comes as the service's signal.
    void queryVersion();

private:
    void follow(bool on);
    void forgetQueries();
    void report();

    QTimer seconds;
    QObject *queries = nullptr; // context of the answers under way
};

} // namespace bench
