// In the place of the C library's, for all of the program and its shared libraries: the calls that
// read a clock, that wait, that wake and that start a thread. What Qt and GLib make of time, they
// make with these: times of day (gettimeofday), elapsed time, timers and deadlines (clock_gettime),
// sleeps (nanosleep), event loops and waits for a descriptor (poll, ppoll), wait conditions and a
// thread's end (pthread_cond_*), mutexes and semaphores (futex, through syscall).

#include "machine.h"
#include "timeline.h"

#include <cerrno>
#include <climits>
#include <cstdarg>

#include <linux/futex.h>
#include <semaphore.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#define TESTMODE_EXPORTED extern "C" __attribute__((visibility("default")))

using tests::Timeline;
using tests::Wait;
using tests::WaitEnd;

namespace machine = tests::machine;

namespace {

// Time of day and the time since the start, told apart by their size: nobody says which clock a
// condition was made with.
constexpr std::int64_t kSurelyTimeOfDay = INT64_C(1000000000) * machine::kSecond;

const auto nothingToPrepare = [] { return true; };

bool isTimeOfDay(clockid_t clock)
{
    return clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE;
}

bool isMonotonic(clockid_t clock)
{
    return clock == CLOCK_MONOTONIC || clock == CLOCK_MONOTONIC_COARSE
        || clock == CLOCK_MONOTONIC_RAW || clock == CLOCK_BOOTTIME;
}

// A point of either clock, as one of the timeline.
std::int64_t onTimeline(std::int64_t point)
{
    Timeline &line = Timeline::instance();
    return point < kSurelyTimeOfDay ? point : point - line.timeOfDay() + line.monotonic();
}

// A point of either clock of the process, as the machine's own clock has it.
timespec onMachine(const timespec &point)
{
    const std::int64_t time = machine::nanoseconds(point);
    return machine::asTimespec(time < kSurelyTimeOfDay ? time - Timeline::instance().ahead()
                                                       : time);
}

Wait until(std::int64_t deadline)
{
    Wait wait;
    wait.deadline = deadline;
    return wait;
}

void sleepUntil(std::int64_t deadline)
{
    Timeline &line = Timeline::instance();
    while (line.monotonic() < deadline)
        line.wait(until(deadline), nothingToPrepare);
}

// As the machine's ppoll(); no time-out: without end.
int pollOnTimeline(pollfd *descriptors, nfds_t count, const timespec *timeout)
{
    constexpr timespec atOnce = {};
    Timeline &line = Timeline::instance();
    Wait wait;
    wait.descriptors = descriptors;
    wait.descriptorCount = count;
    if (timeout != nullptr)
        wait.deadline = line.monotonic() + machine::nanoseconds(*timeout);
    for (;;) {
        const int ready = machine::ppoll(descriptors, count, &atOnce, nullptr);
        if (ready != 0 || (wait.deadline && line.monotonic() >= *wait.deadline))
            return ready;
        line.wait(wait, nothingToPrepare);
    }
}

int waitForCondition(pthread_cond_t *condition, pthread_mutex_t *mutex, Wait wait)
{
    wait.key = condition;
    const WaitEnd end =
        Timeline::instance().wait(wait, [mutex] { return ::pthread_mutex_unlock(mutex) == 0; });
    if (end == WaitEnd::Refused)
        return EPERM;
    ::pthread_mutex_lock(mutex);
    return end == WaitEnd::Deadline ? ETIMEDOUT : 0;
}

int *word(long address)
{
    return reinterpret_cast<int *>(address); // NOLINT(performance-no-int-to-ptr): the system's way
}

long waitForWord(const long (&arguments)[6])
{
    const int *value = word(arguments[0]);
    const int expected = static_cast<int>(arguments[2]);
    Wait wait;
    wait.key = value;
    if (const auto *timeout = reinterpret_cast<const timespec *>(word(arguments[3])))
        wait.deadline = Timeline::instance().monotonic() + machine::nanoseconds(*timeout);
    const WaitEnd end = Timeline::instance().wait(
        wait, [value, expected] { return __atomic_load_n(value, __ATOMIC_SEQ_CST) == expected; });
    if (end == WaitEnd::Woken)
        return 0;
    errno = end == WaitEnd::Refused ? EAGAIN : end == WaitEnd::Deadline ? ETIMEDOUT : EINTR;
    return -1;
}

int decoded(int operand, int shift)
{
    return static_cast<int>(static_cast<unsigned>(operand) << (20 - shift)) >> 20;
}

int changed(int operation, int value, int operand)
{
    switch (operation) {
    case FUTEX_OP_SET:
        return operand;
    case FUTEX_OP_ADD:
        return value + operand;
    case FUTEX_OP_OR:
        return value | operand;
    case FUTEX_OP_ANDN:
        return value & ~operand;
    default:
        return value ^ operand;
    }
}

bool compared(int comparison, int value, int operand)
{
    switch (comparison) {
    case FUTEX_OP_CMP_EQ:
        return value == operand;
    case FUTEX_OP_CMP_NE:
        return value != operand;
    case FUTEX_OP_CMP_LT:
        return value < operand;
    case FUTEX_OP_CMP_LE:
        return value <= operand;
    case FUTEX_OP_CMP_GT:
        return value > operand;
    default:
        return value >= operand;
    }
}

// FUTEX_WAKE_OP: changes a second word and wakes those who wait for it, if its old value is so.
long changeAndWake(const long (&arguments)[6])
{
    int *second = word(arguments[4]);
    const int what = static_cast<int>(arguments[5]);
    int operand = decoded(what, 12);
    int operation = what >> 28 & 0xF;
    if ((operation & FUTEX_OP_OPARG_SHIFT) != 0)
        operand = static_cast<int>(1U << (operand & 31));
    operation &= ~FUTEX_OP_OPARG_SHIFT;

    int old = __atomic_load_n(second, __ATOMIC_SEQ_CST);
    while (!__atomic_compare_exchange_n(second, &old, changed(operation, old, operand), false,
                                        __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST)) { }
    Timeline &line = Timeline::instance();
    int woken = line.wake(word(arguments[0]), static_cast<int>(arguments[2]));
    if (compared(what >> 24 & 0xF, old, decoded(what, 0)))
        woken += line.wake(second, static_cast<int>(arguments[3]));
    return woken;
}

// What a started thread takes along; its creator waits until it has.
struct Start
{
    Timeline::Thread *thread;
    void *(*routine)(void *);
    void *argument;
    sem_t taken;
};

void *liveOnTimeline(void *argument)
{
    auto *start = static_cast<Start *>(argument);
    void *(*const routine)(void *) = start->routine;
    void *const routinesArgument = start->argument;
    Timeline::instance().join(start->thread);
    ::sem_post(&start->taken);
    struct Farewell
    {
        ~Farewell() { Timeline::instance().leave(); }
    } const farewell;
    return routine(routinesArgument);
}

} // namespace

