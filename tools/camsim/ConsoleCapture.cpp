#include "camsim/ConsoleCapture.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>

namespace {
// A line that cannot come from the library: it marks a point in the stream.
const char kMarker[] = "\x1d" "camsim-sync ";
const size_t kRecentLines = 400;
}  // namespace

ConsoleCapture::~ConsoleCapture() { stop(); }

bool ConsoleCapture::start() {
    if (m_bActive) return true;
    std::fflush(stdout);
    int fds[2];
    if (::pipe(fds) != 0) return false;
    m_nRealFd = ::dup(STDOUT_FILENO);
    if (m_nRealFd < 0 || ::dup2(fds[1], STDOUT_FILENO) < 0) {
        ::close(fds[0]);
        ::close(fds[1]);
        if (m_nRealFd >= 0) ::close(m_nRealFd);
        m_nRealFd = -1;
        return false;
    }
    ::close(fds[1]);
    ::fcntl(fds[0], F_SETFD, FD_CLOEXEC);
    ::fcntl(m_nRealFd, F_SETFD, FD_CLOEXEC);
    m_nPipeRead = fds[0];
    int outFd = ::dup(m_nRealFd);
    m_pOut = outFd >= 0 ? ::fdopen(outFd, "w") : nullptr;
    if (m_pOut != nullptr) std::setvbuf(m_pOut, nullptr, _IOLBF, 0);
    m_bActive = true;
    m_reader = std::thread([this] { readerLoop(); });
    return true;
}

void ConsoleCapture::stop() {
    if (!m_bActive) return;
    std::fflush(stdout);
    // Standard output goes back to the terminal; the pipe's last writer closes
    // with it, so the reader sees the end of the stream.
    ::dup2(m_nRealFd, STDOUT_FILENO);
    if (m_reader.joinable()) m_reader.join();
    ::close(m_nPipeRead);
    ::close(m_nRealFd);
    m_nPipeRead = -1;
    m_nRealFd = -1;
    if (m_pOut != nullptr) std::fclose(m_pOut);
    m_pOut = nullptr;
    m_bActive = false;
}

void ConsoleCapture::readerLoop() {
    std::string partial;
    char buffer[4096];
    for (;;) {
        ssize_t n = ::read(m_nPipeRead, buffer, sizeof(buffer));
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        partial.append(buffer, static_cast<size_t>(n));
        size_t start = 0;
        for (size_t nl = partial.find('\n', start); nl != std::string::npos; nl = partial.find('\n', start)) {
            handleLine(partial.substr(start, nl - start));
            start = nl + 1;
        }
        partial.erase(0, start);
    }
    if (!partial.empty()) handleLine(partial);
    std::lock_guard<std::mutex> lock(m_mutex);
    m_nMarkerSeen = m_nMarkerSent;
    m_cond.notify_all();
}

void ConsoleCapture::handleLine(const std::string& line) {
    const size_t markerLength = sizeof(kMarker) - 1;
    size_t at = line.find(kMarker);
    std::lock_guard<std::mutex> lock(m_mutex);
    if (at != std::string::npos) {
        // Text printed without a line end before the marker is a line of its own.
        if (at > 0) {
            std::string before = line.substr(0, at);
            m_pending.push_back(before);
            m_recent.push_back(before);
            if (m_bEcho && m_pOut != nullptr) std::fprintf(m_pOut, "  | %s\n", before.c_str());
        }
        m_nMarkerSeen = std::strtoul(line.c_str() + at + markerLength, nullptr, 10);
        m_cond.notify_all();
        return;
    }
    m_pending.push_back(line);
    m_recent.push_back(line);
    while (m_recent.size() > kRecentLines) m_recent.pop_front();
    if (m_bEcho && m_pOut != nullptr) std::fprintf(m_pOut, "  | %s\n", line.c_str());
}

std::vector<std::string> ConsoleCapture::take() {
    std::vector<std::string> out;
    if (!m_bActive) return out;
    std::fflush(stdout);
    unsigned long marker;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        marker = ++m_nMarkerSent;
    }
    char text[64];
    int len = std::snprintf(text, sizeof(text), "%s%lu\n", kMarker, marker);
    ssize_t ignored = ::write(STDOUT_FILENO, text, static_cast<size_t>(len));
    (void)ignored;
    std::unique_lock<std::mutex> lock(m_mutex);
    m_cond.wait_for(lock, std::chrono::seconds(2), [&] { return m_nMarkerSeen >= marker; });
    out.swap(m_pending);
    return out;
}

std::vector<std::string> ConsoleCapture::recent(size_t count) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    size_t first = m_recent.size() > count ? m_recent.size() - count : 0;
    return std::vector<std::string>(m_recent.begin() + static_cast<long>(first), m_recent.end());
}

void ConsoleCapture::setEcho(bool echo) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_bEcho = echo;
}

bool ConsoleCapture::echo() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_bEcho;
}
