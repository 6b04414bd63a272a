#pragma once
#include <cstdint>
#include <ctime>

// The one clock behind every time read and every wait of the library.
//
// By default it is the host's clock. A virtual clock can be installed instead:
// then time moves only when advance() is called, and waits return when the
// virtual time passes their deadline. advance() returns once every thread it
// woke has come back to a wait (or ended), so a test can run a controller for
// simulated hours in milliseconds and observe it between steps.
class PlatformClock {
public:
    // Monotonic time in milliseconds.
    static int64_t nowMs();
    // Device (wall) time in seconds since the epoch.
    static int64_t wallSeconds();
    // The device's local time of day broken down.
    static void localTime(struct tm& out);

    // Waits for the given time. Returns false when the wait was cut short
    // because the calling GThread is being stopped.
    static bool sleepMs(int64_t ms);

    // Virtual clock control. The thread that installs the virtual clock drives
    // it: a wait on that thread advances the clock instead of blocking.
    static void useVirtual(int64_t startWallSeconds = 0);
    static void useReal();
    static bool isVirtual();
    // Advances the virtual clock by ms. Every wait that falls due on the way is
    // released in deadline order, and each released thread is let run until it
    // waits again (or ends) before time moves on, so a thread pacing itself
    // with one-second waits runs once per simulated second.
    static void advanceMs(int64_t ms);
    // True on the thread that installed the virtual clock (and drives it).
    static bool drivesVirtualClock();
    // For the driving thread while it waits for something that another thread
    // holds during a pause on the clock (a lock): moves the clock on to the
    // earliest pending wait, releasing it as advanceMs does, so the holder's
    // pause ends. False, with nothing moved, when no thread waits on the clock
    // or the caller does not drive a virtual clock.
    static bool advanceToNextWait();
    // Number of threads now waiting on the virtual clock, and a helper that
    // waits (in real time, bounded) until at least n threads are waiting.
    static int sleeperCount();
    static bool waitForSleepers(int n, int timeoutMs = 2000);
    // Sets the device time of day (virtual clock only): the wall clock jumps,
    // the monotonic time does not move.
    static void setTimeOfDay(int hour, int minute, int second = 0);
    static void setWallSeconds(int64_t seconds);

    // For a thread other than the driver that has to wait for a lock which
    // another thread holds, possibly while pausing on the virtual clock: while
    // it waits, advanceMs does not wait for it to come back to a wait (it
    // cannot until the holder goes on), and once it has the lock it counts as
    // running again until its next wait. beginLockWait tells whether the thread
    // was counted as running; endLockWait takes that answer.
    static bool beginLockWait();
    static void endLockWait(bool wasRunning);

    // Wakes every waiting thread so that it can check whether it is being stopped.
    static void wakeAll();
    // Called by a GThread whose loop ends, so advance() stops waiting for it.
    static void threadLeaving();
};
