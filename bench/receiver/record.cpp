#include "record.h"

namespace bench::chip {

void Record::open()
{
    const QMutexLocker lock(&mutex);
    now = ReceiverState();
    clock.start();
}

void Record::restart()
{
    const QMutexLocker lock(&mutex);
    ReceiverState fresh;
    fresh.phase = now.phase;
    fresh.hostBaud = now.hostBaud;
    fresh.anomalies = now.anomalies;
    fresh.watchdogResets = now.watchdogResets;
    fresh.resets = now.resets + 1;
    now = fresh;
}

void Record::countWatchdogReset()
{
    const QMutexLocker lock(&mutex);
    ++now.watchdogResets;
}

void Record::enter(ReceiverPhase phase)
{
    const QString name = phaseName(phase);
    {
        const QMutexLocker lock(&mutex);
        const qint64 time = clock.elapsed();
        if (!now.phases.isEmpty())
            now.phases.last().milliseconds = time - now.phases.last().began;
        now.phases.append({name, time, 0});
        now.phase = name;
    }
    if (onPhase)
        onPhase(name);
}

void Record::enter(ReceiverStep step)
{
    const QMutexLocker lock(&mutex);
    now.step = stepName(step);
}

void Record::anomaly(const QString &text)
{
    {
        const QMutexLocker lock(&mutex);
        if (now.anomalies.size() >= kMostAnomalies)
            return;
        const bool last = now.anomalies.size() + 1 == kMostAnomalies;
        now.anomalies.append(last ? QStringLiteral("more than this is not listed") : text);
    }
    if (onAnomaly)
        onAnomaly(text);
}

void Record::setBaud(int baud)
{
    {
        const QMutexLocker lock(&mutex);
        if (baud == now.baud)
            return;
        now.baud = baud;
    }
    if (onBaud)
        onBaud(baud, now.hostBaud);
}

void Record::received(int count, int hostBaud)
{
    {
        const QMutexLocker lock(&mutex);
        now.bytesIn += count;
        if (hostBaud == now.hostBaud)
            return;
        now.hostBaud = hostBaud;
    }
    if (onBaud)
        onBaud(now.baud, hostBaud);
}

void Record::sent(int count)
{
    const QMutexLocker lock(&mutex);
    now.bytesOut += count;
}

void Record::beginImage(quint32 address, int length)
{
    {
        const QMutexLocker lock(&mutex);
        imageBegan = clock.nsecsElapsed();
        WrittenImage image;
        image.address = address;
        image.length = length;
        now.images.append(image);
    }
    tellImage();
}

void Record::packetWritten()
{
    const QMutexLocker lock(&mutex);
    ++now.packets;
    ++now.images.last().packets;
}

void Record::completeImage()
{
    {
        const QMutexLocker lock(&mutex);
        WrittenImage &image = now.images.last();
        image.complete = true;
        image.microseconds = (clock.nsecsElapsed() - imageBegan) / 1000;
    }
    tellImage();
}

// Read without the lock: the receiver's thread alone writes.
void Record::tellImage()
{
    if (onImage)
        onImage(now.images.size(), now.images.last());
}

ReceiverState Record::state() const
{
    const QMutexLocker lock(&mutex);
    ReceiverState copy = now;
    if (!copy.phases.isEmpty())
        copy.phases.last().milliseconds = clock.elapsed() - copy.phases.last().began;
    qint64 bytes = 0;
    qint64 microseconds = 0;
    for (const WrittenImage &image : qAsConst(now.images)) {
        if (image.complete) {
            bytes += image.length;
            microseconds += image.microseconds;
        }
    }
    if (microseconds > 0)
        copy.imageBytesPerSecond =
            1e6 * static_cast<double>(bytes) / static_cast<double>(microseconds);
    return copy;
}

qint64 Record::elapsed() const
{
    return clock.elapsed();
}

void Record::clearAnomalies()
{
    const QMutexLocker lock(&mutex);
    now.anomalies.clear();
}

} // namespace bench::chip
