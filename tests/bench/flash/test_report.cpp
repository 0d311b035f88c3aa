#include "bench/flash/report.h"
#include "terminalscreen.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QtTest>

#include <clocale>
#include <cstdio>

#include <fcntl.h>
#include <pty.h>
#include <unistd.h>

using bench::Event;
using bench::makeReport;
using bench::Report;

namespace {

// A terminal of a size, or with none a plain pipe, and what was printed to it.
class Output
{
public:
    explicit Output(int columns, int rows = 24)
    {
        int ends[2];
        winsize size = {};
        size.ws_col = static_cast<unsigned short>(columns);
        size.ws_row = static_cast<unsigned short>(rows);
        const bool made = columns > 0 ? ::openpty(&ends[0], &ends[1], nullptr, nullptr, &size) == 0
                                      : ::pipe(ends) == 0;
        if (!made)
            qFatal("no output for the test");
        reader = ends[0];
        ::fcntl(reader, F_SETFL, O_NONBLOCK);
        file = ::fdopen(ends[1], "w");
    }
    ~Output()
    {
        std::fclose(file);
        ::close(reader);
    }
    Q_DISABLE_COPY(Output)

    QByteArray text() const
    {
        std::fflush(file);
        QByteArray all;
        char buffer[4096];
        for (ssize_t count = 0; (count = ::read(reader, buffer, sizeof buffer)) > 0;)
            all.append(buffer, static_cast<int>(count));
        return all.replace("\r\n", "\n");
    }

    std::FILE *file;

private:
    int reader;
};

Event started()
{
    return {{"kind", "start"}, {"uart", "/dev/ttyUSB0"}, {"package", "/p"},
            {"log", "/l"},     {"attempts", 1},          {"ms", 0}};
}

Event phase(const char *text)
{
    return {{"kind", "phase"}, {"phase", "any"}, {"text", text}, {"ms", 1234}};
}

Event progress(int percent)
{
    return {{"kind", "progress"},  {"percent", percent},        {"bytes", percent * 1000},
            {"total", 100000},     {"bytes_per_second", 50000}, {"seconds_left", 4.4},
            {"ms", 2000 + percent}};
}

Event result(bool ok)
{
    return {{"kind", "result"}, {"ok", ok}, {"attempts", 1}, {"ms", 9876}};
}

void takeAll(Report *report, const QList<Event> &events)
{
    for (const Event &event : events)
        report->take(0, event);
}

} // namespace

// What a person sees of a flash: on a terminal, and where there is none.
class TestReport : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void terminalShowsOneBarBelowTheLines();
    void barFitsTheTerminal();
    void coloursOnlyWhereTheyAreWanted();
    void plainLinesWhereNothingCanBeDrawnOver_data();
    void plainLinesWhereNothingCanBeDrawnOver();
    void plainProgressComesInTenths();
    void severalReceiversHaveARowEach();
    void moreReceiversThanTheTerminalHasRows();
    void failureSaysWhatTheReceiverSaid();
    void boxesAreToldWithWhatTheyMean_data();
    void boxesAreToldWithWhatTheyMean();
    void jsonIsOneObjectALine();
};

void TestReport::init()
{
    ::setenv("TERM", "xterm", 1);
    ::unsetenv("NO_COLOR");
    ::setlocale(LC_ALL, "C.UTF-8");
}

void TestReport::terminalShowsOneBarBelowTheLines()
{
    const Output output(80);
    const auto report = makeReport({output.file, {"/dev/ttyUSB0"}, false});
    takeAll(report.get(), {started(), phase("first"), progress(10), phase("second"), progress(50)});
    const QByteArray sofar = output.text();
    QCOMPARE(TerminalScreen(sofar).lines(),
             QStringList({"receiver  /dev/ttyUSB0", "package   /p", "log       /l",
                          "   1.2 s  first", "   1.2 s  second",
                          QString("━").repeated(15) + QString("╌").repeated(15)
                              + "   50 %  50.0 of 100 kB  50.0 kB/s  4 s left"}));
    takeAll(report.get(), {progress(100), phase("third"), result(true)});
    QCOMPARE(TerminalScreen(sofar + output.text()).lines().mid(5),
             QStringList({QString("━").repeated(30) + "  100 %  100 of 100 kB  50.0 kB/s  in 2.0 s",
                          "   1.2 s  third", "   9.9 s  succeeded"}));
}

void TestReport::barFitsTheTerminal()
{
    for (const int columns : {20, 47, 60, 79, 200}) {
        const Output output(columns);
        takeAll(makeReport({output.file, {"u"}, false}).get(), {progress(1), progress(99)});
        const QStringList lines = TerminalScreen(output.text()).lines();
        QCOMPARE(lines.size(), 1);
        QVERIFY(lines.first().size() < columns);
    }
}

void TestReport::coloursOnlyWhereTheyAreWanted()
{
    const Output coloured(80);
    takeAll(makeReport({coloured.file, {"u"}, false}).get(), {result(true)});
    QVERIFY(coloured.text().contains("\033[1;32m   9.9 s  succeeded\033[0m\n"));

    ::setenv("NO_COLOR", "1", 1);
    const Output plain(80);
    takeAll(makeReport({plain.file, {"u"}, false}).get(), {progress(10), result(true)});
    const QByteArray text = plain.text();
    QVERIFY2(!QRegularExpression("\033\\[[0-9;]*m").match(text).hasMatch(), text.constData());
    QVERIFY(text.contains("   9.9 s  succeeded\n"));
}

