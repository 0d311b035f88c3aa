#pragma once

#include <QDebug>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include <execinfo.h>
#include <sys/syscall.h>
#include <unistd.h>

// Every source file of the plug-in includes this header.

// One trace line: "[DBG]", the kernel's thread id, the whole signature of the
// function, the line, "--", then the payload that is streamed into it.
#define DBG                                                                                        \
    qDebug() << "[DBG]" << static_cast<int>(::syscall(SYS_gettid))                                 \
             << static_cast<const char *>(__PRETTY_FUNCTION__) << __LINE__ << "--"

// Prints the call stack to standard output; for use from a debugger or while hunting a fault.
[[maybe_unused]] static void print_trace()
{
    void *addresses[100];
    const int count = ::backtrace(addresses, 100);
    std::puts("\n ********* print_trace *********");
    char **symbols = ::backtrace_symbols(addresses, count);
    if (symbols == nullptr) {
        std::perror("backtrace_symbols");
        std::exit(1);
    }
    for (int i = 0; i < count; ++i)
        std::puts(symbols[i]);
    std::free(static_cast<void *>(symbols));
    std::printf(" ********* print_trace end *********\n\n");
}

// Milliseconds of the monotonic clock. Kept 32 bits wide: wraps after about 24.8 days of up-time.
[[maybe_unused]] static int32_t monotonic_ms()
{
    timespec now = {};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    const auto seconds = static_cast<uint32_t>(now.tv_sec);
    const auto milliseconds = static_cast<uint32_t>(now.tv_nsec / 1000000);
    return static_cast<int32_t>(seconds * 1000u + milliseconds);
}
