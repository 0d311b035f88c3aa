#include "tests/support/unittest.h"

#include "bench/monitor/dispatcher.h"
#include "bench/monitor/monitorserver.h"
#include "bench/monitor/waiting.h"

#include <QLocalServer>
#include <QLocalSocket>
#include <QProcess>
#include <QTemporaryDir>

#include <memory>

namespace {

// How a run of the program ended.
struct Outcome
{
    int status = -1;
    QString out;
    QString err;
};

} // namespace

// The program against a monitor of the test's own.
class TestCtl : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void resultIsPrintedAsJson();
    void failedCallIsTold();
    void resultThatCannotBeWrittenIsTold();
    void socketFromTheEnvironment();
    void optionsEndAtTheMethod();

    void fileOfCalls();
    void fileStopsAtTheFirstFailure();
    void fileKeepsGoing();
    void badLineInAFile();
    void callsFromStandardInput_data();
    void callsFromStandardInput();

    void eventsInBetweenAreNoAnswers();
    void callsOwnWaitIsWaitedFor();
    void waitLongerThanTheBenchTakesIsTheBenchsToRefuse();
    void benchThatDoesNotAnswer();
    void benchThatHangsUp();
    void socketThatIsNotThere();
    void socketOfSomethingElse();
    void fileThatIsNotThere();

    void usageErrors_data();
    void usageErrors();
    void helpShowsExamples();
    void helpOfACallIsThatOfTheTable();
    void helpOfACallThatThereIsNot();
    void version();

private:
    Outcome run(const QStringList &arguments, const QByteArray &input = QByteArray(),
                const QString &socketVariable = QString());
    Outcome runOn(const QStringList &arguments, const QByteArray &input = QByteArray())
    {
        return run(QStringList{"--socket", path} + arguments, input);
    }
    QString fileWith(const QByteArray &content);

    std::unique_ptr<QTemporaryDir> folder;
    QString path;
    std::unique_ptr<bench::Dispatcher> dispatcher;
    std::unique_ptr<bench::MonitorServer> server;
};

void TestCtl::init()
{
    UnitTest::init();
    folder = std::make_unique<QTemporaryDir>();
    path = folder->filePath("monitor");
    dispatcher = std::make_unique<bench::Dispatcher>();
    dispatcher->add({"echo",
                     {bench::required("value", bench::ParameterType::Any, "")},
                     "",
                     "",
                     bench::direct([](const bench::Arguments &arguments) {
                         return QJsonObject{{"value", arguments.value("value")}};
                     })});
    dispatcher->add({"never", {bench::timeout()}, "", "", [](const bench::Call &call) {
                         bench::Waiting::start(
                             call, [] { return std::nullopt; },
                             [] { return QStringLiteral("nothing came"); });
                     }});
    dispatcher->addEvent("news", "");
    server = std::make_unique<bench::MonitorServer>(dispatcher.get(), QJsonObject());
    QString error;
    QVERIFY2(server->listen(path, &error), qPrintable(error));
}

void TestCtl::cleanup()
{
    server.reset();
    dispatcher.reset();
    folder.reset();
    UnitTest::cleanup();
}

Outcome TestCtl::run(const QStringList &arguments, const QByteArray &input,
                     const QString &socketVariable)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("TESTMODE_MONITOR", socketVariable);
    process.setProcessEnvironment(environment);
    process.start(TESTMODE_CTL, arguments);
    process.write(input);
    process.closeWriteChannel();
    // This thread serves the socket meanwhile.
    [&process] { QTRY_COMPARE_WITH_TIMEOUT(process.state(), QProcess::NotRunning, 20000); }();
    Outcome outcome;
    outcome.status = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    outcome.out = QString::fromUtf8(process.readAllStandardOutput());
    outcome.err = QString::fromUtf8(process.readAllStandardError());
    return outcome;
}

QString TestCtl::fileWith(const QByteArray &content)
{
    QFile file(folder->filePath("calls"));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qWarning("cannot write the file of calls");
    return file.fileName();
}

