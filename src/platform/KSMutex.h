#pragma once
#include <atomic>
#include <mutex>

// The platform mutex (not recursive). Lock and Unlock take the caller's source
// position for lock diagnostics. On the thread that drives a virtual platform
// clock, a Lock that has to wait moves that clock on (PlatformClock::
// advanceToNextWait) so that a holder pausing on the clock gets to let go; any
// other thread that has to wait does not hold the virtual clock up meanwhile
// (PlatformClock::beginLockWait).
class KSMutex {
public:
    // The uncontended lock and the unlock are inline: the parameter path takes a
    // lock per changed pair, and a call into the library per lock is most of its cost.
    void Lock(const char* /*file*/ = __builtin_FILE(), int /*line*/ = __builtin_LINE()) {
        if (!m_mutex.try_lock()) lockContended();
    }
    void Unlock(const char* /*file*/ = __builtin_FILE(), int /*line*/ = __builtin_LINE()) {
        const int waiters = m_nClockWaiters.load(std::memory_order_relaxed);
        m_mutex.unlock();
        if (waiters != 0) handOver(waiters);
    }
    bool TryLock();

private:
    void lockContended();
    // After an unlock with threads of the virtual clock waiting for the lock.
    void handOver(int waiters);

    std::mutex m_mutex;
    std::atomic<int> m_nClockWaiters{0};  // threads released by the virtual clock waiting for the lock
};

// Scope guard over a KSMutex.
class KSMutexGuard {
public:
    explicit KSMutexGuard(KSMutex& m, const char* file = __builtin_FILE(), int line = __builtin_LINE())
        : m_mutex(m) {
        m_mutex.Lock(file, line);
    }
    ~KSMutexGuard() { m_mutex.Unlock(); }
    KSMutexGuard(const KSMutexGuard&) = delete;
    KSMutexGuard& operator=(const KSMutexGuard&) = delete;

private:
    KSMutex& m_mutex;
};
