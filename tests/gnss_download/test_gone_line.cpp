#include "adapter.h"

#include "tests/support/unittest.h"

#include <ctime>

using tests::Adapter;

namespace {

// Wall clock and processor time of the process.
struct Effort
{
    Effort() { clock.start(); }
    qint64 milliseconds() const { return clock.elapsed(); }
    double share() const { return (processorTime() - begun) * 1000 / double(clock.elapsed()); }

    static double processorTime()
    {
        timespec now = {};
        ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
        return double(now.tv_sec) + double(now.tv_nsec) / 1e9;
    }

    QElapsedTimer clock;
    double begun = processorTime();
};

} // namespace

// A line that goes: the adapter is pulled, the other end closed.
class TestGoneLine : public tests::UnitTest
{
    Q_OBJECT

private slots:
    void readLastsAsFromASilentReceiver_data();
    void readLastsAsFromASilentReceiver();
    void bytesThatCameBeforeAreRead();
    void idleTransportRests();
    void writeReturnsAtOnce();
    void stoppedWriteEnds();
    void otherOperationsDoNothing();
    void healedLineIsOpenedAgain_data();
    void healedLineIsOpenedAgain();
};

void TestGoneLine::readLastsAsFromASilentReceiver_data()
{
    QTest::addColumn<int>("pulledAfter");
    QTest::newRow("gone before") << -1;
    QTest::newRow("gone at the beginning") << 0;
    QTest::newRow("gone in the middle") << 500;
}

void TestGoneLine::readLastsAsFromASilentReceiver()
{
    QFETCH(int, pulledAfter);
    Adapter adapter;
    QVERIFY(adapter.open());
    if (pulledAfter < 0)
        adapter.pull();
    else
        adapter.after(pulledAfter, [&adapter] { adapter.pull(); });
    trace().clear();
    uint8_t byte = 0x42;
    const Effort effort;
    adapter.run([&byte](serial_thread &port) { port.serial_getbyte(&byte, 1000); });
    QVERIFY2(effort.milliseconds() >= 950, qPrintable(QString::number(effort.milliseconds())));
    QVERIFY2(effort.milliseconds() <= 5000, qPrintable(QString::number(effort.milliseconds())));
    QVERIFY2(effort.share() < 0.05, qPrintable(QString::number(effort.share())));
    QCOMPARE(byte, uint8_t(0x42));
    QCOMPARE(trace().payloads(), QStringList{"1 \"42\""});
}

void TestGoneLine::bytesThatCameBeforeAreRead()
{
    Adapter adapter;
    QVERIFY(adapter.open());
    adapter.line->send("12 34");
    uint8_t byte = 0;
    adapter.run([&byte](serial_thread &port) { port.serial_getbyte(&byte, 1000); });
    QCOMPARE(byte, uint8_t(0x12));
    adapter.pull();
    byte = 0x42;
    adapter.run([&byte](serial_thread &port) { port.serial_getbyte(&byte, 50); });
    QCOMPARE(byte, uint8_t(0x42)); // not a byte of the line that has gone
}

void TestGoneLine::idleTransportRests()
{
    Adapter adapter;
    QVERIFY(adapter.open());
    trace().clear();
    adapter.pull();
    const Effort effort;
    QThread::msleep(1000);
    QVERIFY2(effort.share() < 0.05, qPrintable(QString::number(effort.share())));
    QCOMPARE(trace().lines(), QStringList());
}

void TestGoneLine::writeReturnsAtOnce()
{
    Adapter adapter;
    QVERIFY(adapter.open());
    adapter.pull();
    QByteArray packet(4096, '\x5C');
    const Effort effort;
    adapter.run([&packet](serial_thread &port) {
        for (int i = 0; i < 100; ++i)
            port.serial_put_byte_buff(reinterpret_cast<uint8_t *>(packet.data()), 4096);
    });
    QVERIFY2(effort.milliseconds() < 1000, qPrintable(QString::number(effort.milliseconds())));
}

// Writing has no time-out: only the line's end ends it.
void TestGoneLine::stoppedWriteEnds()
{
    Adapter adapter;
    QVERIFY(adapter.open());
    adapter.line->sendFlowControl(0x13);
    adapter.after(1000, [&adapter] { adapter.pull(); });
    const Effort effort;
    adapter.run([](serial_thread &port) { port.serial_putbyte(0x42); });
    QVERIFY2(effort.milliseconds() >= 950, qPrintable(QString::number(effort.milliseconds())));
    QVERIFY2(effort.milliseconds() < 3000, qPrintable(QString::number(effort.milliseconds())));
    QVERIFY2(effort.share() < 0.05, qPrintable(QString::number(effort.share())));
}

void TestGoneLine::otherOperationsDoNothing()
{
    Adapter adapter;
    QVERIFY(adapter.open());
    adapter.pull();
    uint8_t buffer[4096] = {};
    adapter.run([&buffer](serial_thread &port) {
        port.serial_set_baudrate(hal_uart_baudrate_t(115200));
        port.serial_get_bytes(buffer, 0);
        port.RealReadData();
        port.serial_deinit(nullptr, 0);
    });
}

void TestGoneLine::healedLineIsOpenedAgain_data()
{
    QTest::addColumn<bool>("byAnother");
    QTest::newRow("by the same transport") << false;
    QTest::newRow("by another") << true;
}

// The lock of a port that was not closed would keep everybody out.
void TestGoneLine::healedLineIsOpenedAgain()
{
    QFETCH(bool, byAnother);
    Adapter adapter;
    QVERIFY(adapter.open());
    adapter.pull();
    uint8_t byte = 0;
    adapter.run([&byte](serial_thread &port) { port.serial_getbyte(&byte, 10); });
    adapter.plugIn();
    serial_thread another(Adapter::path());
    uint8_t status = 0;
    if (byAnother)
        another.serial_init(nullptr, 0, &status);
    else
        status = adapter.open() ? 1 : 0;
    QCOMPARE(status, uint8_t(1));
    const auto use = [&byte](serial_thread &port) {
        port.serial_putbyte(0x5A);
        port.serial_getbyte(&byte, 1000);
    };
    adapter.line->send("69");
    if (byAnother)
        use(another);
    else
        adapter.run(use);
    QCOMPARE(byte, uint8_t(0x69));
    QCOMPARE(adapter.line->receive(1), QByteArray("\x5A"));
}

TESTMODE_TEST_MAIN(TestGoneLine)
#include "test_gone_line.moc"
