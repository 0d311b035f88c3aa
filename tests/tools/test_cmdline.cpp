#include "tests/support/clock/virtualclock.h"
#include "tests/support/recorder.h"
#include "tests/support/unittest.h"

#include "tools/cmdline.h"

#include <QProcess>
#include <QSignalSpy>
#include <QTextCodec>

#include <atomic>

#include <dlfcn.h>
#include <sys/select.h>

// The thread that runs one external program.
class TestCmdLine : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void signalsStandInOrder();
    void commandHasNoParent();
    void argumentsAreSplitAtEachSpace_data();
    void argumentsAreSplitAtEachSpace();
    void outputComesBackWithTheTag();
    void outputIsInTheLocalEncoding_data();
    void outputIsInTheLocalEncoding();
    void outputReachesTheReceiversThread();
    void standardErrorIsNotRead();
    void programThatDoesNotStartYieldsNothing();
    void runIsTraced();
    void longOutputComesWhole();
    void programMayTakeAnyTime();
    void startMayTakeHalfAMinute();
    void programCanBeWrittenTo();
};

namespace {

// How long a child of this program rests before it becomes another one; microseconds.
std::atomic<long> restBeforeProgram{0};

QIODevice::OpenMode startMode; // of the last program

// Runs the command to its end; what it showed, in order.
QList<QVariantList> run(const QString &program, const QString &arguments)
{
    CmdLine command(program, arguments, "tag");
    QSignalSpy shown(&command, &CmdLine::signals_show);
    QSignalSpy shownOut(&command, &CmdLine::signals_showOut);
    command.start();
    if (!command.wait() || !shownOut.isEmpty())
        return {};
    return shown;
}

} // namespace

void TestCmdLine::signalsStandInOrder()
{
    QCOMPARE(tests::signalsOf(CmdLine::staticMetaObject),
             QStringList({"signals_show(QString,QString)", "signals_showOut()"}));
}

void TestCmdLine::commandHasNoParent()
{
    const CmdLine command("echo", "word", "tag");
    QVERIFY(command.parent() == nullptr);
    QVERIFY(!command.isRunning());
}

void TestCmdLine::argumentsAreSplitAtEachSpace_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("output");
    QTest::newRow("one") << "<%s> one"
                         << "<one>";
    QTest::newRow("two") << "<%s> one two"
                         << "<one><two>";
    QTest::newRow("option, two spaces and a path") << "<%s> -o  /a/path"
                                                   << "<-o><></a/path>";
    QTest::newRow("space at the end") << "<%s> one "
                                      << "<one><>";
    QTest::newRow("quotes are no quotes") << "<%s> 'a b'"
                                          << "<'a><b'>";
}

void TestCmdLine::argumentsAreSplitAtEachSpace()
{
    QFETCH(QString, arguments);
    QFETCH(QString, output);
    QCOMPARE(run("printf", arguments), QList<QVariantList>({{output, "tag"}}));
}

void TestCmdLine::outputComesBackWithTheTag()
{
    QCOMPARE(run("echo", "a word"), QList<QVariantList>({{"a word\n", "tag"}}));
}

void TestCmdLine::outputIsInTheLocalEncoding_data()
{
    QTest::addColumn<QByteArray>("encoding");
    QTest::addColumn<QString>("output");
    QTest::newRow("UTF-8") << QByteArray("UTF-8") << QStringLiteral("\u00b5");
    QTest::newRow("Latin-1") << QByteArray("ISO-8859-1") << QStringLiteral("\u00c2\u00b5");
}

void TestCmdLine::outputIsInTheLocalEncoding()
{
    QFETCH(QByteArray, encoding);
    QFETCH(QString, output);
    QTextCodec *previous = QTextCodec::codecForLocale();
    QTextCodec::setCodecForLocale(QTextCodec::codecForName(encoding));
    const QList<QVariantList> shown = run("printf", "\\302\\265");
    QTextCodec::setCodecForLocale(previous);
    QCOMPARE(shown, QList<QVariantList>({{output, "tag"}}));
}

void TestCmdLine::outputReachesTheReceiversThread()
{
    CmdLine command("echo", "word", "tag");
    QStringList received;
    connect(&command, &CmdLine::signals_show, this,
            [&received](const QString &output, const QString &tag) {
                QCOMPARE(QThread::currentThread(), qApp->thread());
                received << output << tag;
            });
    command.start();
    QVERIFY(command.wait(60000));
    QCOMPARE(received, QStringList()); // queued until this thread's events run
    QTRY_COMPARE(received, (QStringList{"word\n", "tag"}));
}

void TestCmdLine::standardErrorIsNotRead()
{
    QCOMPARE(run("ls", "/no/such/folder"), QList<QVariantList>({{"", "tag"}}));
}

void TestCmdLine::programThatDoesNotStartYieldsNothing()
{
    QCOMPARE(run("/no/such/program", ""), QList<QVariantList>({{"", "tag"}}));
}

void TestCmdLine::runIsTraced()
{
    run("echo", "a  b");
    QCOMPARE(tests::comparable(trace().lines()),
             QStringList("[DBG] virtual void CmdLine::run() -- \"echo\" \"a  b\""));
}

void TestCmdLine::longOutputComesWhole()
{
    const QList<QVariantList> shown = run("seq", "100000");
    QCOMPARE(shown.size(), 1);
    const QString output = shown.first().first().toString();
    QCOMPARE(output.count('\n'), 100000);
    QVERIFY(output.endsWith("99999\n100000\n"));
}

// On a clock on which any time-out runs out while only the program is waited for.
void TestCmdLine::programMayTakeAnyTime()
{
    const tests::VirtualClock clock;
    QCOMPARE(run("sh", "-c sleep${IFS}0.2;echo${IFS}done"),
             QList<QVariantList>({{"done\n", "tag"}}));
}

void TestCmdLine::startMayTakeHalfAMinute()
{
    const tests::VirtualClock clock;
    restBeforeProgram = 200000;
    const QList<QVariantList> shown = run("echo", "late");
    restBeforeProgram = 0;
    QCOMPARE(clock.milliseconds(), 30000);
    QCOMPARE(shown, QList<QVariantList>({{"late\n", "tag"}}));
}

void TestCmdLine::programCanBeWrittenTo()
{
    run("true", "");
    QCOMPARE(startMode, QIODevice::OpenMode(QIODevice::ReadWrite));
}

// In the place of Qt's, for the plug-in's objects in this program.
void QProcess::start(QIODevice::OpenMode mode)
{
    using Start = void (*)(QProcess *, QIODevice::OpenMode);
    static const auto qtsOwn = reinterpret_cast<Start>(
        ::dlsym(RTLD_NEXT, "_ZN8QProcess5startE6QFlagsIN9QIODevice12OpenModeFlagEE"));
    startMode = mode;
    qtsOwn(this, mode);
}

// In the place of the C library's, in a child of this program.
extern "C" __attribute__((visibility("default"))) int execv(const char *file, char *const *words)
{
    timeval rest = {0, restBeforeProgram};
    ::select(0, nullptr, nullptr, nullptr, &rest); // the machine's time: no virtual clock knows it
    static const auto call = reinterpret_cast<decltype(&::execv)>(::dlsym(RTLD_NEXT, "execv"));
    return call(file, words);
}

TESTMODE_TEST_MAIN(TestCmdLine)
#include "test_cmdline.moc"
