#pragma once
// While it exists, the calling thread, and every thread it starts meanwhile, runs
// on the one CPU it runs on now and under the batch scheduling policy; the thread's
// previous CPU set and policy come back when the object goes.
//
// On the virtual clock only one of the simulated camera's threads runs at a time:
// the clock hands each simulated second to the workers that wait for it and waits
// until they wait again. A simulated day is about 86,400 such hand-overs, so their
// cost is what a long run costs:
// - across CPUs each hand-over wakes a second, idle CPU (an inter-processor
//   interrupt, a VM exit in a virtual machine); on one CPU it is a switch between
//   two threads of that CPU;
// - under the normal policy a woken worker preempts the clock's thread at once,
//   finds the clock's lock still held and sleeps again on it; batch threads do
//   not preempt on wake-up, so the clock's thread finishes its step first.
#include <sched.h>

class SimScheduling {
public:
    SimScheduling() {
        CPU_ZERO(&m_previousCpus);
        if (::sched_getaffinity(0, sizeof(m_previousCpus), &m_previousCpus) == 0) {
            const int cpu = ::sched_getcpu();
            if (cpu >= 0 && cpu < CPU_SETSIZE) {
                cpu_set_t one;
                CPU_ZERO(&one);
                CPU_SET(cpu, &one);
                m_bPinned = ::sched_setaffinity(0, sizeof(one), &one) == 0;
            }
        }
        m_nPreviousPolicy = ::sched_getscheduler(0);
        if (m_nPreviousPolicy == SCHED_OTHER && ::sched_getparam(0, &m_previousParam) == 0) {
            struct sched_param none {};
            m_bBatch = ::sched_setscheduler(0, SCHED_BATCH, &none) == 0;
        }
    }
    ~SimScheduling() {
        if (m_bBatch) ::sched_setscheduler(0, m_nPreviousPolicy, &m_previousParam);
        if (m_bPinned) ::sched_setaffinity(0, sizeof(m_previousCpus), &m_previousCpus);
    }
    SimScheduling(const SimScheduling&) = delete;
    SimScheduling& operator=(const SimScheduling&) = delete;

    bool isPinned() const { return m_bPinned; }
    bool isBatch() const { return m_bBatch; }

private:
    cpu_set_t m_previousCpus;
    struct sched_param m_previousParam {};
    int m_nPreviousPolicy = -1;
    bool m_bPinned = false;
    bool m_bBatch = false;
};
