#include "scriptedchip.h"

#include "gnss_download/serial_thread.h"
#include "gnss_download/ugrade_thread.h"

#include <QThread>

#include <algorithm>

namespace tests {

ScriptedChip::ScriptedChip(ugrade_thread *worker)
{
    QObject::disconnect(worker, nullptr, worker->transport(), nullptr);
    connectTo(worker);
}

void ScriptedChip::connectTo(ugrade_thread *worker)
{
    using Worker = ugrade_thread;
    constexpr auto direct = Qt::DirectConnection;
    connect(worker, &Worker::hdl_uart_init, this, &ScriptedChip::init, direct);
    connect(
        worker, &Worker::hdl_uart_deinit, this, [this] { lineEvent("close"); }, direct);
    connect(
        worker, &Worker::hdl_uart_set_baudrate, this,
        [this](hal_uart_baudrate_t rate) { lineEvent(QStringLiteral("baud %1").arg(rate)); },
        direct);
    connect(
        worker, &Worker::hdl_uart_get_bytes, this, [this] { lineEvent("drain"); }, direct);
    connect(
        worker, &Worker::hdl_uart_put_byte, this, [this](uint8_t value) { takeWord(value); },
        direct);
    connect(
        worker, &Worker::hdl_uart_put_data16, this, [this](uint16_t value) { takeWord(value); },
        direct);
    connect(
        worker, &Worker::hdl_uart_put_data32, this, [this](uint32_t value) { takeWord(value); },
        direct);
    connect(
        worker, &Worker::hdl_uart_put_byte_buffer, this,
        [this](uint8_t *bytes, uint32_t count) {
            take(QByteArray(reinterpret_cast<char *>(bytes), static_cast<int>(count)));
        },
        direct);
    connect(
        worker, &Worker::hdl_uart_get_byte, this,
        [this](uint8_t *value, uint32_t polls) { give(value, 1, polls); }, direct);
    connect(
        worker, &Worker::hdl_uart_get_data16, this,
        [this](uint16_t *value, uint32_t polls) {
            give(reinterpret_cast<uint8_t *>(value), 2, polls);
        },
        direct);
    connect(
        worker, &Worker::hdl_uart_get_data32, this,
        [this](uint32_t *value, uint32_t polls) {
            give(reinterpret_cast<uint8_t *>(value), 4, polls);
        },
        direct);
    connect(
        worker, &Worker::hdl_uart_get_byte_buffer, this,
        [this] { complain(QStringLiteral("the download reads no buffers")); }, direct);
}

void ScriptedChip::play(const Dialogue &dialogue)
{
    script = dialogue.frames();
    position = 0;
    offset = 0;
}

void ScriptedChip::init(uint8_t *, uint8_t, uint8_t *status)
{
    lineEvent(QStringLiteral("open"));
    if (opens)
        *status = 1;
}

void ScriptedChip::lineEvent(const QString &event)
{
    events << event;
    if (silent || script.isEmpty())
        return;
    const Frame *frame = currentFrame();
    if (frame == nullptr || frame->who != Frame::Line || frame->bytes != event.toUtf8())
        complain(QStringLiteral("line: ") + event);
    else
        advance();
}

template <typename Word>
void ScriptedChip::takeWord(Word value)
{
    QByteArray bytes;
    for (int shift = 8 * (static_cast<int>(sizeof value) - 1); shift >= 0; shift -= 8)
        bytes += static_cast<char>(value >> shift & 0xFF);
    take(bytes);
}

void ScriptedChip::take(const QByteArray &bytes)
{
    {
        const QMutexLocker lock(&mutex);
        record += bytes;
    }
    for (int taken = 0; taken < bytes.size() && !silent && !script.isEmpty();) {
        const Frame *frame = currentFrame();
        const QByteArray rest = bytes.mid(taken);
        if (frame == nullptr || frame->who != Frame::Host) {
            complain(QStringLiteral("not expected: ") + rest.left(64).toHex(' '));
            return;
        }
        const int count = std::min(rest.size(), frame->bytes.size() - offset);
        if (rest.left(count) != frame->bytes.mid(offset, count)) {
            complain(QStringLiteral("%1 in place of %2")
                         .arg(QString(rest.left(std::min(count, 64)).toHex(' ')),
                              QString(frame->bytes.mid(offset, std::min(count, 64)).toHex(' '))));
            return;
        }
        taken += count;
        offset += count;
        if (offset == frame->bytes.size())
            advance();
    }
}

void ScriptedChip::give(uint8_t *buffer, uint32_t count, quint32 polls)
{
    uint32_t given = 0;
    while (given < count && !silent) {
        const Frame *frame = currentFrame();
        if (frame == nullptr || frame->who != Frame::Chip)
            break;
        if (!silentStep.isEmpty() && frame->step == silentStep) {
            silent = true;
            break;
        }
        if (frame->polls != polls)
            complain(QStringLiteral("read with %1 polls, not %2").arg(polls).arg(frame->polls));
        buffer[given++] = static_cast<uint8_t>(frame->bytes.at(offset++));
        if (offset == frame->bytes.size())
            advance();
    }
    if (given == 0) {
        unanswered << polls;
        values << QString::fromLatin1(
            QByteArray(reinterpret_cast<const char *>(buffer), static_cast<int>(count)).toHex());
        if (takesTime)
            QThread::msleep(polls);
    }
    // The transport turns the bytes round also when none came.
    std::reverse(buffer, buffer + count);
}

Frame *ScriptedChip::currentFrame()
{
    if (position == script.size() && !repeated.isEmpty()) {
        script = repeated;
        position = 0;
    }
    return position < script.size() ? &script[position] : nullptr;
}

void ScriptedChip::advance()
{
    ++position;
    offset = 0;
}

// After the first complaint nothing fits any more: the chip only listens.
void ScriptedChip::complain(const QString &text)
{
    const QString step = position < script.size() ? script.at(position).step : QString();
    complaints << QStringLiteral("frame %1 (%2): %3").arg(position).arg(step, text);
    silent = true;
}

QString ScriptedChip::verdict() const
{
    if (!complaints.isEmpty())
        return complaints.join(QLatin1Char('\n'));
    if (position < script.size() && repeated.isEmpty())
        return QStringLiteral("ended before frame %1 (%2)")
            .arg(position)
            .arg(script.at(position).step);
    return QString();
}

QByteArray ScriptedChip::sent() const
{
    const QMutexLocker lock(&mutex);
    return record;
}

} // namespace tests
