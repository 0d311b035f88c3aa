#include "clock/virtualclock.h"
#include "tools/common.h"
#include "unittest.h"

#include <QDateTime>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QMutex>
#include <QProcess>
#include <QSemaphore>
#include <QThread>
#include <QWaitCondition>

#include <chrono>
#include <condition_variable>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <termios.h>
#include <unistd.h>

using tests::VirtualClock;

namespace {

// Lives in a thread of its own, with an event loop.
class Other : public QObject
{
public:
    Other()
    {
        moveToThread(&thread);
        thread.start();
    }
    ~Other() override
    {
        thread.quit();
        thread.wait();
    }

    template <typename Work>
    void call(Work work, Qt::ConnectionType how = Qt::BlockingQueuedConnection)
    {
        QMetaObject::invokeMethod(this, work, how);
    }

    QThread thread;
};

// A raw pseudo-terminal, both ends.
struct Terminal
{
    Terminal()
    {
        termios settings = {};
        char name[64];
        if (::grantpt(master) != 0 || ::unlockpt(master) != 0
            || ::ptsname_r(master, name, sizeof name) != 0)
            qFatal("no pseudo-terminal");
        slave = ::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
        if (slave < 0 || ::tcgetattr(slave, &settings) != 0)
            qFatal("no pseudo-terminal");
        ::cfmakeraw(&settings);
        ::tcsetattr(slave, TCSANOW, &settings);
    }
    ~Terminal()
    {
        ::close(slave);
        ::close(master);
    }
    Q_DISABLE_COPY_MOVE(Terminal)

    int master = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    int slave = -1;
};

} // namespace

Q_DECLARE_METATYPE(std::function<void()>)

// The clock that other tests measure with.
class TestVirtualClock : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void everyWaitTakesItsTime_data();
    void everyWaitTakesItsTime();
    void everyClockTellsTheSame();
    void timeStandsStillWhileSomethingRuns();
    void dayTakesAMoment();
    void timersFireInOrder();
    void waitForAnotherThreadTakesWhatThatTakes_data();
    void waitForAnotherThreadTakesWhatThatTakes();
    void endOfAThreadIsNotMissed();
    void earliestDeadlineComesFirst();
    void firstComeFirstServedAtTheSameTime();
    void readyDescriptorCostsNoTime();
    void bytesOnTheirWayThroughATerminalCostNoTime();
    void roomThatTheKernelDoesNotTellOfIsFound();
    void semaphoreOfSeveralTokens();
    void conditionsWakeOneOrAll();
    void timeOfDayCanBeMoved();
    void machinesClockGoesOnAfterwards();
    void anotherProcessIsOutside();
};

void TestVirtualClock::everyWaitTakesItsTime_data()
{
    using Wait = std::function<void()>;
    QTest::addColumn<std::function<void()>>("wait");
    QTest::addColumn<qint64>("microseconds");
    QTest::newRow("QThread::msleep") << Wait([] { QThread::msleep(100); }) << qint64(100000);
    QTest::newRow("QThread::usleep") << Wait([] { QThread::usleep(7); }) << qint64(7);
    QTest::newRow("std::this_thread")
        << Wait([] { std::this_thread::sleep_for(std::chrono::milliseconds(3)); }) << qint64(3000);
    QTest::newRow("usleep") << Wait([] { ::usleep(11); }) << qint64(11);
    QTest::newRow("clock_nanosleep, to a point") << Wait([] {
        timespec point = {};
        ::clock_gettime(CLOCK_MONOTONIC, &point);
        point.tv_sec += 2;
        ::clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &point, nullptr);
    }) << qint64(2000000);
    QTest::newRow("Delay_MSec") << Wait([] { Delay_MSec(2000); }) << qint64(2000000);
    QTest::newRow("poll of nothing") << Wait([] { ::poll(nullptr, 0, 250); }) << qint64(250000);
    // Qt rounds up to the next millisecond, also from a whole one.
    QTest::newRow("event loop") << Wait([] {
        QEventLoop loop;
        QTimer::singleShot(500, Qt::PreciseTimer, &loop, &QEventLoop::quit);
        loop.exec();
    }) << qint64(501000);
    QTest::newRow("wait condition, until a deadline") << Wait([] {
        QMutex mutex;
        QWaitCondition never;
        const QMutexLocker lock(&mutex);
        if (never.wait(&mutex, QDeadlineTimer(70, Qt::PreciseTimer)))
            qFatal("woken by nobody");
    }) << qint64(70000);
    QTest::newRow("condition variable") << Wait([] {
        std::mutex mutex;
        std::condition_variable never;
        std::unique_lock<std::mutex> lock(mutex);
        never.wait_for(lock, std::chrono::seconds(300));
    }) << qint64(300000000);
    QTest::newRow("condition variable, time of day") << Wait([] {
        std::mutex mutex;
        std::condition_variable never;
        std::unique_lock<std::mutex> lock(mutex);
        never.wait_until(lock, std::chrono::system_clock::now() + std::chrono::seconds(30));
    }) << qint64(30000000);
    QTest::newRow("mutex, a while") << Wait([] {
        QMutex mutex;
        mutex.lock();
        if (mutex.tryLock(40))
            qFatal("locked twice");
        mutex.unlock();
    }) << qint64(40000);
    QTest::newRow("semaphore, a while") << Wait([] {
        QSemaphore semaphore;
        if (semaphore.tryAcquire(1, 40))
            qFatal("nothing was released");
    }) << qint64(40000);
}

