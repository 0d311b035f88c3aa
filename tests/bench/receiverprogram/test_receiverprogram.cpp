#include "tests/bench/receiver/rawhost.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalSocket>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

using tests::RawHost;

namespace {

const QString kReceiver = QStringLiteral(TESTMODE_RECEIVER);

constexpr int kFlashBytes = 4194304;

struct Outcome
{
    int status = -1;
    QByteArray output;
    QByteArray errors;
};

Outcome outcomeOf(QProcess *process)
{
    Outcome outcome;
    if (process->waitForFinished() && process->exitStatus() == QProcess::NormalExit)
        outcome.status = process->exitCode();
    outcome.output = process->readAllStandardOutput();
    outcome.errors = process->readAllStandardError();
    return outcome;
}

// A run that is over by itself.
Outcome run(const QStringList &words)
{
    QProcess process;
    process.start(kReceiver, words);
    return outcomeOf(&process);
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void makeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), qint64(content.size()));
}

} // namespace

// The receiver's program as its user meets it.
class TestReceiverProgram : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void documentShowsTheHelpAsItIs();
    void shortHelpIsTheSame();
    void versionIsOneLine();
    void badInputIsOneLineAndAStatus_data();
    void badInputIsOneLineAndAStatus();

    void printsTheLineThatAHostOpens();
    void linkLeadsToTheLineAndGoesAtTheEnd();
    void linkThatWasLeftBehindIsReplaced();
    void linkThatLeadsElsewhereByNowStays();
    void servesATerminalThatIsThere();
    void busyTerminalIsRefused();
    void endsWhenAsked_data();
    void endsWhenAsked();
    void resetsWhenSignalled();

    void monitorHasTheReceiversCallsAndNoOthers();
    void unitFileSetsTheReceiver();
    void fullSpeedIsASetting();

    void flashIsSavedAtTheEnd();
    void flashIsTakenFromTheFile();
    void flashThatCannotBeSavedIsTold();

private:
    QString path(const QString &name) const { return folder->filePath(name); }

    // Starts the program; the line's path.
    QString start(QProcess *process, const QStringList &words);
    QJsonObject ask(const QString &method, const QJsonObject &parameters = {}) const;
    QString phase() const { return ask("receiver.state").value("phase").toString(); }

    QScopedPointer<QTemporaryDir> folder;
};

void TestReceiverProgram::init()
{
    folder.reset(new QTemporaryDir);
    QVERIFY(folder->isValid());
}

QString TestReceiverProgram::start(QProcess *process, const QStringList &words)
{
    process->start(kReceiver, words + QStringList{"--monitor", path("socket")});
    QByteArray line;
    while (!line.endsWith('\n') && process->waitForReadyRead(20000))
        line += process->readAllStandardOutput();
    return QString::fromLocal8Bit(line.trimmed());
}

QJsonObject TestReceiverProgram::ask(const QString &method, const QJsonObject &parameters) const
{
    const QJsonObject call = {
        {"jsonrpc", "2.0"}, {"id", 1}, {"method", method}, {"params", parameters}};
    QLocalSocket socket;
    socket.connectToServer(path("socket"));
    socket.write(QJsonDocument(call).toJson(QJsonDocument::Compact) + '\n');
    while (socket.canReadLine() || socket.waitForReadyRead(10000)) {
        const QJsonObject line = QJsonDocument::fromJson(socket.readLine()).object();
        if (line.value("method") == QJsonValue("bench.hello") && method == "bench.hello")
            return line.value("params").toObject();
        if (line.contains("error"))
            return line.value("error").toObject();
        if (line.contains("id"))
            return line.value("result").toObject();
    }
    return QJsonObject();
}

void TestReceiverProgram::documentShowsTheHelpAsItIs()
{
    const Outcome outcome = run({"--help"});
    QCOMPARE(outcome.status, 0);
    QCOMPARE(outcome.errors, QByteArray());
    const QByteArray document = contentOf(TESTMODE_SOURCE_DIR "/docs/receiver.md");
    QVERIFY2(document.contains("```\n" + outcome.output + "```\n"), outcome.output.constData());
    for (const QByteArray &line : outcome.output.split('\n'))
        QVERIFY2(line.size() <= 90, line.constData());
}

void TestReceiverProgram::shortHelpIsTheSame()
{
    const Outcome outcome = run({"-h"});
    QCOMPARE(outcome.status, 0);
    QCOMPARE(outcome.output, run({"--help"}).output);
}

