#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalSocket>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <cstdlib>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace {

const QString kBench = QStringLiteral(TESTMODE_BENCH);

// Last line of the trace while the window comes up.
const QByteArray kShown = "-- onShow";

struct Outcome
{
    int status = -1;
    QByteArray output;
    QByteArray errors;
};

QProcessEnvironment withoutDisplay()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove("DISPLAY");
    environment.remove("WAYLAND_DISPLAY");
    environment.remove("QT_QPA_PLATFORM");
    return environment;
}

Outcome run(const QStringList &words, const QProcessEnvironment &environment = withoutDisplay())
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(kBench, words);
    Outcome outcome;
    if (process.waitForFinished() && process.exitStatus() == QProcess::NormalExit)
        outcome.status = process.exitCode();
    outcome.output = process.readAllStandardOutput();
    outcome.errors = process.readAllStandardError();
    return outcome;
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Folders below /proc of processes with `word` in their command line, other than this one.
QStringList foldersWith(const QByteArray &word)
{
    QStringList found;
    const QStringList numbers = QDir("/proc").entryList(QDir::Dirs);
    for (const QString &number : numbers) {
        if (number.toInt() != ::getpid()
            && contentOf("/proc/" + number + "/cmdline").contains(word))
            found << "/proc/" + number;
    }
    return found;
}

int processesWith(const QByteArray &word)
{
    return foldersWith(word).size();
}

// Processor time that they have used, in the kernel's ticks.
qint64 ticksOf(const QByteArray &word)
{
    qint64 ticks = 0;
    const QStringList folders = foldersWith(word);
    for (const QString &folder : folders) {
        const QByteArray stat = contentOf(folder + "/stat");
        const QList<QByteArray> fields = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
        ticks += fields.value(11).toLongLong() + fields.value(12).toLongLong();
    }
    return ticks;
}

// A serial device for the bench: a pseudo-terminal of this process.
struct Terminal
{
    Terminal() : master(::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC))
    {
        if (master < 0 || ::grantpt(master) != 0 || ::unlockpt(master) != 0)
            qFatal("no pseudo-terminal");
        path = QString::fromLocal8Bit(::ptsname(master));
        slave = ::open(qPrintable(path), O_RDWR | O_NOCTTY | O_CLOEXEC);
    }
    ~Terminal()
    {
        ::close(slave);
        ::close(master);
    }
    Q_DISABLE_COPY(Terminal)

    int master;
    int slave;
    QString path;
};

void makeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
}

} // namespace

// The program as its user meets it: words in, one line and a status out.
class TestCommandLine : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void helpNamesEveryOption();
    void shortHelpIsTheSame();
    void documentShowsTheHelpAsItIs();
    void versionIsOneLine();
    void badInputIsOneLineAndAStatus_data();
    void badInputIsOneLineAndAStatus();
    void packageMissesAFile_data();
    void packageMissesAFile();
    void pluginThatIsNoneIsRefused_data();
    void pluginThatIsNoneIsRefused();
    void unitFileWithAnUnknownKeyIsRefused();
    void busyDeviceIsRefused();
    void deviceIsTheUnitsUart();
    void deviceIsHeldWhileTheBenchRuns();
    void operatorIsAskedForTheReset();
    void resetLineIsDriven();
    void resetLineNeedsModemLines();
    void standInsAreRefusedOnARealPort();
    void standInsMayBeAskedFor();
    void withoutDisplayItSaysWhatToDo();
    void displayThatCannotBeOpenedIsOneLine();
    void refusedRootIsOneLine_data();
    void refusedRootIsOneLine();
    void strangeMarkIsNotBelieved();
    void namedFoldersAreShownInTheRoot();
    void unitFileSetsTheStateAndOptionsAttachToIt();
    void pagesSpeakTheLanguage();
    void fileThatIsNoCatalogueIsRefused();
    void cutShortTourHasNotSucceeded();
    void stopsWhenAsked_data();
    void stopsWhenAsked();
    void killedBenchLeavesNoProcess();
    void idleBenchRests();
    void installedCopyRunsForAnOrdinaryUser();

