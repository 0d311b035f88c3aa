#include "link.h"

#include "gnss_download/serial_thread.h"
#include "tests/support/clock/virtualclock.h"
#include "tests/support/connectionlog.h"
#include "tests/support/recorder.h"
#include "tests/support/unittest.h"

#include <QEventLoop>
#include <QMetaMethod>
#include <QPointer>
#include <QSemaphore>
#include <QSignalSpy>

#include <functional>
#include <utility>
#include <vector>

using tests::Link;
using tests::VirtualClock;

// The worker: its interface, its connections, how it comes and goes.
class TestUgradeThread : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void signalsStandInOrder();
    void signalsAreFoundByTheirIndex_data();
    void signalsAreFoundByTheirIndex();

    void constructionIsTraced();
    void transportLivesInAThreadOfItsOwn();
    void transportAnswersTwelveSignals_data();
    void transportAnswersTwelveSignals();
    void connectionsAreMadeInOrder();
    void eachSignalHasItsSlot();
    void callsReturnWhenTheTransportHasDoneThem();
    void everyCallWaitsForTheTransport();
    void signalsWithoutReceiverReturnAtOnce();
    void runTracesItsThread();
    void resultIsReportedWhenThePortIsClosed();

    void packageIsTakenByTheStart();
    void packageIsTakenByAStartOfAnyThreadToo();
    void secondStartLeavesThePackageAlone();

    void failedOpenIsReportedByTheTransport();
    void neverStartedWorkerIsDeleted();
    void workerIsDeletedWhileItsRunReturns();
    void workerDeletesItselfWhenItsPageIsGone();
    void openPortAndTimerEndWithTheWorker();
};

namespace {

constexpr char kNoPort[] = "/dev/no-such-port";

file otherPackage()
{
    return {"other boot", "other partition", "other app", "other config"};
}

QThread *transportThread(const ugrade_thread &worker)
{
    return worker.transport()->thread();
}

} // namespace

void TestUgradeThread::signalsStandInOrder()
{
    QCOMPARE(
        tests::signalsOf(ugrade_thread::staticMetaObject),
        QStringList(
            {"signal_TransferData(QByteArray)", "hdl_uart_init(uint8_t*,uint8_t,uint8_t*)",
             "hdl_uart_deinit(uint8_t*,uint8_t)", "hdl_uart_get_byte(uint8_t*,uint32_t)",
             "hdl_uart_get_byte_status(uint8_t*,uint32_t)",
             "hdl_uart_get_byte_buffer(uint8_t*,uint32_t,uint32_t)", "hdl_uart_put_byte(uint8_t)",
             "hdl_uart_put_byte_buffer(uint8_t*,uint32_t)", "hdl_uart_put_byte_complete(uint8_t)",
             "hdl_uart_get_data16(uint16_t*,uint32_t)", "hdl_uart_put_data16(uint16_t)",
             "hdl_uart_get_data32(uint32_t*,uint32_t)", "hdl_uart_put_data32(uint32_t)",
             "hdl_uart_set_baudrate(hal_uart_baudrate_t)", "hdl_uart_get_bytes(uint8_t*,uint32_t)",
             "signals_reset_success(QString)", "signals_success(QString,bool)"}));
    QVERIFY(tests::slotsOf(ugrade_thread::staticMetaObject).isEmpty());
}

void TestUgradeThread::signalsAreFoundByTheirIndex_data()
{
    QTest::addColumn<int>("index");
    QTest::newRow("hdl_uart_init") << 1;
    QTest::newRow("hdl_uart_deinit") << 2;
    QTest::newRow("hdl_uart_get_byte") << 3;
    QTest::newRow("hdl_uart_get_byte_status") << 4;
    QTest::newRow("hdl_uart_get_byte_buffer") << 5;
    QTest::newRow("hdl_uart_put_byte") << 6;
    QTest::newRow("hdl_uart_put_byte_buffer") << 7;
    QTest::newRow("hdl_uart_put_byte_complete") << 8;
    QTest::newRow("hdl_uart_get_data16") << 9;
    QTest::newRow("hdl_uart_put_data16") << 10;
    QTest::newRow("hdl_uart_get_data32") << 11;
    QTest::newRow("hdl_uart_put_data32") << 12;
    QTest::newRow("hdl_uart_set_baudrate") << 13;
    QTest::newRow("hdl_uart_get_bytes") << 14;
}

