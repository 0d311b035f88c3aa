#include "timeline.h"

#include "machine.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>

#include <sys/eventfd.h>
#include <unistd.h>

namespace tests {

namespace {

constexpr std::int64_t kMillisecond = 1000000;

// A thread that has ended its work needs a moment to be gone, real time.
constexpr int kLongestFarewellMilliseconds = 10000;

// More readings of the clock between two waits than any honest code makes.
constexpr int kMostReadings = 20000000;

[[noreturn]] void die(const char *text)
{
    std::fprintf(stderr, "virtual clock: %s\n", text);
    std::abort();
}

// Far from midnight, and before everything that the machine's clock has written on a file: no file
// is old.
std::int64_t noonOfYesterday()
{
    const std::time_t today = machine::time(CLOCK_REALTIME) / machine::kSecond;
    std::tm local = {};
    ::localtime_r(&today, &local);
    local.tm_mday -= 1;
    local.tm_isdst = -1;
    local.tm_hour = 12;
    local.tm_min = 0;
    local.tm_sec = 0;
    return std::mktime(&local) * machine::kSecond;
}

} // namespace

struct Timeline::Thread
{
    Thread() : wakeDescriptor(::eventfd(0, EFD_CLOEXEC)) { }
    Thread(const Thread &) = delete;
    Thread &operator=(const Thread &) = delete;
    ~Thread() { ::close(wakeDescriptor); }

    bool hasReadyDescriptor();
    void sleep();

