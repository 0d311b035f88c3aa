#include "logmethods.h"

#include "dispatcher.h"

#include "bench/unit/journal.h"
#include "bench/unit/tracelog.h"

#include <QJsonDocument>

namespace bench {

namespace {

// An answer must fit a line of the monitor with room to spare.
constexpr int kAnswerBytes = 512 * 1024;

int bytesOf(const QJsonObject &entry)
{
    return QJsonDocument(entry).toJson(QJsonDocument::Compact).size();
}

QJsonObject toJson(const JournalEntry &entry)
{
    return {{"n", entry.number},
            {"ms", entry.elapsed},
            {"service", entry.service},
            {"call", entry.call},
            {"args", entry.arguments}};
}

// What of the journal fits one answer; `next` asks for the rest.
QJsonObject readJournal(const Arguments &arguments)
{
    int last = arguments.integer("since");
    int bytes = 0;
    bool more = false;
    QJsonArray entries;
    const QVector<JournalEntry> found = journal().entries(last);
    const int gone = found.isEmpty() ? 0 : found.first().number - last - 1;
    for (const JournalEntry &entry : found) {
        const QJsonObject row = toJson(entry);
        bytes += bytesOf(row);
        more = bytes > kAnswerBytes && !entries.isEmpty();
        if (more)
            break;
        entries.append(row);
        last = entry.number;
    }
    return {{"entries", entries}, {"gone", gone}, {"next", last}, {"more", more}};
}

QJsonObject readTrace(const TraceLog &trace, int since)
{
    int bytes = 0;
    bool more = false;
    QJsonArray lines;
    int gone = 0;
    const QStringList found = trace.lines(since, &gone);
    for (const QString &line : found) {
        bytes += line.size() * 3; // UTF-8 at its longest
        more = bytes > kAnswerBytes && !lines.isEmpty();
        if (more)
            break;
        lines.append(line);
    }
    return {
        {"lines", lines}, {"gone", gone}, {"next", since + gone + lines.size()}, {"more", more}};
}

} // namespace

void addJournalMethods(Dispatcher *dispatcher)
{
    dispatcher->add({"unit.journal",
                     {since()},
                     "The calls that the plug-in made of the unit, shell commands and framework "
                     "events, in order; 'more' says that 'next' asks for a rest",
                     "since=0",
                     direct(readJournal)});
    dispatcher->addEvent("unit.journal",
                         "an entry of the journal, when the call is over: a shell "
                         "command comes with its status");
    QObject::connect(&journal(), &Journal::completed, dispatcher, [dispatcher](int number) {
        const QVector<JournalEntry> entries = journal().entries(number - 1);
        if (!entries.isEmpty() && entries.first().number == number)
            emit dispatcher->eventHappened("unit.journal", toJson(entries.first()));
    });
}

void addTraceMethods(Dispatcher *dispatcher, TraceLog *trace)
{
    dispatcher->add(
        {"trace.read",
         {since()},
         "The plug-in's debug lines, whole, in order; 'more' says that 'next' asks for a rest",
         "since=0",
         direct([trace](const Arguments &arguments) {
             return readTrace(*trace, arguments.integer("since"));
         })});
    dispatcher->addEvent("trace.line", "'n', 'line': a debug line of the plug-in's");
    QObject::connect(
        trace, &TraceLog::added, dispatcher, [dispatcher](const QString &line, int number) {
            emit dispatcher->eventHappened("trace.line", {{"n", number}, {"line", line}});
        });
}

} // namespace bench