private:
    QString path(const QString &name) const { return folder->filePath(name); }

    // A bench that has its window on the screen; its socket lies in the test's folder.
    void startShown(QProcess *process, const QString &program, const QStringList &words);

    // The pseudo-terminal is an adapter's port to the bench; its modem lines go to path("modem").
    QProcessEnvironment withRealPort(const QString &terminal) const;

    // The update page's own button for the reset line.
    void pressReset() const;

    // The result of one call of the monitor.
    QJsonObject ask(const QString &method, const QJsonObject &parameters) const;
    QString fileInRoot(const QString &name) const
    {
        return ask("unit.file.read", {{"path", name}}).value("text").toString();
    }
    QJsonValue valueOf(const QString &name) const
    {
        return ask("unit.get", {{"path", name}}).value("value");
    }

    QScopedPointer<QTemporaryDir> folder;
    QByteArray said; // by the bench that was started last, up to its window
};

void TestCommandLine::init()
{
    folder.reset(new QTemporaryDir);
    QVERIFY(folder->isValid());
}

void TestCommandLine::startShown(QProcess *process, const QString &program,
                                 const QStringList &words)
{
    if (process->processEnvironment().isEmpty())
        process->setProcessEnvironment(withoutDisplay());
    process->start(program, words + QStringList{"--trace", "--monitor", path("socket")});
    QVERIFY(process->waitForStarted());
    said.clear();
    const auto isShown = [this, process] {
        return (said += process->readAllStandardError()).contains(kShown);
    };
    // One that a machine refuses its root has said so and ended.
    QTRY_VERIFY2_WITH_TIMEOUT(isShown() || process->state() == QProcess::NotRunning,
                              said.constData(), 20000);
    QVERIFY2(isShown(), said.constData());
}

QJsonObject TestCommandLine::ask(const QString &method, const QJsonObject &parameters) const
{
    const QJsonObject call = {
        {"jsonrpc", "2.0"}, {"id", 1}, {"method", method}, {"params", parameters}};
    QLocalSocket socket;
    socket.connectToServer(path("socket"));
    socket.write(QJsonDocument(call).toJson(QJsonDocument::Compact) + '\n');
    while (socket.canReadLine() || socket.waitForReadyRead(10000)) {
        const QJsonObject line = QJsonDocument::fromJson(socket.readLine()).object();
        if (line.contains("error"))
            qWarning("%s", QJsonDocument(line).toJson().constData());
        if (line.contains("id"))
            return line.value("result").toObject();
    }
    return QJsonObject();
}

QProcessEnvironment TestCommandLine::withRealPort(const QString &terminal) const
{
    QProcessEnvironment environment = withoutDisplay();
    environment.insert("LD_PRELOAD", TESTMODE_REAL_PORT);
    environment.insert("REAL_PORT", terminal);
    environment.insert("REAL_PORT_LOG", path("modem"));
    // A sanitizer's library wants to be the first.
    environment.insert("ASAN_OPTIONS", "verify_asan_link_order=0");
    return environment;
}

void TestCommandLine::pressReset() const
{
    ask("unit.set", {{"path", "gnss.module_kind"}, {"value", 1}});
    ask("ui.click", {{"object", "key_gps_update"}});
    ask("ui.click", {{"object", "btn_reset"}});
}

void TestCommandLine::helpNamesEveryOption()
{
    const Outcome outcome = run({"--help"});
    QCOMPARE(outcome.status, 0);
    QCOMPARE(outcome.errors, QByteArray());
    for (const char *word :
         {"--tour DIR",    "--monitor SOCKET", "--package DIR",   "--usb0 DIR",
          "--usb1 DIR",    "--flash",          "--uart DEVICE",   "--reset LINE",
          "--stand-ins",   "--attempts N",     "--format FORMAT", "--log FILE",
          "--unit FILE",   "--plugin FILE",    "--language NAME", "--pictures DIR",
          "--real-memory", "--full-speed",     "--trace",         "--help",
          "--version",     "--doctor",         "Examples:",       "Exit status:"})
        QVERIFY2(outcome.output.contains(word), word);
}

void TestCommandLine::shortHelpIsTheSame()
{
    const Outcome outcome = run({"-h"});
    QCOMPARE(outcome.status, 0);
    QCOMPARE(outcome.output, run({"--help"}).output);
}

void TestCommandLine::documentShowsTheHelpAsItIs()
{
    const QByteArray document = contentOf(TESTMODE_SOURCE_DIR "/docs/bench.md");
    QVERIFY(document.contains("```\n" + run({"--help"}).output + "```\n"));
}

