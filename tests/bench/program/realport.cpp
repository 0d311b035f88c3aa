// Preloaded into the bench: the pseudo-terminal that REAL_PORT names looks like an adapter's port,
// and its modem lines are written to the file that REAL_PORT_LOG names.

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <dlfcn.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace {

constexpr unsigned kAdapterMajor = 188;

void note(unsigned long request, int bit)
{
    const char *name = std::getenv("REAL_PORT_LOG");
    std::FILE *log = name != nullptr ? std::fopen(name, "a") : nullptr;
    if (log == nullptr)
        return;
    std::fprintf(log, "%s %s\n", bit == TIOCM_RTS ? "RTS" : "DTR",
                 request == TIOCMBIS ? "set" : "cleared");
    std::fclose(log);
}

} // namespace

extern "C" int stat(const char *path, struct stat *status) noexcept
{
    using Stat = int (*)(const char *, struct stat *);
    static const auto next = reinterpret_cast<Stat>(::dlsym(RTLD_NEXT, "stat"));
    const int result = next(path, status);
    const char *port = std::getenv("REAL_PORT");
    if (result == 0 && port != nullptr && std::strcmp(path, port) == 0)
        status->st_rdev = makedev(kAdapterMajor, 0);
    return result;
}

extern "C" int ioctl(int descriptor, unsigned long request, ...) noexcept
{
    std::va_list arguments;
    va_start(arguments, request);
    void *argument = va_arg(arguments, void *);
    va_end(arguments);
    if (request == TIOCMBIS || request == TIOCMBIC) {
        note(request, *static_cast<int *>(argument));
        return 0;
    }
    return static_cast<int>(::syscall(SYS_ioctl, descriptor, request, argument));
}
