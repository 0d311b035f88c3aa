#include "waits.h"

#include <cerrno>
#include <ctime>

#include <dlfcn.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

thread_local qint64 waited = 0;

qint64 now()
{
    timespec time = {};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return qint64(time.tv_sec) * 1000000000 + time.tv_nsec;
}

int sleep(clockid_t clock, int flags, const timespec *wanted, timespec *left)
{
    const qint64 began = now();
    const long result = ::syscall(SYS_clock_nanosleep, clock, flags, wanted, left);
    waited += now() - began;
    return result == 0 ? 0 : errno;
}

} // namespace

extern "C" {

__attribute__((visibility("default"))) int clock_nanosleep(clockid_t clock, int flags,
                                                           const timespec *wanted, timespec *left)
{
    return sleep(clock, flags, wanted, left);
}

__attribute__((visibility("default"))) int nanosleep(const timespec *wanted, timespec *left)
{
    errno = sleep(CLOCK_MONOTONIC, 0, wanted, left);
    return errno == 0 ? 0 : -1;
}

__attribute__((visibility("default"))) int usleep(useconds_t microseconds)
{
    const timespec wanted = {static_cast<time_t>(microseconds / 1000000),
                             static_cast<long>(microseconds % 1000000) * 1000};
    return ::nanosleep(&wanted, nullptr);
}

__attribute__((visibility("default"))) int system(const char *command)
{
    using System = int (*)(const char *);
    static const auto realSystem = reinterpret_cast<System>(::dlsym(RTLD_NEXT, "system"));
    const qint64 began = now();
    const int status = realSystem(command);
    waited += now() - began;
    return status;
}
}

namespace benchmark {

qint64 waitedNanoseconds()
{
    return waited;
}

} // namespace benchmark