void TestVirtualClock::everyWaitTakesItsTime()
{
    QFETCH(std::function<void()>, wait);
    QFETCH(qint64, microseconds);
    const VirtualClock clock;
    wait();
    QCOMPARE(qint64(clock.microseconds()), microseconds);
}

void TestVirtualClock::everyClockTellsTheSame()
{
    const VirtualClock clock;
    QCOMPARE(QTime::currentTime(), QTime(12, 0));
    QElapsedTimer elapsed;
    elapsed.start();
    const QDateTime date = QDateTime::currentDateTime();
    const QDeadlineTimer deadline(90000);
    const auto steady = std::chrono::steady_clock::now();
    const auto system = std::chrono::system_clock::now();
    const time_t seconds = ::time(nullptr);
    QThread::sleep(61);
    QCOMPARE(elapsed.elapsed(), qint64(61000));
    QCOMPARE(QTime::currentTime(), QTime(12, 1, 1));
    QCOMPARE(date.msecsTo(QDateTime::currentDateTime()), qint64(61000));
    QCOMPARE(deadline.remainingTime(), qint64(29000));
    QVERIFY(std::chrono::steady_clock::now() - steady == std::chrono::seconds(61));
    QVERIFY(std::chrono::system_clock::now() - system == std::chrono::seconds(61));
    QCOMPARE(::time(nullptr) - seconds, time_t(61));
}

void TestVirtualClock::timeStandsStillWhileSomethingRuns()
{
    const VirtualClock clock;
    QAtomicInt go = 0;
    Other other;
    other.call(
        [&go] {
            while (go.loadAcquire() == 0) { }
        },
        Qt::QueuedConnection);
    std::unique_ptr<QThread> sleeper(QThread::create([] { QThread::sleep(1); }));
    sleeper->start();
    for (int i = 0; i < 1000; ++i)
        QThread::yieldCurrentThread();
    QCOMPARE(clock.microseconds(), 0);
    QVERIFY(sleeper->isRunning());
    go.storeRelease(1);
    sleeper->wait();
    QCOMPARE(clock.milliseconds(), 1000);
}

void TestVirtualClock::dayTakesAMoment()
{
    QElapsedTimer machine;
    machine.start();
    qint64 ahead = 0;
    {
        const VirtualClock clock;
        Other other;
        int fired = 0;
        QTimer timer;
        connect(&timer, &QTimer::timeout, this, [&fired] { ++fired; });
        timer.start(3600000);
        other.call([] { QThread::sleep(86400); });
        QCoreApplication::processEvents();
        ahead = clock.milliseconds();
        QVERIFY(fired > 0);
    }
    QCOMPARE(ahead, qint64(86400000));
    QVERIFY(machine.elapsed() - ahead < 60000);
}

void TestVirtualClock::timersFireInOrder()
{
    const VirtualClock clock;
    QStringList fired;
    for (const int milliseconds : {30, 10, 20, 5000}) {
        QTimer::singleShot(milliseconds, Qt::PreciseTimer, this,
                           [&clock, &fired] { fired << QString::number(clock.microseconds()); });
    }
    QTRY_COMPARE_WITH_TIMEOUT(fired, (QStringList{"10000", "20000", "30000", "5000000"}), 6000);
}

void TestVirtualClock::waitForAnotherThreadTakesWhatThatTakes_data()
{
    QTest::addColumn<QString>("how");
    QTest::newRow("blocking call") << "call";
    QTest::newRow("its end") << "end";
    QTest::newRow("its end, joined") << "join";
    QTest::newRow("mutex that it holds") << "mutex";
    QTest::newRow("event loop") << "loop";
}

