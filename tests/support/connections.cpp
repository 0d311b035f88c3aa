#include "connections.h"

#include "bench/unit/tracelog.h"

#include <QObject>
#include <QRegularExpression>

namespace tests {

namespace {

QStringList dumpOf(const QObject &object, bench::TraceLog &trace)
{
    const int before = trace.lines().size();
    object.dumpObjectInfo();
    return trace.lines(before);
}

// The signal that a dumped sender has connected with the slot.
QString signalInto(const QString &slot, const QStringList &dump)
{
    static const QRegularExpression outgoing(QStringLiteral("^ +signal: (.+)$"));
    QString signal;
    for (const QString &line : dump) {
        const QRegularExpressionMatch match = outgoing.match(line);
        if (match.hasMatch())
            signal = match.captured(1);
        else if (line.contains(QLatin1String("-->")) && line.endsWith(QLatin1Char(' ') + slot))
            return signal;
    }
    return QStringLiteral("no signal");
}

} // namespace

QStringList connectionsInto(const QObject &receiver, bench::TraceLog &trace)
{
    static const QRegularExpression incoming(QStringLiteral("^ +<-- [\\w:]+::(\\w+) +(.+)$"));
    QStringList connections;
    const QStringList lines = dumpOf(receiver, trace);
    for (const QString &line : lines) {
        const QRegularExpressionMatch match = incoming.match(line);
        if (!match.hasMatch())
            continue;
        const QString sender = match.captured(1);
        const QString slot = match.captured(2);
        const auto *object = receiver.findChild<QObject *>(sender);
        if (object == nullptr)
            continue; // no child
        connections.prepend(QStringLiteral("%1: %2 -> %3")
                                .arg(sender, signalInto(slot, dumpOf(*object, trace)), slot));
    }
    return connections;
}

} // namespace tests