// reading a clock

TESTMODE_EXPORTED int clock_gettime(clockid_t clock, timespec *now) noexcept
{
    if (isMonotonic(clock))
        *now = machine::asTimespec(Timeline::instance().monotonic());
    else if (isTimeOfDay(clock))
        *now = machine::asTimespec(Timeline::instance().timeOfDay());
    else
        return machine::clockGettime(clock, now);
    return 0;
}

TESTMODE_EXPORTED int gettimeofday(timeval *now, void *) noexcept
{
    const std::int64_t microseconds = Timeline::instance().timeOfDay() / 1000;
    now->tv_sec = static_cast<time_t>(microseconds / 1000000);
    now->tv_usec = static_cast<suseconds_t>(microseconds % 1000000);
    return 0;
}

TESTMODE_EXPORTED time_t time(time_t *now) noexcept
{
    const auto seconds = static_cast<time_t>(Timeline::instance().timeOfDay() / machine::kSecond);
    if (now != nullptr)
        *now = seconds;
    return seconds;
}

// sleeping

TESTMODE_EXPORTED int nanosleep(const timespec *wanted, timespec *left)
{
    if (!Timeline::instance().participates())
        return machine::nanosleep(wanted, left);
    sleepUntil(Timeline::instance().monotonic() + machine::nanoseconds(*wanted));
    return 0;
}

TESTMODE_EXPORTED int clock_nanosleep(clockid_t clock, int flags, const timespec *wanted,
                                      timespec *left)
{
    if (Timeline::instance().participates()) {
        const std::int64_t time = machine::nanoseconds(*wanted);
        sleepUntil((flags & TIMER_ABSTIME) != 0 ? onTimeline(time)
                                                : Timeline::instance().monotonic() + time);
        return 0;
    }
    if ((flags & TIMER_ABSTIME) == 0)
        return machine::clockNanosleep(clock, flags, wanted, left);
    const timespec point = onMachine(*wanted);
    return machine::clockNanosleep(clock, flags, &point, left);
}

