#include "bubblewrap.h"

#include "failure.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace bench {

namespace {

// What execvp's failure is told by, as a shell would.
constexpr int kNotInstalled = 127;

bool exists(const std::string &path)
{
    return ::access(path.c_str(), F_OK) == 0;
}

void add(Words *words, std::initializer_list<std::string> more)
{
    words->insert(words->end(), more);
}

Words bareRoot()
{
    return {"bwrap",  "--unshare-pid", "--die-with-parent", "--ro-bind", "/", "/", "--dev", "/dev",
            "--proc", "/proc"};
}

// The display's socket and the user's run-time folder lie in folders that are hidden.
void addDisplay(Words *words)
{
    if (exists("/tmp/.X11-unix"))
        add(words, {"--ro-bind", "/tmp/.X11-unix", "/tmp/.X11-unix"});
    const char *authority = std::getenv("XAUTHORITY");
    if (authority != nullptr && exists(authority))
        add(words, {"--ro-bind", authority, authority});
    const char *runtime = std::getenv("XDG_RUNTIME_DIR");
    if (runtime != nullptr && exists(runtime))
        add(words, {"--bind", runtime, runtime});
    else
        add(words,
            {"--perms", "0700", "--dir", "/run/user", "--setenv", "XDG_RUNTIME_DIR", "/run/user"});
}

// A build that counts what runs (script/coverage) leaves its counters in this folder.
void addCounters(Words *words)
{
    const char *folder = std::getenv("GCOV_PREFIX");
    if (folder != nullptr && exists(folder))
        add(words, {"--bind", folder, folder});
}

struct Outcome
{
    int status;       // of waitpid
    std::string said; // on standard error
};

// Runs `true` in the root that `command` makes.
Outcome tryOut(Words command)
{
    int channel[2];
    if (::pipe2(channel, O_CLOEXEC) != 0)
        fail("make", "a pipe");
    const pid_t child = ::fork();
    if (child < 0)
        fail("start", "bwrap");
    if (child == 0) {
        ::dup2(channel[1], STDERR_FILENO);
        add(&command, {"--", "true"});
        ::execvp("bwrap", pointers(command).data());
        ::_exit(kNotInstalled);
    }
    ::close(channel[1]);
    Outcome outcome = {};
    char buffer[512];
    for (ssize_t count = 0; (count = ::read(channel[0], buffer, sizeof buffer)) > 0;)
        outcome.said.append(buffer, static_cast<size_t>(count));
    ::close(channel[0]);
    ::waitpid(child, &outcome.status, 0);
    return outcome;
}

// What bwrap said, as part of one line.
std::string oneLine(std::string text)
{
    while (!text.empty() && text.back() == '\n')
        text.pop_back();
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text.empty() ? "bwrap failed without a word" : text;
}

} // namespace

Words rootCommand(const RootLayout &layout)
{
    const std::string prefix = installationPrefix();
    Words words = bareRoot();
    add(&words,
        {"--tmpfs", "/sys", "--tmpfs", "/media", "--tmpfs", "/run", "--dir", "/run/lock", "--dir",
         kUnitFolder, "--tmpfs", "/tmp", "--tmpfs", "/var", "--dir", "/var/lock"});
    if (layout.flashBytes > 0)
        add(&words, {"--size", std::to_string(layout.flashBytes), "--tmpfs", "/media/flash"});
    if (exists("/var/cache/fontconfig"))
        add(&words, {"--ro-bind", "/var/cache/fontconfig", "/var/cache/fontconfig"});
    addDisplay(&words);
    add(&words, {"--ro-bind", prefix, prefix});
    for (const std::string &folder : layout.writable)
        add(&words, {"--bind", folder, folder});
    for (const RootLayout::Mount &mount : layout.readOnly)
        add(&words, {"--ro-bind", mount.source, mount.target});
    if (!layout.uart.empty())
        add(&words, {"--dev-bind", layout.uart, "/dev/ttyS4"});
    addCounters(&words); // last: what is read-only may be a folder around them
    if (layout.realMemory)
        add(&words, {"--dev-bind", "/dev/mem", "/dev/mem"});
    const char *path = std::getenv("PATH");
    add(&words,
        {"--setenv", "PATH",
         prefix + "/libexec/headunit/commands:" + (path != nullptr ? path : "/usr/bin:/bin"),
         "--chdir", kUnitFolder});
    return words;
}

std::string refusal(const Words &rootCommand)
{
    const Outcome whole = tryOut(rootCommand);
    if (whole.status == 0)
        return std::string();
    if (WIFEXITED(whole.status) && WEXITSTATUS(whole.status) == kNotInstalled)
        return "bwrap is not installed; install the package bubblewrap";

    const Outcome bare = tryOut(bareRoot());
    if (bare.status == 0)
        return oneLine(whole.said) + "; see that what it names can be read";
    return oneLine(bare.said)
        + "; allow user namespaces ('sysctl -w kernel.unprivileged_userns_clone=1', where it "
          "exists also kernel.apparmor_restrict_unprivileged_userns=0) or run as root (in a "
          "container: one started with --privileged)";
}

std::vector<char *> pointers(Words &words)
{
    std::vector<char *> list;
    for (std::string &word : words)
        list.push_back(word.data());
    list.push_back(nullptr);
    return list;
}

} // namespace bench
