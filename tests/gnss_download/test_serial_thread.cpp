#include "line.h"

#include "gnss_download/serial_thread.h"
#include "tests/support/clock/clockedtest.h"
#include "tests/support/recorder.h"
#include "tools/common.h"

#include <QEventLoop>
#include <QSignalSpy>
#include <QThread>

#include <atomic>
#include <functional>
#include <thread>

#include <termios.h>

using tests::Line;

namespace {

// A transport that is open on a line of its own.
struct OpenTransport
{
    OpenTransport()
    {
        com_set = config();
        uint8_t status = 0;
        transport.serial_init(nullptr, 0, &status);
        if (status != 1)
            qFatal("the transport does not open");
    }

    Line line;
    serial_thread transport{line.path()};
};

QString currentThread()
{
    return QString("0x%1").arg(reinterpret_cast<quintptr>(QThread::currentThreadId()), 0, 16);
}

} // namespace

// The byte transport over a real pseudo-terminal.
class TestSerialThread : public tests::ClockedTest
{
    Q_OBJECT

private slots:
    void slotsAndSignalsStandInOrder();
    void constructionClearsTheSendCount();

    void openingSetsTheLine_data();
    void openingSetsTheLine();
    void openingAgainStartsAnew();
    void openingFails();
    void closedPortDoesNothing();
    void closingEndsTheUse();
    void baudRateIsChanged();

    void wordsGoOutMostSignificantByteFirst();
    void buffersGoOutAsTheyStand();
    void stoppedLineIsWaitedFor_data();
    void stoppedLineIsWaitedFor();
    void wordsComeInMostSignificantByteFirst();
    void bufferComesInReverseOrder();
    void readReturnsAfterItsTimeoutWithTheOldBytes_data();
    void readReturnsAfterItsTimeoutWithTheOldBytes();
    void partOfAWordKeepsTheRest();
    void readReturnsAsSoonAsItsBytesAreThere();
    void timeoutOfZeroWaitsForTheBytes();
    void pendingBytesAreDiscardedFrom37_data();
    void pendingBytesAreDiscardedFrom37();
    void fortyPendingBytesLeaveTheFirstFour();

    void drainingEmptiesTheInputAndLeavesTheBuffer();
    void drainingStopsAtTheFirstInput();
    void drainingGivesUpAfterThirtyPolls();
    void drainingShowsNoMoreThanAPacket();
    void accumulatorKeepsAllThatCame();

    void operationsAreTraced();

    void endianReversesInPlace_data();
    void endianReversesInPlace();
    void timerRunsInTheTransportsThread();
    void timerRunsAtItsInterval();
    void delayRunsAnEventLoop();
    void delayWithinADelayAnnouncesTheEnd();
    void delaySleeps();
};

void TestSerialThread::slotsAndSignalsStandInOrder()
{
    QCOMPARE(
        tests::signalsOf(serial_thread::staticMetaObject),
        QStringList({"signal_Messagebox(QString,QString)", "signal_TransferData(QByteArray)"}));
    QCOMPARE(
        tests::slotsOf(serial_thread::staticMetaObject),
        QStringList({"DefaultTimeUpdate()", "serial_init(uint8_t*,uint8_t,uint8_t*)",
                     "serial_deinit(uint8_t*,uint8_t)", "serial_getbyte(uint8_t*,uint32_t)",
                     "serial_putbyte(uint8_t)", "serial_get_byte_buff(uint8_t*,uint32_t,uint32_t)",
                     "serial_put_byte_buff(uint8_t*,uint32_t)",
                     "serial_get_data16(uint16_t*,uint32_t)", "serial_put_data16(uint16_t)",
                     "serial_get_data32(uint32_t*,uint32_t)", "serial_put_data32(uint32_t)",
                     "serial_set_baudrate(hal_uart_baudrate_t)",
                     "serial_get_bytes(uint8_t*,uint32_t)"}));
}

void TestSerialThread::constructionClearsTheSendCount()
{
    sendstr.length = 7;
    serial_thread transport("/dev/ttyS4");
    QCOMPARE(sendstr.length, 0u);
}

void TestSerialThread::openingSetsTheLine_data()
{
    QTest::addColumn<int>("baudRate");
    QTest::addColumn<int>("speed");
    QTest::newRow("921600") << 921600 << int(B921600);
    QTest::newRow("115200") << 115200 << int(B115200);
}

