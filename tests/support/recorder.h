#pragma once

// One sequence of what a case watches, in the order in which it happened:
//
//   McuService.setResetSystem(1)              a call that the plug-in made of the unit
//   shell: sync                               a shell command
//   [DBG] void testmode::Page::save() -- ok   a trace: prefix, whole signature, payload
//   hdl_connect success                       a line of the log, which has no prefix
//   signal signals_success(/dev/ttyS4, true)  a signal that is watched, with its arguments
//   label: ready                              a state that is watched, from when it changed

#include "bench/unit/tracelog.h"

#include <QMutex>
#include <QObject>
#include <QRegularExpression>
#include <QStringList>
#include <QVector>

#include <functional>

namespace tests {

// A trace line as tests compare it: without thread id and line number, which no test can know. A
// line that has the prefix but not these is returned as it stands.
QString comparable(const QString &traceLine);
QStringList comparable(QStringList traceLines);

// Records from its making to its end. Calls, traces and signals of every thread; states are looked
// at in the recorder's own thread, at each entry that is made there, and when the entries are asked
// for: a change stands before the entry at which it was first seen.
class Recorder : public QObject
{
    Q_OBJECT

public:
    explicit Recorder(bench::TraceLog &trace);

    // `signal` as SIGNAL() gives it. Connected now: slots that were connected before come first.
    void watchSignal(const QObject *sender, const char *signal);

    // Records "name: value" when `value` gives another text than before. Not called after the
    // recorder's end; the first value is not recorded.
    void watchState(const QString &name, std::function<QString()> value);

    // What was recorded since the last clear(), or only what matches.
    QStringList entries();
    QStringList entries(const QRegularExpression &wanted);
    void clear();

private:
    struct State
    {
        QString name;
        std::function<QString()> value;
        QString last;
    };

    void add(const QString &entry);
    void takeCalls();
    void takeStates();

    QMutex mutex; // of the list and of the journal's number
    QStringList list;
    int lastCall;
    QVector<State> states;
    bool looking = false; // at states: one may trace
};

} // namespace tests