void TestReceiverProgram::versionIsOneLine()
{
    const Outcome outcome = run({"--version"});
    QCOMPARE(outcome.status, 0);
    QVERIFY(QRegularExpression("^testmode-receiver \\d+\\.\\d+\\.\\d+\n$")
                .match(outcome.output)
                .hasMatch());
}

void TestReceiverProgram::badInputIsOneLineAndAStatus_data()
{
    QTest::addColumn<QStringList>("words");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("line"); // %1: the test's folder

    QTest::newRow("unknown option")
        << QStringList{"--bogus"} << 2 << "Unknown option 'bogus'; --help lists what there is";
    QTest::newRow("value missing")
        << QStringList{"--link"} << 2 << "Missing value after '--link'; --help lists what there is";
    QTest::newRow("value empty") << QStringList{"--link="} << 2
                                 << "--link needs a value; --help lists what there is";
    QTest::newRow("word of no option")
        << QStringList{"line"} << 2 << "line belongs to no option; --help lists what there is";
    QTest::newRow("link to a terminal")
        << QStringList{"--link", "%1/l", "--tty", "/dev/ttyS0"} << 2
        << "--link names a pseudo-terminal; leave it out with --tty";
    QTest::newRow("link is a file")
        << QStringList{"--link", "%1/file"} << 3
        << "--link: %1/file is there and no link to a pseudo-terminal; name another path";
    QTest::newRow("link's folder not there")
        << QStringList{"--link", "%1/none/line"} << 3
        << "--link: %1/none/line cannot be made (No such file or directory); name a path in a "
           "folder that is yours";
    QTest::newRow("terminal not there")
        << QStringList{"--tty", "%1/none"} << 3
        << "--tty: %1/none is not there; plug the adapter in, or name another device";
    QTest::newRow("terminal is a file")
        << QStringList{"--tty", "%1/file"} << 3 << "--tty: %1/file is no serial device; name one";
    QTest::newRow("state not there")
        << QStringList{"--unit", "%1/none"} << 3
        << "--unit: %1/none is no file; name a file with the receiver's state";
    QTest::newRow("state of a unit") << QStringList{"--unit", "%1/unit.json"} << 3
                                     << "--unit: %1/unit.json: gnss: the unit has no such key; "
                                        "keys below \"receiver\" are taken";
    QTest::newRow("socket is a file")
        << QStringList{"--monitor", "%1/file"} << 3
        << "--monitor: %1/file is there and no socket; name another path";
    QTest::newRow("flash too small")
        << QStringList{"--flash-image", "%1/file"} << 3
        << "--flash-image: %1/file has 13 bytes, the flash has 4194304; name another file, or one "
           "that is not there yet";
    QTest::newRow("flash is a folder")
        << QStringList{"--flash-image", "%1"} << 3
        << "--flash-image: %1 is no file; name one, or one that is not there yet";
    QTest::newRow("flash cannot be saved")
        << QStringList{"--flash-image", "%1/none/flash"} << 3
        << "--flash-image: %1/none/flash cannot be written (No such file or directory); name a "
           "file in a folder of your own";
}

void TestReceiverProgram::badInputIsOneLineAndAStatus()
{
    QFETCH(QStringList, words);
    QFETCH(QString, line);
    makeFile(path("file"), "not a receiver");
    QVERIFY(QFile::resize(path("file"), 13));
    makeFile(path("unit.json"), "{\"gnss\": {\"module_kind\": 1}}");
    words.replaceInStrings("%1", folder->path());
    const Outcome outcome = run(words);
    QTEST(outcome.status, "status");
    QCOMPARE(QString::fromUtf8(outcome.errors),
             "testmode-receiver: " + line.replace("%1", folder->path()) + "\n");
    QCOMPARE(outcome.output, QByteArray());
    QCOMPARE(QDir(folder->path()).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot),
             (QStringList{"file", "unit.json"}));
}

void TestReceiverProgram::printsTheLineThatAHostOpens()
{
    QProcess process;
    const QString line = start(&process, {});
    RawHost host(line);
    QVERIFY(host.synchronise());
    process.terminate();
    const Outcome outcome = outcomeOf(&process);
    QCOMPARE(outcome.status, 0);
    QCOMPARE(outcome.output, QByteArray()); // the path was all
    QCOMPARE(outcome.errors, QByteArray());
}