void TestSerialThread::openingSetsTheLine()
{
    QFETCH(int, baudRate);
    QFETCH(int, speed);
    Line line;
    serial_thread transport(line.path());
    // Only the rate is taken from the settings.
    com_set = {baudRate, 5, "Even", 2.0F, "Hardware"};
    uint8_t status = 0;
    transport.serial_init(nullptr, 0, &status);
    QCOMPARE(status, uint8_t(1));
    const termios set = line.settings();
    QCOMPARE(int(::cfgetospeed(&set)), speed);
    QCOMPARE(int(::cfgetispeed(&set)), speed);
    QCOMPARE(int(set.c_cflag & CSIZE), int(CS8));
    QCOMPARE(int(set.c_cflag & (PARENB | CSTOPB | CRTSCTS)), 0);
    QCOMPARE(int(set.c_iflag & (IXON | IXOFF)), int(IXON | IXOFF));
    const QString traced = "[DBG] void serial_thread::serial_init(uint8_t*, uint8_t, uint8_t*) -- ";
    QCOMPARE(
        tests::comparable(trace().lines()),
        QStringList({traced + QString("InitSerial: \"%1\" %2").arg(line.path(), currentThread()),
                     traced + QString("\"%1\" %2").arg(line.path()).arg(baudRate)}));
}

void TestSerialThread::openingAgainStartsAnew()
{
    OpenTransport open;
    open.line.send("AA BB CC");
    uint8_t byte = 0;
    open.transport.serial_getbyte(&byte, 1000);
    QCOMPARE(byte, uint8_t(0xAA));
    com_set.baudRate = 115200;
    uint8_t status = 0;
    open.transport.serial_init(nullptr, 0, &status);
    QCOMPARE(status, uint8_t(1));
    const termios set = open.line.settings();
    QCOMPARE(int(::cfgetospeed(&set)), int(B115200));
    open.transport.serial_putbyte(0x42);
    QCOMPARE(open.line.receive(1), QByteArray("\x42"));
}

void TestSerialThread::openingFails()
{
    serial_thread transport("/dev/no-such-port");
    QSignalSpy messages(&transport, &serial_thread::signal_Messagebox);
    uint8_t status = 7;
    transport.serial_init(nullptr, 0, &status);
    QCOMPARE(status, uint8_t(7)); // the caller's
    QCOMPARE(messages.size(), 1);
    QCOMPARE(messages.first(), QVariantList({"错误", "打开串口失败"}));
    QCOMPARE(tests::comparable(trace().lines()),
             QStringList({QString("[DBG] void serial_thread::serial_init(uint8_t*, uint8_t, "
                                  "uint8_t*) -- InitSerial: \"/dev/no-such-port\" %1")
                              .arg(currentThread())}));
}

void TestSerialThread::closedPortDoesNothing()
{
    Line line;
    serial_thread transport(line.path());
    const termios before = line.settings();
    transport.serial_deinit(nullptr, 0);
    transport.serial_set_baudrate(hal_uart_baudrate_t(115200));
    transport.serial_putbyte(0x42);
    uint16_t word = 0x4242;
    transport.serial_get_data16(&word, 2);
    uint8_t buffer[8] = {};
    transport.serial_get_bytes(buffer, 0);
    QCOMPARE(word, uint16_t(0x4242));
    QVERIFY(line.quiet());
    const termios after = line.settings();
    QCOMPARE(int(::cfgetospeed(&after)), int(::cfgetospeed(&before)));
}

void TestSerialThread::closingEndsTheUse()
{
    OpenTransport open;
    open.transport.serial_deinit(nullptr, 0);
    open.transport.serial_putbyte(0x42);
    QVERIFY(open.line.quiet());
    open.transport.serial_deinit(nullptr, 0);
}

void TestSerialThread::baudRateIsChanged()
{
    OpenTransport open;
    open.transport.serial_set_baudrate(hal_uart_baudrate_t(460800));
    const termios set = open.line.settings();
    QCOMPARE(int(::cfgetospeed(&set)), int(B460800));
    QCOMPARE(int(::cfgetispeed(&set)), int(B460800));
    // A rate that is none changes nothing.
    open.transport.serial_set_baudrate(hal_uart_baudrate_t(0));
    const termios still = open.line.settings();
    QCOMPARE(int(::cfgetospeed(&still)), int(B460800));
}

