#include "camsim/EventMonitor.h"

#include <sys/stat.h>

#include <algorithm>
#include <ctime>
#include <mutex>

#include "platform/FileChangeObserver.h"
#include "platform/PlatformClock.h"
#include "platform/PlatformRoot.h"
#include "storage/ParamScheme.h"

namespace camsim {
namespace {
std::string hhmm(int t) {
    char buf[16];
    std::snprintf(buf, sizeof(buf), "%02d:%02d", t / 100, t % 100);
    return buf;
}
}  // namespace

namespace {
// Camera paths of the files changed since the last poll, in order, each once.
std::mutex g_changedMutex;
std::vector<std::string> g_changed;
}  // namespace

EventMonitor::EventMonitor(SimFrontEnd& frontEnd) : m_frontEnd(frontEnd) { FileChangeObserver::set(fileChanged); }

EventMonitor::~EventMonitor() { FileChangeObserver::set(nullptr); }

void EventMonitor::fileChanged(const std::string& resolvedPath) {
    std::string root = PlatformRoot::get();
    while (!root.empty() && root.back() == '/') root.pop_back();
    if (resolvedPath.compare(0, root.size(), root) != 0 || resolvedPath.size() <= root.size() ||
        resolvedPath[root.size()] != '/')
        return;
    std::string cameraPath = resolvedPath.substr(root.size());
    std::lock_guard<std::mutex> lock(g_changedMutex);
    if (std::find(g_changed.begin(), g_changed.end(), cameraPath) == g_changed.end()) g_changed.push_back(cameraPath);
}

std::string EventMonitor::stamp() const {
    struct tm now {};
    PlatformClock::localTime(now);
    char buf[32];
    std::snprintf(buf, sizeof(buf), "[%02d:%02d:%02d]", now.tm_hour, now.tm_min, now.tm_sec);
    return buf;
}

void EventMonitor::print(const std::string& kind, const std::string& text) {
    if (m_bQuiet) return;
    ++m_nPrinted;
    if (m_bLineToClear) {
        std::fputs("\r\033[K", m_pOut);
        m_bLineToClear = false;
    }
    std::fprintf(m_pOut, "%s %-8s %s\n", stamp().c_str(), kind.c_str(), text.c_str());
}

void EventMonitor::prime() {
    m_frontEnd.forget();
    std::lock_guard<std::mutex> lock(g_changedMutex);
    g_changed.clear();
    if (!m_controller.isNull()) {
        m_nScheme = m_controller->getCurrentParamSchemeIndex();
        m_nDNState = m_controller->getCurrentDNState();
    }
}

void EventMonitor::poll() {
    m_frontEnd.report([this](const std::string& kind, const std::string& text) { print(kind, text); });

    if (!m_controller.isNull()) {
        int scheme = m_controller->getCurrentParamSchemeIndex();
        if (scheme != m_nScheme) {
            if (m_nScheme >= -1 && !m_bQuiet) ++m_totals.schemeSwitches;
            std::string text = m_nScheme < -1 ? std::to_string(scheme) + " in force at start"
                                              : std::to_string(m_nScheme) + " -> " + std::to_string(scheme);
            const std::vector<ParamScheme> list = m_controller->getSchemeList();
            if (scheme == -1) {
                text += "  (factory set: no scheme window holds the time)";
            } else if (scheme >= 0 && static_cast<size_t>(scheme) < list.size()) {
                int start = 0, end = 0;
                list[static_cast<size_t>(scheme)].getStartTime(start);
                list[static_cast<size_t>(scheme)].getEndTime(end);
                text += "  (window " + hhmm(start) + "-" + hhmm(end) + ")";
            }
            print("scheme", text);
            m_nScheme = scheme;
        }
        int dn = m_controller->getCurrentDNState();
        if (dn != m_nDNState) {
            // The first state after start-up is no transition.
            if (m_nDNState >= 0 && dn == 1) ++m_totals.toDay;
            if (m_nDNState >= 0 && dn == 0) ++m_totals.toNight;
            // What the pins show, not what the state implies: a mode that
            // drives no GPIO leaves the filter and lamps where they were.
            const std::string pins = m_frontEnd.pictureState();
            print("daynight", std::string(dn == 1 ? "DAY  " : dn == 0 ? "NIGHT" : "unknown") +
                                  (pins.empty() ? std::string() : " (pins: " + pins + ")"));
            m_nDNState = dn;
        }
    }

    std::vector<std::string> changed;
    {
        std::lock_guard<std::mutex> lock(g_changedMutex);
        changed.swap(g_changed);
    }
    m_lastFiles = changed;
    for (const std::string& path : changed) {
        struct stat st {};
        if (::stat(PlatformRoot::resolve(path).c_str(), &st) != 0) {
            print("file", path + " removed");
            continue;
        }
        ++m_totals.filesWritten;
        print("file", path + " written (" + std::to_string(static_cast<long long>(st.st_size)) + " bytes)");
    }
}

}  // namespace camsim
