#include "options.h"

#include <QCommandLineParser>

namespace bench {

namespace {

// One option: its word, where its value goes, and what the help says of it.
struct Row
{
    const char *name;
    const char *value; // name of the value in the help; null: a flag
    QString ReceiverOptions::*text;
    bool ReceiverOptions::*flag;
    const char *help;
};

const Row kRows[] = {
    {"link", "PATH", &ReceiverOptions::link, nullptr,
     "a symbolic link to the pseudo-terminal, removed at the end"},
    {"tty", "DEVICE", &ReceiverOptions::tty, nullptr,
     "serve a terminal that is there, such as /dev/ttyGS0"},
    {"unit", "FILE", &ReceiverOptions::unit, nullptr,
     "the receiver's state at the start (JSON): keys below \"receiver\""},
    {"monitor", "SOCKET", &ReceiverOptions::monitor, nullptr,
     "listen on SOCKET for the calls receiver.* and bench.*"},
    {"flash-image", "FILE", &ReceiverOptions::flashImage, nullptr,
     "the flash: 4 MiB, read at the start, written at the end"},
    {"full-speed", nullptr, nullptr, &ReceiverOptions::fullSpeed,
     "answer at once instead of at the line's rate"},
    {"help", nullptr, nullptr, &ReceiverOptions::help, "show this and end; also -h"},
    {"version", nullptr, nullptr, &ReceiverOptions::version, "show the version and end"},
};

QString seeHelp(const QString &complaint)
{
    return complaint + QStringLiteral("; --help lists what there is");
}

void addRows(QCommandLineParser *parser)
{
    for (const Row &row : kRows) {
        QStringList names(QString::fromLatin1(row.name));
        if (row.flag == &ReceiverOptions::help) // what many type first
            names << QStringLiteral("h");
        QCommandLineOption option(names);
        if (row.value != nullptr)
            option.setValueName(QString::fromLatin1(row.value));
        parser->addOption(option);
    }
}

} // namespace

QString parseReceiverOptions(const QStringList &words, ReceiverOptions *options)
{
    QCommandLineParser parser;
    addRows(&parser);
    if (!parser.parse(words)) {
        QString complaint = parser.errorText();
        complaint.chop(1); // its full stop
        return seeHelp(complaint);
    }
    for (const Row &row : kRows) {
        const QString name = QString::fromLatin1(row.name);
        if (!parser.isSet(name))
            continue;
        if (row.flag != nullptr) {
            options->*row.flag = true;
            continue;
        }
        options->*row.text = parser.value(name);
        if (parser.value(name).isEmpty())
            return seeHelp(QStringLiteral("--%1 needs a value").arg(name));
    }
    if (!parser.positionalArguments().isEmpty())
        return seeHelp(parser.positionalArguments().first()
                       + QStringLiteral(" belongs to no option"));
    if (!options->tty.isEmpty() && !options->link.isEmpty())
        return QStringLiteral("--link names a pseudo-terminal; leave it out with --tty");
    return QString();
}

QString receiverHelp()
{
    constexpr int kColumn = 22; // where the explanations begin
    QString text = QStringLiteral(
        "Usage: testmode-receiver [OPTION...]\n"
        "A simulated GNSS receiver on a serial line, for any host. Prints the path of its\n"
        "pseudo-terminal and serves until it is told to end.\n\n");
    for (const Row &row : kRows) {
        QString line = QStringLiteral("  --") + QLatin1String(row.name);
        if (row.value != nullptr)
            line += QLatin1Char(' ') + QLatin1String(row.value);
        text += line.leftJustified(kColumn) + QLatin1String(row.help) + QLatin1Char('\n');
    }
    return text
        + QStringLiteral(
               "\nA line without modem lines cannot reset it: the first byte of a synchronisation "
               "after\n"
               "silence does (receiver.reset_on_sync), and so do SIGUSR1 and the call "
               "receiver.reset.\n"
               "\nExamples:\n"
               "  testmode-receiver --link /tmp/receiver      a line of a stable name\n"
               "  testmode-bench --uart /tmp/receiver         the bench as its host\n"
               "  testmode-receiver --flash-image flash.bin   a flash that lasts\n"
               "  testmode-receiver --tty /dev/ttyGS0         the device side of a USB cable\n"
               "\nExit status: 0 told to end, 2 usage, 3 a named file or device is not there or\n"
               "cannot be used, 70 a fault of the program itself.\n");
}

} // namespace bench