void TestCommandLine::versionIsOneLine()
{
    const Outcome outcome = run({"--version"});
    QCOMPARE(outcome.status, 0);
    QCOMPARE(outcome.errors, QByteArray());
    QVERIFY(QRegularExpression("^testmode-bench \\d+\\.\\d+\\.\\d+\n$")
                .match(outcome.output)
                .hasMatch());
}

void TestCommandLine::badInputIsOneLineAndAStatus_data()
{
    QTest::addColumn<QStringList>("words");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("line"); // %1: the test's folder

    QTest::newRow("unknown option")
        << QStringList{"--bogus"} << 2 << "--bogus is no option; --help lists what there is";
    QTest::newRow("short option") << QStringList{"-x"} << 2
                                  << "-x is no option; --help lists what there is";
    QTest::newRow("value missing")
        << QStringList{"--package"} << 2 << "--package needs a value; --help lists what there is";
    QTest::newRow("value empty") << QStringList{"--package="} << 2
                                 << "--package needs a value; --help lists what there is";
    QTest::newRow("word of no option")
        << QStringList{"pictures"} << 2
        << "pictures belongs to no option; --help lists what there is";
    QTest::newRow("reset by no line")
        << QStringList{"--uart", "/dev/ttyS0", "--reset", "cts"} << 2
        << "--reset is cts; wanted is rts, dtr or gpio:CHIP:LINE, or one of them after '!'";
    QTest::newRow("reset of the simulated receiver")
        << QStringList{"--reset", "rts"} << 2 << "--reset and --stand-ins need --uart";
    QTest::newRow("stand-ins of the simulated receiver")
        << QStringList{"--stand-ins"} << 2 << "--reset and --stand-ins need --uart";
    QTest::newRow("package not there")
        << QStringList{"--package", "%1/none"} << 3
        << "--package: %1/none is no folder; name a folder with an update package";
    QTest::newRow("disk not there")
        << QStringList{"--usb0", "%1/none"} << 3
        << "--usb0: %1/none is no folder; name the folder that stands for the disk";
    QTest::newRow("disk is a file")
        << QStringList{"--usb1", "%1/file"} << 3
        << "--usb1: %1/file is no folder; name the folder that stands for the disk";
    QTest::newRow("device not there")
        << QStringList{"--uart", "%1/none"} << 3
        << "--uart: %1/none is not there; plug the adapter in, or name another device";
    QTest::newRow("device is a file")
        << QStringList{"--uart", "%1/file"} << 3 << "--uart: %1/file is no serial device; name one";
    QTest::newRow("state not there")
        << QStringList{"--unit", "%1/none"} << 3
        << "--unit: %1/none is no file; name a file with the unit's state";
    QTest::newRow("tour in another language")
        << QStringList{"--language", "en", "--tour", "%1/tour"} << 2
        << "--tour compares the pages' own texts; leave --language out";
    QTest::newRow("memory of a machine that is not for it")
        << QStringList{"--real-memory"} << 3
        << "--real-memory: this kernel was not started with the word testmode.real_memory, so "
           "/dev/mem may be in use; leave the option out";
    QTest::newRow("plug-in not there") << QStringList{"--plugin", "%1/none"} << 3
                                       << "--plugin: %1/none is no file; name the plug-in's file";
    QTest::newRow("socket's folder not there")
        << QStringList{"--monitor", "%1/none/socket"} << 3
        << "--monitor: %1/none is no folder; make it, or name another";
    QTest::newRow("socket is a file") << QStringList{"--monitor", "%1/file"} << 3
                                      << "--monitor: %1/file is there and no socket; name another";
    QTest::newRow("tour into a file")
        << QStringList{"--tour", "%1/file"} << 3 << "--tour: %1/file is no folder; name another";
    QTest::newRow("tour below a file")
        << QStringList{"--tour", "%1/file/tour"} << 3
        << "--tour: %1/file/tour cannot be made (Not a directory); name another";
    QTest::newRow("tour into the system's")
        << QStringList{"--tour", "/proc/tour"} << 3
        << "--tour: /proc/tour is the system's; name a folder of your own";
}