void TestSerialThread::wordsGoOutMostSignificantByteFirst()
{
    OpenTransport open;
    open.transport.serial_putbyte(0xA0);
    QCOMPARE(open.line.receive(1), QByteArray::fromHex("A0"));
    open.transport.serial_put_data16(0x1234);
    QCOMPARE(open.line.receive(2), QByteArray::fromHex("1234"));
    open.transport.serial_put_data32(0x12345678);
    QCOMPARE(open.line.receive(4), QByteArray::fromHex("12345678"));
    QVERIFY(open.line.quiet());
}

void TestSerialThread::buffersGoOutAsTheyStand()
{
    OpenTransport open;
    QByteArray packet;
    for (int i = 0; i < 4096; ++i)
        packet += static_cast<char>(i % 251);
    open.transport.serial_put_byte_buff(reinterpret_cast<uint8_t *>(packet.data()), 4096);
    QCOMPARE(open.line.receive(4096), packet);
    // Nothing to write is written at once.
    open.transport.serial_put_byte_buff(reinterpret_cast<uint8_t *>(packet.data()), 0);
    QVERIFY(open.line.quiet());
}

void TestSerialThread::stoppedLineIsWaitedFor_data()
{
    QTest::addColumn<bool>("letGo");
    QTest::newRow("until it is let go") << true;
    QTest::newRow("until the process ends") << false;
}

void TestSerialThread::stoppedLineIsWaitedFor()
{
    QFETCH(bool, letGo);
    Line line;
    com_set = config();
    QThread thread;
    serial_thread transport(line.path());
    transport.moveTo(&thread);
    thread.start();
    const auto inThread = [&transport](const std::function<void()> &call, Qt::ConnectionType type) {
        QMetaObject::invokeMethod(&transport, call, type);
    };
    uint8_t status = 0;
    inThread([&] { transport.serial_init(nullptr, 0, &status); }, Qt::BlockingQueuedConnection);
    QCOMPARE(status, uint8_t(1));

    line.sendFlowControl(0x13);
    std::atomic<bool> returned{false};
    inThread(
        [&] {
            transport.serial_putbyte(0x42);
            returned = true;
        },
        Qt::QueuedConnection);
    QVERIFY(!QTest::qWaitFor([&] { return returned.load(); }, 1000));
    QVERIFY(line.quiet());
    if (letGo)
        line.sendFlowControl(0x11);
    else
        thread.requestInterruption();
    QTRY_VERIFY(returned);
    QCOMPARE(line.quiet(), !letGo);
    thread.quit();
    QVERIFY(thread.wait(5000));
}

void TestSerialThread::wordsComeInMostSignificantByteFirst()
{
    OpenTransport open;
    uint8_t byte = 0;
    uint16_t half = 0;
    uint32_t word = 0;
    open.line.send("5F ABCD 12345678");
    open.transport.serial_getbyte(&byte, 1000);
    open.transport.serial_get_data16(&half, 1000);
    open.transport.serial_get_data32(&word, 1000);
    QCOMPARE(byte, uint8_t(0x5F));
    QCOMPARE(half, uint16_t(0xABCD));
    QCOMPARE(word, 0x12345678u);
}

void TestSerialThread::bufferComesInReverseOrder()
{
    OpenTransport open;
    open.line.send("010203");
    uint8_t buffer[4] = {0xEE, 0xEE, 0xEE, 0xEE};
    open.transport.serial_get_byte_buff(buffer, 3, 1000);
    QCOMPARE(QByteArray(reinterpret_cast<char *>(buffer), 4), QByteArray::fromHex("030201EE"));
}

void TestSerialThread::readReturnsAfterItsTimeoutWithTheOldBytes_data()
{
    QTest::addColumn<uint32_t>("timeout");
    QTest::newRow("5") << 5u;
    QTest::newRow("300") << 300u;
    QTest::newRow("900") << 900u;
    QTest::newRow("3000") << 3000u;
}

