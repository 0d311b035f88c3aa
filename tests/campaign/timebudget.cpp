#include "timebudget.h"

#include "gnss_download/ugrade_thread.h"

namespace tests {

namespace {

constexpr int kPacketBytes = 4096;

// The pulse at the reset line; before and after the change of the rate; after each of the four
// attempts to synchronise.
constexpr qint64 kRestMilliseconds = 100 + 2 * 100 + 4 * 2000;

constexpr qint64 kDrainMilliseconds = 30;
constexpr qint64 kPacketRestMilliseconds = 3;

} // namespace

TimeBudget::TimeBudget(ugrade_thread *worker)
{
    using Worker = ugrade_thread;
    constexpr auto direct = Qt::DirectConnection;
    connect(
        worker, &Worker::hdl_uart_get_byte, this,
        [this](uint8_t *, uint32_t polls) { readFor(polls); }, direct);
    connect(
        worker, &Worker::hdl_uart_get_data16, this,
        [this](uint16_t *, uint32_t polls) { readFor(polls); }, direct);
    connect(
        worker, &Worker::hdl_uart_get_data32, this,
        [this](uint32_t *code, uint32_t polls) {
            readFor(polls);
            told(code);
        },
        direct);
    connect(
        worker, &Worker::hdl_uart_get_bytes, this, [this] { ++drains; }, direct);
    connect(worker, &Worker::hdl_uart_put_byte_buffer, this, &TimeBudget::sent, direct);
}

qint64 TimeBudget::milliseconds() const
{
    return polled + kRestMilliseconds + drains * kDrainMilliseconds
        + packets * kPacketRestMilliseconds;
}

// The transport has read it already: it was connected first.
void TimeBudget::told(const uint32_t *code)
{
    drawnAgain = *code < 3061 || *code > 3065;
}

void TimeBudget::sent(uint8_t *bytes, uint32_t count)
{
    if (count != kPacketBytes)
        return;
    ++packets;
    const auto packet = QByteArray::fromRawData(reinterpret_cast<char *>(bytes), kPacketBytes);
    if (packet != lastPacket) {
        sameAgain = 0;
        lastPacket = QByteArray(packet.constData(), kPacketBytes);
    } else if (drawnAgain) {
        ++sameAgain;
    }
}

} // namespace tests
