#pragma once

#include "bench/monitor/caller.h"

#include <QElapsedTimer>
#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <QThread>

#include <cstdio>
#include <functional>

namespace bench {

struct TourOrder
{
    QString pictures; // an existing folder
    QString capsule;  // that a tour that fails leaves; empty: none
};

// The guided run: opens every page by real clicks, uses each, flashes the package
// through the update page and compares the receiver's flash with the files. Prints one
// line a step and leaves a picture of every page. Runs in a thread of its own and
// reaches the bench only through the monitor's calls.
class Tour : public QThread
{
    Q_OBJECT

public:
    // The dispatcher outlives the tour.
    Tour(Dispatcher *dispatcher, const TourOrder &order, QObject *parent = nullptr);

    // After the end of the thread: steps that failed.
    int failures() const { return failedSteps; }

protected:
    void run() override;

private:
    // One stop of the tour a page, in a file of its own subject.
    void menu();
    void everyEntry();
    void update();
    void stagedUpdate();
    void gnssStatus();
    void usbPhy();
    void appleTest();
    void usbTest();
    void systemTools();
    void microphone();
    void quit();

    void print(const QString &line);

    // Runs one step and prints its line: what was done, what was seen, ok or not, the time.
    // `act` returns what was seen; a failed expectation ends the step.
    void step(const QString &done, const std::function<QString()> &act);

    // The calls that the steps are made of. Each ends the step when it fails.
    QJsonValue call(const QString &method, const QJsonObject &parameters = {});
    void click(const QString &object);
    void waitFor(const QString &object, const QString &property, const QJsonValue &value,
                 int seconds = 5);
    QString textOf(const QString &object);
    bool isVisible(const QString &object);
    void setUnit(const QString &path, const QJsonValue &value);
    QJsonValue unitValue(const QString &path);
    quint32 memoryWord(quint32 address);
    void openMenu();
    void awaitRestart();
    void freshWindow();
    void expectWord(quint32 address, quint32 expected);
    void picture(const QString &name);
    void expect(bool holds, const QString &otherwise);

    // Journal lines that came after the last call of this function or markJournal().
    void markJournal();
    QStringList journalSinceMark();
    void expectJournal(const QStringList &expected);

    // The update's parts.
    QString compareFlash();
    QString phaseTimes();
    QString imageRate();

    Caller caller;
    const QString pictures;
    const QString capsule;
    std::FILE *output; // the process's standard output
    QElapsedTimer clock;
    int steps = 0;
    int failedSteps = 0;
    int journalMark = 0;
};

} // namespace bench