void TestCommandLine::badInputIsOneLineAndAStatus()
{
    QFETCH(QStringList, words);
    QFETCH(QString, line);
    makeFile(path("file"), "no plug-in, no package");
    words.replaceInStrings("%1", folder->path());
    if (!words.join(' ').contains("--tour"))
        words = QStringList{"--tour", path("tour")} + words;
    const QByteArray mountsBefore = contentOf("/proc/self/mountinfo");

    const Outcome outcome = run(words);
    QTEST(outcome.status, "status");
    QCOMPARE(QString::fromUtf8(outcome.errors),
             "testmode-bench: " + line.replace("%1", folder->path()) + "\n");
    QCOMPARE(outcome.output, QByteArray());

    // nothing left behind
    QCOMPARE(QDir(folder->path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
             QStringList{"file"});
    QCOMPARE(contentOf("/proc/self/mountinfo"), mountsBefore);
    QCOMPARE(processesWith(folder->path().toUtf8()), 0);
}

void TestCommandLine::packageMissesAFile_data()
{
    QTest::addColumn<QString>("missing");
    for (const char *file : {"flash_download.cfg", "partition_table.bin", "bootloader.bin",
                             "gnss_demo.bin", "gnss_config.bin"})
        QTest::newRow(file) << file;
}

void TestCommandLine::packageMissesAFile()
{
    QFETCH(QString, missing);
    for (const char *file : {"flash_download.cfg", "partition_table.bin", "bootloader.bin",
                             "gnss_demo.bin", "gnss_config.bin"})
        makeFile(path(file), "content");
    QVERIFY(QFile::remove(path(missing)));

    const Outcome outcome = run({"--tour", path("tour"), "--package", folder->path()});
    QCOMPARE(outcome.status, 3);
    QCOMPARE(QString::fromUtf8(outcome.errors),
             QString("testmode-bench: --package: %1 is no file; name a folder with an update "
                     "package\n")
                 .arg(path(missing)));
    QVERIFY(!QFile::exists(path("tour")));
}

void TestCommandLine::pluginThatIsNoneIsRefused_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("start"); // %1: the file
    QTest::newRow("no library") << QString() << "--plugin: %1 is no plug-in that loads (";
    QTest::newRow("another library") << TESTMODE_BINARY_DIR "/lib/libheadunit_services.so"
                                     << "--plugin: %1 is no plug-in that loads (";
}

void TestCommandLine::pluginThatIsNoneIsRefused()
{
    QFETCH(QString, file);
    QFETCH(QString, start);
    if (file.isEmpty()) {
        file = path("file");
        makeFile(file, "no plug-in");
    }
    const Outcome outcome = run({"--monitor", path("socket"), "--plugin", file});
    QCOMPARE(outcome.status, 3);
    QCOMPARE(outcome.errors.count('\n'), 1);
    QVERIFY2(outcome.errors.startsWith("testmode-bench: " + start.arg(file).toUtf8()),
             outcome.errors.constData());
    QVERIFY(!QFile::exists(path("socket")));
    QTRY_COMPARE(processesWith(folder->path().toUtf8()), 0);
}

void TestCommandLine::unitFileWithAnUnknownKeyIsRefused()
{
    makeFile(path("unit.json"), "{\"gnss\": {\"colour\": 1}}");
    const Outcome outcome = run({"--monitor", path("socket"), "--unit", path("unit.json")});
    QCOMPARE(outcome.status, 3);
    QCOMPARE(outcome.errors.count('\n'), 1);
    QVERIFY2(outcome.errors.contains("gnss.colour"), outcome.errors.constData());
    QVERIFY2(outcome.errors.contains(path("unit.json").toUtf8()), outcome.errors.constData());
}

void TestCommandLine::busyDeviceIsRefused()
{
    const Terminal terminal;
    QCOMPARE(::flock(terminal.slave, LOCK_EX | LOCK_NB), 0);
    const Outcome outcome = run({"--tour", path("tour"), "--uart", terminal.path});
    QCOMPARE(outcome.status, 3);
    QCOMPARE(QString::fromUtf8(outcome.errors),
             QString("testmode-bench: --uart: %1 is in use by another program; end that one\n")
                 .arg(terminal.path));
}

void TestCommandLine::deviceIsTheUnitsUart()
{
    const Terminal terminal;
    QProcess process;
    startShown(&process, kBench, {"--uart", terminal.path});
    ask("unit.file.write", {{"path", "/dev/ttyS4"}, {"text", "over the line"}});
    char received[32] = {};
    QCOMPARE(::read(terminal.master, received, sizeof received - 1), ssize_t(13));
    QCOMPARE(QByteArray(received), QByteArray("over the line"));
    process.terminate();
    QVERIFY(process.waitForFinished());
}

