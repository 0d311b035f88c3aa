#include "tests/support/unittest.h"

#include <QFile>
#include <QThread>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include <execinfo.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

timespec fakeNow = {};

int fakeClock(clockid_t clock, timespec *now)
{
    if (clock != CLOCK_MONOTONIC)
        return -1;
    *now = fakeNow;
    return 0;
}

bool symbolsFail = false;

char **symbolsOf(void *const *addresses, int count)
{
    if (!symbolsFail)
        return ::backtrace_symbols(addresses, count);
    errno = ENOMEM;
    return nullptr;
}

} // namespace

// The header's static functions reach the system through these.
#define clock_gettime fakeClock
#define backtrace_symbols symbolsOf
#include "tools/debugtrace.h"
#undef clock_gettime
#undef backtrace_symbols

// What every source of the plug-in shares: the shape of a trace line, and two helpers.
class TestDebugTrace : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void lineIsMadeInOrder();
    void payloadsAreSeparatedByOneSpace();
    void contextNamesTheSourceAndSeverityIsDebug();
    void lineCarriesTheThreadThatWroteIt();
    void clockCountsMilliseconds_data();
    void clockCountsMilliseconds();
    void stackIsPrintedBetweenItsLines();
    void stackWithoutSymbolsEndsTheProcess();
};

namespace traced {

int by(float)
{
    DBG << "payload";
    return __LINE__ - 1;
}

} // namespace traced

namespace {

struct Place
{
    QtMsgType type;
    QByteArray file;
    int line;
};

QVector<Place> places;

void keepPlace(QtMsgType type, const QMessageLogContext &context, const QString &)
{
    places << Place{type, context.file, context.line};
}

// What `body` wrote to its output and its errors in a process of its own, and how that ended.
template <typename Body>
QByteArray outputOf(Body body, int *status)
{
    int channel[2];
    if (::pipe(channel) != 0)
        qFatal("no pipe");
    std::fflush(nullptr);
    const pid_t process = ::fork();
    if (process == 0) {
        ::dup2(channel[1], STDOUT_FILENO);
        ::dup2(channel[1], STDERR_FILENO);
        // What the test's own process registered for its end is not the child's.
        ::on_exit(
            [](int code, void *) {
                std::fflush(nullptr);
                ::_exit(code);
            },
            nullptr);
        body();
        std::exit(42);
    }
    ::close(channel[1]);
    QFile reader;
    if (!reader.open(channel[0], QIODevice::ReadOnly, QFileDevice::AutoCloseHandle))
        qFatal("no reader");
    const QByteArray output = reader.readAll();
    if (::waitpid(process, status, 0) != process)
        qFatal("no end of the process");
    return output;
}

} // namespace

void TestDebugTrace::lineIsMadeInOrder()
{
    const int line = traced::by(0.5f);
    QCOMPARE(trace().lines(),
             QStringList{QStringLiteral("[DBG] %1 int traced::by(float) %2 -- payload")
                             .arg(::getpid())
                             .arg(line)});
}

void TestDebugTrace::payloadsAreSeparatedByOneSpace()
{
    DBG << "key:" << 35 << QStringLiteral("text") << false;
    QCOMPARE(trace().payloads(), QStringList{"key: 35 \"text\" false"});
}

void TestDebugTrace::contextNamesTheSourceAndSeverityIsDebug()
{
    places.clear();
    const QtMessageHandler previous = qInstallMessageHandler(keepPlace);
    const int line = traced::by(0.5f);
    qInstallMessageHandler(previous);
    QCOMPARE(places.size(), 1);
    QCOMPARE(places.first().type, QtDebugMsg);
    QVERIFY2(places.first().file.endsWith("test_debugtrace.cpp"), places.first().file);
    QCOMPARE(places.first().line, line);
}

void TestDebugTrace::lineCarriesTheThreadThatWroteIt()
{
    pid_t id = 0;
    const std::unique_ptr<QThread> thread(QThread::create([&id] {
        id = static_cast<pid_t>(::syscall(SYS_gettid));
        traced::by(0.5f);
    }));
    thread->start();
    QVERIFY(thread->wait(10000));
    QVERIFY(id != ::getpid());
    QCOMPARE(trace().lines().size(), 1);
    QVERIFY(trace().lines().first().startsWith(QStringLiteral("[DBG] %1 int ").arg(id)));
}

void TestDebugTrace::clockCountsMilliseconds_data()
{
    QTest::addColumn<qint64>("seconds");
    QTest::addColumn<qint64>("nanoseconds");
    QTest::addColumn<int>("milliseconds");
    QTest::newRow("start") << qint64(0) << qint64(0) << 0;
    QTest::newRow("below a millisecond") << qint64(0) << qint64(999999) << 0;
    QTest::newRow("a millisecond") << qint64(0) << qint64(1000000) << 1;
    QTest::newRow("end of a second") << qint64(7) << qint64(999999999) << 7999;
    QTest::newRow("last before the wrap") << qint64(2147483) << qint64(647000000) << 2147483647;
    QTest::newRow("first after the wrap")
        << qint64(2147483) << qint64(648000000) << std::numeric_limits<int>::min();
    QTest::newRow("whole turn") << qint64(4294967) << qint64(296000000) << 0;
}

void TestDebugTrace::clockCountsMilliseconds()
{
    QFETCH(qint64, seconds);
    QFETCH(qint64, nanoseconds);
    fakeNow.tv_sec = seconds;
    fakeNow.tv_nsec = nanoseconds;
    static_assert(std::is_same<decltype(monotonic_ms()), int32_t>::value, "32 bits, signed");
    QTEST(int(monotonic_ms()), "milliseconds");
}

void TestDebugTrace::stackIsPrintedBetweenItsLines()
{
    int status = 0;
    const QByteArray output = outputOf(print_trace, &status);
    QVERIFY(WIFEXITED(status));
    QCOMPARE(WEXITSTATUS(status), 42);
    QVERIFY2(output.startsWith("\n ********* print_trace *********\n"), output);
    QVERIFY2(output.endsWith("\n ********* print_trace end *********\n\n"), output);
    // At least this test's own program stands between the two.
    const QList<QByteArray> lines = output.split('\n');
    QVERIFY2(lines.size() > 6, output);
    QVERIFY2(output.contains("test_debugtrace"), output);
}

void TestDebugTrace::stackWithoutSymbolsEndsTheProcess()
{
    int status = 0;
    symbolsFail = true;
    const QByteArray output = outputOf(print_trace, &status);
    symbolsFail = false;
    QVERIFY(WIFEXITED(status));
    QCOMPARE(WEXITSTATUS(status), 1);
    QVERIFY2(output.contains("\n ********* print_trace *********\n"), output);
    QVERIFY2(output.contains("backtrace_symbols: Cannot allocate memory\n"), output);
    QVERIFY2(!output.contains("print_trace end"), output);
}

TESTMODE_TEST_MAIN(TestDebugTrace)
#include "test_debugtrace.moc"
