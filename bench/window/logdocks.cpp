#include "logdocks.h"

#include "calls.h"
#include "logview.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace bench {

namespace {

// What the pages call while they draw a row of a list; it drowns what they do.
const QString kDrawing = QStringLiteral("ColorGroup");

const QString kShell = QStringLiteral("shell");

QString words(const QJsonArray &arguments)
{
    QStringList list;
    for (const QJsonValue &argument : arguments) {
        const QByteArray json = QJsonDocument(QJsonArray{argument}).toJson(QJsonDocument::Compact);
        list << QString::fromUtf8(json.mid(1, json.size() - 2));
    }
    return list.join(QStringLiteral(", "));
}

LogRow journalRow(const QJsonObject &entry)
{
    LogRow row;
    row.number = entry["n"].toInt();
    row.kind = entry["service"].toString();
    row.quiet = row.kind == kDrawing;
    row.loud = row.kind == kShell && entry["args"][0].toInt() != 0; // its status
    row.cells = QStringList{QString::number(row.number),
                            QString::number(entry["ms"].toDouble() / 1000, 'f', 3), row.kind,
                            entry["call"].toString().simplified(), words(entry["args"].toArray())};
    return row;
}

LogRow traceRow(int number, const QString &line)
{
    LogRow row;
    row.number = number;
    row.loud = line.contains(QLatin1String("fail"), Qt::CaseInsensitive)
        || line.contains(QLatin1String("error"), Qt::CaseInsensitive)
        || line.contains(QLatin1String("NACK"));
    row.cells = QStringList{QString::number(number), line.simplified()};
    return row;
}

// Everything that is kept, piece by piece.
void readAll(Calls *calls, const char *method, const Calls::Then &take)
{
    QJsonObject answer;
    int next = 0;
    do {
        answer = calls->ask(QString::fromLatin1(method), {{"since", next}});
        take(answer);
        next = answer["next"].toInt();
    } while (answer["more"].toBool());
}

} // namespace

LogView *makeJournalView(Calls *calls, const QString &folder, QWidget *parent)
{
    auto *view = new LogView({QStringLiteral("journal"),
                              {QStringLiteral("#"), QStringLiteral("s"), QStringLiteral("Service"),
                               QStringLiteral("Call"), QStringLiteral("Arguments, status")},
                              {6, 9, 20, 40},
                              QStringLiteral("all services"),
                              QStringLiteral("drawing calls"),
                              QString(),
                              QStringLiteral("only failed")},
                             folder, parent);
    readAll(calls, "unit.journal", [view](const QJsonObject &answer) {
        const QJsonArray entries = answer["entries"].toArray();
        for (const QJsonValue &entry : entries)
            view->add(journalRow(entry.toObject()));
    });
    QObject::connect(calls, &Calls::happened, view,
                     [view](const QString &event, const QJsonObject &params) {
                         if (event == QLatin1String("unit.journal"))
                             view->add(journalRow(params));
                     });
    return view;
}

LogView *makeTraceView(Calls *calls, const QString &folder, QWidget *parent)
{
    auto *view = new LogView({QStringLiteral("trace"),
                              {QStringLiteral("#"), QStringLiteral("Line")},
                              {6},
                              QString(),
                              QString(),
                              QString(),
                              QStringLiteral("only failed")},
                             folder, parent);
    readAll(calls, "trace.read", [view](const QJsonObject &answer) {
        const QJsonArray lines = answer["lines"].toArray();
        int number = answer["next"].toInt() - lines.size();
        for (const QJsonValue &line : lines)
            view->add(traceRow(++number, line.toString()));
    });
    QObject::connect(calls, &Calls::happened, view,
                     [view](const QString &event, const QJsonObject &params) {
                         if (event == QLatin1String("trace.line"))
                             view->add(traceRow(params["n"].toInt(), params["line"].toString()));
                     });
    return view;
}

} // namespace bench
