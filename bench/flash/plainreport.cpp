#include "plainreport.h"

#include <QDir>

#include <algorithm>

namespace bench {

namespace {

constexpr int kTenth = 10; // percent

// As a shell takes it: shorter, and without the user's name.
QString shortPath(const QString &path)
{
    const QString home = QDir::homePath();
    return path.startsWith(home + QLatin1Char('/')) ? QLatin1Char('~') + path.mid(home.size())
                                                    : path;
}

} // namespace

QString paddedName(const QStringList &names, int line)
{
    int width = 0;
    for (const QString &name : names)
        width = std::max(width, name.size());
    return names.at(line).leftJustified(width + 2);
}

QString linePrefix(const QStringList &names, int line, const Event &event)
{
    const QString time =
        QStringLiteral("%1 s  ").arg(event.value("ms").toDouble() / 1000.0, 6, 'f', 1);
    return line == Report::kAll || names.size() < 2 ? time : paddedName(names, line) + time;
}

QString headOf(const Event &start)
{
    const QString uart = start.value("uart").toString();
    return QStringLiteral("receiver  %1\npackage   %2\nlog       %3\n")
        .arg(uart.isEmpty() ? QStringLiteral("simulated") : uart,
             shortPath(start.value("package").toString()),
             shortPath(start.value("log").toString()));
}

PlainReport::PlainReport(const ReportSettings &settings)
    : output(settings.output), names(settings.names), tenths(settings.names.size(), 0)
{
}

void PlainReport::take(int line, const Event &event)
{
    const QString kind = event.value("kind").toString();
    if (kind == QLatin1String("attempt"))
        tenths[line] = 0;
    if (kind == QLatin1String("start") && names.size() == 1)
        std::fprintf(output, "%s", qUtf8Printable(headOf(event)));
    QString words = wordsOf(event);
    if (kind == QLatin1String("progress")) {
        const int told = event.value("percent").toInt() / kTenth;
        if (told <= tenths.at(line))
            return;
        tenths[line] = told;
    }
    if (!words.isEmpty())
        std::fprintf(output, "%s%s\n", qUtf8Printable(linePrefix(names, line, event)),
                     qUtf8Printable(words));
    std::fflush(output);
}

} // namespace bench
