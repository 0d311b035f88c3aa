#include "serial_thread.h"

#include "tools/common.h"
#include "tools/debugtrace.h"

#include <QEventLoop>
#include <QSerialPort>
#include <QThread>
#include <QTimer>

#include <cstring>
#include <utility>

namespace {

constexpr int kDefaultTimerMilliseconds = 30;

// A read with at least this much pending throws away what it does not want.
constexpr qint64 kDiscardFrom = 37;

// How often draining looks for input before it gives up.
constexpr int kDrainPolls = 30;

// A packet of the download: the largest buffer that draining may copy.
constexpr qint64 kPacketBytes = 4096;

// Writing has no time-out; it only looks up this often to see whether the process ends.
constexpr int kWriteSliceMilliseconds = 200;

// Kept for a debugger: nothing reads it.
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
        emit signal_Messagebox(QStringLiteral("错误"), QStringLiteral("打开串口失败"));
        return;
    }
    DBG << portName << com_set.baudRate;
    port->setBaudRate(com_set.baudRate, QSerialPort::AllDirections);
    port->setDataBits(QSerialPort::Data8);
    port->setParity(QSerialPort::NoParity);
    // Kept: software flow control, whatever the settings dialog shows.
    port->setFlowControl(QSerialPort::SoftwareControl);
    port->setStopBits(QSerialPort::OneStop);
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
    if (!port->isOpen())
        return; // a closed port would only warn

    port->write(data);
    while (port->bytesToWrite() > 0 && !QThread::currentThread()->isInterruptionRequested()) {
        port->clearError();
        if (!port->waitForBytesWritten(kWriteSliceMilliseconds)
            && port->error() != QSerialPort::TimeoutError)
            return;
    }
}

void serial_thread::ReadData(uint8_t *buf, uint32_t len, uint32_t timeout)
{
    // Kept: a time-out of 0 wraps around, so that such a read waits for its bytes.
    uint32_t polls = timeout;
    qint64 pending = 0;
    do {
        --polls;
        Delay_MSec(1);
        pending = port->bytesAvailable();
    } while (pending < len && polls != 0);

    if (port->isOpen())
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
    const QByteArray shown = copyOf(buf, qMin<qint64>(discarded.size(), kPacketBytes));
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
