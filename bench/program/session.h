#pragma once

#include "commandline.h"

#include "bench/host/bench.h"
#include "bench/host/host.h"
#include "bench/monitor/monitorserver.h"
#include "bench/receiver/receiver.h"
#include "bench/unit/tracelog.h"
#include "bench/unit/unitdocument.h"

#include <QObject>
#include <QSocketNotifier>
#include <QTranslator>

#include <memory>
#include <string>

namespace bench {

class FlashRun;
class OperatorWindow;
class Recorder;
class Replayer;
class Report;
class ResetLine;
class ResetPrompt;
class Tour;

// One run of the bench inside the private root: switches the unit on with what the
// command line attaches to it, and runs until the tour or the flash ends, a script says so, the
// window is closed or the process is asked to stop. GUI thread; owns all parts.
class Session : public QObject
{
    Q_OBJECT

public:
    explicit Session(const CommandLine &options);
    ~Session() override;

    // The event loop, and the exit status of the program.
    int run();

private:
    // Each says on standard error what is wrong, and returns the exit status.
    int attachReceiver();
    int loadPlugin();
    int loadUnitState();
    int startCapture();
    int listen();

    int attachResetLine();
    void askForReset();
    void tellOperator(const QString &text);
    void attachNamedFolders();
    void showScreen();
    void startTour();
    void startFlash();
    void startReplay();
    bool capturesFailuresOnly() const;
    QString evidence() const;
    int finishCapture(int status);
    void endWindow();
    [[noreturn]] void leaveDriverBehind(int status);
    void end();

    CommandLine options;
    TraceLog trace;
    Receiver receiver;
    QTranslator catalogue;
    std::unique_ptr<Recorder> recorder; // the host's end is part of the run
    Host host;
    UnitDocument document;
    Bench parts;
    std::unique_ptr<Dispatcher> dispatcher;
    std::unique_ptr<MonitorServer> monitor;
    std::unique_ptr<Tour> tour;
    std::unique_ptr<Report> report; // of the flash
    std::unique_ptr<FlashRun> flash;
    std::unique_ptr<Replayer> replayer;
    std::unique_ptr<ResetLine> resetLine;     // of a real receiver
    std::unique_ptr<ResetPrompt> resetPrompt; // where no line drives it
    std::unique_ptr<OperatorWindow> operatorWindow;
    QSocketNotifier stopRequests;
};

} // namespace bench