void TestSerialThread::readReturnsAfterItsTimeoutWithTheOldBytes()
{
    QFETCH(uint32_t, timeout);
    OpenTransport open;
    uint8_t byte = 0x42;
    QCOMPARE(millisecondsOf([&] { open.transport.ReadData(&byte, 1, timeout); }), qint64(timeout));
    QCOMPARE(byte, uint8_t(0x42));

    // A word of the caller's is turned round all the same.
    uint16_t word = 0x1234;
    open.transport.serial_get_data16(&word, 1);
    QCOMPARE(word, uint16_t(0x3412));
}

void TestSerialThread::partOfAWordKeepsTheRest()
{
    OpenTransport open;
    open.line.send("AB");
    uint8_t buffer[4] = {0x11, 0x22, 0x33, 0x44};
    open.transport.ReadData(buffer, 4, 20);
    QCOMPARE(QByteArray(reinterpret_cast<char *>(buffer), 4), QByteArray::fromHex("443322AB"));
}

void TestSerialThread::readReturnsAsSoonAsItsBytesAreThere()
{
    OpenTransport open;
    open.line.send("12");
    uint8_t byte = 0;
    QCOMPARE(millisecondsOf([&] { open.transport.serial_getbyte(&byte, 3000); }), 1); // one poll
    QCOMPARE(byte, uint8_t(0x12));

    qint64 sent = 0;
    QTimer::singleShot(50, this, [this, &open, &sent] {
        open.line.send("34");
        sent = milliseconds();
    });
    open.transport.serial_getbyte(&byte, 3000);
    QCOMPARE(byte, uint8_t(0x34));
    QVERIFY2(milliseconds() - sent <= 1, qPrintable(QString::number(milliseconds() - sent)));
}

void TestSerialThread::timeoutOfZeroWaitsForTheBytes()
{
    OpenTransport open;
    QTimer::singleShot(100, this, [&open] { open.line.send("12"); });
    QTimer::singleShot(5000, Qt::PreciseTimer, this, [&open] { open.line.send("34"); });
    uint16_t word = 0;
    open.transport.serial_get_data16(&word, 0);
    QCOMPARE(word, uint16_t(0x1234));
    QVERIFY(milliseconds() >= 5000 && milliseconds() <= 5002);
}

void TestSerialThread::pendingBytesAreDiscardedFrom37_data()
{
    QTest::addColumn<int>("pending");
    QTest::addColumn<uint32_t>("length");
    QTest::addColumn<bool>("restStays");
    QTest::newRow("36, one byte") << 36 << 1u << true;
    QTest::newRow("37, one byte") << 37 << 1u << false;
    QTest::newRow("38, one byte") << 38 << 1u << false;
    QTest::newRow("36, a word") << 36 << 4u << true;
    QTest::newRow("37, a word") << 37 << 4u << false;
}

void TestSerialThread::pendingBytesAreDiscardedFrom37()
{
    QFETCH(int, pending);
    QFETCH(uint32_t, length);
    QFETCH(bool, restStays);
    OpenTransport open;
    QByteArray bytes;
    for (int i = 0; i < pending; ++i)
        bytes += QByteArray::number(0x40 + i, 16);
    open.line.send(bytes);
    uint8_t buffer[4] = {};
    open.transport.ReadData(buffer, length, 1000);
    QCOMPARE(buffer[length - 1], uint8_t(0x40));
    uint8_t next = 0;
    open.transport.ReadData(&next, 1, 20);
    QCOMPARE(next, uint8_t(restStays ? 0x40 + length : 0));
}

void TestSerialThread::fortyPendingBytesLeaveTheFirstFour()
{
    OpenTransport open;
    open.line.send(QByteArray("12345678") + QByteArray(2 * 36, 'E'));
    uint32_t word = 0;
    open.transport.serial_get_data32(&word, 1000);
    QCOMPARE(word, 0x12345678u);
    uint32_t next = 0x01010101;
    open.transport.serial_get_data32(&next, 20);
    QCOMPARE(next, 0x01010101u);
}