    int wakeDescriptor;
    pthread_t id = 0;
    bool waiting = false;
    bool told = false; // through the wake descriptor
    WaitEnd end = WaitEnd::Woken;
    std::uint64_t order = 0;
    std::optional<std::int64_t> deadline;
    const void *key = nullptr;
    std::vector<pollfd> looked;  // at by whoever passes the time
    std::vector<pollfd> sleptOn; // by the thread; the last is the wake descriptor
};

namespace {

// Null outside of the timeline's run.
thread_local Timeline::Thread *self = nullptr;
// Of the thread that first started the timeline, and of all that were started from there since.
thread_local bool follows = false;

} // namespace

bool Timeline::Thread::hasReadyDescriptor()
{
    constexpr timespec atOnce = {};
    return !looked.empty() && machine::ppoll(looked.data(), looked.size(), &atOnce, nullptr) != 0;
}

void Timeline::Thread::sleep()
{
    machine::ppoll(sleptOn.data(), sleptOn.size(), nullptr, nullptr);
}

Timeline &Timeline::instance()
{
    static auto *const line = new Timeline; // threads may outlive static objects
    return *line;
}

void Timeline::start()
{
    if (runs())
        die("it runs already");
    const std::int64_t before = monotonic();
    now = (before / kMillisecond + 1) * kMillisecond;
    dayBegan = noonOfYesterday() - now;
    readings = 0;
    join(add());
    running = true;
}

void Timeline::stop()
{
    constexpr timespec moment = {0, kMillisecond};
    for (int waited = 0; participants() > 1; ++waited) {
        if (waited > kLongestFarewellMilliseconds)
            die("threads that were started in it still live at its end");
        machine::nanosleep(&moment, nullptr);
    }
    running = false;
    machineAhead = now - machine::time(CLOCK_MONOTONIC);
    remove(self);
    self = nullptr;
}

int Timeline::participants()
{
    const std::lock_guard<std::mutex> lock(mutex);
    return static_cast<int>(threads.size());
}

bool Timeline::participates() const
{
    return runs() && self != nullptr;
}

bool Timeline::isFollowed() const
{
    return follows;
}

std::int64_t Timeline::monotonic()
{
    if (!participates())
        return machine::time(CLOCK_MONOTONIC) + ahead();
    noticeReading();
    return now;
}

std::int64_t Timeline::timeOfDay()
{
    if (!participates())
        return machine::time(CLOCK_REALTIME);
    noticeReading();
    return now + dayBegan;
}

std::int64_t Timeline::ahead() const
{
    return follows ? machineAhead.load() : 0;
}

void Timeline::moveTimeOfDay(std::int64_t by)
{
    dayBegan += by;
}

void Timeline::noticeReading()
{
    if (++readings > kMostReadings)
        die("it is read again and again, and nobody waits: a loop that does not sleep");
}

Timeline::Thread *Timeline::add()
{
    const std::lock_guard<std::mutex> lock(mutex);
    threads.push_back(std::make_unique<Thread>());
    ++awake;
    return threads.back().get();
}

void Timeline::join(Thread *thread)
{
    self = thread;
    follows = true;
    if (thread == nullptr)
        return;
    const std::lock_guard<std::mutex> lock(mutex);
    thread->id = ::pthread_self();
}

void Timeline::leave()
{
    if (self == nullptr)
        return;
    remove(self);
    self = nullptr;
}

// The lock is held.
Timeline::Thread *Timeline::find(pthread_t id) const
{
    const auto found = std::find_if(threads.begin(), threads.end(), [id](const auto &thread) {
        return ::pthread_equal(thread->id, id) != 0;
    });
    return found == threads.end() ? nullptr : found->get();
}

void Timeline::awaitEnd(pthread_t id)
{
    WaitEnd end = WaitEnd::Woken;
    do {
        Wait wait;
        {
            const std::lock_guard<std::mutex> lock(mutex);
            wait.key = find(id);
        }
        end = wait.key == nullptr
            ? WaitEnd::Refused
            : this->wait(wait, [this, id, &wait] { return find(id) == wait.key; });
    } while (end == WaitEnd::Descriptor); // a signal
}

void Timeline::remove(Thread *thread)
{
    const std::lock_guard<std::mutex> lock(mutex);
    threads.remove_if([thread](const auto &other) { return other.get() == thread; });
    --awake;
    // Together: who begins to await the thread's end meanwhile would never hear of it.
    wakeWaiting(thread, INT_MAX);
    if (awake == 0)
        passTime();
}

void Timeline::enter(const Wait &wait)
{
    Thread &me = *self;
    me.deadline = wait.deadline;
    me.key = wait.key;
    me.looked.assign(wait.descriptors, wait.descriptors + wait.descriptorCount);
    me.sleptOn = me.looked;
    me.sleptOn.push_back({me.wakeDescriptor, POLLIN, 0});
    me.order = ++waits;
    me.told = false;
    me.waiting = true;
}

WaitEnd Timeline::refuse()
{
    self->waiting = false;
    return WaitEnd::Refused;
}

WaitEnd Timeline::sleep(std::unique_lock<std::mutex> &lock)
{
    Thread &me = *self;
    readings = 0;
    if (--awake == 0)
        passTime();
    while (me.waiting) {
        lock.unlock();
        me.sleep();
        lock.lock();
        // Nobody told it: it woke by its own descriptors, or by a signal.
        if (me.waiting)
            release(me, WaitEnd::Descriptor);
    }
    if (me.told) {
        eventfd_t count = 0;
        ::eventfd_read(me.wakeDescriptor, &count);
    }
    return me.end;
}

int Timeline::wake(const void *key, int atMost)
{
    const std::lock_guard<std::mutex> lock(mutex);
    return wakeWaiting(key, atMost);
}

// The lock is held, here and below.
void Timeline::release(Thread &thread, WaitEnd end)
{
    thread.waiting = false;
    thread.end = end;
    ++awake;
    if (&thread == self)
        return;
    thread.told = true;
    ::eventfd_write(thread.wakeDescriptor, 1);
}

int Timeline::wakeWaiting(const void *key, int atMost)
{
    int woken = 0;
    for (; woken < atMost; ++woken) {
        Thread *first = nullptr;
        for (const auto &thread : threads) {
            if (thread->waiting && thread->key == key && thread.get() != self
                && (first == nullptr || thread->order < first->order))
                first = thread.get();
        }
        if (first == nullptr)
            break;
        release(*first, WaitEnd::Woken);
    }
    return woken;
}

void Timeline::passTime()
{
    Thread *next = nullptr;
    bool ready = false;
    for (const auto &thread : threads) {
        // Told, not trusted to the kernel: what a terminal's worker does, as making room for a
        // writer, does not always wake who sleeps.
        if (thread->hasReadyDescriptor()) {
            release(*thread, WaitEnd::Descriptor);
            ready = true;
        }
        if (thread->deadline
            && (next == nullptr || *thread->deadline < *next->deadline
                || (*thread->deadline == *next->deadline && thread->order < next->order)))
            next = thread.get();
    }
    if (ready || next == nullptr)
        return;
    now = std::max<std::int64_t>(now, *next->deadline);
    release(*next, WaitEnd::Deadline);
}

} // namespace tests
