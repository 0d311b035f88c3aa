// The program's own system(), which the plug-in finds before the C library's:
// writes each command to the journal, then runs it through the real shell.

#include "privateroot.h"

#include "bench/unit/headunit.h"
#include "bench/unit/journal.h"

#include <cstdio>
#include <string>

#include <dlfcn.h>
#include <sys/wait.h>

extern "C" __attribute__((visibility("default"))) int system(const char *command)
{
    using System = int (*)(const char *);
    static const auto realSystem = reinterpret_cast<System>(::dlsym(RTLD_NEXT, "system"));
    if (command == nullptr)
        return realSystem(command);

    const int entry = bench::journal().begin(QStringLiteral("shell"), QString::fromUtf8(command));
    const int status = realSystem(command);
    bench::journal().complete(entry, {WIFEXITED(status) ? WEXITSTATUS(status) : -1});

    // The unit's reboot command leaves a mark; the unit acts on it.
    const std::string reboot = std::string(bench::kUnitFolder) + "/reboot";
    if (std::remove(reboot.c_str()) == 0)
        bench::unit().requestReboot();
    return status;
}
