#include "serial_thread.h"

#include "download_agent_protocol.h"
#include "tools/common.h"
#include "tools/debugtrace.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QSerialPort>
#include <QThread>
#include <QTimer>

#include <cstring>
#include <utility>

#include <poll.h>

namespace {

constexpr int kDefaultTimerMilliseconds = 30;

// A read with at least this much pending throws away what it does not want.
constexpr qint64 kDiscardFrom = 37;

// How often draining looks for input before it gives up.
constexpr int kDrainPolls = 30;

// How many polls of a closed port pass at once.
constexpr uint32_t kClosedPolls = 20;

// Writing has no time-out; it only looks up this often to see whether the process ends.
constexpr int kWriteSliceMilliseconds = 200;

// Kept: how many bytes the last read brought; nothing reads it.
[[maybe_unused]] qint64 lastReadCount = 0;

// A word as the wire has it, most significant byte first.
template <typename Word>
QByteArray wireOrder(Word value)
{
    unsigned char bytes[sizeof value];
    std::memcpy(bytes, &value, sizeof value);
    EndianTOEndian(bytes, sizeof value);
    return QByteArray(reinterpret_cast<const char *>(bytes), sizeof value);
}

// Returns how many of the polls that are left have passed. Nothing comes from a closed port: there
// several pass at once, in as much time.
uint32_t passPolls(const QSerialPort &port, uint32_t left)
{
    if (port.isOpen()) {
        Delay_MSec(1);
        return 1;
    }
    const uint32_t passed = left == 0 ? kClosedPolls : qMin(left, kClosedPolls);
    QThread::msleep(passed);
    return passed;
}

QByteArray copyOf(const uint8_t *bytes, qint64 count)
{
    return QByteArray(reinterpret_cast<const char *>(bytes), static_cast<int>(count));
}

} // namespace

void EndianTOEndian(unsigned char *buf, int len)
{
    for (int i = 0; i < len / 2; ++i)
        std::swap(buf[i], buf[len - 1 - i]);
}

serial_thread::serial_thread(QString name)
    : portName(name), port(new QSerialPort), timer(new QTimer)
{
    sendstr.length = 0;
    // Queued: the port still uses its descriptor when it tells.
    connect(port, &QSerialPort::errorOccurred, this, &serial_thread::closeIfGone,
            Qt::QueuedConnection);
}

serial_thread::~serial_thread()
{
    delete timer;
    delete port;
}

void serial_thread::moveTo(QThread *thread)
{
    // Moving takes children along; these two have no parent.
    moveToThread(thread);
    port->moveToThread(thread);
    timer->moveToThread(thread);
    // In the thread itself: neither timer nor port can be stopped from another.
    connect(thread, &QThread::finished, this, &serial_thread::release, Qt::DirectConnection);
}

void serial_thread::release()
{
    TimeStop();
    serial_deinit(nullptr, 0);
}

void serial_thread::serial_init(uint8_t *, uint8_t, uint8_t *opened)
{
    DBG << "InitSerial:" << portName << QThread::currentThreadId();
    port->setPortName(portName);
    if (port->isOpen())
        port->close();
    if (!port->open(QIODevice::ReadWrite)) {
        emit signal_Messagebox(tr("错误"), tr("打开串口失败"));
        return;
    }
    DBG << portName << com_set.baudRate;
    port->setBaudRate(com_set.baudRate, QSerialPort::AllDirections);
    port->setDataBits(QSerialPort::Data8);
    port->setParity(QSerialPort::NoParity);
    // Kept: software flow control, whatever the settings dialog shows.
    port->setFlowControl(QSerialPort::SoftwareControl);
    port->setStopBits(QSerialPort::OneStop);
    silentPolls = 0;
    abandoned = false;
    *opened = 1;
}

void serial_thread::serial_deinit(uint8_t *, uint8_t)
{
    if (port->isOpen())
        port->close();
}

void serial_thread::serial_set_baudrate(hal_uart_baudrate_t baud_rate)
{
    if (port->isOpen())
        port->setBaudRate(baud_rate, QSerialPort::AllDirections);
}

void serial_thread::serial_putbyte(uint8_t byte)
{
    SendData(wireOrder(byte));
}

void serial_thread::serial_put_byte_buff(uint8_t *buf, uint32_t length)
{
    SendData(copyOf(buf, length));
}

void serial_thread::serial_put_data16(uint16_t value)
{
    SendData(wireOrder(value));
}

void serial_thread::serial_put_data32(uint32_t value)
{
    const QByteArray bytes = wireOrder(value);
    DBG << bytes.toHex();
    SendData(bytes);
}

void serial_thread::serial_getbyte(uint8_t *byte, uint32_t timeout)
{
    ReadData(byte, 1, timeout);
}