void TestUgradeThread::signalsAreFoundByTheirIndex()
{
    QFETCH(int, index);
    const QMetaObject &type = ugrade_thread::staticMetaObject;
    QCOMPARE(QString(type.method(type.methodOffset() + index).name()),
             QString(QTest::currentDataTag()));
}

void TestUgradeThread::constructionIsTraced()
{
    ugrade_thread worker("/dev/ttyS4");
    const QString thread =
        QString("0x%1").arg(reinterpret_cast<quintptr>(QThread::currentThreadId()), 0, 16);
    QCOMPARE(
        tests::comparable(trace().lines()),
        QStringList(
            {QString(
                 "[DBG] ugrade_thread::ugrade_thread(QString) -- QThread(0x%1) \"/dev/ttyS4\" %2")
                 .arg(reinterpret_cast<quintptr>(transportThread(worker)), 0, 16)
                 .arg(thread)}));
}

void TestUgradeThread::transportLivesInAThreadOfItsOwn()
{
    ugrade_thread worker("/dev/ttyS4");
    QThread *thread = transportThread(worker);
    QVERIFY(thread != QThread::currentThread());
    QVERIFY(thread != &worker);
    QVERIFY(thread->isRunning());
    QCOMPARE(thread->priority(), QThread::TimeCriticalPriority);
    QVERIFY(thread->parent() == nullptr);
    QVERIFY(worker.transport()->parent() == nullptr);

    // Its timer came along: it can be started there.
    QMetaObject::invokeMethod(worker.transport(), "DefaultTimeUpdate",
                              Qt::BlockingQueuedConnection);
}

void TestUgradeThread::transportAnswersTwelveSignals_data()
{
    QTest::addColumn<QString>("signature");
    QTest::addColumn<int>("receivers");
    const QStringList answered = {"hdl_uart_init(uint8_t*,uint8_t,uint8_t*)",
                                  "hdl_uart_deinit(uint8_t*,uint8_t)",
                                  "hdl_uart_get_byte(uint8_t*,uint32_t)",
                                  "hdl_uart_get_data16(uint16_t*,uint32_t)",
                                  "hdl_uart_get_data32(uint32_t*,uint32_t)",
                                  "hdl_uart_get_byte_buffer(uint8_t*,uint32_t,uint32_t)",
                                  "hdl_uart_put_byte(uint8_t)",
                                  "hdl_uart_put_data16(uint16_t)",
                                  "hdl_uart_put_data32(uint32_t)",
                                  "hdl_uart_put_byte_buffer(uint8_t*,uint32_t)",
                                  "hdl_uart_set_baudrate(hal_uart_baudrate_t)",
                                  "hdl_uart_get_bytes(uint8_t*,uint32_t)"};
    for (const QString &signature : answered)
        QTest::newRow(qPrintable(signature)) << signature << 1;
    for (const QString &signature : {QString("hdl_uart_get_byte_status(uint8_t*,uint32_t)"),
                                     QString("hdl_uart_put_byte_complete(uint8_t)")})
        QTest::newRow(qPrintable(signature)) << signature << 0;
}

namespace {

// Shows how many receivers a signal has.
class OpenWorker : public ugrade_thread
{
public:
    using ugrade_thread::ugrade_thread;
    int receiversOf(const QString &signature) const
    {
        return receivers(qPrintable("2" + signature));
    }
};

} // namespace

void TestUgradeThread::transportAnswersTwelveSignals()
{
    QFETCH(QString, signature);
    QFETCH(int, receivers);
    OpenWorker worker("/dev/ttyS4");
    QCOMPARE(worker.receiversOf(signature), receivers);
}

