#include "platform/KSMutex.h"

void KSMutex::Lock(const char* /*file*/, int /*line*/) { m_mutex.lock(); }
void KSMutex::Unlock(const char* /*file*/, int /*line*/) { m_mutex.unlock(); }
bool KSMutex::TryLock() { return m_mutex.try_lock(); }
