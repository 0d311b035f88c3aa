#pragma once

#include "event.h"
#include "tracereader.h"

#include "bench/monitor/caller.h"

#include <QElapsedTimer>
#include <QFile>
#include <QMutex>
#include <QThread>
#include <QVector>

#include <atomic>

namespace bench {

struct FlashOrder
{
    QString uart;     // the receiver's port; empty: the simulated receiver
    QString package;  // folder, for the report
    QString log;      // an existing file that takes the whole trace
    int attempts = 1; // at most
    QString capsule;  // that a flash that fails leaves; empty: none
};

// Flashes one receiver through the update page, by the monitor's calls, and tells how it
// goes. Runs in a thread of its own.
class FlashRun : public QThread
{
    Q_OBJECT

public:
    // `sink` takes the events in this thread. The dispatcher outlives the flash.
    FlashRun(Dispatcher *dispatcher, FlashOrder order, EventSink sink, QObject *parent = nullptr);

    // After the end of the thread.
    bool succeeded() const { return good; }

    // Has an event told that comes from elsewhere. Any thread.
    void tell(const Event &event);

    // An update whose first agent runs is brought to its end, another is left; no further
    // attempt begins. The thread ends after that. Any thread.
    void askToStop() { stopping = true; }

protected:
    void run() override;

private:
    void openPage();
    void loadPackage();
    bool attemptAsOrdered();
    bool attempt();
    bool awaitEnd();
    bool mayLeave();
    bool pageSaysSuccess();
    bool flashIsEqual();

    void report(Event event);
    void reportWhatWasTold();
    void addRate(Event *progress);
    void readTrace();
    void tellOfLog();
    bool answerBoxes();

    // A call that fails ends the flash.
    QJsonObject call(const QString &method, const QJsonObject &parameters = {});
    void click(const QString &object);
    // False when it does not come in time.
    bool waitFor(const QString &object, const QString &property, const QJsonValue &value,
                 int milliseconds);
    QString textOf(const QString &object);

    Caller caller;
    const FlashOrder order;
    const EventSink sink;
    TraceReader reader;
    QFile log;
    bool logTold = false;
    QElapsedTimer clock;
    int traceRead = 0; // lines of it
    int attempts = 0;
    qint64 writingSince = -1; // milliseconds of the clock
    bool good = false;

    QMutex telling;
    QVector<Event> told;

    std::atomic<bool> stopping{false};
    bool stopTold = false;
    QElapsedTimer idle; // since the last phase or packet
};

} // namespace bench
