#pragma once

#include <cstdint>
#include <ctime>

#include <poll.h>
#include <pthread.h>
#include <signal.h>

// The C library's own calls, behind those that stand in their place.
namespace tests::machine {

constexpr std::int64_t kSecond = 1000000000;

inline std::int64_t nanoseconds(const timespec &time)
{
    return time.tv_sec * kSecond + time.tv_nsec;
}

inline timespec asTimespec(std::int64_t nanoseconds)
{
    timespec time = {};
    time.tv_sec = static_cast<time_t>(nanoseconds / kSecond);
    time.tv_nsec = static_cast<long>(nanoseconds % kSecond);
    return time;
}

std::int64_t time(clockid_t clock);
int clockGettime(clockid_t clock, timespec *now);
int nanosleep(const timespec *wanted, timespec *left);
int clockNanosleep(clockid_t clock, int flags, const timespec *wanted, timespec *left);
int ppoll(pollfd *descriptors, nfds_t count, const timespec *timeout, const sigset_t *mask);
int conditionWait(pthread_cond_t *condition, pthread_mutex_t *mutex);
int conditionTimedWait(pthread_cond_t *condition, pthread_mutex_t *mutex, const timespec *until);
int conditionClockWait(pthread_cond_t *condition, pthread_mutex_t *mutex, clockid_t clock,
                       const timespec *until);
int conditionSignal(pthread_cond_t *condition);
int conditionBroadcast(pthread_cond_t *condition);
int threadCreate(pthread_t *thread, const pthread_attr_t *attributes, void *(*routine)(void *),
                 void *argument);
int threadJoin(pthread_t thread, void **result);
long systemCall(long number, const long (&arguments)[6]);

} // namespace tests::machine
