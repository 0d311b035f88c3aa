#include "callhelp.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace ctl {

namespace {

QJsonArray allCalls()
{
    QFile file(QStringLiteral(":/calls.json"));
    const bool opened = file.open(QIODevice::ReadOnly);
    Q_ASSERT(opened);
    Q_UNUSED(opened)
    return QJsonDocument::fromJson(file.readAll())
        .object()
        .value(QStringLiteral("methods"))
        .toArray();
}

// "since=INTEGER", in brackets where it may be left out.
QString synopsis(const QJsonObject &parameter)
{
    const QString words =
        QStringLiteral("%1=%2").arg(parameter.value(QStringLiteral("name")).toString(),
                                    parameter.value(QStringLiteral("type"))
                                        .toString()
                                        .section(QLatin1Char(' '), 0, 0)
                                        .toUpper());
    return parameter.value(QStringLiteral("optional")).toBool() ? QStringLiteral("[%1]").arg(words)
                                                                : words;
}

QString textOf(const QJsonObject &method)
{
    const QString name = method.value(QStringLiteral("name")).toString();
    QString usage = QStringLiteral("testmode-ctl ") + name;
    QString list;
    const QJsonArray parameters = method.value(QStringLiteral("parameters")).toArray();
    for (const QJsonValue &value : parameters) {
        const QJsonObject parameter = value.toObject();
        usage += QLatin1Char(' ') + synopsis(parameter);
        list += QStringLiteral("  %1  %2 (%3)\n")
                    .arg(parameter.value(QStringLiteral("name")).toString(), -14)
                    .arg(parameter.value(QStringLiteral("description")).toString(),
                         parameter.value(QStringLiteral("type")).toString());
    }
    const QString example = QStringLiteral("testmode-ctl %1 %2")
                                .arg(name, method.value(QStringLiteral("example")).toString())
                                .trimmed();
    return QStringLiteral("Usage: %1\n%2.\n\n%3%4Example:\n  %5\n")
        .arg(usage, method.value(QStringLiteral("description")).toString(), list,
             list.isEmpty() ? QString() : QStringLiteral("\n"), example);
}

} // namespace

QString helpOfCall(const QString &method)
{
    const QJsonArray calls = allCalls();
    for (const QJsonValue &call : calls) {
        if (call.toObject().value(QStringLiteral("name")) == method)
            return textOf(call.toObject());
    }
    return QString();
}

QString listOfCalls()
{
    QString list;
    const QJsonArray calls = allCalls();
    for (const QJsonValue &call : calls)
        list += QStringLiteral("  ") + call.toObject().value(QStringLiteral("name")).toString()
            + QLatin1Char('\n');
    return list;
}

} // namespace ctl
