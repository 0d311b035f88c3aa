#pragma once

#include "event.h"
#include "report.h"

#include <QElapsedTimer>
#include <QObject>
#include <QProcess>
#include <QSocketNotifier>
#include <QVector>

#include <memory>
#include <vector>

namespace bench {

// A program that flashes one receiver and tells so in JSON. Ends when this process does,
// and hears of a request to stop through this process alone.
class FlashProcess : public QProcess
{
    Q_OBJECT

public:
    using QProcess::QProcess;

protected:
    void setupChildProcess() override;
};

// Flashes several receivers at once, each by a program of its own, and gives what they
// tell to one report. Needs a QCoreApplication; GUI thread.
class SideBySide : public QObject
{
    Q_OBJECT

public:
    struct Order
    {
        QString uart;
        QStringList words; // of the program's command line
    };

    SideBySide(const QString &program, const QVector<Order> &orders, Report *report);
    ~SideBySide() override;

    // Returns when every program has ended: 0 if all have succeeded, else the status that
    // all have ended with, or 1.
    int run();

private:
    struct Line
    {
        QString uart;
        std::unique_ptr<FlashProcess> process;
        QStringList complaints; // lines on its standard error
        QString failure;        // in words
        Event result;           // empty: not ended yet
        int status = -1;
    };

    void start(int line, const QString &program, const QStringList &words);
    void readOutput(int line);
    void readErrors(int line);
    void take(int line, Event event);
    void processEnded(int line);
    void stopAll();
    void summarise();
    int commonStatus() const;

    Report *report;
    std::vector<Line> lines;
    QElapsedTimer clock;
    int running = 0;
    std::unique_ptr<QSocketNotifier> stopRequests;
};

} // namespace bench
