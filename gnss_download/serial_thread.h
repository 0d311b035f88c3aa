#pragma once

#include "uart_types.h"

#include <QByteArray>
#include <QObject>
#include <QString>

#include <atomic>
#include <cstdint>

class QElapsedTimer;
class QEventLoop;
class QSerialPort;
class QThread;
class QTimer;

// Byte transport to the receiver's UART: blocking primitives over one serial
// port. Lives in a thread of its own and is reached only through the worker's
// blocking signals, one at a time. Words travel most significant byte first.
// Time-outs count polls of about a millisecond; one that passes is not reported.
// A line that has gone (adapter pulled, other end closed) is closed: reads then
// last as long as from a silent receiver, writes return at once.
class serial_thread : public QObject
{
    Q_OBJECT

public:
    explicit serial_thread(QString port);
    // Only where the transport's thread has ended, or in that thread.
    ~serial_thread() override;

    // Hands the transport with its port and timer to `thread`, which closes the
    // port and stops the timer as its last act.
    void moveTo(QThread *thread);

    // For how many polls reads may have brought nothing, or for how many milliseconds a write may
    // have stood, once an interruption of the transport's thread was requested; after that
    // nothing more is sent, and reads bring nothing and return at once, until the port is opened
    // again. 0, as it starts: not at all. Any thread.
    void setPatienceAtEnd(int milliseconds) { patienceAtEnd = milliseconds; }

    // Reads `len` bytes in reverse order of arrival. Fewer may come: `buf` keeps
    // its old bytes there, and is reversed all the same.
    void ReadData(uint8_t *buf, uint32_t len, uint32_t timeout);
    // Appends what is pending to `rodata` and hands out all of that.
    void RealReadData();
    // Empties the input; `buf` is read, never written, and holds a packet's bytes.
    void RealReadAllData(uint8_t *buf);
    // Returns when the last byte is with the driver, however long that takes.
    void SendData(QByteArray data);

    // Waits `ms` milliseconds in an event loop. Only in the transport's thread.
    void Delay_Ms(unsigned ms);
    // Blocks the calling thread for `ms` milliseconds.
    void Delay(unsigned ms);
    void TimeUpdate(int ms);
    void TimeStop();

signals:
    void signal_Messagebox(QString title, QString info);
    void signal_TransferData(QByteArray data);

public slots:
    void DefaultTimeUpdate();
    // Writes 1 to `*status` when the port is open, leaves it as it is otherwise.
    void serial_init(uint8_t *, uint8_t, uint8_t *status);
    void serial_deinit(uint8_t *, uint8_t);
    void serial_getbyte(uint8_t *byte, uint32_t timeout);
    void serial_putbyte(uint8_t byte);
    void serial_get_byte_buff(uint8_t *buf, uint32_t length, uint32_t timeout);
    void serial_put_byte_buff(uint8_t *buf, uint32_t length);
    void serial_get_data16(uint16_t *value, uint32_t timeout);
    void serial_put_data16(uint16_t value);
    void serial_get_data32(uint32_t *value, uint32_t timeout);
    void serial_put_data32(uint32_t value);
    void serial_set_baudrate(hal_uart_baudrate_t baud_rate);
    void serial_get_bytes(uint8_t *buf, uint32_t timeout);

private:
    void release();
    void closeIfGone();
    bool waitForWriting(QElapsedTimer *quiet);
    bool isAbandoned(qint64 quiet);

    QString portName;
    [[maybe_unused]] int status = 0; // kept: nothing uses it
    QSerialPort *port;               // owned, without a parent: moved by itself
    QTimer *timer;                   // owned likewise; nothing connects its time-out
    QEventLoop *loop = nullptr;      // of Delay_Ms(), made on first use
    std::atomic<int> patienceAtEnd{0};
    qint64 silentPolls = 0; // of reads, since a byte came in or the port was opened
    bool abandoned =
        false; // the process ends and the line was quiet: nothing goes over it any more
};

// Reverses the first `len` bytes of `buf` in place.
void EndianTOEndian(unsigned char *buf, int len);