void TestCommandLine::deviceIsHeldWhileTheBenchRuns()
{
    const Terminal terminal;
    QProcess process;
    startShown(&process, kBench, {"--uart", terminal.path});
    QCOMPARE(::flock(terminal.slave, LOCK_EX | LOCK_NB), -1);
    process.terminate();
    QVERIFY(process.waitForFinished());
    QCOMPARE(::flock(terminal.slave, LOCK_EX | LOCK_NB), 0);
}

void TestCommandLine::operatorIsAskedForTheReset()
{
    const Terminal terminal;
    QProcess process;
    startShown(&process, kBench, {"--uart", terminal.path});
    pressReset();
    said.clear();
    const auto asked = [&] {
        said += process.readAllStandardError();
        const int first =
            said.indexOf("testmode-bench: pull the receiver's reset line now, and hold it\n");
        const int second =
            said.indexOf("testmode-bench: let go of the receiver's reset line now\n");
        return first >= 0 && second > first;
    };
    QTRY_VERIFY2_WITH_TIMEOUT(asked(), said.constData(), 15000);
    QCOMPARE(said.count("testmode-bench: "), 2);
    process.terminate();
    QVERIFY(process.waitForFinished());
}

void TestCommandLine::resetLineIsDriven()
{
    const Terminal terminal;
    QProcess process;
    process.setProcessEnvironment(withRealPort(terminal.path));
    startShown(&process, kBench, {"--uart", terminal.path, "--reset", "rts", "--stand-ins"});
    QCOMPARE(contentOf(path("modem")), QByteArray("RTS cleared\n"));
    pressReset();
    QCOMPARE(contentOf(path("modem")), QByteArray("RTS cleared\nRTS set\nRTS cleared\n"));
    said += process.readAllStandardError();
    QVERIFY2(!said.contains("testmode-bench: "), said.constData());

    // opened by the plug-in or by anybody, the port has its line where it was
    const int other = ::open(qPrintable(terminal.path), O_RDWR | O_NOCTTY | O_CLOEXEC);
    QVERIFY(other >= 0);
    QTRY_COMPARE(contentOf(path("modem")),
                 QByteArray("RTS cleared\nRTS set\nRTS cleared\nRTS cleared\n"));
    ::close(other);
    process.terminate();
    QVERIFY(process.waitForFinished());
}

void TestCommandLine::resetLineNeedsModemLines()
{
    const Terminal terminal;
    const Outcome outcome =
        run({"--tour", path("tour"), "--uart", terminal.path, "--reset", "!dtr"});
    QCOMPARE(outcome.status, 3);
    QCOMPARE(QString::fromUtf8(outcome.errors),
             QString("testmode-bench: --reset !dtr: %1 has no modem lines, so no DTR; name a GPIO "
                     "line (gpio:CHIP:LINE), or leave --reset out and pull the line by hand\n")
                 .arg(terminal.path));
}

void TestCommandLine::standInsAreRefusedOnARealPort()
{
    const Terminal terminal;
    const Outcome outcome =
        run({"--tour", path("tour"), "--uart", terminal.path}, withRealPort(terminal.path));
    QCOMPARE(outcome.status, 3);
    QCOMPARE(QString::fromUtf8(outcome.errors),
             QString("testmode-bench: --uart: %1: the plug-in carries stand-ins for the receiver's "
                     "agents (da_array.bin, da_array1.bin, slave_da_array.bin), which no real one "
                     "runs; build with the vendor's (script/run --agents DIR), or say --stand-ins "
                     "if the receiver is a simulated one\n")
                 .arg(terminal.path));
}

void TestCommandLine::standInsMayBeAskedFor()
{
    const Terminal terminal;
    QProcess process;
    process.setProcessEnvironment(withRealPort(terminal.path));
    startShown(&process, kBench, {"--uart", terminal.path, "--stand-ins"});
    process.terminate();
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), 0);
}

void TestCommandLine::withoutDisplayItSaysWhatToDo()
{
    const Outcome outcome = run({});
    QCOMPARE(outcome.status, 2);
    QCOMPARE(outcome.errors,
             QByteArray("testmode-bench: there is no display; use --flash, --tour DIR or "
                        "--monitor SOCKET\n"));
}

