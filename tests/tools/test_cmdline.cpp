#include "tests/support/unittest.h"

#include "tools/cmdline.h"

#include <QSignalSpy>
#include <QTextCodec>

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
};

namespace {

// Runs the command to its end; what it showed, in order.
QList<QVariantList> run(const QString &program, const QString &arguments)
{
    CmdLine command(program, arguments, "tag");
    QSignalSpy shown(&command, &CmdLine::signals_show);
    QSignalSpy shownOut(&command, &CmdLine::signals_showOut);
    command.start();
    if (!command.wait(60000) || !shownOut.isEmpty())
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
    QCOMPARE(trace().payloads(), QStringList({"\"echo\" \"a  b\""}));
    QCOMPARE(tracedFunctions(), QStringList{"virtual void CmdLine::run()"});
}

void TestCmdLine::longOutputComesWhole()
{
    const QList<QVariantList> shown = run("seq", "100000");
    QCOMPARE(shown.size(), 1);
    const QString output = shown.first().first().toString();
    QCOMPARE(output.count('\n'), 100000);
    QVERIFY(output.endsWith("99999\n100000\n"));
}

TESTMODE_TEST_MAIN(TestCmdLine)
#include "test_cmdline.moc"
