#pragma once

#include "numberedlog.h"

#include "platform_api.h"

#include <QMutex>
#include <QObject>
#include <QStringList>

namespace bench {

// Keeps the messages of the process, whole and in order, and hands each on to
// the handler that stood before. Any thread.
class PLATFORM_API TraceLog : public QObject
{
    Q_OBJECT

public:
    // Installs the message handler; the destructor puts the previous one back.
    explicit TraceLog(QObject *parent = nullptr);
    ~TraceLog() override;

    // Debug lines with a number above `since`, as far as they are kept; `gone` is how many are not.
    QStringList lines(int since = 0, int *gone = nullptr) const;

    // The payloads of lines(): what follows " -- " in the plug-in's traces, the
    // whole text of every other debug line.
    QStringList payloads(int since = 0) const;

    // Warnings and worse.
    QStringList warnings() const;

    void clear();

    // Keeps the lines from the terminal (they stay in the log).
    void setQuiet(bool quiet);

signals:
    void added(const QString &line, int number); // emitted in the thread of the message

private:
    static void handle(QtMsgType type, const QMessageLogContext &context, const QString &text);

    mutable QMutex mutex;
    QtMessageHandler previous = nullptr;
    NumberedLog<QString> debugLines;
    NumberedLog<QString> warningLines;
    bool quiet = false;
};

} // namespace bench
