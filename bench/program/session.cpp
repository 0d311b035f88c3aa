#include "session.h"

#include "appearance.h"
#include "complaint.h"
#include "preparation.h"

#include "bench/capsule/recorder.h"
#include "bench/capsule/replayer.h"
#include "bench/flash/flashrun.h"
#include "bench/flash/report.h"
#include "bench/flash/terminal.h"
#include "bench/monitor/monitor.h"
#include "bench/root/exitstatus.h"
#include "bench/root/privateroot.h"
#include "bench/root/supervisor.h"
#include "bench/serial/resetline.h"
#include "bench/serial/resetprompt.h"
#include "bench/tour/tour.h"
#include "bench/unit/headunit.h"
#include "bench/unit/systemstate.h"
#include "bench/unit/unitpaths.h"
#include "bench/unit/usbstate.h"
#include "bench/window/operatorwindow.h"

#include <QApplication>
#include <QFile>
#include <QFileInfo>

#include <csignal>
#include <cstdio>

#include <unistd.h>

namespace bench {

namespace {

const QString kUart = QStringLiteral("/dev/ttyS4");

// Where a replay is recorded when nobody wants to keep it: gone with the private root.
constexpr char kReplayed[] = "/run/replayed.capsule";

} // namespace

Session::Session(const CommandLine &commandLine)
    : options(commandLine), document(pathsOf(&unit())),
      stopRequests(stopDescriptor(), QSocketNotifier::Read)
{
    trace.setQuiet(!options.trace);
    connect(&stopRequests, &QSocketNotifier::activated, this, &Session::end);
    QApplication::setQuitOnLastWindowClosed(false);
    connect(qApp, &QApplication::lastWindowClosed, this, &Session::end);
}

Session::~Session() = default;

int Session::run()
{
    unit().powerOn();
    for (const auto step : {&Session::attachReceiver, &Session::loadPlugin, &Session::loadUnitState,
                            &Session::startCapture, &Session::listen}) {
        const int status = (this->*step)();
        if (status != kDone)
            return status;
    }
    host.home();
    showScreen();
    startTour();
    startFlash();
    startReplay();

    const int status = finishCapture(QApplication::exec());
    if ((tour && tour->isRunning()) || (flash && flash->isRunning())
        || (replayer && replayer->isRunning()))
        leaveDriverBehind(status);
    return status;
}

int Session::attachReceiver()
{
    if (!options.uarts.empty())
        return attachResetLine();
    ReceiverSettings settings = receiver.settings();
    settings.keepLineRate = !options.fullSpeed;
    receiver.setSettings(settings);
    QString error;
    const QString line = receiver.open(&error);
    if (line.isEmpty() || !QFile::link(line, kUart))
        return complain("no line for the simulated receiver: " + error.toStdString(), kFault);

    // Direct: the worker drives the line from its own thread and counts on its effect.
    connect(&unit(), &HeadUnit::gnssResetChanged, &receiver, &Receiver::setReset,
            Qt::DirectConnection);
    return kDone;
}

// Opened before the plug-in opens the port. Direct: see above.
int Session::attachResetLine()
{
    if (options.reset.empty()) {
        askForReset();
        return kDone;
    }
    resetLine = ResetLine::inherited(*parseResetWiring(options.reset), kUart.toStdString());
    if (!resetLine)
        return complain("--reset " + options.reset + ": the line was not handed on", kFault);
    connect(
        &unit(), &HeadUnit::gnssResetChanged, this,
        [this](bool asserted) {
            if (!resetLine->set(asserted))
                remark("--reset " + options.reset
                       + ": the line is not there any more; see to "
                         "the adapter");
        },
        Qt::DirectConnection);
    return kDone;
}

// Nothing drives the line of a receiver that is not ours, so a person does, when told.
void Session::askForReset()
{
    resetPrompt = std::make_unique<ResetPrompt>();
    connect(&unit(), &HeadUnit::gnssResetChanged, resetPrompt.get(), &ResetPrompt::follow);
    connect(resetPrompt.get(), &ResetPrompt::told, this, &Session::tellOperator);
}

void Session::tellOperator(const QString &text)
{
    if (flash)
        flash->tell({{"kind", "operator"}, {"text", text}});
    else
        remark(text.toStdString());
}

int Session::loadPlugin()
{
    // A unit's framework has its catalogues in place before it loads a plug-in.
    if (!options.language.empty()) {
        if (!catalogue.load(QString::fromStdString(options.language)))
            return complain("--language: " + options.language
                                + " is no catalogue; make one with Qt's lrelease",
                            kNotThere);
        QCoreApplication::installTranslator(&catalogue);
    }
    QString error;
    if (!host.load(QString::fromStdString(options.plugin), &error))
        return complain("--plugin: " + error.toStdString(), kNotThere);
    return kDone;
}

// The state from the file, with what the command line attaches to it.
int Session::loadUnitState()
{
    const bool simulated = options.uarts.empty();
    parts = {&host, simulated ? &receiver : nullptr, &trace,
             QString::fromStdString(options.pictures), resetPrompt.get()};
    dispatcher = makeDispatcher(parts, &document);
    connect(dispatcher.get(), &Dispatcher::quitRequested, this, &Session::end,
            Qt::QueuedConnection);
    if (!options.unit.empty()) {
        const QString error = loadUnitFile(&document, QString::fromStdString(options.unit));
        if (!error.isEmpty())
            return complain("--unit: " + error.toStdString(), kNotThere);
    }
    attachNamedFolders();
    return kDone;
}

void Session::attachNamedFolders()
{
    if (!options.package.empty())
        unit().change()->system.updateFolder = QLatin1String(kPackageFolder);
    for (int port = 0; port < 2; ++port) {
        if (options.usb[port].empty())
            continue;
        unit().change()->usb.ports[port].disk = true;
        unit().change()->usb.ports[port].path = QLatin1String(kUsbFolders[port]);
    }
}

// Before anything is shown: what the unit is then, and all that follows.
int Session::startCapture()
{
    if (!options.replay.empty()) {
        replayer = std::make_unique<Replayer>(dispatcher.get(), host.screen());
        const std::string trouble =
            replayer->load(QString::fromStdString(options.replay), &document).toStdString();
        if (!trouble.empty())
            return complain("--replay: " + trouble, kNotThere);
        if (options.capture.empty())
            options.capture = kReplayed;
    }
    if (options.capture.empty())
        return kDone;
    recorder = std::make_unique<Recorder>(
        QString::fromStdString(options.capture),
        [](const QString &trouble) { remark("--capture: " + trouble.toStdString()); });
    Recorder::Sources sources;
    sources.parts = parts;
    sources.dispatcher = dispatcher.get();
    sources.document = &document;
    for (const std::string &word : commandLineWords(options))
        sources.arguments << QString::fromStdString(word);
    if (!options.package.empty() || replayer)
        sources.package = QLatin1String(kPackageFolder);
    const std::string trouble = recorder->start(sources).toStdString();
    if (trouble.empty())
        return kDone;
    recorder.reset();
    if (!capturesFailuresOnly())
        return complain("--capture: " + trouble, kNotThere);
    remark("no capsule: " + trouble);
    return kDone;
}

// Nobody has asked for it: it is kept where the run fails.
bool Session::capturesFailuresOnly() const
{
    return options.capture.rfind(capsuleFolder() + '/', 0) == 0;
}

// What a run that fails leaves behind.
QString Session::evidence() const
{
    return recorder ? QString::fromStdString(options.capture) : QString();
}

int Session::finishCapture(int status)
{
    if (!recorder)
        return status;
    recorder->beginEnd();
    endWindow();
    const bool whole = recorder->finish(status);
    if (capturesFailuresOnly()) {
        if (status == kDone)
            recorder->forget();
        return status;
    }
    if (!whole)
        return status == kDone ? kNotThere : status;
    return replayer && !replayer->isRunning()
        ? replayer->compare(QString::fromStdString(options.capture))
        : status;
}

int Session::listen()
{
    if (options.monitor.empty())
        return kDone;
    monitor = std::make_unique<MonitorServer>(dispatcher.get(), greeting(parts));
    QString error;
    return monitor->listen(QString::fromStdString(options.monitor), &error)
        ? kDone
        : complain("--monitor: " + error.toStdString(), kNotThere);
}

void Session::showScreen()
{
    if (!isOnDisplay()) {
        host.screen()->show();
        return;
    }
    // By hand the status page is alive; a script says itself what the receiver sees.
    if (!options.isDriven() && options.unit.empty())
        unit().followSky(true);
    WindowParts window;
    window.dispatcher = dispatcher.get();
    window.screen = host.screen();
    window.pictures = parts.pictures;
    if (QFileInfo(QString::fromStdString(windowFolder())).isWritable())
        window.settings = QString::fromStdString(windowFolder() + "/window.ini");
    window.resetPrompt = resetPrompt.get();
    operatorWindow = std::make_unique<OperatorWindow>(window);
    operatorWindow->show();
}

// The tour drives the bench from a thread of its own, and ends it.
void Session::startTour()
{
    if (options.tour.empty())
        return;
    tour = std::make_unique<Tour>(dispatcher.get(),
                                  TourOrder{QString::fromStdString(options.tour), evidence()});
    connect(tour.get(), &Tour::finished, this, [this] {
        tour->wait();
        QCoreApplication::exit(tour->failures() == 0 ? kDone : kCheckFailed);
    });
    tour->start();
}

// So does an update without a window.
void Session::startFlash()
{
    if (!options.flash)
        return;
    ::signal(SIGPIPE, SIG_IGN); // an update goes on though nobody reads of it any more
    const FlashOrder order = {
        QString::fromStdString(options.uart()), QString::fromStdString(options.package),
        QString::fromStdString(options.log), options.attemptCount(), evidence()};
    report = makeReport({takeStandardOutput(), {order.uart}, options.format == "json"});
    flash = std::make_unique<FlashRun>(dispatcher.get(), order,
                                       [this](const Event &event) { report->take(0, event); });
    connect(flash.get(), &FlashRun::finished, this, [this] {
        flash->wait();
        QCoreApplication::exit(flash->succeeded() ? kDone : kCheckFailed);
    });
    flash->start();
}

// So does what is repeated; what it came to is compared at the end.
void Session::startReplay()
{
    if (!replayer)
        return;
    connect(replayer.get(), &Replayer::finished, this, [this] {
        replayer->wait();
        QCoreApplication::exit(kDone);
    });
    replayer->start(recorder.get());
}

// The page's update comes to its end with it.
void Session::endWindow()
{
    host.destroyWindow();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

// It waits in its thread for an answer that nobody gives any more.
void Session::leaveDriverBehind(int status)
{
    endWindow();
    recorder.reset();
    std::fflush(nullptr);
    ::_exit(status);
}

// A tour that was cut short has not succeeded. A flash knows itself what it has to end.
void Session::end()
{
    stopRequests.setEnabled(false);
    // An update may have to be finished first; a packet that begins, or that the receiver asks for
    // again, tells that it gets on.
    const auto follow = [](const QString &line) {
        if (line.startsWith(QLatin1String("hdl_da_download ("))
            || line.startsWith(QLatin1String("hdl_wirte_packet, NACK")))
            showLife();
    };
    connect(&trace, &TraceLog::added, this, follow, Qt::DirectConnection);
    if (flash && flash->isRunning()) {
        flash->askToStop();
        return;
    }
    QCoreApplication::exit(options.tour.empty() && options.replay.empty() ? kDone : kCheckFailed);
}

} // namespace bench
