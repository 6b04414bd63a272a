#include "platform/KSLogger.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/FileChangeObserver.h"
#include "platform/FsUtil.h"
#include "platform/PlatformClock.h"
#include "platform/PlatformRoot.h"

namespace {
std::atomic<bool> g_consoleEnabled{true};
}  // namespace

void KSLogger::setConsoleEnabled(bool enabled) { g_consoleEnabled.store(enabled); }

bool KSLogger::isConsoleEnabled() { return g_consoleEnabled.load(std::memory_order_relaxed); }

int KSLogger::consolePrintf(const char* fmt, ...) {
    if (!isConsoleEnabled()) return 0;
    va_list ap;
    va_start(ap, fmt);
    int n = std::vprintf(fmt, ap);
    va_end(ap);
    return n;
}

int KSLogger::consolePuts(const char* text) {
    if (!isConsoleEnabled()) return 0;
    return std::puts(text);
}

bool KSLogger::init(const char* path, unsigned int size, unsigned int count) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (path == nullptr || *path == '\0') return false;
    m_strPath = PlatformRoot::resolve(path);
    m_nSize = size;
    m_nCount = count == 0 ? 1 : count;
    return FsUtil::makeDirs(FsUtil::dirName(m_strPath));
}

void KSLogger::rotate() {
    // name.(n-2) -> name.(n-1), ..., name -> name.1; the oldest falls off.
    for (unsigned int i = m_nCount - 1; i >= 1; --i) {
        std::string to = m_strPath + "." + std::to_string(i);
        std::string from = i == 1 ? m_strPath : m_strPath + "." + std::to_string(i - 1);
        if (::rename(from.c_str(), to.c_str()) == 0) FileChangeObserver::notify(to);
    }
    if (m_nCount == 1 && ::unlink(m_strPath.c_str()) == 0) FileChangeObserver::notify(m_strPath);
}

bool KSLogger::writeLog(const char* tag, const char* text) {
    struct tm t {};
    PlatformClock::localTime(t);
    char stamp[80];
    std::snprintf(stamp, sizeof(stamp), "%04d-%02d-%02d %02d:%02d:%02d", t.tm_year + 1900, t.tm_mon + 1, t.tm_mday,
                  t.tm_hour, t.tm_min, t.tm_sec);
    std::string line = std::string(stamp) + " [" + (tag ? tag : "") + "] " + (text ? text : "");
    while (!line.empty() && line.back() == '\n') line.pop_back();
    line += '\n';

    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_strPath.empty()) return false;
    if (m_nSize > 0 && line.size() > m_nSize) {
        line.resize(m_nSize - 1);
        line += '\n';
    }
    struct stat st {};
    if (m_nSize > 0 && ::stat(m_strPath.c_str(), &st) == 0 && st.st_size > 0 &&
        static_cast<unsigned long long>(st.st_size) + line.size() > m_nSize)
        rotate();
    int fd = ::open(m_strPath.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (fd < 0) return false;
    bool ok = ::write(fd, line.data(), line.size()) == static_cast<ssize_t>(line.size());
    ::close(fd);
    FileChangeObserver::notify(m_strPath);
    return ok;
}
