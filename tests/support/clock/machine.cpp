#include "machine.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>

#include <dlfcn.h>
#include <unistd.h>

// A sanitizer that is part of the program has these of its own, and the clock's stand before them.
// It must see beginning and end of the same threads: what it has not seen begin it takes for a
// fault.
extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier): the sanitizers' names
__attribute__((weak)) int __interceptor_pthread_create(pthread_t *, const pthread_attr_t *,
                                                       void *(*)(void *), void *);
__attribute__((weak)) int __interceptor_pthread_join(pthread_t, void **);
// NOLINTEND(bugprone-reserved-identifier)
}

namespace tests::machine {

namespace {

// The next definition of `name` behind this program's, once. Conditions have an older one too,
// which knows another layout, and which dlsym() may find first.
void *next(std::atomic<void *> &known, const char *name)
{
    if (known != nullptr)
        return known;
    void *found = ::dlvsym(RTLD_NEXT, name, "GLIBC_2.3.2");
    if (found == nullptr)
        found = ::dlsym(RTLD_NEXT, name);
    if (found == nullptr) {
        std::fprintf(stderr, "virtual clock: the C library has no %s\n", name);
        std::abort();
    }
    known = found;
    return found;
}

} // namespace

// Not a static that is made on first use: what waits for such a one may be the call itself.
#define TESTMODE_NEXT(function)                                                                    \
    static std::atomic<void *> known{nullptr};                                                     \
    const auto call = reinterpret_cast<decltype(&::function)>(next(known, #function))

std::int64_t time(clockid_t clock)
{
    timespec now = {};
    clockGettime(clock, &now);
    return nanoseconds(now);
}

int clockGettime(clockid_t clock, timespec *now)
{
    TESTMODE_NEXT(clock_gettime);
    return call(clock, now);
}

int nanosleep(const timespec *wanted, timespec *left)
{
    TESTMODE_NEXT(nanosleep);
    return call(wanted, left);
}

int clockNanosleep(clockid_t clock, int flags, const timespec *wanted, timespec *left)
{
    TESTMODE_NEXT(clock_nanosleep);
    return call(clock, flags, wanted, left);
}

int ppoll(pollfd *descriptors, nfds_t count, const timespec *timeout, const sigset_t *mask)
{
    TESTMODE_NEXT(ppoll);
    return call(descriptors, count, timeout, mask);
}

int conditionWait(pthread_cond_t *condition, pthread_mutex_t *mutex)
{
    TESTMODE_NEXT(pthread_cond_wait);
    return call(condition, mutex);
}

int conditionTimedWait(pthread_cond_t *condition, pthread_mutex_t *mutex, const timespec *until)
{
    TESTMODE_NEXT(pthread_cond_timedwait);
    return call(condition, mutex, until);
}

int conditionClockWait(pthread_cond_t *condition, pthread_mutex_t *mutex, clockid_t clock,
                       const timespec *until)
{
    TESTMODE_NEXT(pthread_cond_clockwait);
    return call(condition, mutex, clock, until);
}

int conditionSignal(pthread_cond_t *condition)
{
    TESTMODE_NEXT(pthread_cond_signal);
    return call(condition);
}

int conditionBroadcast(pthread_cond_t *condition)
{
    TESTMODE_NEXT(pthread_cond_broadcast);
    return call(condition);
}

int threadCreate(pthread_t *thread, const pthread_attr_t *attributes, void *(*routine)(void *),
                 void *argument)
{
    if (__interceptor_pthread_create != nullptr)
        return __interceptor_pthread_create(thread, attributes, routine, argument);
    TESTMODE_NEXT(pthread_create);
    return call(thread, attributes, routine, argument);
}

int threadJoin(pthread_t thread, void **result)
{
    if (__interceptor_pthread_join != nullptr)
        return __interceptor_pthread_join(thread, result);
    TESTMODE_NEXT(pthread_join);
    return call(thread, result);
}

long systemCall(long number, const long (&arguments)[6])
{
    TESTMODE_NEXT(syscall);
    return call(number, arguments[0], arguments[1], arguments[2], arguments[3], arguments[4],
                arguments[5]);
}

} // namespace tests::machine
