#include "pressrecord.h"

#include <array>
#include <csignal>
#include <cstring>
#include <iterator>

#include <unistd.h>

// Present in programs with a sanitizer, which end by themselves and not by a signal.
extern "C" __attribute__((weak)) void __sanitizer_set_death_callback(void (*callback)());

namespace tests {

namespace {

constexpr int kLines = 40;
constexpr size_t kLineBytes = 160;

// Plain memory: it is read from signal handlers.
char replayLine[kLineBytes];
char lines[kLines][kLineBytes];
int added = 0;

constexpr int kDeadly[] = {SIGSEGV, SIGABRT, SIGBUS, SIGFPE, SIGILL};
std::array<struct sigaction, std::size(kDeadly)> previous;

void store(char *line, const QString &text)
{
    const QByteArray bytes = text.toUtf8().left(kLineBytes - 2) + '\n';
    std::memcpy(line, bytes.constData(), static_cast<size_t>(bytes.size()) + 1);
}

void printLine(const char *line)
{
    [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, line, std::strlen(line));
}

void printAll()
{
    printLine("the last presses:\n");
    printLine(replayLine);
    for (int i = qMax(0, added - kLines); i < added; ++i)
        printLine(lines[i % kLines]);
}

// Who would have handled the signal handles it next: what raised it happens again.
void printAndPassOn(int)
{
    for (size_t i = 0; i < previous.size(); ++i)
        ::sigaction(kDeadly[i], &previous[i], nullptr);
    printAll();
}

} // namespace

PressRecord::PressRecord(const QString &replay)
{
    added = 0;
    store(replayLine, replay);
    struct sigaction action = {};
    action.sa_handler = printAndPassOn;
    for (size_t i = 0; i < previous.size(); ++i)
        ::sigaction(kDeadly[i], &action, &previous[i]);
    if (__sanitizer_set_death_callback != nullptr)
        __sanitizer_set_death_callback(printAll);
}

PressRecord::~PressRecord()
{
    for (size_t i = 0; i < previous.size(); ++i)
        ::sigaction(kDeadly[i], &previous[i], nullptr);
    if (__sanitizer_set_death_callback != nullptr)
        __sanitizer_set_death_callback(nullptr);
}

void PressRecord::add(const QString &press)
{
    store(lines[added % kLines], press);
    ++added;
}

void PressRecord::print() const
{
    printAll();
}

} // namespace tests