void TestVirtualClock::waitForAnotherThreadTakesWhatThatTakes()
{
    QFETCH(QString, how);
    const VirtualClock clock;
    Other other;
    QMutex mutex;
    if (how == "call") {
        other.call([] { QThread::msleep(1500); });
    } else if (how == "end") {
        other.call(
            [&other] {
                QThread::msleep(1500);
                other.thread.quit();
            },
            Qt::QueuedConnection);
        other.thread.wait();
    } else if (how == "join") {
        std::thread thread([] { QThread::msleep(1500); });
        QCOMPARE(VirtualClock::threads(), 3);
        thread.join();
        QCOMPARE(VirtualClock::threads(), 2);
    } else if (how == "mutex") {
        QSemaphore held;
        other.call(
            [&mutex, &held] {
                const QMutexLocker lock(&mutex);
                held.release();
                QThread::msleep(1500);
            },
            Qt::QueuedConnection);
        held.acquire();
        mutex.lock();
        mutex.unlock();
    } else {
        QEventLoop loop;
        other.call(
            [&loop] {
                QThread::msleep(1500);
                QMetaObject::invokeMethod(&loop, "quit", Qt::QueuedConnection);
            },
            Qt::QueuedConnection);
        loop.exec();
    }
    QCOMPARE(clock.microseconds(), 1500000);
}

// It may come at any moment of the joining; where it was missed, the joining had no end.
void TestVirtualClock::endOfAThreadIsNotMissed()
{
    const VirtualClock clock;
    for (int i = 0; i < 50000; ++i)
        std::thread([] {}).join();
    QCOMPARE(VirtualClock::threads(), 1);
}

void TestVirtualClock::earliestDeadlineComesFirst()
{
    const VirtualClock clock;
    QMutex mutex;
    QStringList order;
    std::vector<std::unique_ptr<QThread>> threads;
    for (const int milliseconds : {50, 20, 40, 10, 30}) {
        threads.emplace_back(QThread::create([&, milliseconds] {
            QThread::msleep(static_cast<unsigned long>(milliseconds));
            const QMutexLocker lock(&mutex);
            order << QStringLiteral("%1 at %2").arg(milliseconds).arg(clock.milliseconds());
        }));
        threads.back()->start();
    }
    for (const auto &thread : threads)
        thread->wait();
    QCOMPARE(order, (QStringList{"10 at 10", "20 at 20", "30 at 30", "40 at 40", "50 at 50"}));
}

// One at a time: the second runs when the first waits again.
void TestVirtualClock::firstComeFirstServedAtTheSameTime()
{
    const VirtualClock clock;
    QStringList order; // no lock: never two at once
    std::unique_ptr<QThread> other(QThread::create([&order] {
        for (int i = 0; i < 100; ++i) {
            QThread::msleep(1);
            order << "other";
        }
    }));
    other->start();
    QThread::usleep(500);
    QThread::usleep(500); // asked for after the other's
    for (int i = 0; i < 99; ++i) {
        order << "this";
        QThread::msleep(1);
    }
    other->wait();
    QStringList wanted;
    for (int i = 0; i < 99; ++i)
        wanted << "other"
               << "this";
    QCOMPARE(order, wanted << "other");
}

void TestVirtualClock::readyDescriptorCostsNoTime()
{
    const VirtualClock clock;
    const int descriptor = ::eventfd(0, EFD_CLOEXEC);
    Other other;
    other.call(
        [descriptor] {
            QThread::msleep(20);
            ::eventfd_write(descriptor, 1);
            QThread::sleep(1000);
        },
        Qt::QueuedConnection);
    pollfd waited = {descriptor, POLLIN, 0};
    QCOMPARE(::poll(&waited, 1, 100000), 1);
    QCOMPARE(int(waited.revents), POLLIN);
    QCOMPARE(clock.microseconds(), 20000);
    ::close(descriptor);
}

// The kernel moves them in a thread of its own, which the clock must not overtake.
void TestVirtualClock::bytesOnTheirWayThroughATerminalCostNoTime()
{
    const VirtualClock clock;
    const Terminal terminal;
    std::unique_ptr<QThread> echo(QThread::create([&terminal] {
        char byte = 0;
        pollfd waited = {terminal.master, POLLIN, 0};
        while (::poll(&waited, 1, 1) == 1 && ::read(terminal.master, &byte, 1) == 1
               && byte != '\xFF')
            ::write(terminal.master, &byte, 1);
    }));
    echo->start();
    int lost = 0;
    for (int i = 0; i < 2000; ++i) {
        char byte = 'a';
        pollfd waited = {terminal.slave, POLLIN, 0};
        if (::write(terminal.slave, &byte, 1) != 1 || ::poll(&waited, 1, 1) != 1
            || ::read(terminal.slave, &byte, 1) != 1)
            ++lost;
    }
    ::write(terminal.slave, "\xFF", 1);
    echo->wait();
    QCOMPARE(lost, 0);
    QCOMPARE(clock.microseconds(), 0);
}

