// Drives a running bench from the command line or from a file of calls.

#include "callhelp.h"
#include "callline.h"
#include "client.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QJsonDocument>
#include <QTextStream>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace ctl {

namespace {

constexpr char kSocketVariable[] = "TESTMODE_MONITOR";

const char *const kExamples = R"(
A value is JSON where it is valid JSON and text elsewhere; key:text=value is text always.
A file holds a call a line, in the same words; '...', "..." and \ quote, # begins a comment.

Results are written to standard output as JSON, a line each; errors to standard error.
Exit status: 0 every call succeeded, 1 a call failed or its result could not be written,
2 usage, 3 no bench or no such file, 5 the bench did not answer in time.

Examples:
  export TESTMODE_MONITOR=/tmp/bench/monitor     started with: testmode-bench --monitor $TESTMODE_MONITOR
  testmode-ctl ui.click object=key_gps_update    press a button
  testmode-ctl ui.wait object=lineEdit_2 property=text value=OK timeout_ms=2000
  testmode-ctl unit.set path=gnss.satellites value='[{"number":5,"in_use":1,"signal":38}]'
  testmode-ctl ui.choose object=comboBox text:text=115200
  testmode-ctl receiver.faults set='[{"kind":"drop","step":"packet","packet":3}]'
  testmode-ctl -f night.calls                    a file of calls
  testmode-ctl bench.schema                      all there is
  testmode-ctl --help ui.click                   what a call does and takes

Calls:
)";

struct Options
{
    QString socket;
    int patience = 0; // milliseconds
    bool keepGoing = false;
    QString file; // "-": standard input; empty: the words are the call
    QStringList words;
};

void complain(const QString &line)
{
    std::fprintf(stderr, "testmode-ctl: %s\n", qPrintable(line));
}

// The run of the program: one call after the other.
class Run
{
public:
    explicit Run(const Options &runOptions) : options(runOptions), client(runOptions.patience) { }

    int run()
    {
        if (!options.file.isEmpty() && !openFile())
            return bench::kNotThere;
        if (!client.connectTo(options.socket)) {
            complain(client.error());
            return client.status();
        }
        return options.file.isEmpty() ? callWords(options.words, QString()) : callFile();
    }

private:
    bool openFile()
    {
        const bool opened = options.file == QLatin1String("-")
            ? file.open(stdin, QIODevice::ReadOnly)
            : (file.setFileName(options.file), file.open(QIODevice::ReadOnly));
        if (!opened)
            complain(QStringLiteral("%1: %2").arg(options.file, file.errorString()));
        return opened;
    }

    // The status of the first line that failed.
    int callFile()
    {
        int status = bench::kDone;
        for (int number = 1; !file.atEnd(); ++number) {
            const QString line = QString::fromUtf8(file.readLine());
            const int lineStatus = callLine(line, QStringLiteral("line %1: ").arg(number));
            if (status == bench::kDone)
                status = lineStatus;
            const bool goesOn =
                lineStatus == bench::kDone || (options.keepGoing && lineStatus < bench::kNotThere);
            if (!goesOn)
                break;
        }
        return status;
    }

    int callLine(const QString &line, const QString &place)
    {
        QStringList words;
        QString error;
        if (!wordsOfLine(line, &words, &error)) {
            complain(place + error);
            return bench::kUsage;
        }
        return words.isEmpty() ? bench::kDone : callWords(words, place);
    }

    int callWords(const QStringList &words, const QString &place)
    {
        CallLine call;
        QString error;
        if (!callFromWords(words, &call, &error)) {
            complain(place + error);
            return bench::kUsage;
        }
        QJsonObject result;
        if (!client.call(call, &result)) {
            complain(place + call.method + QStringLiteral(": ") + client.error());
            return client.status();
        }
        const QByteArray line = QJsonDocument(result).toJson(QJsonDocument::Compact);
        if (std::printf("%s\n", line.constData()) < 0 || std::fflush(stdout) != 0) {
            complain(place + call.method
                     + QStringLiteral(": the result cannot be written: %1")
                           .arg(QString::fromLocal8Bit(std::strerror(errno))));
            return bench::kCheckFailed;
        }
        return bench::kDone;
    }