void TestReceiverProgram::linkLeadsToTheLineAndGoesAtTheEnd()
{
    QProcess process;
    const QString line = start(&process, {"--link", path("line")});
    QCOMPARE(QFile::symLinkTarget(path("line")), line);
    RawHost host(path("line"));
    QVERIFY(host.synchronise());
    process.terminate();
    QCOMPARE(outcomeOf(&process).status, 0);
    QVERIFY(!QFileInfo(path("line")).isSymLink());
}

void TestReceiverProgram::linkThatWasLeftBehindIsReplaced()
{
    QVERIFY(QFile::link("/dev/pts/4711", path("line")));
    QProcess process;
    const QString line = start(&process, {"--link", path("line")});
    QCOMPARE(QFile::symLinkTarget(path("line")), line);
    process.terminate();
    QCOMPARE(outcomeOf(&process).status, 0);
}

void TestReceiverProgram::linkThatLeadsElsewhereByNowStays()
{
    QProcess process;
    start(&process, {"--link", path("line")});
    QVERIFY(QFile::remove(path("line")));
    makeFile(path("other"), "");
    QVERIFY(QFile::link(path("other"), path("line")));
    process.terminate();
    QCOMPARE(outcomeOf(&process).status, 0);
    QCOMPARE(QFile::symLinkTarget(path("line")), path("other"));
}

void TestReceiverProgram::servesATerminalThatIsThere()
{
    const int master = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    QVERIFY(master >= 0 && ::grantpt(master) == 0 && ::unlockpt(master) == 0);
    const QString device = QString::fromLocal8Bit(::ptsname(master));
    QProcess process;
    QCOMPARE(start(&process, {"--tty", device}), device);
    char answer = 0;
    QCOMPARE(::write(master, "\xA0", 1), ssize_t(1));
    QCOMPARE(::read(master, &answer, 1), ssize_t(1));
    QCOMPARE(answer, '\x5F');
    process.terminate();
    QCOMPARE(outcomeOf(&process).status, 0);
    ::close(master);
}

void TestReceiverProgram::busyTerminalIsRefused()
{
    QProcess first;
    const QString line = start(&first, {});
    const int held = ::open(qPrintable(line), O_RDWR | O_NOCTTY | O_CLOEXEC);
    QCOMPARE(::flock(held, LOCK_EX | LOCK_NB), 0);
    const Outcome outcome = run({"--tty", line});
    QCOMPARE(outcome.status, 3);
    QCOMPARE(QString::fromUtf8(outcome.errors),
             QString("testmode-receiver: --tty: %1 is in use by another program; end that one\n")
                 .arg(line));
    ::close(held);
    first.terminate();
    QCOMPARE(outcomeOf(&first).status, 0);
}

void TestReceiverProgram::endsWhenAsked_data()
{
    QTest::addColumn<int>("signal"); // 0: bench.quit
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGINT") << SIGINT;
    QTest::newRow("SIGHUP") << SIGHUP;
    QTest::newRow("bench.quit") << 0;
}

void TestReceiverProgram::endsWhenAsked()
{
    QFETCH(int, signal);
    QProcess process;
    QVERIFY(!start(&process, {}).isEmpty());
    if (signal == 0)
        ask("bench.quit");
    else
        QCOMPARE(::kill(static_cast<pid_t>(process.processId()), signal), 0);
    QCOMPARE(outcomeOf(&process).status, 0);
    QVERIFY(!QFile::exists(path("socket")));
}

void TestReceiverProgram::resetsWhenSignalled()
{
    QProcess process;
    QVERIFY(!start(&process, {}).isEmpty());
    QCOMPARE(phase(), QString("application"));
    QCOMPARE(::kill(static_cast<pid_t>(process.processId()), SIGUSR1), 0);
    ask("receiver.wait", {{"phase", "boot-rom"}, {"timeout_ms", 10000}});
    QCOMPARE(phase(), QString("boot-rom"));
    QCOMPARE(ask("receiver.state").value("resets"), QJsonValue(1));
    process.terminate();
    QCOMPARE(outcomeOf(&process).status, 0);
}

