#pragma once

#include "numberedlog.h"

#include "platform_api.h"

#include <QElapsedTimer>
#include <QJsonArray>
#include <QMutex>
#include <QObject>
#include <QStringList>

namespace bench {

// One call that the plug-in made of the unit.
struct PLATFORM_API JournalEntry
{
    int number = 0;       // from 1, without gaps
    qint64 elapsed = 0;   // milliseconds since the journal began
    QString service;      // a platform class, "shell" or "framework"
    QString call;         // operation; for "shell" the whole command text
    QJsonArray arguments; // for "shell" the exit status, once the command has ended

    // "McuService.setResetSystem(1)"; for the shell "shell: sync".
    QString text() const;
};

// The ordered record of every service call, shell command and framework event.
// Any thread may write and read.
class PLATFORM_API Journal : public QObject
{
    Q_OBJECT

public:
    explicit Journal(QObject *parent = nullptr);

    // Returns the entry's number.
    int call(const QString &service, const QString &operation, const QJsonArray &arguments = {});

    // The same for a call of which more is known only later, when it is completed: its result.
    int begin(const QString &service, const QString &operation, const QJsonArray &arguments = {});
    void complete(int number, const QJsonArray &arguments);

    // Entries with a number above `since`, as far as they are kept.
    QVector<JournalEntry> entries(int since = 0) const;
    QStringList texts(int since = 0) const;
    int lastNumber() const;

    void clear();

signals:
    // Emitted in the thread of the call.
    void added(int number);
    void completed(int number); // at once, or when what was begun is over

private:
    mutable QMutex mutex;
    QElapsedTimer clock;
    NumberedLog<JournalEntry> log;
};

// The one journal of the process.
PLATFORM_API Journal &journal();

} // namespace bench
