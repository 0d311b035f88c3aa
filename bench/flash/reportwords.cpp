#include "report.h"

#include <QJsonArray>

namespace bench {

namespace {

constexpr int kAll = 100; // percent

QString thousands(double bytes)
{
    return QString::number(bytes / 1000.0, 'f', bytes < 100000.0 ? 1 : 0);
}

// What a technician is told beside the page's own words.
QString cureOf(const QString &boxText)
{
    if (boxText == QStringLiteral("打开串口失败"))
        return QStringLiteral(" (the port could not be opened)");
    if (boxText.startsWith(QLatin1String("Not open ")))
        return QStringLiteral(" (a file of the package cannot be read)");
    return QString();
}

QString failureLine(const Event &failure)
{
    const QString said = failure.value("said").toString();
    return QStringLiteral("FAILED: ") + failure.value("text").toString()
        + (said.isEmpty() ? QString() : QStringLiteral("; it said: ") + said);
}

QString resultLine(const Event &result)
{
    const int attempts = result.value("attempts").toInt();
    const bool ok = result.value("ok").toBool();
    QString line = ok ? QStringLiteral("succeeded") : QStringLiteral("NOT flashed");
    if (attempts > 1)
        line += (ok ? QStringLiteral(" in attempt %1") : QStringLiteral(" in %1 attempts"))
                    .arg(attempts);
    const QString capsule = result.value("capsule").toString();
    return capsule.isEmpty() ? line : line + QStringLiteral("; capsule ") + capsule;
}

// The whole, and below it each that was not flashed.
QString summaryLines(const Event &summary)
{
    QString lines = QStringLiteral("%1 of %2 receivers succeeded")
                        .arg(summary.value("good").toInt())
                        .arg(summary.value("of").toInt());
    const QJsonArray receivers = summary.value("receivers").toArray();
    for (const QJsonValue &receiver : receivers) {
        if (!receiver["ok"].toBool())
            lines += QStringLiteral("\n          NOT %1: %2")
                         .arg(receiver["uart"].toString(), receiver["text"].toString());
    }
    return lines;
}

} // namespace

QString wordsOf(const Event &event)
{
    const QString kind = event.value("kind").toString();
    if (kind == QLatin1String("failure"))
        return failureLine(event);
    if (kind == QLatin1String("result"))
        return resultLine(event);
    if (kind == QLatin1String("message"))
        return QStringLiteral("the page says: ") + event.value("text").toString()
            + cureOf(event.value("text").toString());
    if (kind == QLatin1String("attempt"))
        return event.value("of").toInt() > 1 ? QStringLiteral("attempt %1 of %2")
                                                   .arg(event.value("attempt").toInt())
                                                   .arg(event.value("of").toInt())
                                             : QString();
    if (kind == QLatin1String("progress"))
        return progressWords(event);
    if (kind == QLatin1String("summary"))
        return summaryLines(event);
    return event.value("text").toString();
}

QString progressWords(const Event &progress)
{
    const int percent = progress.value("percent").toInt();
    const double bytes = progress.value("bytes").toDouble();
    const double rate = progress.value("bytes_per_second").toDouble();
    const QString words =
        QStringLiteral("%1 %  %2 of %3 kB  %4 kB/s  ")
            .arg(percent, 3)
            .arg(thousands(bytes), thousands(progress.value("total").toDouble()), thousands(rate));
    if (percent == kAll)
        return words + QStringLiteral("in %1 s").arg(rate > 0 ? bytes / rate : 0.0, 0, 'f', 1);
    return words
        + QStringLiteral("%1 s left").arg(progress.value("seconds_left").toDouble(), 0, 'f', 0);
}

} // namespace bench