void TestCtl::resultIsPrintedAsJson()
{
    const Outcome outcome = runOn({"echo", R"(value={"a":[1,"中"]})"});
    QCOMPARE(outcome.err, QString());
    QCOMPARE(outcome.out, QString("{\"value\":{\"a\":[1,\"中\"]}}\n"));
    QCOMPARE(outcome.status, 0);
}

void TestCtl::failedCallIsTold()
{
    const Outcome outcome = runOn({"echo", "valu=1"});
    QCOMPARE(outcome.status, 1);
    QCOMPARE(outcome.out, QString());
    QCOMPARE(outcome.err, QString("testmode-ctl: echo: Argument: value is missing\n"));
}

void TestCtl::resultThatCannotBeWrittenIsTold()
{
    QProcess process;
    process.setStandardOutputFile("/dev/full");
    process.start(TESTMODE_CTL, {"--socket", path, "echo", "value=1"});
    QTRY_COMPARE_WITH_TIMEOUT(process.state(), QProcess::NotRunning, 20000);
    QCOMPARE(process.readAllStandardError(),
             QByteArray("testmode-ctl: echo: the result cannot be written: No space left on "
                        "device\n"));
    QCOMPARE(process.exitCode(), 1);
}

void TestCtl::socketFromTheEnvironment()
{
    const Outcome outcome = run({"echo", "value=1"}, QByteArray(), path);
    QCOMPARE(outcome.out, QString("{\"value\":1}\n"));
    QCOMPARE(outcome.status, 0);
}

void TestCtl::optionsEndAtTheMethod()
{
    QCOMPARE(runOn({"echo", "value=--help"}).out, QString("{\"value\":\"--help\"}\n"));
    const Outcome outcome = runOn({"echo", "--help"});
    QCOMPARE(outcome.status, 2);
    QCOMPARE(outcome.err, QString("testmode-ctl: '--help' is no key=value\n"));
}

void TestCtl::fileOfCalls()
{
    const QString file = fileWith("# a night's work\n"
                                  "echo value=1\n"
                                  "\n"
                                  "  echo value='two words'  # quoted\n"
                                  "echo value='[3]'");
    const Outcome outcome = runOn({"-f", file});
    QCOMPARE(outcome.err, QString());
    QCOMPARE(outcome.out, QString("{\"value\":1}\n{\"value\":\"two words\"}\n{\"value\":[3]}\n"));
    QCOMPARE(outcome.status, 0);
}

void TestCtl::fileStopsAtTheFirstFailure()
{
    const Outcome outcome = runOn({"--file", fileWith("echo value=1\nnothing\necho value=3\n")});
    QCOMPARE(outcome.status, 1);
    QCOMPARE(outcome.out, QString("{\"value\":1}\n"));
    QCOMPARE(outcome.err,
             QString("testmode-ctl: line 2: nothing: UnknownMethod: no method nothing\n"));
}

void TestCtl::fileKeepsGoing()
{
    const Outcome outcome =
        runOn({"--keep-going", "-f", fileWith("echo value=1\nnothing\necho\necho value=4\n")});
    QCOMPARE(outcome.status, 1);
    QCOMPARE(outcome.out, QString("{\"value\":1}\n{\"value\":4}\n"));
    QCOMPARE(outcome.err,
             QString("testmode-ctl: line 2: nothing: UnknownMethod: no method nothing\n"
                     "testmode-ctl: line 3: echo: Argument: value is missing\n"));
}

void TestCtl::badLineInAFile()
{
    const Outcome outcome = runOn({"-f", fileWith("echo value=1\necho value='2\n")});
    QCOMPARE(outcome.status, 2);
    QCOMPARE(outcome.out, QString("{\"value\":1}\n"));
    QCOMPARE(outcome.err, QString("testmode-ctl: line 2: the quote ' has no end\n"));
}

void TestCtl::callsFromStandardInput_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("dash") << QStringList("-");
    QTest::newRow("as a file") << QStringList({"-f", "-"});
}

