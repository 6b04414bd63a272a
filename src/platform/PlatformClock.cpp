#include "platform/PlatformClock.h"

#include <chrono>
#include <condition_variable>
#include <list>
#include <mutex>
#include <thread>

#include "platform/GThread.h"

namespace {

struct Sleeper {
    int64_t deadline;
    bool released;  // counted by advanceMs as a thread that must settle
    // Each waiting thread has its own: advancing the clock wakes only the
    // threads whose waits fall due, not every sleeper at every step.
    std::condition_variable wake;
};

struct ClockState {
    std::mutex mutex;
    std::condition_variable wake;     // real-clock waits
    std::condition_variable settled;  // advanceMs waiting for released threads
    bool isVirtual = false;
    int64_t virtualNowMs = 0;
    int64_t virtualWallBaseMs = 0;  // wall time = base + virtualNowMs
    std::list<Sleeper*> sleepers;
    std::thread::id driver;  // the thread that installed the virtual clock
    int running = 0;  // released threads that have not waited again yet
};

ClockState& state() {
    static ClockState s;
    return s;
}

// Set on a thread released by advanceMs until it waits again or leaves.
thread_local bool t_released = false;

int64_t realMonotonicMs() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

int64_t realWallSeconds() {
    using namespace std::chrono;
    return duration_cast<seconds>(system_clock::now().time_since_epoch()).count();
}

// Wakes every thread waiting on the clock. Caller holds the mutex.
void wakeEveryoneLocked(ClockState& s) {
    s.wake.notify_all();
    for (Sleeper* sl : s.sleepers) sl->wake.notify_one();
}

// Caller holds the mutex.
void settleLocked(ClockState& s) {
    if (t_released) {
        t_released = false;
        if (s.running > 0) --s.running;
        s.settled.notify_all();
    }
}

}  // namespace

int64_t PlatformClock::nowMs() {
    ClockState& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    return s.isVirtual ? s.virtualNowMs : realMonotonicMs();
}

int64_t PlatformClock::wallSeconds() {
    ClockState& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    if (s.isVirtual) {
        int64_t ms = s.virtualWallBaseMs + s.virtualNowMs;
        return ms >= 0 ? ms / 1000 : -((-ms + 999) / 1000);
    }
    return realWallSeconds();
}

void PlatformClock::localTime(struct tm& out) {
    time_t t = static_cast<time_t>(wallSeconds());
    // The virtual clock counts device-local time directly, so no zone applies.
    if (isVirtual())
        gmtime_r(&t, &out);
    else
        localtime_r(&t, &out);
}

bool PlatformClock::sleepMs(int64_t ms) {
    ClockState& s = state();
    std::unique_lock<std::mutex> lock(s.mutex);
    // A thread released by advanceMs counts as settled only once it really
    // waits again: a zero wait or a stop keeps it running (a stopping GThread
    // settles when its loop ends).
    if (GThread::currentStopRequested()) return false;
    if (ms <= 0) return true;
    settleLocked(s);

    if (!s.isVirtual) {
        auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
        s.wake.wait_until(lock, until, [] { return GThread::currentStopRequested(); });
        return !GThread::currentStopRequested();
    }

    if (std::this_thread::get_id() == s.driver) {
        // The thread that drives virtual time does not wait for it: its wait
        // is the passing of that time for everybody else.
        lock.unlock();
        advanceMs(ms);
        return true;
    }

    Sleeper me{s.virtualNowMs + ms, false, {}};
    s.sleepers.push_back(&me);
    auto it = std::prev(s.sleepers.end());
    s.settled.notify_all();  // a new sleeper may be what waitForSleepers waits for
    me.wake.wait(lock, [&] {
        return !s.isVirtual || s.virtualNowMs >= me.deadline || GThread::currentStopRequested();
    });
    s.sleepers.erase(it);
    if (me.released) t_released = true;
    if (!s.isVirtual && s.virtualNowMs < me.deadline && !GThread::currentStopRequested()) {
        // The real clock came back while waiting: finish the rest in real time.
        lock.unlock();
        return sleepMs(me.deadline - s.virtualNowMs);
    }
    return !GThread::currentStopRequested();
}

void PlatformClock::useVirtual(int64_t startWallSeconds) {
    ClockState& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.isVirtual = true;
    s.driver = std::this_thread::get_id();
    s.virtualNowMs = 0;
    s.virtualWallBaseMs = startWallSeconds * 1000;
    s.running = 0;
    wakeEveryoneLocked(s);
}

