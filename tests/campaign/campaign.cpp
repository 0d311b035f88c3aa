// The trials of script/campaign, one line each: name, row, column, outcome, reason, line, virtual
// milliseconds, the faults. Standard input: names of trials that are not to be made. Not for hands:
// the script knows what to ask.

#include "exchanges.h"
#include "trial.h"

#include "bench/unit/tracelog.h"
#include "tests/support/unittest.h"

#include <QCommandLineParser>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSet>
#include <QTextStream>

#include <algorithm>
#include <cstdio>
#include <optional>

using tests::FaultCase;

namespace {

struct Options
{
    int trials = 0; // enumerated and random ones; the former are at most so many of ten
    quint32 seed = 0;
    int part = 0; // of `parts`, which share the trials out
    int parts = 1;
    QString only; // trial of this name
    QString kind; // and of this cell
    QString phase;
};

constexpr int kEnumeratedOfTen = 6;

Options readOptions(const QStringList &words)
{
    QCommandLineParser parser;
    const auto add = [&parser](const char *name, const char *otherwise) {
        parser.addOption(
            {QLatin1String(name), QString(), QLatin1String(name), QLatin1String(otherwise)});
    };
    add("trials", "1000");
    add("seed", "1");
    add("part", "0");
    add("parts", "1");
    add("only", "");
    add("kind", "");
    add("phase", "");
    parser.process(words);
    Options options;
    options.trials = parser.value("trials").toInt();
    options.seed = parser.value("seed").toUInt();
    options.part = parser.value("part").toInt();
    options.parts = parser.value("parts").toInt();
    options.only = parser.value("only");
    options.kind = parser.value("kind");
    options.phase = parser.value("phase");
    return options;
}

FaultCase caseOf(const QString &name, quint32 seed)
{
    const int number = name.mid(1).toInt();
    return name.startsWith(QLatin1Char('e')) ? tests::enumeratedCases().value(number)
                                             : tests::randomCase(number, seed);
}

QSet<QString> namesToSkip()
{
    QTextStream input(stdin);
    QSet<QString> names;
    while (!input.atEnd())
        names << input.readLine();
    return names;
}

QVector<FaultCase> chosenCases(const Options &options)
{
    if (!options.only.isEmpty())
        return {caseOf(options.only, options.seed)};
    QVector<FaultCase> all = tests::enumeratedCases();
    all.resize(std::min(all.size(), options.trials * kEnumeratedOfTen / 10));
    const int random = options.trials - all.size();
    for (int i = 0; i < random; ++i)
        all << tests::randomCase(i, options.seed);

    const QSet<QString> skipped = namesToSkip();
    QVector<FaultCase> chosen;
    for (int i = 0; i < all.size(); ++i) {
        const FaultCase &trial = all.at(i);
        const bool wanted = (options.kind.isEmpty() || trial.kind == options.kind)
            && (options.phase.isEmpty() || trial.phase == options.phase);
        // One in twenty is slow: the parts take turns.
        if (wanted && !skipped.contains(trial.name) && (i + i / 20) % options.parts == options.part)
            chosen << trial;
    }
    return chosen;
}

void print(const FaultCase &trial, const tests::Verdict &verdict, const tests::Observation &seen)
{
    QJsonArray faults;
    for (const bench::Fault &fault : trial.faults)
        faults.append(fault.toJson());
    const QStringList fields = {trial.name,
                                trial.kind,
                                trial.phase,
                                tests::outcomeName(verdict.outcome),
                                verdict.reason,
                                trial.onTerminal ? "terminal" : "seam",
                                QString::number(seen.milliseconds),
                                QJsonDocument(faults).toJson(QJsonDocument::Compact)};
    std::printf("%s\n", qPrintable(fields.join('\t')));
    std::fflush(stdout);
}

void run(const QVector<FaultCase> &cases, bool onTerminal, bool withDeeds)
{
    std::optional<tests::Rig> rig;
    for (const FaultCase &trial : cases) {
        if (trial.onTerminal != onTerminal)
            continue;
        if (!rig)
            rig.emplace(onTerminal);
        tests::Observation seen;
        const tests::Verdict verdict = rig->run(trial, &seen);
        print(trial, verdict, seen);
        const QStringList deeds = withDeeds ? rig->lastDeeds() : QStringList();
        for (const QString &deed : deeds)
            std::printf("# %s\n", qPrintable(deed));
    }
}

} // namespace

int main(int argc, char **argv)
{
    tests::prepare(argv);
    // A wait reads the time of day and looks for events without end: both at their cheapest.
    qputenv("TZ", "UTC");
    qputenv("QT_NO_GLIB", "1");
    const QCoreApplication application(argc, argv);
    const Options options = readOptions(QCoreApplication::arguments());
    qRegisterMetaType<uint8_t>("uint8_t");
    qRegisterMetaType<uint16_t>("uint16_t");
    qRegisterMetaType<uint32_t>("uint32_t");
    // What the plug-in traces is told only where one trial is looked at.
    const bool single = !options.only.isEmpty();
    if (!single)
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});

    const QVector<FaultCase> cases = chosenCases(options);
    for (const bool onTerminal : {true, false})
        run(cases, onTerminal, single);
    return 0;
}