void TestReport::plainLinesWhereNothingCanBeDrawnOver_data()
{
    QTest::addColumn<int>("columns"); // 0: no terminal
    QTest::addColumn<QByteArray>("kind");
    QTest::newRow("pipe") << 0 << QByteArray("xterm");
    QTest::newRow("dumb terminal") << 80 << QByteArray("dumb");
    QTest::newRow("terminal of no kind") << 80 << QByteArray();
}

void TestReport::plainLinesWhereNothingCanBeDrawnOver()
{
    QFETCH(int, columns);
    QFETCH(QByteArray, kind);
    ::setenv("TERM", kind.constData(), 1);
    const Output output(columns);
    takeAll(makeReport({output.file, {"u"}, false}).get(),
            {phase("first"), progress(10), result(false)});
    QCOMPARE(output.text(),
             QByteArray("   1.2 s  first\n"
                        "   2.0 s   10 %  10.0 of 100 kB  50.0 kB/s  4 s left\n"
                        "   9.9 s  NOT flashed\n"));
}

void TestReport::plainProgressComesInTenths()
{
    const Output output(0);
    const auto report = makeReport({output.file, {"u"}, false});
    for (int percent = 1; percent <= 100; ++percent)
        report->take(0, progress(percent));
    QCOMPARE(output.text().count('\n'), 10);
    // another attempt begins anew
    report->take(0, {{"kind", "attempt"}, {"attempt", 2}, {"of", 2}, {"ms", 0}});
    report->take(0, progress(20));
    QCOMPARE(output.text(),
             QByteArray("   0.0 s  attempt 2 of 2\n"
                        "   2.0 s   20 %  20.0 of 100 kB  50.0 kB/s  4 s left\n"));
}

void TestReport::severalReceiversHaveARowEach()
{
    const Output output(90);
    const auto report = makeReport({output.file, {"/dev/ttyUSB0", "/dev/ttyUSB10"}, false});
    report->take(0, phase("first"));
    report->take(1, phase("also"));
    report->take(1, progress(50));
    const QByteArray sofar = output.text();
    QCOMPARE(TerminalScreen(sofar).lines(),
             QStringList({"/dev/ttyUSB0   first",
                          "/dev/ttyUSB10  " + QString("━").repeated(15) + QString("╌").repeated(15)
                              + "   50 %  50.0 of 100 kB  50.0 kB/s  4 s left"}));
    report->take(0, result(false));
    report->take(Report::kAll,
                 {{"kind", "summary"},
                  {"good", 1},
                  {"of", 2},
                  {"ms", 5000},
                  {"receivers",
                   QJsonArray{QJsonObject{{"uart", "/dev/ttyUSB0"}, {"ok", false}, {"text", "why"}},
                              QJsonObject{{"uart", "/dev/ttyUSB10"}, {"ok", true}}}}});
    QCOMPARE(
        TerminalScreen(sofar + output.text()).lines(),
        QStringList({"/dev/ttyUSB0      9.9 s  NOT flashed", "   5.0 s  1 of 2 receivers succeeded",
                     "          NOT /dev/ttyUSB0: why"}));
}

void TestReport::moreReceiversThanTheTerminalHasRows()
{
    const Output output(80, 5);
    QStringList names;
    for (int i = 0; i < 20; ++i)
        names << QString("/dev/ttyUSB%1").arg(i);
    const auto report = makeReport({output.file, names, false});
    for (int i = 0; i < 20; ++i)
        report->take(i, phase("at work"));
    const QByteArray text = output.text();
    // never further up than the block is high, which fits the terminal
    QVERIFY(!text.contains(QByteArray("\033[A").repeated(5)));
    QCOMPARE(TerminalScreen(text).lines().size(), 4);
}

void TestReport::failureSaysWhatTheReceiverSaid()
{
    QCOMPARE(bench::wordsOf({{"kind", "failure"}, {"text", "it broke"}, {"said", "0x96"}}),
             QString("FAILED: it broke; it said: 0x96"));
    QCOMPARE(bench::wordsOf({{"kind", "failure"}, {"text", "it broke"}, {"said", ""}}),
             QString("FAILED: it broke"));
}

void TestReport::boxesAreToldWithWhatTheyMean_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("words");
    QTest::newRow("port") << "打开串口失败"
                          << "the page says: 打开串口失败 (the port could not be opened)";
    QTest::newRow("package") << "Not open app_file!"
                             << "the page says: Not open app_file! (a file of the package cannot "
                                "be read)";
    QTest::newRow("other") << "hello"
                           << "the page says: hello";
}

void TestReport::boxesAreToldWithWhatTheyMean()
{
    QFETCH(QString, text);
    const Event message = {{"kind", "message"}, {"title", "any"}, {"text", text}};
    QTEST(bench::wordsOf(message), "words");
}

void TestReport::jsonIsOneObjectALine()
{
    const Output output(80); // also on a terminal
    const auto report = makeReport({output.file, {"u"}, true});
    takeAll(report.get(), {started(), phase("two\nlines"), progress(3)});
    const QList<QByteArray> lines = output.text().trimmed().split('\n');
    QCOMPARE(lines.size(), 3);
    QCOMPARE(QJsonDocument::fromJson(lines.at(1)).object(), phase("two\nlines"));
}

QTEST_GUILESS_MAIN(TestReport)
#include "test_report.moc"
