#include "adapter.h"

#include "tests/support/clock/virtualclock.h"
#include "tests/support/unittest.h"

using tests::Adapter;
using tests::VirtualClock;

// The process ends while the transport reads or writes: what moves goes on, what does not is left
// when the worker's patience is over.
class TestTransportEnds : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void readIsLeft_data();
    void readIsLeft();
    void closedPortIsLeftAtOnce();
    void answersAreReadMeanwhile();
    void abandonedLineStaysSo();
    void stoppedWriteIsLeft_data();
    void stoppedWriteIsLeft();
    void stoppedWriteGoesOnInTime();
    void slowWriteIsFinished();
    void portIsClosedWithItsThread();
};

void TestTransportEnds::readIsLeft_data()
{
    QTest::addColumn<int>("patience");
    QTest::addColumn<int>("asked");   // when the end is asked for
    QTest::addColumn<int>("arrived"); // when a byte of two arrives; -1: none
    QTest::addColumn<int>("left");
    QTest::newRow("without patience") << 0 << 500 << -1 << 500;
    QTest::newRow("asked before") << 0 << 0 << -1 << 0;
    QTest::newRow("quiet since the opening") << 1000 << 300 << -1 << 1000;
    QTest::newRow("quiet for long already") << 500 << 1000 << -1 << 1000;
    QTest::newRow("quiet since a byte") << 1000 << 0 << 700 << 1700;
}

void TestTransportEnds::readIsLeft()
{
    QFETCH(int, patience);
    QFETCH(int, asked);
    QFETCH(int, arrived);
    QFETCH(int, left);
    const VirtualClock clock;
    Adapter adapter;
    QVERIFY(adapter.open());
    const qint64 before = clock.milliseconds();
    adapter.after(asked, [&adapter] { adapter.requestEnd(); });
    if (arrived >= 0)
        adapter.after(arrived, [&adapter] { adapter.line->sendOnly("12"); });
    uint16_t word = 0x4243;
    adapter.run([&](serial_thread &port) {
        port.setPatienceAtEnd(patience);
        port.serial_get_data16(&word, 30000);
    });
    QVERIFY2(qAbs(clock.milliseconds() - before - left) <= 2,
             qPrintable(QString::number(clock.milliseconds() - before)));
    QCOMPARE(word, uint16_t(0x4342)); // turned round as after any time-out
}

void TestTransportEnds::closedPortIsLeftAtOnce()
{
    const VirtualClock clock;
    Adapter adapter;
    QVERIFY(adapter.open());
    adapter.pull();
    adapter.requestEnd();
    const qint64 before = clock.milliseconds();
    uint8_t byte = 0;
    adapter.run([&byte](serial_thread &port) {
        port.setPatienceAtEnd(30000);
        for (int i = 0; i < 10; ++i)
            port.serial_getbyte(&byte, 30000);
    });
    // Some polls each, the first of them perhaps of a port that is not closed yet.
    QVERIFY2(clock.milliseconds() - before <= 10 * 20,
             qPrintable(QString::number(clock.milliseconds() - before)));
}

void TestTransportEnds::answersAreReadMeanwhile()
{
    const VirtualClock clock;
    Adapter adapter;
    QVERIFY(adapter.open());
    adapter.requestEnd();
    for (int i = 1; i <= 4; ++i)
        adapter.after(i * 400, [&adapter] { adapter.line->sendOnly("5A"); });
    adapter.run([](serial_thread &port) {
        port.setPatienceAtEnd(1500);
        for (int i = 0; i < 4; ++i) {
            uint8_t byte = 0;
            port.serial_getbyte(&byte, 3000);
            QCOMPARE(byte, uint8_t(0x5A));
            port.serial_putbyte(0x69);
        }
    });
    QCOMPARE(adapter.line->receive(4), QByteArray("iiii"));
}