void TestCommandLine::displayThatCannotBeOpenedIsOneLine()
{
    QProcessEnvironment environment = withoutDisplay();
    environment.insert("DISPLAY", ":4711");
    const Outcome outcome = run({}, environment);
    QCOMPARE(outcome.status, 2);
    QCOMPARE(outcome.errors,
             QByteArray("testmode-bench: the display cannot be opened; see to DISPLAY, or use "
                        "--flash, --tour DIR or --monitor SOCKET\n"));
}

void TestCommandLine::refusedRootIsOneLine_data()
{
    QTest::addColumn<bool>("installed");
    QTest::addColumn<QString>("reason");
    QTest::newRow("namespaces refused")
        << true
        << "bwrap: No permissions to create new namespace; allow user namespaces ('sysctl -w "
           "kernel.unprivileged_userns_clone=1', where it exists also "
           "kernel.apparmor_restrict_unprivileged_userns=0) or run as root (in a container: one "
           "started with --privileged)";
    QTest::newRow("bwrap missing")
        << false << "bwrap is not installed; install the package bubblewrap";
}

void TestCommandLine::refusedRootIsOneLine()
{
    QFETCH(bool, installed);
    QFETCH(QString, reason);
    if (installed) {
        makeFile(path("bwrap"),
                 "#!/bin/sh\necho 'bwrap: No permissions to create new namespace' >&2\nexit 1\n");
        QFile::setPermissions(path("bwrap"), QFile::ReadOwner | QFile::ExeOwner);
    }
    QProcessEnvironment environment = withoutDisplay();
    environment.insert("PATH", folder->path());

    const Outcome outcome = run({"--monitor", path("socket")}, environment);
    QCOMPARE(outcome.status, 6);
    QCOMPARE(QString::fromUtf8(outcome.errors),
             "bench: this machine refuses a private root: " + reason + "\n");
}

// Inherited from a session inside another root, say: taken for true it would lead the
// plug-in to the machine's own /dev/mem.
void TestCommandLine::strangeMarkIsNotBelieved()
{
    QProcessEnvironment environment = withoutDisplay();
    environment.insert("HEADUNIT_PRIVATE_ROOT", "1");
    environment.insert("PATH", folder->path()); // no bwrap here
    QCOMPARE(run({"--monitor", path("socket")}, environment).status, 6);
}

void TestCommandLine::namedFoldersAreShownInTheRoot()
{
    const QStringList names = {"package", "disk 0", "disk 1"};
    for (const QString &name : names) {
        QVERIFY(QDir(folder->path()).mkdir(name));
        for (const char *file : {"flash_download.cfg", "partition_table.bin", "bootloader.bin",
                                 "gnss_demo.bin", "gnss_config.bin"})
            makeFile(path(name + "/" + file), name.toUtf8());
    }
    QProcess process;
    process.setWorkingDirectory(folder->path()); // the names are taken from here
    startShown(&process, kBench, {"--package", "package", "--usb0=disk 0", "--usb1", "./disk 1"});

    QCOMPARE(fileInRoot("/media/update/gnss_demo.bin"), QString("package"));
    QCOMPARE(fileInRoot("/media/usb0/gnss_demo.bin"), QString("disk 0"));
    QCOMPARE(fileInRoot("/media/usb1/gnss_demo.bin"), QString("disk 1"));
    QCOMPARE(valueOf("update.folder").toString(), QString("/media/update"));
    for (const QString port : {"0", "1"}) {
        QCOMPARE(valueOf("usb." + port + ".disk").toBool(), true);
        QCOMPARE(valueOf("usb." + port + ".path").toString(), "/media/usb" + port);
    }
    process.terminate();
    QVERIFY(process.waitForFinished());
}

void TestCommandLine::unitFileSetsTheStateAndOptionsAttachToIt()
{
    makeFile(path("unit.json"),
             "{\"gnss\": {\"module_kind\": 5}, \"usb\": {\"0\": {\"disk\": false}}}");
    QProcess process;
    startShown(&process, kBench, {"--unit", path("unit.json"), "--usb0", folder->path()});
    QCOMPARE(valueOf("gnss.module_kind").toInt(), 5);
    QCOMPARE(valueOf("usb.0.disk").toBool(), true);
    QCOMPARE(valueOf("usb.1.disk").toBool(), false);
    process.terminate();
    QVERIFY(process.waitForFinished());
}

void TestCommandLine::pagesSpeakTheLanguage()
{
    QProcess process;
    startShown(&process, kBench, {"--language", "en"});
    ask("unit.set", {{"path", "gnss.module_kind"}, {"value", 1}});
    ask("ui.click", {{"object", "key_gps_update"}});
    QCOMPARE(ask("ui.state", {{"object", "pushButton_3"}}).value("text"), QJsonValue("Start"));
    process.terminate();
    QVERIFY(process.waitForFinished());
}