void TestReceiverProgram::monitorHasTheReceiversCallsAndNoOthers()
{
    QProcess process;
    const QString line = start(&process, {});
    const QJsonObject greeting = ask("bench.hello");
    QCOMPARE(greeting.value("protocol"), QJsonValue(1));
    QCOMPARE(greeting.value("receiver"), QJsonValue(line));
    QCOMPARE(greeting.value("pid"), QJsonValue(double(process.processId())));
    QStringList names;
    const QJsonObject schema = ask("bench.schema");
    for (const QJsonValue &method : schema.value("methods").toArray())
        names << method.toObject().value("name").toString();
    names.sort();
    QCOMPARE(names,
             (QStringList{"bench.quit", "bench.schema", "bench.subscribe", "receiver.dialogue",
                          "receiver.faults", "receiver.flash", "receiver.flash.erase",
                          "receiver.flash.load", "receiver.flash.map", "receiver.flash.save",
                          "receiver.reset", "receiver.set", "receiver.state", "receiver.wait"}));
    QVERIFY(!schema.value("paths").toArray().isEmpty());
    process.terminate();
    QCOMPARE(outcomeOf(&process).status, 0);
}

void TestReceiverProgram::unitFileSetsTheReceiver()
{
    makeFile(path("unit.json"),
             R"({"receiver": {"reset_on_sync": false, "seed": 7,
                 "faults": [{"kind": "acknowledge", "value": 90, "step": "sync"}]}})");
    QProcess process;
    const QString line = start(&process, {"--unit", path("unit.json")});
    RawHost host(line);
    host.putHex("a0");
    QTRY_VERIFY(ask("receiver.state").value("anomalies").toArray().size() == 1);
    QCOMPARE(phase(), QString("application"));
    ask("receiver.reset");
    QVERIFY(host.ask("a0", "5a"));
    QCOMPARE(ask("receiver.faults").value("seed"), QJsonValue(7));
    process.terminate();
    QCOMPARE(outcomeOf(&process).status, 0);
}

void TestReceiverProgram::fullSpeedIsASetting()
{
    QProcess process;
    const QString line = start(&process, {"--full-speed"});
    // At this rate the program would take 10 s, and the host waits 3 s for its sum.
    RawHost host(line, 9600);
    QVERIFY(host.synchronise() && host.identify() && host.loadStage1(tests::pattern(10000, 1)));
    process.terminate();
    QCOMPARE(outcomeOf(&process).status, 0);
}

void TestReceiverProgram::flashIsSavedAtTheEnd()
{
    QProcess process;
    const QString line = start(&process, {"--flash-image", path("flash"), "--full-speed"});
    RawHost host(line);
    const QByteArray image = tests::pattern(5000, 3);
    QVERIFY(host.connectToAgent() && host.writeImage(0x08002000, image) && host.finish());
    QVERIFY(!QFile::exists(path("flash")));
    process.terminate();
    QCOMPARE(outcomeOf(&process).status, 0);
    QByteArray expected(kFlashBytes, '\xFF');
    expected.replace(0x2000, image.size(), image);
    QVERIFY(contentOf(path("flash")) == expected);
    QCOMPARE(QDir(folder->path()).entryList(QDir::Files), QStringList{"flash"});
}

void TestReceiverProgram::flashIsTakenFromTheFile()
{
    const QByteArray before = tests::pattern(kFlashBytes, 9);
    makeFile(path("flash"), before);
    QProcess process;
    QVERIFY(!start(&process, {"--flash-image", path("flash")}).isEmpty());
    const QJsonObject part = ask("receiver.flash", {{"address", 0x083FFFF0}, {"length", 16}});
    QCOMPARE(QByteArray::fromBase64(part.value("base64").toString().toLatin1()), before.right(16));
    process.terminate();
    QCOMPARE(outcomeOf(&process).status, 0);
    QVERIFY(contentOf(path("flash")) == before);
}

void TestReceiverProgram::flashThatCannotBeSavedIsTold()
{
    QVERIFY(QDir(folder->path()).mkdir("images"));
    QProcess process;
    QVERIFY(!start(&process, {"--flash-image", path("images/flash")}).isEmpty());
    QVERIFY(QDir(folder->path()).rmdir("images"));
    process.terminate();
    const Outcome outcome = outcomeOf(&process);
    QCOMPARE(outcome.status, 3);
    QCOMPARE(QString::fromUtf8(outcome.errors),
             QString("testmode-receiver: --flash-image: %1 was not written (No such file or "
                     "directory), it is as it was; make room for it and see to its folder\n")
                 .arg(path("images/flash")));
}

QTEST_GUILESS_MAIN(TestReceiverProgram)
#include "test_receiverprogram.moc"