void TestSerialThread::drainingEmptiesTheInputAndLeavesTheBuffer()
{
    OpenTransport open;
    QSignalSpy shown(&open.transport, &serial_thread::signal_TransferData);
    open.line.send("0102030405");
    uint8_t buffer[8] = {0xA1, 0xA2, 0xA3, 0xA4, 0xA5, 0xA6, 0xA7, 0xA8};
    open.transport.serial_get_bytes(buffer, 3000);
    QCOMPARE(QByteArray(reinterpret_cast<char *>(buffer), 8),
             QByteArray::fromHex("A1A2A3A4A5A6A7A8"));
    QCOMPARE(shown.size(), 1);
    QCOMPARE(shown.first().first().toByteArray(), QByteArray::fromHex("A1A2A3A4A5"));
    QCOMPARE(tests::comparable(trace().lines().last()),
             QString("[DBG] void serial_thread::RealReadAllData(uint8_t*) -- 5 \"a1a2a3a4a5\""));
    uint8_t next = 0;
    open.transport.serial_getbyte(&next, 20);
    QCOMPARE(next, uint8_t(0));
}

void TestSerialThread::drainingStopsAtTheFirstInput()
{
    OpenTransport open;
    uint8_t buffer[1] = {};
    open.line.send("42");
    QCOMPARE(millisecondsOf([&] { open.transport.serial_get_bytes(buffer, 3000); }), 1);
}

void TestSerialThread::drainingGivesUpAfterThirtyPolls()
{
    OpenTransport open;
    QSignalSpy shown(&open.transport, &serial_thread::signal_TransferData);
    uint8_t buffer[1] = {0x11};
    QCOMPARE(millisecondsOf([&] { open.transport.serial_get_bytes(buffer, 3000); }), 30);
    QCOMPARE(shown.size(), 1);
    QCOMPARE(shown.first().first().toByteArray(), QByteArray());
    QCOMPARE(tests::comparable(trace().lines().last()),
             QString("[DBG] void serial_thread::RealReadAllData(uint8_t*) -- 0 \"\""));
}

void TestSerialThread::drainingShowsNoMoreThanAPacket()
{
    OpenTransport open;
    QSignalSpy shown(&open.transport, &serial_thread::signal_TransferData);
    // More than a packet gathers in the port.
    for (int i = 0; i < 3; ++i)
        open.line.send(QByteArray(2 * 2000, '7'));
    QTRY_COMPARE(open.line.untaken(), 0);
    uint8_t buffer[6000] = {};
    open.transport.serial_get_bytes(buffer, 0);
    QCOMPARE(shown.first().first().toByteArray().size(), 4096);
    uint8_t next = 0x42;
    open.transport.serial_getbyte(&next, 20);
    QCOMPARE(next, uint8_t(0x42)); // all of it is gone
}

void TestSerialThread::accumulatorKeepsAllThatCame()
{
    OpenTransport open;
    rodata.clear();
    QSignalSpy shown(&open.transport, &serial_thread::signal_TransferData);
    const auto receive = [&open](const char *hex, const QByteArray &all) {
        open.line.send(hex);
        QElapsedTimer clock;
        clock.start();
        while (rodata != all && clock.elapsed() < 2000) {
            QCoreApplication::processEvents();
            open.transport.RealReadData();
        }
        return rodata == all;
    };
    QVERIFY(receive("0102", QByteArray::fromHex("0102")));
    QVERIFY(receive("03", QByteArray::fromHex("010203")));
    QCOMPARE(shown.last().first().toByteArray(), QByteArray::fromHex("010203"));
    rodata.clear();
}

void TestSerialThread::operationsAreTraced()
{
    OpenTransport open;
    const QString get = "[DBG] void serial_thread::serial_get_data32(uint32_t*, uint32_t) -- ";
    const QString put = "[DBG] void serial_thread::serial_put_data32(uint32_t) -- ";
    const QString read = "[DBG] void serial_thread::ReadData(uint8_t*, uint32_t, uint32_t) -- ";
    trace().clear();
    uint32_t word = 7;
    open.line.send("12345678");
    open.transport.serial_get_data32(&word, 1000);
    open.transport.serial_put_data32(0x0A0B0C0D);
    uint16_t half = 0;
    open.line.send("ABCD");
    open.transport.serial_get_data16(&half, 1000);
    QCOMPARE(tests::comparable(trace().lines()),
             QStringList({get + QString("serial_get_data32: %1 7").arg(currentThread()),
                          read + "4 \"12345678\"", get + "305419896", put + "\"0a0b0c0d\"",
                          read + "2 \"abcd\""}));
}