void TestCtl::callsFromStandardInput()
{
    QFETCH(QStringList, arguments);
    const Outcome outcome = runOn(arguments, "echo value=1\necho value=2\n");
    QCOMPARE(outcome.out, QString("{\"value\":1}\n{\"value\":2}\n"));
    QCOMPARE(outcome.status, 0);
}

void TestCtl::eventsInBetweenAreNoAnswers()
{
    dispatcher->add({"gossip", {}, "", "", bench::direct([this](const bench::Arguments &) {
                         emit dispatcher->eventHappened("news", {{"text", "a"}});
                         return QJsonObject{{"done", true}};
                     })});
    const Outcome outcome =
        runOn({"-"}, "bench.subscribe events='[\"news\"]'\ngossip\necho value=1\n");
    QCOMPARE(outcome.out, QString("{\"events\":[\"news\"]}\n{\"done\":true}\n{\"value\":1}\n"));
    QCOMPARE(outcome.status, 0);
}

void TestCtl::callsOwnWaitIsWaitedFor()
{
    const Outcome outcome = runOn({"--timeout", "0.2", "never", "timeout_ms=400"});
    QCOMPARE(outcome.status, 1);
    QCOMPARE(outcome.err, QString("testmode-ctl: never: Timeout: nothing came after 400 ms\n"));
}

void TestCtl::waitLongerThanTheBenchTakesIsTheBenchsToRefuse()
{
    for (const char *milliseconds : {"600001", "2147483647", "-2147483648"}) {
        const Outcome outcome = runOn({"never", QString("timeout_ms=%1").arg(milliseconds)});
        QCOMPARE(outcome.err,
                 QString("testmode-ctl: never: Argument: timeout_ms is %1, wanted is 0 to 600000\n")
                     .arg(milliseconds));
        QCOMPARE(outcome.status, 1);
    }
}

void TestCtl::benchThatDoesNotAnswer()
{
    dispatcher->add({"silent", {}, "", "", [this](const bench::Call &call) {
                         // Kept, so that it is not answered by being dropped.
                         connect(dispatcher.get(), &bench::Dispatcher::quitRequested, this,
                                 [call] { call.responder.succeed(); });
                     }});
    const Outcome outcome = runOn({"--timeout", "0.2", "silent"});
    QCOMPARE(outcome.status, 5);
    QCOMPARE(outcome.err, QString("testmode-ctl: silent: no answer after 0.2 s\n"));
}

void TestCtl::benchThatHangsUp()
{
    dispatcher->add({"hold", {}, "", "", [this](const bench::Call &call) {
                         connect(dispatcher.get(), &bench::Dispatcher::quitRequested, this,
                                 [call] { call.responder.succeed(); });
                         QTimer::singleShot(0, this, [this] { server.reset(); });
                     }});
    const Outcome outcome = runOn({"hold"});
    QCOMPARE(outcome.status, 3);
    QCOMPARE(outcome.err, QString("testmode-ctl: hold: the bench has hung up\n"));
}

void TestCtl::socketThatIsNotThere()
{
    const Outcome outcome = run({"--socket", "/tmp/none", "echo", "value=1"});
    QCOMPARE(outcome.status, 3);
    QCOMPARE(outcome.err,
             QString("testmode-ctl: no bench answers on /tmp/none (QLocalSocket::connectToServer: "
                     "Invalid name); start one with 'testmode-bench --monitor /tmp/none' or name "
                     "another socket\n"));
}

void TestCtl::socketOfSomethingElse()
{
    QLocalServer other;
    connect(&other, &QLocalServer::newConnection, &other,
            [&other] { other.nextPendingConnection()->write("220 ready\n"); });
    QVERIFY(other.listen(folder->filePath("other")));
    const Outcome outcome = run({"--socket", folder->filePath("other"), "echo", "value=1"});
    QCOMPARE(outcome.status, 3);
    QCOMPARE(outcome.err,
             "testmode-ctl: what answers on " + folder->filePath("other") + " is no bench\n");
}