void TestUgradeThread::connectionsAreMadeInOrder()
{
    const tests::ConnectionLog connections;
    const ugrade_thread worker("/dev/ttyS4");
    QCOMPARE(connections.signalsOf(&worker),
             QStringList(
                 {"hdl_uart_init(uint8_t*,uint8_t,uint8_t*)", "hdl_uart_deinit(uint8_t*,uint8_t)",
                  "hdl_uart_get_byte(uint8_t*,uint32_t)", "hdl_uart_get_data16(uint16_t*,uint32_t)",
                  "hdl_uart_get_data32(uint32_t*,uint32_t)",
                  "hdl_uart_get_byte_buffer(uint8_t*,uint32_t,uint32_t)",
                  "hdl_uart_put_byte(uint8_t)", "hdl_uart_put_data16(uint16_t)",
                  "hdl_uart_put_data32(uint32_t)", "hdl_uart_put_byte_buffer(uint8_t*,uint32_t)",
                  "hdl_uart_set_baudrate(hal_uart_baudrate_t)",
                  "hdl_uart_get_bytes(uint8_t*,uint32_t)"}));
}

void TestUgradeThread::eachSignalHasItsSlot()
{
    ugrade_thread worker("/dev/ttyS4");
    // Only a connection that is there can be cut.
    const auto cut = [&worker](auto signal, auto slot) {
        return QObject::disconnect(&worker, signal, worker.transport(), slot);
    };
    QVERIFY(cut(&ugrade_thread::hdl_uart_init, &serial_thread::serial_init));
    QVERIFY(cut(&ugrade_thread::hdl_uart_deinit, &serial_thread::serial_deinit));
    QVERIFY(cut(&ugrade_thread::hdl_uart_get_byte, &serial_thread::serial_getbyte));
    QVERIFY(cut(&ugrade_thread::hdl_uart_get_data16, &serial_thread::serial_get_data16));
    QVERIFY(cut(&ugrade_thread::hdl_uart_get_data32, &serial_thread::serial_get_data32));
    QVERIFY(cut(&ugrade_thread::hdl_uart_get_byte_buffer, &serial_thread::serial_get_byte_buff));
    QVERIFY(cut(&ugrade_thread::hdl_uart_put_byte, &serial_thread::serial_putbyte));
    QVERIFY(cut(&ugrade_thread::hdl_uart_put_data16, &serial_thread::serial_put_data16));
    QVERIFY(cut(&ugrade_thread::hdl_uart_put_data32, &serial_thread::serial_put_data32));
    QVERIFY(cut(&ugrade_thread::hdl_uart_put_byte_buffer, &serial_thread::serial_put_byte_buff));
    QVERIFY(cut(&ugrade_thread::hdl_uart_set_baudrate, &serial_thread::serial_set_baudrate));
    QVERIFY(cut(&ugrade_thread::hdl_uart_get_bytes, &serial_thread::serial_get_bytes));
    QVERIFY(!cut(&ugrade_thread::hdl_uart_init, &serial_thread::serial_init));
}

void TestUgradeThread::callsReturnWhenTheTransportHasDoneThem()
{
    const VirtualClock clock;
    ugrade_thread worker(kNoPort);
    QSignalSpy messages(worker.transport(), &serial_thread::signal_Messagebox);
    uint8_t status = 0;
    emit worker.hdl_uart_init(nullptr, 0, &status);
    QCOMPARE(messages.size(), 1);

    // Nothing comes from a closed port: a read lasts as long as its time-out.
    uint8_t byte = 0x42;
    emit worker.hdl_uart_get_byte(&byte, 200);
    QCOMPARE(clock.milliseconds(), 200);
    QCOMPARE(byte, uint8_t(0x42));
}

