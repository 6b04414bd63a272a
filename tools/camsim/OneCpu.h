#pragma once
// Keeps the calling thread, and every thread it starts meanwhile, on the one CPU
// it runs on now; the thread's previous CPU set comes back when the object goes.
//
// On the virtual clock only one of the simulated camera's threads runs at a time:
// the clock hands each simulated second to the worker that waits for it and waits
// until that worker waits again. On one CPU such a hand-over is a switch between
// two threads of that CPU; across CPUs it wakes a second, idle CPU each time, which
// costs several times more (and far more in a virtual machine). A simulated day is
// about 86,400 hand-overs.
#include <sched.h>

class OneCpu {
public:
    OneCpu() {
        CPU_ZERO(&m_previous);
        if (::sched_getaffinity(0, sizeof(m_previous), &m_previous) != 0) return;
        const int cpu = ::sched_getcpu();
        if (cpu < 0 || cpu >= CPU_SETSIZE) return;
        cpu_set_t one;
        CPU_ZERO(&one);
        CPU_SET(cpu, &one);
        m_bPinned = ::sched_setaffinity(0, sizeof(one), &one) == 0;
    }
    ~OneCpu() {
        if (m_bPinned) ::sched_setaffinity(0, sizeof(m_previous), &m_previous);
    }
    OneCpu(const OneCpu&) = delete;
    OneCpu& operator=(const OneCpu&) = delete;

    bool isPinned() const { return m_bPinned; }

private:
    cpu_set_t m_previous;
    bool m_bPinned = false;
};
