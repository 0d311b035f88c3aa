#pragma once

#include <atomic>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include <poll.h>
#include <pthread.h>

namespace tests {

// What a thread waits for; each part may be missing.
struct Wait
{
    std::optional<std::int64_t> deadline; // of Timeline::monotonic()
    const void *key = nullptr;            // that another thread wakes
    const pollfd *descriptors = nullptr;  // one of which becomes ready
    std::size_t descriptorCount = 0;
};

enum class WaitEnd { Deadline, Woken, Descriptor, Refused };

// The time of the process and the threads that live in it: the rule of virtualclock.h. Nanoseconds.
class Timeline
{
public:
    static Timeline &instance();

    void start();
    void stop();

    bool runs() const { return running; }
    // The calling thread lives in it; time passes for it only in wait().
    bool participates() const;
    // The calling thread's children shall live in it. Threads that were there before anybody
    // thought of it, as the test library's own, keep to the machine's clock.
    bool isFollowed() const;

    // For the calling thread: this clock while it participates, otherwise the machine's.
    std::int64_t monotonic();
    std::int64_t timeOfDay();
    // What monotonic() is ahead of the machine's clock for who does not participate.
    std::int64_t ahead() const;
    void moveTimeOfDay(std::int64_t by);

    // Returns when what is waited for has come. `prepare` is called when the wait can no longer be
    // missed by who wakes; where it returns false the wait is refused. A participant only.
    template <typename Prepare>
    WaitEnd wait(const Wait &wait, Prepare prepare)
    {
        std::unique_lock<std::mutex> lock(mutex);
        enter(wait);
        if (!prepare())
            return refuse();
        return sleep(lock);
    }
    // Returns how many were woken, the longest waiting first. Any thread.
    int wake(const void *key, int atMost);

    // Waits for a participant to leave. A participant only.
    void awaitEnd(pthread_t id);
    int participants(); // how many

    // A thread that a participant is about to start; counted as running from here on.
    struct Thread;
    Thread *add();
    void join(Thread *thread); // in the thread itself: first; null while it does not run
    void leave();              // last
    void remove(Thread *thread);

private:
    Thread *find(pthread_t id) const;
    void enter(const Wait &wait);
    WaitEnd refuse();
    WaitEnd sleep(std::unique_lock<std::mutex> &lock);
    void release(Thread &thread, WaitEnd end);
    int wakeWaiting(const void *key, int atMost);
    void passTime();
    void noticeReading();

    std::mutex mutex;
    std::list<std::unique_ptr<Thread>> threads;
    int awake = 0; // of them
    std::uint64_t waits = 0;
    std::atomic<bool> running{false};
    std::atomic<std::int64_t> now{0};
    std::atomic<std::int64_t> dayBegan{0}; // time of day less now
    std::atomic<std::int64_t> machineAhead{0};
    std::atomic<int> readings{0}; // since somebody waited
};

} // namespace tests