// An answer that comes late must not be taken for that to a later question.
void TestTransportEnds::abandonedLineStaysSo()
{
    const VirtualClock clock;
    Adapter adapter;
    QVERIFY(adapter.open());
    adapter.requestEnd();
    uint8_t byte = 0x42;
    adapter.run([&](serial_thread &port) {
        port.serial_getbyte(&byte, 3000);
        port.setPatienceAtEnd(30000);
        adapter.line->send("5A");
        port.serial_getbyte(&byte, 3000);
        port.serial_putbyte(0x69);
    });
    QCOMPARE(byte, uint8_t(0x42));
    QVERIFY(adapter.line->quiet());

    QVERIFY(adapter.open());
    adapter.run([&](serial_thread &port) { port.serial_putbyte(0x69); });
    QCOMPARE(adapter.line->receive(1), QByteArray("i"));
}

void TestTransportEnds::stoppedWriteIsLeft_data()
{
    QTest::addColumn<int>("patience");
    QTest::addColumn<int>("left");
    QTest::newRow("without patience: a moment without progress") << 0 << 200;
    QTest::newRow("with patience") << 1400 << 1400;
}

void TestTransportEnds::stoppedWriteIsLeft()
{
    QFETCH(int, patience);
    QFETCH(int, left);
    const VirtualClock clock;
    Adapter adapter;
    QVERIFY(adapter.open());
    adapter.line->sendFlowControl(0x13);
    const qint64 before = clock.milliseconds();
    adapter.after(100, [&adapter] { adapter.requestEnd(); });
    adapter.run([&](serial_thread &port) {
        port.setPatienceAtEnd(patience);
        port.serial_putbyte(0x42);
    });
    QCOMPARE(clock.milliseconds() - before, qint64(left));
    // What was not sent is not sent later either.
    adapter.line->sendFlowControl(0x11);
    adapter.run([](serial_thread &port) { port.serial_putbyte(0x43); });
    QVERIFY(adapter.line->quiet());
}

void TestTransportEnds::stoppedWriteGoesOnInTime()
{
    const VirtualClock clock;
    Adapter adapter;
    QVERIFY(adapter.open());
    adapter.line->sendFlowControl(0x13);
    adapter.requestEnd();
    adapter.after(1000, [&adapter] { adapter.line->sendFlowControl(0x11); });
    adapter.run([](serial_thread &port) {
        port.setPatienceAtEnd(10000);
        port.serial_putbyte(0x42);
    });
    QCOMPARE(adapter.line->receive(1), QByteArray("B"));
}

// A line that takes bytes slowly is not one that stands still.
void TestTransportEnds::slowWriteIsFinished()
{
    Adapter adapter;
    QVERIFY(adapter.open());
    adapter.after(100, [&adapter] { adapter.requestEnd(); });
    QByteArray bytes(60000, '\x5C'); // more than the line holds
    QByteArray arrived;
    QTimer reader;
    connect(&reader, &QTimer::timeout, this,
            [&] { arrived += adapter.line->receive(qMin(2000, bytes.size() - arrived.size())); });
    reader.start(40);
    adapter.run([&bytes](serial_thread &port) {
        port.serial_put_byte_buff(reinterpret_cast<uint8_t *>(bytes.data()), 60000);
    });
    QTRY_COMPARE(arrived.size(), bytes.size());
}

void TestTransportEnds::portIsClosedWithItsThread()
{
    const tests::Line line;
    QThread thread;
    serial_thread transport(line.path());
    transport.moveTo(&thread);
    thread.start();
    uint8_t status = 0;
    QMetaObject::invokeMethod(
        &transport, [&] { transport.serial_init(nullptr, 0, &status); },
        Qt::BlockingQueuedConnection);
    QCOMPARE(status, uint8_t(1));
    thread.quit();
    QVERIFY(thread.wait(5000));

    // A port that is not closed keeps its lock.
    serial_thread another(line.path());
    status = 0;
    another.serial_init(nullptr, 0, &status);
    QCOMPARE(status, uint8_t(1));
}

TESTMODE_TEST_MAIN(TestTransportEnds)
#include "test_transport_ends.moc"
