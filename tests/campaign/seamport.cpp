#include "seamport.h"

#include "gnss_download/serial_thread.h"
#include "gnss_download/ugrade_thread.h"
#include "tools/common.h"

#include <QThread>
#include <QtEndian>

#include <algorithm>

#include <poll.h>
#include <unistd.h>

namespace tests {

namespace {

// The transport's numbers, once more.
constexpr int kDiscardFrom = 37;
constexpr int kDrainPolls = 30;
constexpr int kWriteSliceMilliseconds = 200;

constexpr char kXon = 0x11;
constexpr char kXoff = 0x13;

// To the next look: looks come a millisecond apart, the first one after a millisecond.
void finishPoll(const QElapsedTimer &clock)
{
    const qint64 microseconds = clock.nsecsElapsed() / 1000;
    const qint64 next = std::max<qint64>(1, (microseconds + 999) / 1000) * 1000;
    if (next > microseconds)
        QThread::usleep(static_cast<unsigned long>(next - microseconds));
}

} // namespace

SeamPort::SeamPort(SeamLine *line, ugrade_thread *worker) : seam(line), host(worker)
{
    using Worker = ugrade_thread;
    constexpr auto direct = Qt::DirectConnection;
    QObject::disconnect(worker, nullptr, worker->transport(), nullptr);
    connect(worker, &Worker::hdl_uart_init, this, &SeamPort::open, direct);
    connect(worker, &Worker::hdl_uart_deinit, this, &SeamPort::close, direct);
    connect(worker, &Worker::hdl_uart_set_baudrate, this, &SeamPort::setBaud, direct);
    connect(worker, &Worker::hdl_uart_get_bytes, this, &SeamPort::drain, direct);
    connect(worker, &Worker::hdl_uart_put_byte, this, &SeamPort::sendWord<uint8_t>, direct);
    connect(worker, &Worker::hdl_uart_put_data16, this, &SeamPort::sendWord<uint16_t>, direct);
    connect(worker, &Worker::hdl_uart_put_data32, this, &SeamPort::sendWord<uint32_t>, direct);
    connect(
        worker, &Worker::hdl_uart_put_byte_buffer, this,
        [this](uint8_t *bytes, uint32_t count) {
            send(QByteArray(reinterpret_cast<char *>(bytes), static_cast<int>(count)));
        },
        direct);
    connect(
        worker, &Worker::hdl_uart_get_byte, this,
        [this](uint8_t *value, uint32_t polls) { read(value, 1, polls); }, direct);
    connect(
        worker, &Worker::hdl_uart_get_data16, this,
        [this](uint16_t *value, uint32_t polls) {
            read(reinterpret_cast<uint8_t *>(value), sizeof *value, polls);
        },
        direct);
    connect(
        worker, &Worker::hdl_uart_get_data32, this,
        [this](uint32_t *value, uint32_t polls) {
            read(reinterpret_cast<uint8_t *>(value), sizeof *value, polls);
        },
        direct);
}

// What the receiver said to nobody is still there, as on a terminal that somebody holds open.
void SeamPort::open(uint8_t *, uint8_t, uint8_t *status)
{
    isOpen = true;
    stopped = false;
    seam->setHostBaud(com_set.baudRate);
    *status = 1;
}

void SeamPort::close()
{
    pending.clear();
    isOpen = false;
}

void SeamPort::setBaud(hal_uart_baudrate_t rate)
{
    seam->setHostBaud(static_cast<int>(rate));
}

void SeamPort::drain()
{
    for (int poll = 0; poll < kDrainPolls; ++poll) {
        QThread::msleep(1);
        takeIn();
        if (!pending.isEmpty())
            break;
    }
    pending.clear();
}

template <typename Word>
void SeamPort::sendWord(Word value)
{
    QByteArray bytes(static_cast<int>(sizeof value), '\0');
    qToBigEndian(value, bytes.data());
    send(bytes);
}

void SeamPort::send(const QByteArray &bytes)
{
    for (int sent = 0; isOpen && !abandoned && sent < bytes.size();) {
        takeIn();
        if (!waitForRoom())
            continue;
        const ssize_t count = ::write(seam->hostDescriptor(), bytes.constData() + sent,
                                      static_cast<size_t>(bytes.size() - sent));
        sent += static_cast<int>(std::max<ssize_t>(count, 0));
    }
}

// Like the transport it waits without limit; only the end of the process ends that.
bool SeamPort::waitForRoom()
{
    if (!stopped && waitFor(POLLOUT, 0))
        return true;
    const bool moved = stopped ? waitFor(POLLIN, kWriteSliceMilliseconds)
                               : waitFor(POLLOUT, kWriteSliceMilliseconds);
    abandoned = !moved && host->isInterruptionRequested();
    return false;
}

bool SeamPort::waitFor(short events, int milliseconds)
{
    pollfd line = {seam->hostDescriptor(), events, 0};
    return ::poll(&line, 1, milliseconds) > 0;
}

// What is there now. The terminal's driver keeps XON and XOFF for itself.
void SeamPort::takeIn()
{
    char buffer[4096];
    ssize_t count = 0;
    while ((count = ::read(seam->hostDescriptor(), buffer, sizeof buffer)) > 0) {
        for (const char *byte = buffer; byte != buffer + count; ++byte) {
            stopped = *byte == kXoff;
            if (*byte != kXon && *byte != kXoff)
                pending.append(*byte);
        }
    }
}

void SeamPort::read(uint8_t *bytes, uint32_t count, uint32_t polls)
{
    QElapsedTimer clock;
    clock.start();
    takeIn();
    const auto wanted = static_cast<int>(count);
    while (isOpen && !abandoned && pending.size() < wanted && clock.elapsed() < qint64(polls)) {
        waitFor(POLLIN, static_cast<int>(polls - clock.elapsed()));
        takeIn();
    }
    if (!abandoned)
        finishPoll(clock);
    takeIn();

    const int found = pending.size();
    const int given = std::min(found, wanted);
    std::copy_n(pending.cbegin(), given, bytes);
    pending.remove(0, found >= kDiscardFrom ? found : given);
    EndianTOEndian(bytes, wanted);
    abandoned = abandoned || (given == 0 && host->isInterruptionRequested());
}

} // namespace tests