void TestCommandLine::fileThatIsNoCatalogueIsRefused()
{
    Outcome outcome = run({"--language", path("none.qm"), "--flash"});
    QCOMPARE(outcome.status, 3);
    QCOMPARE(QString(outcome.errors),
             QString("testmode-bench: --language: %1 is no file; name en, zh_CN or a catalogue's "
                     "file\n")
                 .arg(path("none.qm")));
    makeFile(path("words.qm"), "no catalogue");
    outcome = run({"--language", path("words.qm"), "--flash"});
    QCOMPARE(outcome.status, 3);
    QCOMPARE(outcome.output, QByteArray());
    QCOMPARE(
        QString(outcome.errors),
        QString("testmode-bench: --language: %1 is no catalogue; make one with Qt's lrelease\n")
            .arg(path("words.qm")));
}

void TestCommandLine::cutShortTourHasNotSucceeded()
{
    QProcess process;
    startShown(&process, kBench, {"--tour", path("tour")});
    process.terminate();
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 1);
    QVERIFY(QFile::exists(path("tour")));
    QTRY_COMPARE(processesWith(folder->path().toUtf8()), 0);
}

void TestCommandLine::stopsWhenAsked_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("from the keyboard") << SIGINT;
    QTest::newRow("from a script") << SIGTERM;
    QTest::newRow("terminal closed") << SIGHUP;
}

void TestCommandLine::stopsWhenAsked()
{
    QFETCH(int, signal);
    QProcess process;
    startShown(&process, kBench, {});
    QVERIFY(processesWith(folder->path().toUtf8()) > 1);
    const auto bench = static_cast<pid_t>(process.processId());
    QVERIFY(bench > 0); // 0 would be this test's own group
    QCOMPARE(::kill(bench, signal), 0);
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 0);
    QTRY_COMPARE(processesWith(folder->path().toUtf8()), 0);
    QVERIFY(!QFile::exists(path("socket")));
}

void TestCommandLine::killedBenchLeavesNoProcess()
{
    QProcess process;
    startShown(&process, kBench, {});
    process.kill();
    QVERIFY(process.waitForFinished());
    QTRY_COMPARE(processesWith(folder->path().toUtf8()), 0);
}

// Nothing happens, so nothing may run: under 2 % of a core, all of its processes together.
void TestCommandLine::idleBenchRests()
{
    QProcess process;
    startShown(&process, kBench, {});
    constexpr qint64 kSeconds = 3;
    const qint64 before = ticksOf(folder->path().toUtf8());
    QTest::qWait(3000); // what is measured, not a wait for something
    const qint64 used = ticksOf(folder->path().toUtf8()) - before;
    QVERIFY(before > 0);
    QVERIFY2(used * 100 < 2 * kSeconds * ::sysconf(_SC_CLK_TCK), qPrintable(QString::number(used)));
    process.terminate();
    QVERIFY(process.waitForFinished());
}

void TestCommandLine::installedCopyRunsForAnOrdinaryUser()
{
    QCOMPARE(QProcess::execute(CMAKE_PROGRAM,
                               {"--install", TESTMODE_BINARY_DIR, "--prefix", path("installed")}),
             0);
    QVERIFY(QFile::setPermissions(folder->path(), QFile::Permissions(0x7777)));

    QString program = path("installed/bin/testmode-bench");
    QStringList words;
    if (::geteuid() == 0) {
        words = QStringList{"--reuid=65534", "--regid=65534", "--clear-groups", program};
        program = "setpriv";
    }
    QProcess process;
    // What its private root shows for certain is the copy.
    const QString suppressions = path("installed/leaks.supp");
    QVERIFY(QFile::copy(TESTMODE_BINARY_DIR "/leaks.supp", suppressions));
    QProcessEnvironment environment = withoutDisplay();
    environment.insert("LSAN_OPTIONS", "suppressions=" + suppressions + ":print_suppressions=0");
    process.setProcessEnvironment(environment);
    startShown(&process, program, words);
    if (QTest::currentTestFailed())
        return;
    process.terminate();
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 0);
}

QTEST_GUILESS_MAIN(TestCommandLine)
#include "test_commandline.moc"
