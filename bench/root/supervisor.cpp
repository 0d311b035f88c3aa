#include "supervisor.h"

#include "exitstatus.h"
#include "failure.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace bench {

namespace {

// "READ,WRITE,LIFE": descriptors that the program inside inherits: both ends of the pipe that
// requests come through, and the one that it shows life on.
constexpr char kStopPipe[] = "HEADUNIT_STOP_PIPE";

constexpr int kStopSignals[] = {SIGINT, SIGTERM, SIGHUP};

// A program that was asked to stop, has not, and has shown no life for so long is killed.
constexpr time_t kStopSeconds = 10;

int stopWriter = -1;
int lifeWriter = -1;

extern "C" void askToStop(int)
{
    const ssize_t written = ::write(stopWriter, "", 1);
    static_cast<void>(written); // a full pipe has been asked before
}

sigset_t watchedSignals()
{
    sigset_t set;
    ::sigemptyset(&set);
    ::sigaddset(&set, SIGCHLD);
    for (const int number : kStopSignals)
        ::sigaddset(&set, number);
    return set;
}

// Ends with what the program inside returned. A status above 128 is bwrap's word for
// a program that a signal has ended.
[[noreturn]] void endLike(int status)
{
    const int code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    if (code <= 128)
        std::exit(code);
    std::fprintf(stderr, "bench: the program in the private root was ended by signal %d\n",
                 code - 128);
    std::exit(kFault);
}

bool hasShownLife(int reader)
{
    char signs[64];
    bool any = false;
    while (::read(reader, signs, sizeof signs) > 0)
        any = true;
    return any;
}

// Waits for `child`; gives every request to stop to `writer`, hears of life from `life`.
[[noreturn]] void waitFor(pid_t child, int writer, int life)
{
    const sigset_t watched = watchedSignals();
    bool stopping = false;
    for (;;) {
        const timespec patience = {kStopSeconds, 0};
        const int number = stopping ? ::sigtimedwait(&watched, nullptr, &patience)
                                    : ::sigwaitinfo(&watched, nullptr);
        int status = 0;
        if (number == SIGCHLD) {
            if (::waitpid(child, &status, WNOHANG) == child)
                endLike(status);
        } else if (number > 0) {
            stopWriter = writer;
            askToStop(number);
            stopping = true;
        } else if (errno == EAGAIN && !hasShownLife(life)) {
            ::kill(child, SIGKILL);
        }
    }
}

} // namespace

void supervise(Words command)
{
    int channel[2];
    int life[2];
    if (::pipe2(channel, O_NONBLOCK) != 0 || ::pipe2(life, O_NONBLOCK) != 0)
        fail("make", "a pipe");
    const sigset_t watched = watchedSignals();
    sigset_t before;
    ::sigprocmask(SIG_BLOCK, &watched, &before);

    const pid_t child = ::fork();
    if (child < 0)
        fail("start", "bwrap");
    if (child == 0) {
        // Terminals and time limits signal the whole group; bwrap must not die of it
        // before the program inside has ended as it should.
        for (const int number : kStopSignals)
            ::signal(number, SIG_IGN);
        ::sigprocmask(SIG_SETMASK, &before, nullptr);
        const std::string ends = std::to_string(channel[0]) + "," + std::to_string(channel[1]) + ","
            + std::to_string(life[1]);
        ::setenv(kStopPipe, ends.c_str(), 1);
        ::execvp("bwrap", pointers(command).data());
        fail("start", "bwrap");
    }
    waitFor(child, channel[1], life[0]);
}

int takeStopDescriptor()
{
    const char *ends = std::getenv(kStopPipe);
    int reader = -1;
    if (ends == nullptr || std::sscanf(ends, "%d,%d,%d", &reader, &stopWriter, &lifeWriter) != 3)
        return -1;
    ::unsetenv(kStopPipe);
    for (const int descriptor : {reader, stopWriter, lifeWriter})
        ::fcntl(descriptor, F_SETFD, FD_CLOEXEC);
    // A handler instead of the inherited "ignore": commands that the program runs start
    // with the default again.
    for (const int number : kStopSignals)
        ::signal(number, askToStop);
    return reader;
}

void showLife()
{
    if (lifeWriter < 0)
        return;
    const ssize_t written = ::write(lifeWriter, "", 1);
    static_cast<void>(written); // a full pipe shows enough of it
}

} // namespace bench