void serial_thread::serial_get_byte_buff(uint8_t *buf, uint32_t length, uint32_t timeout)
{
    ReadData(buf, length, timeout);
}

void serial_thread::serial_get_data16(uint16_t *value, uint32_t timeout)
{
    ReadData(reinterpret_cast<uint8_t *>(value), sizeof *value, timeout);
}

void serial_thread::serial_get_data32(uint32_t *value, uint32_t timeout)
{
    DBG << "serial_get_data32:" << QThread::currentThreadId() << *value;
    ReadData(reinterpret_cast<uint8_t *>(value), sizeof *value, timeout);
    DBG << *value;
}

void serial_thread::serial_get_bytes(uint8_t *buf, uint32_t)
{
    RealReadAllData(buf);
}

void serial_thread::SendData(QByteArray data)
{
    // A closed port would only warn.
    if (!port->isOpen() || isAbandoned(silentPolls))
        return;

    QElapsedTimer quiet;
    quiet.start();
    port->write(data);
    while (port->bytesToWrite() > 0 && waitForWriting(&quiet)) { }
}

// False when the rest is not to be waited for.
bool serial_thread::waitForWriting(QElapsedTimer *quiet)
{
    const qint64 before = port->bytesToWrite();
    port->clearError();
    port->waitForBytesWritten(kWriteSliceMilliseconds);
    if (port->bytesToWrite() < before) {
        quiet->start();
        return true;
    }
    closeIfGone();
    // A line that is stopped between the look and the write calls itself a lack of resources.
    const QSerialPort::SerialPortError error = port->error();
    const bool stopped = error == QSerialPort::TimeoutError || error == QSerialPort::ResourceError;
    return port->isOpen() && stopped && !isAbandoned(quiet->elapsed());
}

// An error alone does not tell; a line that hangs up says so to whoever looks, for good.
void serial_thread::closeIfGone()
{
    if (!port->isOpen())
        return;
    pollfd line = {static_cast<int>(port->handle()), 0, 0};
    if (::poll(&line, 1, 0) == 1)
        port->close();
}

// Whether the line is left to itself, now that it has been quiet for so many milliseconds.
bool serial_thread::isAbandoned(qint64 quiet)
{
    if (!abandoned && (!port->isOpen() || quiet >= patienceAtEnd)
        && QThread::currentThread()->isInterruptionRequested()) {
        abandoned = true;
        if (port->isOpen())
            port->clear(QSerialPort::Output);
    }
    return abandoned;
}

void serial_thread::ReadData(uint8_t *buf, uint32_t len, uint32_t timeout)
{
    // Kept: a time-out of 0 wraps around, so that such a read waits for its bytes.
    uint32_t polls = timeout;
    qint64 pending = 0;
    do {
        const uint32_t passed = passPolls(*port, polls);
        polls -= passed;
        const qint64 before = std::exchange(pending, port->bytesAvailable());
        silentPolls = pending > before ? 0 : silentPolls + passed;
    } while (pending < len && polls != 0 && !isAbandoned(silentPolls));

    if (port->isOpen() && !abandoned)
        lastReadCount = port->read(reinterpret_cast<char *>(buf), len);
    // Kept: part of the dialogue's behaviour, as is the number.
    if (pending >= kDiscardFrom)
        port->readAll();

    const QByteArray received = copyOf(buf, len);
    EndianTOEndian(buf, static_cast<int>(len));
    DBG << len << received.toHex();
}

void serial_thread::RealReadData()
{
    if (port->isOpen())
        rodata += port->readAll();
    emit signal_TransferData(rodata);
}

void serial_thread::RealReadAllData(uint8_t *buf)
{
    for (int poll = 0; poll < kDrainPolls; ++poll) {
        Delay_MSec(1);
        if (port->bytesAvailable() > 0)
            break;
    }
    const QByteArray discarded = port->isOpen() ? port->readAll() : QByteArray();

    // Kept: shows the caller's own bytes, as many as came in; never more than the buffer holds.
    const QByteArray shown = copyOf(buf, qMin<qint64>(discarded.size(), agent::kPacketBytes));
    DBG << shown.size() << shown.toHex();
    emit signal_TransferData(shown);
}

void serial_thread::Delay_Ms(unsigned ms)
{
    if (loop == nullptr)
        loop = new QEventLoop(this);
    // Kept: announces the loop's end in place of ending it.
    if (loop->isRunning())
        emit loop->destroyed();
    QTimer::singleShot(static_cast<int>(ms), loop, &QEventLoop::quit);
    loop->exec();
}

void serial_thread::Delay(unsigned ms)
{
    QThread::msleep(ms);
}

void serial_thread::DefaultTimeUpdate()
{
    TimeUpdate(kDefaultTimerMilliseconds);
}

void serial_thread::TimeUpdate(int ms)
{
    timer->start(ms);
}

void serial_thread::TimeStop()
{
    timer->stop();
}