// The same thread of the kernel makes room for a writer, now and then without waking it. Each
// round a reader rests while the terminal is filled.
void TestVirtualClock::roomThatTheKernelDoesNotTellOfIsFound()
{
    constexpr int kRounds = 300;
    constexpr int kBytes = 30000;
    const VirtualClock clock;
    const Terminal terminal;
    std::unique_ptr<QThread> reader(QThread::create([&terminal] {
        char buffer[65536];
        for (int left = kRounds * kBytes; left > 0;) {
            pollfd waited = {terminal.master, POLLIN, 0};
            ::poll(&waited, 1, -1);
            QThread::msleep(10);
            left -= static_cast<int>(::read(terminal.master, buffer, sizeof buffer));
        }
    }));
    reader->start();
    ::fcntl(terminal.slave, F_SETFL, O_NONBLOCK);
    const QByteArray bytes(kBytes, 'a');
    for (int round = 0; round < kRounds; ++round) {
        for (int sent = 0; sent < kBytes;) {
            pollfd waited = {terminal.slave, POLLIN | POLLOUT, 0};
            ::poll(&waited, 1, 200);
            sent +=
                qMax(0, int(::write(terminal.slave, bytes.data() + sent, size_t(kBytes - sent))));
        }
    }
    QVERIFY(reader->wait(10000));
}

void TestVirtualClock::semaphoreOfSeveralTokens()
{
    const VirtualClock clock;
    QSemaphore tokens;
    std::vector<std::unique_ptr<QThread>> threads;
    QAtomicInt served = 0;
    for (const int wanted : {1, 3, 1, 2}) {
        threads.emplace_back(QThread::create([&, wanted] {
            tokens.acquire(wanted);
            ++served;
        }));
        threads.back()->start();
    }
    QThread::msleep(10);
    QCOMPARE(served.loadAcquire(), 0);
    tokens.release(2);
    QThread::msleep(10);
    QVERIFY(served.loadAcquire() >= 1);
    tokens.release(5);
    for (const auto &thread : threads)
        QVERIFY(thread->wait(1000));
    QCOMPARE(tokens.available(), 0);
}

void TestVirtualClock::conditionsWakeOneOrAll()
{
    const VirtualClock clock;
    QMutex mutex;
    QWaitCondition called;
    int woken = 0;
    std::vector<std::unique_ptr<QThread>> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back(QThread::create([&] {
            const QMutexLocker lock(&mutex);
            called.wait(&mutex);
            ++woken;
        }));
        threads.back()->start();
    }
    QThread::msleep(1);
    called.wakeOne();
    QThread::msleep(1);
    QCOMPARE(woken, 1);
    called.wakeAll();
    for (const auto &thread : threads)
        QVERIFY(thread->wait(1000));
    QCOMPARE(woken, 4);
}

void TestVirtualClock::timeOfDayCanBeMoved()
{
    const VirtualClock clock;
    QElapsedTimer elapsed;
    elapsed.start();
    VirtualClock::setTimeOfDay(QTime(23, 59, 59, 900));
    QCOMPARE(QTime::currentTime(), QTime(23, 59, 59, 900));
    const QDate date = QDate::currentDate();
    QThread::msleep(200);
    QCOMPARE(QTime::currentTime(), QTime(0, 0, 0, 100));
    QCOMPARE(QDate::currentDate(), date.addDays(1));
    QCOMPARE(elapsed.elapsed(), qint64(200));
}

void TestVirtualClock::machinesClockGoesOnAfterwards()
{
    const QDateTime before = QDateTime::currentDateTimeUtc();
    QElapsedTimer elapsed;
    elapsed.start();
    {
        const VirtualClock clock;
        QThread::sleep(1000);
    }
    QVERIFY(elapsed.elapsed() >= 1000000);
    QVERIFY(before.secsTo(QDateTime::currentDateTimeUtc()) < 500); // the machine's own again
    // and waits to a point of it are as long as they say
    QMutex mutex;
    QWaitCondition never;
    elapsed.start();
    const QMutexLocker lock(&mutex);
    QVERIFY(!never.wait(&mutex, 20));
    QVERIFY2(elapsed.elapsed() >= 19 && elapsed.elapsed() < 10000,
             qPrintable(QString::number(elapsed.elapsed())));
}

// As long as nothing but the other process is waited for, no time passes.
void TestVirtualClock::anotherProcessIsOutside()
{
    const VirtualClock clock;
    QProcess process;
    process.start("sh", {"-c", "sleep 0.05; echo done"});
    QVERIFY(process.waitForFinished(-1));
    QCOMPARE(process.readAllStandardOutput(), QByteArray("done\n"));
    QCOMPARE(clock.microseconds(), 0);
}

TESTMODE_TEST_MAIN(TestVirtualClock)
#include "test_virtualclock.moc"