TESTMODE_EXPORTED int usleep(useconds_t microseconds)
{
    const timespec wanted = machine::asTimespec(INT64_C(1000) * microseconds);
    return ::nanosleep(&wanted, nullptr);
}

// waiting for descriptors

TESTMODE_EXPORTED int ppoll(pollfd *descriptors, nfds_t count, const timespec *timeout,
                            const sigset_t *mask)
{
    if (!Timeline::instance().participates())
        return machine::ppoll(descriptors, count, timeout, mask);
    return pollOnTimeline(descriptors, count, timeout);
}

TESTMODE_EXPORTED int poll(pollfd *descriptors, nfds_t count, int milliseconds)
{
    const timespec timeout = machine::asTimespec(INT64_C(1000000) * milliseconds);
    return ::ppoll(descriptors, count, milliseconds < 0 ? nullptr : &timeout, nullptr);
}

// waiting for another thread, and waking it

TESTMODE_EXPORTED int pthread_cond_wait(pthread_cond_t *condition, pthread_mutex_t *mutex)
{
    if (!Timeline::instance().participates())
        return machine::conditionWait(condition, mutex);
    return waitForCondition(condition, mutex, Wait());
}

TESTMODE_EXPORTED int pthread_cond_timedwait(pthread_cond_t *condition, pthread_mutex_t *mutex,
                                             const timespec *deadline)
{
    if (Timeline::instance().participates())
        return waitForCondition(condition, mutex,
                                until(onTimeline(machine::nanoseconds(*deadline))));
    const timespec point = onMachine(*deadline);
    return machine::conditionTimedWait(condition, mutex, &point);
}

TESTMODE_EXPORTED int pthread_cond_clockwait(pthread_cond_t *condition, pthread_mutex_t *mutex,
                                             clockid_t clock, const timespec *deadline)
{
    if (Timeline::instance().participates())
        return waitForCondition(condition, mutex,
                                until(onTimeline(machine::nanoseconds(*deadline))));
    const timespec point = onMachine(*deadline);
    return machine::conditionClockWait(condition, mutex, clock, &point);
}

TESTMODE_EXPORTED int pthread_cond_signal(pthread_cond_t *condition) noexcept
{
    Timeline &line = Timeline::instance();
    const bool woken = line.runs() && line.wake(condition, 1) > 0;
    return woken ? 0 : machine::conditionSignal(condition);
}

TESTMODE_EXPORTED int pthread_cond_broadcast(pthread_cond_t *condition) noexcept
{
    if (Timeline::instance().runs())
        Timeline::instance().wake(condition, INT_MAX);
    return machine::conditionBroadcast(condition);
}

// Takes six arguments, however many there are.
TESTMODE_EXPORTED __attribute__((no_sanitize_address)) long syscall(long number, ...) noexcept
{
    long arguments[6];
    va_list list;
    va_start(list, number);
    for (long &argument : arguments)
        argument = va_arg(list, long);
    va_end(list);

    Timeline &line = Timeline::instance();
    const long operation = arguments[1] & FUTEX_CMD_MASK;
    if (number != SYS_futex || !line.runs())
        return machine::systemCall(number, arguments);
    if (operation == FUTEX_WAIT && line.participates())
        return waitForWord(arguments);
    if (operation == FUTEX_WAKE_OP)
        return changeAndWake(arguments);
    const long woken =
        operation == FUTEX_WAKE ? line.wake(word(arguments[0]), static_cast<int>(arguments[2])) : 0;
    return woken > 0 ? woken : machine::systemCall(number, arguments);
}

// starting a thread, and awaiting its end

TESTMODE_EXPORTED int pthread_create(pthread_t *thread, const pthread_attr_t *attributes,
                                     void *(*routine)(void *), void *argument) noexcept
{
    Timeline &line = Timeline::instance();
    if (!line.isFollowed())
        return machine::threadCreate(thread, attributes, routine, argument);
    Start start = {line.participates() ? line.add() : nullptr, routine, argument, {}};
    ::sem_init(&start.taken, 0, 0);
    const int failure = machine::threadCreate(thread, attributes, liveOnTimeline, &start);
    while (failure == 0 && ::sem_wait(&start.taken) != 0) { }
    if (failure != 0 && start.thread != nullptr)
        line.remove(start.thread);
    ::sem_destroy(&start.taken);
    return failure;
}

TESTMODE_EXPORTED int pthread_join(pthread_t thread, void **result)
{
    if (Timeline::instance().participates())
        Timeline::instance().awaitEnd(thread);
    return machine::threadJoin(thread, result);
}
