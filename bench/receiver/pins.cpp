#include "pins.h"

#include <QDeadlineTimer>
#include <QThread>

#include <sys/eventfd.h>
#include <unistd.h>

namespace bench::chip {

namespace {

// The receiver looks within microseconds; a machine that needs longer than this is stuck,
// and the caller, a thread of the unit, must not be stuck with it.
constexpr int kLongestLookMilliseconds = 2000;

} // namespace

Pins::Pins() : descriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) { }

Pins::~Pins()
{
    ::close(descriptor);
}

void Pins::setReset(bool asserted)
{
    const QMutexLocker lock(&mutex);
    if (levels.reset == asserted)
        return;
    levels.reset = asserted;
    levels.pulsed = levels.pulsed || asserted;
    change();
}

void Pins::setPowered(bool powered)
{
    const QMutexLocker lock(&mutex);
    if (levels.powered == powered)
        return;
    levels.powered = powered;
    change();
}

void Pins::stop()
{
    const QMutexLocker lock(&mutex);
    levels.stopped = true;
    change();
}

void Pins::listen()
{
    const QMutexLocker lock(&mutex);
    levels.stopped = false;
    listening = true;
    ++changes;
}

void Pins::awaitListener()
{
    const QMutexLocker lock(&mutex);
    awaitSeen();
}

void Pins::attach()
{
    const QMutexLocker lock(&mutex);
    reader = QThread::currentThreadId();
}

void Pins::detach()
{
    const QMutexLocker lock(&mutex);
    listening = false;
    reader = nullptr;
    seen.wakeAll();
}

bool Pins::changed() const
{
    const QMutexLocker lock(&mutex);
    return changes != taken;
}

Pins::Levels Pins::take()
{
    const QMutexLocker lock(&mutex);
    eventfd_t count = 0;
    ::eventfd_read(descriptor, &count);
    taken = changes;
    const Levels now = levels;
    levels.pulsed = false;
    return now;
}

void Pins::acknowledge()
{
    const QMutexLocker lock(&mutex);
    acknowledged = taken;
    seen.wakeAll();
}

void Pins::change()
{
    ++changes;
    ::eventfd_write(descriptor, 1);
    awaitSeen();
}

// The lock is held.
void Pins::awaitSeen()
{
    const quint64 mine = changes;
    const QDeadlineTimer patience(kLongestLookMilliseconds);
    while (listening && reader != QThread::currentThreadId() && acknowledged < mine) {
        if (!seen.wait(&mutex, patience))
            return;
    }
}

} // namespace bench::chip