void TestUgradeThread::everyCallWaitsForTheTransport()
{
    const VirtualClock clock;
    ugrade_thread worker(kNoPort);
    uint8_t byte = 0;
    uint16_t half = 0;
    uint32_t word = 0;
    const std::vector<std::pair<const char *, std::function<void()>>> calls = {
        {"init", [&] { emit worker.hdl_uart_init(nullptr, 0, &byte); }},
        {"deinit", [&] { emit worker.hdl_uart_deinit(nullptr, 0); }},
        {"get_byte", [&] { emit worker.hdl_uart_get_byte(&byte, 1); }},
        {"get_byte_buffer", [&] { emit worker.hdl_uart_get_byte_buffer(&byte, 1, 1); }},
        {"put_byte", [&] { emit worker.hdl_uart_put_byte(0x42); }},
        {"put_byte_buffer", [&] { emit worker.hdl_uart_put_byte_buffer(&byte, 1); }},
        {"get_data16", [&] { emit worker.hdl_uart_get_data16(&half, 1); }},
        {"put_data16", [&] { emit worker.hdl_uart_put_data16(0x4243); }},
        {"get_data32", [&] { emit worker.hdl_uart_get_data32(&word, 1); }},
        {"put_data32", [&] { emit worker.hdl_uart_put_data32(0x42434445); }},
        {"set_baudrate",
         [&] { emit worker.hdl_uart_set_baudrate(static_cast<hal_uart_baudrate_t>(115200)); }},
        {"get_bytes", [&] { emit worker.hdl_uart_get_bytes(&byte, 0); }},
    };
    for (const auto &[name, call] : calls) {
        // The transport is busy for a while first.
        bool rested = false;
        QMetaObject::invokeMethod(
            worker.transport(),
            [&rested] {
                QThread::msleep(50);
                rested = true;
            },
            Qt::QueuedConnection);
        call();
        QVERIFY2(rested, name);
    }
}

void TestUgradeThread::signalsWithoutReceiverReturnAtOnce()
{
    ugrade_thread worker("/dev/ttyS4");
    uint8_t byte = 0x42;
    emit worker.hdl_uart_get_byte_status(&byte, 3000);
    emit worker.hdl_uart_put_byte_complete(0x55);
    QCOMPARE(byte, uint8_t(0x42));
}

void TestUgradeThread::runTracesItsThread()
{
    Link link;
    link.chip.opens = false;
    Qt::HANDLE thread = nullptr;
    connect(
        &link.worker, &ugrade_thread::hdl_uart_init, this,
        [&thread] { thread = QThread::currentThreadId(); }, Qt::DirectConnection);
    trace().clear();
    link.worker.start();
    QVERIFY(link.worker.wait(10000));
    QVERIFY(thread != QThread::currentThreadId());
    QCOMPARE(tests::comparable(trace().lines().value(0)),
             QString("[DBG] virtual void ugrade_thread::run() -- ugrade_thread: 0x%1")
                 .arg(reinterpret_cast<quintptr>(thread), 0, 16));
}

void TestUgradeThread::resultIsReportedWhenThePortIsClosed()
{
    Link link;
    link.chip.opens = false;
    QStringList before;
    connect(
        &link.worker, &ugrade_thread::signals_success, this,
        [&] { before = link.chip.lineEvents(); }, Qt::DirectConnection);
    link.worker.start();
    QVERIFY(link.worker.wait(10000));
    QCOMPARE(before, QStringList({"open", "close"}));
    QCOMPARE(link.chip.sent(), tests::bytesOf("A5 D9 00"));
}

namespace {

// Holds a worker at the threshold of its run().
class Gate
{
public:
    explicit Gate(ugrade_thread *worker)
    {
        QObject::connect(
            worker, &QThread::started, worker, [this] { opened.acquire(); }, Qt::DirectConnection);
    }
    void open() { opened.release(); }

private:
    QSemaphore opened;
};

} // namespace

