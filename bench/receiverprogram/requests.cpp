#include "requests.h"

#include <csignal>

#include <sys/signalfd.h>
#include <unistd.h>

namespace bench {

namespace {

int listen()
{
    sigset_t set;
    ::sigemptyset(&set);
    for (const int number : {SIGTERM, SIGINT, SIGHUP, SIGUSR1})
        ::sigaddset(&set, number);
    ::sigprocmask(SIG_BLOCK, &set, nullptr);
    ::signal(SIGPIPE, SIG_IGN); // whoever read the path may have gone
    return ::signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
}

} // namespace

Requests::Requests() : descriptor(listen()), notifier(descriptor, QSocketNotifier::Read)
{
    connect(&notifier, &QSocketNotifier::activated, this, &Requests::take);
}

Requests::~Requests()
{
    notifier.setEnabled(false);
    ::close(descriptor);
}

void Requests::take()
{
    signalfd_siginfo request = {};
    while (::read(descriptor, &request, sizeof request) == ssize_t(sizeof request)) {
        if (request.ssi_signo == SIGUSR1)
            emit resetRequested();
        else
            emit endRequested();
    }
}

} // namespace bench
