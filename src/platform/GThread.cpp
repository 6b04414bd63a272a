#include "platform/GThread.h"

#include "platform/PlatformClock.h"

namespace {
thread_local GThread* t_current = nullptr;
thread_local const std::atomic<bool>* t_stopFlag = nullptr;
}  // namespace

GThread::GThread(Function body, const std::string& name, Function startHook, Function endHook)
    : m_body(std::move(body)),
      m_strName(name),
      m_startHook(startHook ? std::move(startHook) : Function(emptyFun)),
      m_endHook(endHook ? std::move(endHook) : Function(emptyFun)) {}

GThread::~GThread() { stop(); }

void GThread::emptyFun() {}

bool GThread::start() {
    if (m_bRunning.load() || m_thread.joinable() || !m_body) return false;
    m_bStop.store(false);
    m_bRunning.store(true);
    try {
        m_thread = std::thread(&GThread::run, this);
    } catch (...) {
        m_bRunning.store(false);
        return false;
    }
    return true;
}

void GThread::stop() {
    m_bStop.store(true);
    PlatformClock::wakeAll();
    if (m_thread.joinable()) {
        if (m_thread.get_id() == std::this_thread::get_id())
            m_thread.detach();  // a thread stopping itself ends after this body pass
        else
            m_thread.join();
    }
    m_bRunning.store(false);
}

bool GThread::currentStopRequested() { return t_stopFlag != nullptr && t_stopFlag->load(); }

void GThread::run() {
    t_current = this;
    t_stopFlag = &m_bStop;
    m_startHook();
    while (!m_bStop.load()) m_body();
    m_endHook();
    t_stopFlag = nullptr;
    t_current = nullptr;
    PlatformClock::threadLeaving();
}