void TestSerialThread::endianReversesInPlace_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<int>("length");
    QTest::addColumn<QByteArray>("after");
    QTest::newRow("nothing") << QByteArray("abc") << 0 << QByteArray("abc");
    QTest::newRow("one") << QByteArray("abc") << 1 << QByteArray("abc");
    QTest::newRow("two of three") << QByteArray("abc") << 2 << QByteArray("bac");
    QTest::newRow("three") << QByteArray("abc") << 3 << QByteArray("cba");
    QTest::newRow("four") << QByteArray("abcd") << 4 << QByteArray("dcba");
}

void TestSerialThread::endianReversesInPlace()
{
    QFETCH(QByteArray, before);
    QFETCH(int, length);
    QFETCH(QByteArray, after);
    EndianTOEndian(reinterpret_cast<unsigned char *>(before.data()), length);
    QCOMPARE(before, after);
}

void TestSerialThread::timerRunsInTheTransportsThread()
{
    // Started or stopped from another thread it would warn.
    QThread thread;
    auto *transport = new serial_thread("/dev/ttyS4");
    transport->moveTo(&thread);
    thread.start();
    QMetaObject::invokeMethod(transport, "DefaultTimeUpdate", Qt::BlockingQueuedConnection);
    QMetaObject::invokeMethod(
        transport, [transport] { transport->TimeUpdate(5); }, Qt::BlockingQueuedConnection);
    QMetaObject::invokeMethod(
        transport, [transport] { transport->TimeStop(); }, Qt::BlockingQueuedConnection);
    QMetaObject::invokeMethod(transport, "DefaultTimeUpdate", Qt::BlockingQueuedConnection);
    thread.quit();
    QVERIFY(thread.wait(5000));
    delete transport;
}

namespace {

// Intervals of the timers that have run out in this thread.
class TimerWatch : public QObject
{
public:
    TimerWatch() { qApp->installEventFilter(this); }
    bool eventFilter(QObject *receiver, QEvent *event) override
    {
        const auto *timer = qobject_cast<QTimer *>(receiver);
        if (event->type() == QEvent::Timer && timer != nullptr)
            intervals << timer->interval();
        return false;
    }

    QList<int> intervals;
};

} // namespace

void TestSerialThread::timerRunsAtItsInterval()
{
    serial_thread transport("/dev/ttyS4");
    TimerWatch watch;
    transport.DefaultTimeUpdate();
    QTRY_VERIFY(watch.intervals.count(30) >= 2);
    transport.TimeUpdate(7);
    watch.intervals.clear();
    QTRY_VERIFY(watch.intervals.count(7) >= 2);
    QVERIFY(!watch.intervals.contains(30)); // one timer
    transport.TimeStop();
    watch.intervals.clear();
    transport.Delay_Ms(100);
    QVERIFY(!watch.intervals.contains(7));
}

void TestSerialThread::delayRunsAnEventLoop()
{
    serial_thread transport("/dev/ttyS4");
    int ticks = 0;
    QTimer timer;
    connect(&timer, &QTimer::timeout, this, [&ticks] { ++ticks; });
    timer.start(10);
    const qint64 lasted = millisecondsOf([&] { transport.Delay_Ms(100); });
    QVERIFY2(lasted == 100 || lasted == 101, qPrintable(QString::number(lasted))); // Qt's rounding
    QVERIFY(ticks >= 9);
}

void TestSerialThread::delayWithinADelayAnnouncesTheEnd()
{
    serial_thread transport("/dev/ttyS4");
    int announced = 0;
    QTimer::singleShot(20, this, [&] {
        auto *loop = transport.findChild<QEventLoop *>();
        connect(loop, &QObject::destroyed, this, [&announced] { ++announced; });
        expectWarning(QString("QEventLoop::exec: instance 0x%1 has already called exec()")
                          .arg(reinterpret_cast<quintptr>(loop), 0, 16));
        transport.Delay_Ms(10);
        loop->disconnect(this);
    });
    transport.Delay_Ms(60);
    QCOMPARE(announced, 1);
}

void TestSerialThread::delaySleeps()
{
    serial_thread transport("/dev/ttyS4");
    QCOMPARE(millisecondsOf([&] { transport.Delay(50); }), 50);
}

TESTMODE_TEST_MAIN(TestSerialThread)
#include "test_serial_thread.moc"
