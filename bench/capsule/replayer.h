#pragma once

#include "capsule.h"
#include "difference.h"
#include "progress.h"

#include "bench/monitor/caller.h"

#include <QPointer>
#include <QThread>
#include <QWidget>

#include <cstdio>
#include <optional>

namespace bench {

class Recorder;
class UnitDocument;

// Does once more what was done in a capsule: each input when the run has come as far as it had come
// then, whatever the clock says. Runs in a thread of its own beside a recorder of its own.
class Replayer : public QThread
{
    Q_OBJECT

public:
    // The dispatcher outlives the thread.
    Replayer(Dispatcher *dispatcher, QWidget *screen, QObject *parent = nullptr);

    // Makes the unit what it was at the start, with the package that it had. Empty, or what is
    // wrong.
    QString load(const QString &file, UnitDocument *document);

    // `recorder` outlives the thread.
    void start(const Recorder *recorder);

    // After the end: tells what the repetition came to on standard output. 0: the same verdict.
    int compare(const QString &replayed) const;

protected:
    void run() override;

private:
    // Each input that cannot be made as it was is the first difference.
    void awaitTurn(const Capsule::Input &input, qint64 before);
    void make(const Capsule::Input &input, qint64 before);
    void makeTouch(const Capsule::Input &input);
    void awaitEnd();
    bool hasEnded(const Progress &end) const;
    void note(const Capsule::Input &input, const QString &is);
    // How long what took so many milliseconds is waited for.
    qint64 patience(qint64 took) const;

    Caller caller;
    Dispatcher *dispatcher;
    QPointer<QWidget> screen;
    std::FILE *output; // the process's standard output
    const Recorder *recorder = nullptr;
    Capsule capsule;
    std::optional<Difference> hindrance;
};

} // namespace bench