void TestCtl::fileThatIsNotThere()
{
    const Outcome outcome = runOn({"-f", "/tmp/none"});
    QCOMPARE(outcome.status, 3);
    QCOMPARE(outcome.err, QString("testmode-ctl: /tmp/none: No such file or directory\n"));
}

void TestCtl::usageErrors_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("message");
    QTest::newRow("nothing") << QStringList({"--socket", "s"})
                             << "wanted is a call or a file of calls; see --help";
    QTest::newRow("call and file") << QStringList({"--socket", "s", "-f", "calls", "echo"})
                                   << "wanted is a call or a file of calls; see --help";
    QTest::newRow("no socket") << QStringList({"echo"})
                               << "which bench? name its socket with --socket or in "
                                  "$TESTMODE_MONITOR";
    QTest::newRow("unknown option")
        << QStringList({"--sockt", "s", "echo"}) << "Unknown option 'sockt'.; see --help";
    QTest::newRow("timeout in words") << QStringList({"--socket", "s", "--timeout", "soon", "echo"})
                                      << "--timeout: wanted is a number of seconds above 0, at "
                                         "most 86400";
    QTest::newRow("timeout below zero")
        << QStringList({"--socket", "s", "--timeout", "-1", "echo"})
        << "--timeout: wanted is a number of seconds above 0, at most 86400";
    QTest::newRow("no timeout") << QStringList({"--socket", "s", "--timeout", "0", "echo"})
                                << "--timeout: wanted is a number of seconds above 0, at most "
                                   "86400";
    QTest::newRow("timeout of more than a day")
        << QStringList({"--socket", "s", "--timeout", "86401", "echo"})
        << "--timeout: wanted is a number of seconds above 0, at most 86400";
}

void TestCtl::usageErrors()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, message);
    const Outcome outcome = run(arguments);
    QCOMPARE(outcome.status, 2);
    QCOMPARE(outcome.out, QString());
    QCOMPARE(outcome.err, "testmode-ctl: " + message + "\n");
}

void TestCtl::helpShowsExamples()
{
    const Outcome outcome = run({"--help"});
    QCOMPARE(outcome.status, 0);
    QCOMPARE(outcome.err, QString());
    for (const char *words : {"--socket", "--timeout", "--file", "--keep-going",
                              "testmode-ctl ui.click object=key_gps_update", "Exit status:"})
        QVERIFY2(outcome.out.contains(words), words);
}

// In the words of the bench's table, for which no bench has to run.
void TestCtl::helpOfACallIsThatOfTheTable()
{
    const Outcome outcome = run({"--help", "receiver.wait"});
    QCOMPARE(outcome.status, 0);
    QCOMPARE(outcome.out,
             QString("Usage: testmode-ctl receiver.wait phase=TEXT timeout_ms=INTEGER\n"
                     "Answers when the receiver is in the phase, or passes through it.\n\n"
                     "  phase           a phase of the receiver (text)\n"
                     "  timeout_ms      how long to wait, in milliseconds (integer from 0 to "
                     "600000)\n\n"
                     "Example:\n"
                     "  testmode-ctl receiver.wait phase=application timeout_ms=2000\n"));
    QVERIFY(
        run({"--help", "unit.get"}).out.startsWith("Usage: testmode-ctl unit.get [path=TEXT]\n"));
    QVERIFY(run({"--help"}).out.contains("\n  receiver.wait\n"));
}

void TestCtl::helpOfACallThatThereIsNot()
{
    const Outcome outcome = run({"--help", "unit.fly"});
    QCOMPARE(outcome.status, 2);
    QCOMPARE(outcome.err, QString("testmode-ctl: no call unit.fly; --help lists them\n"));
}

void TestCtl::version()
{
    const Outcome outcome = run({"--version"});
    QCOMPARE(outcome.status, 0);
    QVERIFY(outcome.out.startsWith("testmode-ctl "));
}

TESTMODE_TEST_MAIN(TestCtl)
#include "test_ctl.moc"