void PlatformClock::useReal() {
    ClockState& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.isVirtual = false;
    s.driver = std::thread::id();
    s.running = 0;
    wakeEveryoneLocked(s);
    s.settled.notify_all();
}

bool PlatformClock::isVirtual() {
    ClockState& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    return s.isVirtual;
}

void PlatformClock::advanceMs(int64_t ms) {
    ClockState& s = state();
    std::unique_lock<std::mutex> lock(s.mutex);
    if (!s.isVirtual || ms <= 0) return;
    // The caller may itself have been released earlier (a worker advancing time).
    settleLocked(s);
    const int64_t end = s.virtualNowMs + ms;
    for (;;) {
        int64_t next = end;
        for (Sleeper* sl : s.sleepers)
            if (!sl->released && sl->deadline < next) next = sl->deadline;
        if (next > s.virtualNowMs) s.virtualNowMs = next;
        for (Sleeper* sl : s.sleepers) {
            if (!sl->released && sl->deadline <= s.virtualNowMs) {
                sl->released = true;
                ++s.running;
                sl->wake.notify_one();
            }
        }
        // Let the released threads run until they wait again. A thread that
        // blocks on something else must not hang the caller: give up after a while.
        // A released thread usually waits again within microseconds: yield to
        // it for a short while before blocking, which saves two thread switches
        // per step when the machine is busy.
        const auto spinUntil = std::chrono::steady_clock::now() + std::chrono::microseconds(200);
        while (s.running > 0 && s.isVirtual && std::chrono::steady_clock::now() < spinUntil) {
            lock.unlock();
            std::this_thread::yield();
            lock.lock();
        }
        s.settled.wait_for(lock, std::chrono::seconds(5), [&] { return s.running <= 0 || !s.isVirtual; });
        if (s.running > 0) s.running = 0;
        if (!s.isVirtual || s.virtualNowMs >= end) break;
    }
}

bool PlatformClock::drivesVirtualClock() {
    ClockState& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    return s.isVirtual && std::this_thread::get_id() == s.driver;
}

bool PlatformClock::advanceToNextWait() {
    int64_t step = 0;
    {
        ClockState& s = state();
        std::lock_guard<std::mutex> lock(s.mutex);
        if (!s.isVirtual || std::this_thread::get_id() != s.driver) return false;
        bool any = false;
        int64_t next = 0;
        for (Sleeper* sl : s.sleepers)
            if (!sl->released && (!any || sl->deadline < next)) {
                next = sl->deadline;
                any = true;
            }
        if (!any) return false;
        step = next > s.virtualNowMs ? next - s.virtualNowMs : 1;
    }
    advanceMs(step);
    return true;
}

int PlatformClock::sleeperCount() {
    ClockState& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    return static_cast<int>(s.sleepers.size());
}

bool PlatformClock::waitForSleepers(int n, int timeoutMs) {
    ClockState& s = state();
    std::unique_lock<std::mutex> lock(s.mutex);
    return s.settled.wait_for(lock, std::chrono::milliseconds(timeoutMs),
                              [&] { return static_cast<int>(s.sleepers.size()) >= n; });
}

void PlatformClock::setTimeOfDay(int hour, int minute, int second) {
    ClockState& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    if (!s.isVirtual) return;
    int64_t wallMs = s.virtualWallBaseMs + s.virtualNowMs;
    int64_t dayStartMs = (wallMs >= 0 ? wallMs / 86400000 : (wallMs - 86399999) / 86400000) * 86400000;
    int64_t target = dayStartMs + (static_cast<int64_t>(hour) * 3600 + minute * 60 + second) * 1000;
    s.virtualWallBaseMs = target - s.virtualNowMs;
}

void PlatformClock::setWallSeconds(int64_t seconds) {
    ClockState& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    if (!s.isVirtual) return;
    s.virtualWallBaseMs = seconds * 1000 - s.virtualNowMs;
}

void PlatformClock::wakeAll() {
    ClockState& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    wakeEveryoneLocked(s);
}

bool PlatformClock::beginLockWait() {
    ClockState& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    if (!s.isVirtual || !t_released) return false;
    settleLocked(s);
    return true;
}

void PlatformClock::endLockWait(bool wasRunning) {
    if (!wasRunning) return;
    ClockState& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    if (!s.isVirtual) return;
    ++s.running;
    t_released = true;
}

void PlatformClock::threadLeaving() {
    ClockState& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    settleLocked(s);
}
