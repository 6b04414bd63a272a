#pragma once
#include <atomic>
#include <functional>
#include <string>
#include <thread>

// A named platform thread: the start hook runs once, then the body runs again
// and again until stop() is asked for, then the end hook runs once. The body
// does its own pacing with platform waits (KestraTime::wait, PlatformClock);
// stop() cuts such a wait short, so stopping never waits a pause out.
class GThread {
public:
    using Function = std::function<void()>;

    GThread(Function body, const std::string& name, Function startHook = emptyFun,
            Function endHook = emptyFun);
    ~GThread();
    GThread(const GThread&) = delete;
    GThread& operator=(const GThread&) = delete;

    static void emptyFun();

    // Starts the loop; false if it is already running or cannot be started.
    bool start();
    // Asks the loop to end and waits until it has ended. Safe to call when not running.
    void stop();
    bool isRunning() const { return m_bRunning.load(); }
    const std::string& getName() const { return m_strName; }

    // True when the GThread running the caller is being stopped.
    static bool currentStopRequested();

private:
    void run();

    Function m_body;
    std::string m_strName;
    Function m_startHook;
    Function m_endHook;
    std::thread m_thread;
    std::atomic<bool> m_bRunning{false};
    std::atomic<bool> m_bStop{false};
};
