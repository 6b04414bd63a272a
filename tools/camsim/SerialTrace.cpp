#include "camsim/SerialTrace.h"

#include <cstdio>
#include <ctime>

#include "platform/PlatformClock.h"

namespace camsim {
namespace {
std::string hex(const unsigned char* bytes, int length) {
    std::string text;
    char b[4];
    for (int i = 0; i < length; ++i) {
        std::snprintf(b, sizeof(b), "%s%02X", text.empty() ? "" : " ", bytes[i]);
        text += b;
    }
    return text;
}

std::string quoted(const unsigned char* bytes, int length) {
    std::string text = "\"";
    for (int i = 0; i < length; ++i) {
        const unsigned char b = bytes[i];
        switch (b) {
            case '"': text += "\\\""; break;
            case '\\': text += "\\\\"; break;
            case '\r': text += "\\r"; break;
            case '\n': text += "\\n"; break;
            case '\t': text += "\\t"; break;
            default:
                if (b >= 0x20 && b < 0x7F) {
                    text += static_cast<char>(b);
                } else {
                    char code[8];
                    std::snprintf(code, sizeof(code), "\\x%02X", b);
                    text += code;
                }
        }
    }
    return text + "\"";
}
}  // namespace

std::string SerialTrace::format(const unsigned char* bytes, int length, bool text) {
    return text ? quoted(bytes, length) : hex(bytes, length);
}

void SerialTrace::setText(bool text) {
    std::lock_guard<std::mutex> lock(m_mutex);
    closeRunLocked();
    m_bText = text;
}

std::string SerialTrace::stamp() {
    struct tm now {};
    PlatformClock::localTime(now);
    char buf[32];
    std::snprintf(buf, sizeof(buf), "%02d:%02d:%02d.%03d", now.tm_hour, now.tm_min, now.tm_sec,
                  static_cast<int>(PlatformClock::nowMs() % 1000));
    return buf;
}

void SerialTrace::setEnabled(bool on) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!on) closeRunLocked();
    m_bEnabled = on;
}

void SerialTrace::setVerdict(Verdict verdict) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_verdict = std::move(verdict);
}

std::string SerialTrace::verdictLocked(const unsigned char* bytes, int length) const {
    if (!m_verdict) return std::string();
    const std::string v = m_verdict(bytes, length);
    return v.empty() ? v : "  " + v;
}

bool SerialTrace::enabled() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_bEnabled;
}

void SerialTrace::addLocked(const std::string& line) {
    if (m_lines.size() >= MaxLines) {
        ++m_nDropped;
        return;
    }
    m_lines.push_back(line);
}

void SerialTrace::closeRunLocked() {
    if (m_strRun.empty()) return;
    const unsigned char* run = reinterpret_cast<const unsigned char*>(m_strRun.data());
    const int n = static_cast<int>(m_strRun.size());
    addLocked(m_strRunStamp + " <- " + format(run, n, m_bText) + verdictLocked(run, n));
    m_strRun.clear();
}

void SerialTrace::sent(const unsigned char* bytes, int length) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (length > 0) m_nWritten += length;
    if (!m_bEnabled || length <= 0) return;
    closeRunLocked();
    addLocked(stamp() + " -> " + format(bytes, length, m_bText) + verdictLocked(bytes, length));
}

void SerialTrace::received(const unsigned char* bytes, int length) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (length > 0) m_nRead += length;
    if (!m_bEnabled || length <= 0) return;
    if (m_strRun.empty()) m_strRunStamp = stamp();
    m_strRun.append(reinterpret_cast<const char*>(bytes), static_cast<size_t>(length));
}

void SerialTrace::timedOut(int timeoutMs) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_bEnabled) return;
    closeRunLocked();
    addLocked(stamp() + " <- nothing within " + std::to_string(timeoutMs) + " ms");
}

void SerialTrace::note(const std::string& text) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_bEnabled) return;
    closeRunLocked();
    addLocked(stamp() + " " + text);
}

std::vector<std::string> SerialTrace::take() {
    std::lock_guard<std::mutex> lock(m_mutex);
    closeRunLocked();
    std::vector<std::string> out;
    out.swap(m_lines);
    if (m_nDropped > 0) {
        out.push_back("... " + std::to_string(m_nDropped) + " more lines not kept");
        m_nDropped = 0;
    }
    return out;
}

void SerialTrace::counts(long& written, long& read) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    written = m_nWritten;
    read = m_nRead;
}

}  // namespace camsim