    Options options;
    Client client;
    QFile file;
};

void describe(QCommandLineParser *parser)
{
    parser->setApplicationDescription(QStringLiteral("Drives a running testmode-bench."));
    parser->setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
    parser->addOption({QStringLiteral("socket"),
                       QStringLiteral("the bench's socket (default: $TESTMODE_MONITOR)"),
                       QStringLiteral("PATH"), qEnvironmentVariable(kSocketVariable)});
    parser->addOption({QStringLiteral("timeout"),
                       QStringLiteral("how long to wait for an answer, beyond the call's own "
                                      "timeout_ms (default: 30)"),
                       QStringLiteral("SECONDS"), QStringLiteral("30")});
    parser->addOption({{QStringLiteral("f"), QStringLiteral("file")},
                       QStringLiteral("a file of calls, a line each; - is standard input"),
                       QStringLiteral("FILE")});
    parser->addOption({QStringLiteral("keep-going"),
                       QStringLiteral("go on with the file after a call that failed")});
    parser->addHelpOption();
    parser->addVersionOption();
    parser->addPositionalArgument(QStringLiteral("method"),
                                  QStringLiteral("the call, such as ui.click; - reads calls from "
                                                 "standard input"),
                                  QStringLiteral("method"));
    parser->addPositionalArgument(QStringLiteral("key=value"), QStringLiteral("its arguments"),
                                  QStringLiteral("[key=value...]"));
}

QString optionsFrom(const QCommandLineParser &parser, Options *options)
{
    bool isNumber = false;
    const double seconds = parser.value(QStringLiteral("timeout")).toDouble(&isNumber);
    options->patience = int(seconds * 1000);
    options->socket = parser.value(QStringLiteral("socket"));
    options->file = parser.value(QStringLiteral("file"));
    options->keepGoing = parser.isSet(QStringLiteral("keep-going"));
    options->words = parser.positionalArguments();
    if (options->file.isEmpty() && options->words == QStringList{QStringLiteral("-")})
        options->file = options->words.takeFirst();

    if (!isNumber || seconds <= 0 || seconds > 86400)
        return QStringLiteral("--timeout: wanted is a number of seconds above 0, at most 86400");
    if (options->file.isEmpty() == options->words.isEmpty())
        return QStringLiteral("wanted is a call or a file of calls; see --help");
    if (options->socket.isEmpty())
        return QStringLiteral("which bench? name its socket with --socket or in $%1")
            .arg(QLatin1String(kSocketVariable));
    return QString();
}

int help(const QCommandLineParser &parser)
{
    const QStringList words = parser.positionalArguments();
    if (words.isEmpty()) {
        std::printf("%s%s%s", qPrintable(parser.helpText()), kExamples, qPrintable(listOfCalls()));
        return bench::kDone;
    }
    const QString text = helpOfCall(words.first());
    if (text.isEmpty()) {
        complain(QStringLiteral("no call %1; --help lists them").arg(words.first()));
        return bench::kUsage;
    }
    std::printf("%s", qPrintable(text));
    return bench::kDone;
}

int ctlMain(const QStringList &arguments)
{
    QCommandLineParser parser;
    describe(&parser);
    if (!parser.parse(arguments)) {
        complain(parser.errorText() + QStringLiteral("; see --help"));
        return bench::kUsage;
    }
    if (parser.isSet(QStringLiteral("help")))
        return help(parser);
    if (parser.isSet(QStringLiteral("version"))) {
        std::printf("testmode-ctl %s\n", TESTMODE_VERSION);
        return bench::kDone;
    }
    Options options;
    const QString error = optionsFrom(parser, &options);
    if (!error.isEmpty()) {
        complain(error);
        return bench::kUsage;
    }
    return Run(options).run();
}

} // namespace

} // namespace ctl

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    return ctl::ctlMain(QCoreApplication::arguments());
}
