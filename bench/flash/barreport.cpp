#include "barreport.h"

#include "plainreport.h"

#include <algorithm>

namespace bench {

namespace {

constexpr char kRed[] = "\033[1;31m";
constexpr char kGreen[] = "\033[1;32m";
constexpr char kYellow[] = "\033[33m";
constexpr char kPlain[] = "\033[0m";
constexpr char kEraseBelow[] = "\033[J";
constexpr char kLineUp[] = "\033[A";

constexpr int kWidestBar = 30;
constexpr int kFull = 100; // percent

const char *colourOf(const QString &kind, const Event &event)
{
    if (kind == QLatin1String("failure"))
        return kRed;
    if (kind == QLatin1String("result"))
        return event.value("ok").toBool() ? kGreen : kRed;
    const bool notable = kind == QLatin1String("message") || kind == QLatin1String("refused")
        || kind == QLatin1String("stop") || kind == QLatin1String("operator");
    return notable ? kYellow : nullptr;
}

} // namespace

BarReport::BarReport(const ReportSettings &settings, const TerminalAbilities &terminal)
    : output(settings.output), names(settings.names), abilities(terminal),
      rows(settings.names.size())
{
}

BarReport::~BarReport()
{
    std::fflush(output);
}

void BarReport::take(int line, const Event &event)
{
    const QString kind = event.value("kind").toString();
    noteInBlock(line, kind, event);
    eraseBlock();
    if (kind == QLatin1String("start") && !isSeveral())
        print(headOf(event), nullptr);
    keepFullBar(line, event);
    const QString words = wordsOf(event);
    if (stays(kind) && !words.isEmpty())
        print(linePrefix(names, line, event) + words + QLatin1Char('\n'), colourOf(kind, event));
    drawBlock();
    std::fflush(output);
}

// The bar of a single receiver stays above what comes after the last packet.
void BarReport::keepFullBar(int line, const Event &event)
{
    if (isSeveral() || !event.contains("text")
        || rows.at(line).progress.value("percent").toInt() != kFull)
        return;
    print(blockRow(line) + QLatin1Char('\n'), nullptr);
    rows[line].progress = Event();
}

bool BarReport::stays(const QString &kind) const
{
    if (kind == QLatin1String("progress"))
        return false;
    return !isSeveral() || (kind != QLatin1String("phase") && kind != QLatin1String("flash"));
}

void BarReport::noteInBlock(int line, const QString &kind, const Event &event)
{
    if (line == kAll) {
        rows.clear(); // all has been said
        return;
    }
    Row &row = rows[line];
    if (kind == QLatin1String("progress"))
        row.progress = event;
    else if (kind == QLatin1String("attempt") || kind == QLatin1String("failure"))
        row.progress = Event();
    if (isSeveral() && (kind == QLatin1String("phase") || kind == QLatin1String("result")))
        row.state = wordsOf(event);
}

void BarReport::print(const QString &text, const char *colour)
{
    if (colour == nullptr || !abilities.colours) {
        std::fprintf(output, "%s", qUtf8Printable(text));
        return;
    }
    std::fprintf(output, "%s%s%s\n", colour, qUtf8Printable(text.chopped(1)), kPlain);
}

void BarReport::eraseBlock()
{
    for (; drawn > 0; --drawn)
        std::fprintf(output, "%s", kLineUp);
    std::fprintf(output, "\r%s", kEraseBelow);
}

void BarReport::drawBlock()
{
    const TerminalSize size = sizeOf(output);
    const int most = std::min(rows.size(), size.rows - 1);
    for (int line = 0; line < most; ++line) {
        const QString row = blockRow(line);
        if (row.isEmpty())
            continue;
        std::fprintf(output, "%s\n", qUtf8Printable(row.left(size.columns - 1)));
        ++drawn;
    }
}

QString BarReport::blockRow(int line) const
{
    const Row &row = rows.at(line);
    const QString text = isSeveral() ? paddedName(names, line) : QString();
    if (row.progress.isEmpty())
        return isSeveral() ? text + row.state : QString();
    const QString words = progressWords(row.progress);
    const int room = sizeOf(output).columns - 1 - words.size() - 2 - text.size();
    return text + bar(row.progress.value("percent").toInt(), std::min(kWidestBar, room)) + words;
}

QString BarReport::bar(int percent, int width) const
{
    if (width < 3)
        return QString();
    const int full = width * percent / 100;
    const QString done = abilities.utf8 ? QStringLiteral("━") : QStringLiteral("#");
    const QString open = abilities.utf8 ? QStringLiteral("╌") : QStringLiteral("-");
    return done.repeated(full) + open.repeated(width - full) + QStringLiteral("  ");
}

} // namespace bench
