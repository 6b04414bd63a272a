#pragma once
#include <mutex>

// The platform mutex (not recursive). Lock and Unlock take the caller's source
// position for lock diagnostics. On the thread that drives a virtual platform
// clock, a Lock that has to wait moves that clock on (PlatformClock::
// advanceToNextWait) so that a holder pausing on the clock gets to let go.
class KSMutex {
public:
    // The uncontended lock and the unlock are inline: the parameter path takes a
    // lock per changed pair, and a call into the library per lock is most of its cost.
    void Lock(const char* /*file*/ = __builtin_FILE(), int /*line*/ = __builtin_LINE()) {
        if (!m_mutex.try_lock()) lockContended();
    }
    void Unlock(const char* /*file*/ = __builtin_FILE(), int /*line*/ = __builtin_LINE()) { m_mutex.unlock(); }
    bool TryLock();

private:
    void lockContended();

    std::mutex m_mutex;
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