// Not when the worker is made, and not when its thread has come to its run().
void TestUgradeThread::packageIsTakenByTheStart()
{
    downloadfile = otherPackage();
    Link link(tests::goodDialogue());
    Gate gate(&link.worker);
    QSignalSpy results(&link.worker, &ugrade_thread::signals_success);
    tests::fillPackage();
    link.worker.start(QThread::TimeCriticalPriority);
    downloadfile = otherPackage();
    gate.open();
    QVERIFY(link.worker.wait(30000));
    QCOMPARE(link.chip.verdict(), QString());
    QCOMPARE(results.first(), QVariantList({"/dev/ttyS4", true}));
}

// By the slot's name, or through a pointer to QThread.
void TestUgradeThread::packageIsTakenByAStartOfAnyThreadToo()
{
    tests::fillPackage();
    Link link(tests::goodDialogue());
    QVERIFY(QMetaObject::invokeMethod(&link.worker, "start", Qt::DirectConnection));
    QTRY_VERIFY(!link.chip.sent().isEmpty());
    downloadfile = otherPackage();
    QVERIFY(link.worker.wait(30000));
    QCOMPARE(link.chip.verdict(), QString());
}

void TestUgradeThread::secondStartLeavesThePackageAlone()
{
    tests::fillPackage();
    Link link(tests::goodDialogue());
    Gate gate(&link.worker);
    link.worker.start();
    downloadfile = otherPackage();
    link.worker.start(); // it runs already
    gate.open();
    QVERIFY(link.worker.wait(30000));
    QCOMPARE(link.chip.verdict(), QString());
}

void TestUgradeThread::failedOpenIsReportedByTheTransport()
{
    // Over the transport itself: the port does not exist.
    const VirtualClock clock;
    ugrade_thread worker(kNoPort);
    QSignalSpy messages(worker.transport(), &serial_thread::signal_Messagebox);
    QSignalSpy results(&worker, &ugrade_thread::signals_success);
    worker.start();
    QVERIFY(worker.wait());
    QCOMPARE(clock.milliseconds(), 2 * 3000); // the leave-taking
    QCOMPARE(messages.size(), 1);
    QCOMPARE(messages.first(), QVariantList({"错误", "打开串口失败"}));
    QCOMPARE(results.size(), 1);
    QCOMPARE(results.first(), QVariantList({kNoPort, false}));
    QVERIFY(trace().lines().contains("hdl_connect fail"));
}

void TestUgradeThread::neverStartedWorkerIsDeleted()
{
    for (int i = 0; i < 100; ++i)
        ugrade_thread worker("/dev/ttyS4");
}

void TestUgradeThread::workerIsDeletedWhileItsRunReturns()
{
    // As the page does it: in the slot of the result, which arrives while run() returns.
    for (int i = 0; i < 300; ++i) {
        auto *worker = new ugrade_thread("/dev/ttyS4");
        tests::ScriptedChip chip(worker);
        chip.opens = false;
        QPointer<QThread> thread = transportThread(*worker);
        QEventLoop untilReported;
        connect(worker, &ugrade_thread::signals_success, &untilReported, [&] {
            delete worker;
            untilReported.quit();
        });
        worker->start(QThread::TimeCriticalPriority);
        untilReported.exec();
        QVERIFY(thread.isNull());
    }
}

void TestUgradeThread::workerDeletesItselfWhenItsPageIsGone()
{
    QPointer<ugrade_thread> worker = new ugrade_thread("/dev/ttyS4");
    QPointer<serial_thread> transport = worker->transport();
    tests::ScriptedChip chip(worker);
    chip.opens = false;
    connect(worker, &QThread::finished, worker, &QObject::deleteLater);
    worker->start();
    QTRY_VERIFY(worker.isNull());
    QVERIFY(transport.isNull());
}

void TestUgradeThread::openPortAndTimerEndWithTheWorker()
{
    // A worker that goes with its timer running: neither warns nor aborts.
    for (int i = 0; i < 20; ++i) {
        ugrade_thread worker("/dev/ttyS4");
        QMetaObject::invokeMethod(worker.transport(), "DefaultTimeUpdate",
                                  Qt::BlockingQueuedConnection);
    }
}

TESTMODE_TEST_MAIN(TestUgradeThread)
#include "test_ugrade_thread.moc"
