#include "camsim/EventMonitor.h"

#include <sys/stat.h>

#include <algorithm>
#include <ctime>

#include "camsim/ParamNames.h"
#include "camsim/RootSetup.h"
#include "drivers/fisheye/KsiaDriver.h"
#include "platform/PlatformClock.h"
#include "platform/PlatformRoot.h"
#include "storage/ParamScheme.h"

namespace camsim {
namespace {
const size_t kRecentIsp = 64;
// More ISP writes than this in a row are shown as one line.
const size_t kGroupAbove = 4;

std::string hhmm(int t) {
    char buf[16];
    std::snprintf(buf, sizeof(buf), "%02d:%02d", t / 100, t % 100);
    return buf;
}
}  // namespace

EventMonitor::EventMonitor(SimGPIO& gpio, const BoardPins& pins) : m_gpio(gpio), m_pins(pins) {}

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

std::string EventMonitor::describeGpio(int group, int pin, int level) const {
    char buf[96];
    std::snprintf(buf, sizeof(buf), "%d/%d <- %d", group, pin, level);
    std::string text = buf;
    if (m_pins.hasIrCut && group == m_pins.irCutGroup && pin == m_pins.irCutPin)
        text += level == m_pins.irCutDayLevel ? "  IR-cut filter in (day)" : "  IR-cut filter out (night)";
    else if (m_pins.hasLeds && group == m_pins.ledGroup && pin == m_pins.ledPin)
        text += level == m_pins.ledDayLevel ? "  IR LEDs off" : "  IR LEDs on";
    return text;
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
    SimIsp::instance().clearCalls();
    m_gpio.takeWrites();
    m_files = snapshotFiles();
    if (!m_controller.isNull()) {
        m_nScheme = m_controller->getCurrentParamSchemeIndex();
        m_nDNState = m_controller->getCurrentDNState();
    }
}

void EventMonitor::poll() {
    std::vector<SimIsp::Call> calls = SimIsp::instance().calls();
    SimIsp::instance().clearCalls();
    std::vector<SimGPIO::Write> writes = m_gpio.takeWrites();

    // ISP writes and GPIO writes in the order they happened.
    struct Item {
        int64_t timeMs;
        const SimIsp::Call* call;
        const SimGPIO::Write* write;
    };
    std::vector<Item> items;
    for (const SimIsp::Call& c : calls) {
        m_recentIsp.push_back(c);
        if (m_recentIsp.size() > kRecentIsp) m_recentIsp.pop_front();
        if (c.nResult != 0) ++m_totals.ispFailures;
        if (c.nDirection == KSIA_GET) {
            ++m_totals.ispGets;
            continue;
        }
        ++m_totals.ispSets;
        items.push_back({c.nTimeMs, &c, nullptr});
    }
    for (const SimGPIO::Write& w : writes) {
        ++m_totals.gpioWrites;
        items.push_back({w.timeMs, nullptr, &w});
    }
    // At equal times the GPIO write goes first: the day sequence drives the
    // pins and then turns the picture without waiting in between.
    std::stable_sort(items.begin(), items.end(), [](const Item& a, const Item& b) {
        if (a.timeMs != b.timeMs) return a.timeMs < b.timeMs;
        return a.write != nullptr && b.write == nullptr;
    });

    for (size_t i = 0; i < items.size();) {
        if (items[i].write != nullptr) {
            const SimGPIO::Write& w = *items[i].write;
            print("gpio", describeGpio(w.group, w.pin, w.level));
            ++i;
            continue;
        }
        // A run of ISP writes; the picture day/night command always stands on its own line.
        size_t j = i;
        while (j < items.size() && items[j].call != nullptr && items[j].call->nCommand != KSIA_PICTURE_DAY_NIGHT) ++j;
        if (j == i) j = i + 1;
        auto describe = [](const SimIsp::Call& c) {
            std::string text = ispCommandName(c.nCommand) + " <- " + std::to_string(c.nValueIn);
            if (c.nResult != 0) {
                char code[24];
                std::snprintf(code, sizeof(code), " (error 0x%x)", static_cast<unsigned int>(c.nResult));
                text += code;
            }
            return text;
        };
        if (j - i > kGroupAbove) {
            std::string text = std::to_string(j - i) + " commands:";
            for (size_t k = i; k < i + 3; ++k) text += " " + describe(*items[k].call) + ",";
            text += " ... " + describe(*items[j - 1].call);
            print("isp", text);
        } else {
            for (size_t k = i; k < j; ++k) print("isp", describe(*items[k].call));
        }
        i = j;
    }

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

std::vector<SimIsp::Call> EventMonitor::recentIspCalls(size_t count) const {
    size_t first = m_recentIsp.size() > count ? m_recentIsp.size() - count : 0;
    return std::vector<SimIsp::Call>(m_recentIsp.begin() + static_cast<long>(first), m_recentIsp.end());
}

}  // namespace camsim
