#pragma once

#include <QObject>
#include <QSocketNotifier>

namespace bench {

// What the process is asked for by signals: SIGTERM, SIGINT and SIGHUP end it, SIGUSR1
// resets the receiver. Made before any other thread, which then takes none of them.
class Requests : public QObject
{
    Q_OBJECT

public:
    Requests();
    ~Requests() override;

signals:
    void endRequested();
    void resetRequested();

private:
    void take();

    int descriptor;
    QSocketNotifier notifier;
};

} // namespace bench
