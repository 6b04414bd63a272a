#include "camsim/EventMonitor.h"

#include <sys/stat.h>

#include <algorithm>
#include <ctime>

#include "camsim/RootSetup.h"
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

EventMonitor::EventMonitor(SimFrontEnd& frontEnd) : m_frontEnd(frontEnd) {}

std::string EventMonitor::stamp() const {
    struct tm now {};
    PlatformClock::localTime(now);
    char buf[32];
    std::snprintf(buf, sizeof(buf), "[%02d:%02d:%02d]", now.tm_hour, now.tm_min, now.tm_sec);
    return buf;
}

void EventMonitor::print(const std::string& kind, const std::string& text) {
    if (m_bQuiet) return;
    std::fprintf(m_pOut, "%s %-8s %s\n", stamp().c_str(), kind.c_str(), text.c_str());
}

std::map<std::string, EventMonitor::FileStamp> EventMonitor::snapshotFiles() const {
    std::map<std::string, FileStamp> out;
    for (const std::string& cameraPath : listRootFiles()) {
        struct stat st {};
        if (::stat(PlatformRoot::resolve(cameraPath).c_str(), &st) != 0) continue;
        out[cameraPath] = {static_cast<long long>(st.st_size),
                           static_cast<long long>(st.st_mtim.tv_sec) * 1000000000LL + st.st_mtim.tv_nsec};
    }
    return out;
}

void EventMonitor::prime() {
    m_frontEnd.forget();
    m_files = snapshotFiles();
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
            std::string text = (m_nScheme < -1 ? std::string("-") : std::to_string(m_nScheme)) + " -> " +
                               std::to_string(scheme);
            const std::vector<ParamScheme*>& list = m_controller->getSchemeList();
            if (scheme == -1) {
                text += "  (factory set: no scheme window holds the time)";
            } else if (scheme >= 0 && static_cast<size_t>(scheme) < list.size()) {
                int start = 0, end = 0;
                list[static_cast<size_t>(scheme)]->getStartTime(start);
                list[static_cast<size_t>(scheme)]->getEndTime(end);
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
            print("daynight", dn == 1 ? "DAY   (colour picture, IR-cut filter in)"
                                      : dn == 0 ? "NIGHT (monochrome picture, IR-cut filter out)" : "unknown");
            m_nDNState = dn;
        }
    }

    std::map<std::string, FileStamp> files = snapshotFiles();
    for (const auto& f : files) {
        auto old = m_files.find(f.first);
        if (old == m_files.end() || old->second != f.second) {
            ++m_totals.filesWritten;
            print("file", f.first + " written (" + std::to_string(f.second.size) + " bytes)");
        }
    }
    for (const auto& f : m_files)
        if (!files.count(f.first)) print("file", f.first + " removed");
    m_files.swap(files);
}

}  // namespace camsim
