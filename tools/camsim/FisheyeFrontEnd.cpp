#include "camsim/FisheyeFrontEnd.h"

#include <algorithm>
#include <cstdio>

#include "adc/SimAdc.h"
#include "camsim/CommandLine.h"
#include "camsim/GainReadingFisheyeController.h"
#include "camsim/ParamNames.h"
#include "drivers/fisheye/KsiaDriver.h"
#include "platform/ModuleParameterParser.h"

namespace camsim {
namespace {
const size_t kRecentIsp = 64;
// More ISP writes than this in a row are shown as one line.
const size_t kGroupAbove = 4;

std::string describeCall(const SimIsp::Call& c) {
    std::string text = ispCommandName(c.nCommand) + " <- " + std::to_string(c.nValueIn);
    if (c.nResult != 0) {
        char code[24];
        std::snprintf(code, sizeof(code), " (error 0x%x)", static_cast<unsigned int>(c.nResult));
        text += code;
    }
    return text;
}
}  // namespace

FisheyeFrontEnd::FisheyeFrontEnd(const ModuleConfigure& module) : m_nModuleId(module.getModuleId()) {
    ModuleParameterParser detail;
    if (!detail.parse(module.getDetail())) return;
    std::string text;
    if (detail.getValue("GPIO", text) &&
        std::sscanf(text.c_str(), "%d,%d,%d", &m_pins.irCutGroup, &m_pins.irCutPin, &m_pins.irCutDayLevel) == 3)
        m_pins.hasIrCut = true;
    int infrared = 0;
    if (detail.getValue("isInfrared", infrared) && infrared != 0 && detail.getValue("GPIOInfraredLight", text) &&
        std::sscanf(text.c_str(), "%d,%d,%d", &m_pins.ledGroup, &m_pins.ledPin, &m_pins.ledDayLevel) == 3)
        m_pins.hasLeds = true;
}

std::unique_ptr<SimFrontEnd> FisheyeFrontEnd::create(const SimModule&, const ModuleConfigure& record, SimModule::Link,
                                                     std::string&) {
    return std::unique_ptr<SimFrontEnd>(new FisheyeFrontEnd(record));
}

std::string FisheyeFrontEnd::schemeValues(int index) const {
    // brightness, contrast, 3D noise reduction (maximum, fixed)
    static const char* const kValues[] = {"(1,50)(2,55)(26,40)", "(1,55)(2,50)(26,60)", "(1,60)(2,45)(26,80)(27,70)",
                                          "(1,50)"};
    return index >= 0 && index < 4 ? kValues[index] : "";
}

const char* FisheyeFrontEnd::parameterName(int id) const { return camsim::parameterName(id); }

bool FisheyeFrontEnd::parameterId(const std::string& name, int& id) const { return parameterIdByName(name, id); }

void FisheyeFrontEnd::attach(SensorControllerManager& manager) {
    SimIsp::instance().reset();
    SimAdc::install();
    SimAdc::instance().reset();
    setLight(m_nLight);
    m_pGpio = new SimGPIO();
    manager.setUARTController(SafePointer<IUARTController>(new SimUART()));
    manager.setGPIO(SafePointer<IGPIO>(m_pGpio));
    // For the fisheye module, the library's fisheye controller with camsim's gain
    // read (see the class); any other record's controller comes from the factory.
    if (m_nModuleId == S2FisheyeSenseController::SensorType)
        manager.setSensorController(SafePointer<ISensorController>(new GainReadingFisheyeController()));
}

void FisheyeFrontEnd::detach() {
    m_pGpio = nullptr;
    SimAdc::uninstall();
}

void FisheyeFrontEnd::setLight(int percent) {
    m_nLight = percent;
    // A bright scene is a low ISP scene level; the light sensor reads a share of
    // its full scale (rounded up, so that 70 percent reads as 70 percent).
    SimIsp::instance().setSceneLevel(100 - percent);
    SimAdc::instance().setReading((percent * SimAdc::FullScale + 99) / 100);
}

std::string FisheyeFrontEnd::lightText() const {
    return "ISP scene level " + std::to_string(SimIsp::instance().sceneLevel()) + ", ADC " +
           std::to_string(SimAdc::instance().reading()) + "/" + std::to_string(SimAdc::FullScale);
}

std::string FisheyeFrontEnd::dayNightSource() const {
    return m_pins.hasLeds ? "light sensor on the ADC" : "ISP scene level";
}

std::string FisheyeFrontEnd::pictureState() const {
    std::string text;
    int level = 0;
    if (m_pins.hasIrCut) {
        if (m_pGpio == nullptr || !m_pGpio->levelOf(m_pins.irCutGroup, m_pins.irCutPin, level))
            text = "IR-cut filter never driven";
        else
            text = level == m_pins.irCutDayLevel ? "IR-cut filter in" : "IR-cut filter out";
    }
    if (m_pins.hasLeds) {
        if (!text.empty()) text += ", ";
        if (m_pGpio == nullptr || !m_pGpio->levelOf(m_pins.ledGroup, m_pins.ledPin, level))
            text += "IR LEDs never driven";
        else
            text += level == m_pins.ledDayLevel ? "IR LEDs off" : "IR LEDs on";
    }
    return text;
}

bool FisheyeFrontEnd::irLampsOn() const {
    int level = 0;
    return m_pins.hasLeds && m_pGpio != nullptr && m_pGpio->levelOf(m_pins.ledGroup, m_pins.ledPin, level) &&
           level != m_pins.ledDayLevel;
}

std::string FisheyeFrontEnd::describeGpio(int group, int pin, int level) const {
    char buf[96];
    std::snprintf(buf, sizeof(buf), "%d/%d <- %d", group, pin, level);
    std::string text = buf;
    if (m_pins.hasIrCut && group == m_pins.irCutGroup && pin == m_pins.irCutPin)
        text += level == m_pins.irCutDayLevel ? "  IR-cut filter in (day)" : "  IR-cut filter out (night)";
    else if (m_pins.hasLeds && group == m_pins.ledGroup && pin == m_pins.ledPin)
        text += level == m_pins.ledDayLevel ? "  IR LEDs off" : "  IR LEDs on";
    return text;
}

void FisheyeFrontEnd::forget() {
    SimIsp::instance().clearCalls();
    if (m_pGpio != nullptr) m_pGpio->takeWrites();
}

void FisheyeFrontEnd::report(const Printer& print) {
    std::vector<SimIsp::Call> calls = SimIsp::instance().calls();
    SimIsp::instance().clearCalls();
    std::vector<SimGPIO::Write> writes;
    if (m_pGpio != nullptr) writes = m_pGpio->takeWrites();

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
        if (c.nResult != 0) ++m_nIspFailures;
        if (c.nDirection == KSIA_GET) {
            ++m_nIspGets;
            continue;
        }
        ++m_nIspSets;
        items.push_back({c.nTimeMs, &c, nullptr});
    }
    for (const SimGPIO::Write& w : writes) {
        ++m_nGpioWrites;
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
        if (j == i) {
            // The same picture command sent again at once is one line with a count.
            while (j < items.size() && items[j].call != nullptr && items[j].call->nCommand == items[i].call->nCommand &&
                   items[j].call->nValueIn == items[i].call->nValueIn && items[j].call->nResult == items[i].call->nResult)
                ++j;
            print("isp", describeCall(*items[i].call) + (j - i > 1 ? " (sent " + std::to_string(j - i) + " times)" : ""));
            i = j;
            continue;
        }
        if (j - i > kGroupAbove) {
            std::string text = std::to_string(j - i) + " commands:";
            for (size_t k = i; k < i + 3; ++k) text += " " + describeCall(*items[k].call) + ",";
            text += " ... " + describeCall(*items[j - 1].call);
            print("isp", text);
        } else {
            for (size_t k = i; k < j; ++k) print("isp", describeCall(*items[k].call));
        }
        i = j;
    }
}

void FisheyeFrontEnd::printStatus(FILE* o) {
    int level = 0;
    if (m_pins.hasIrCut) {
        bool known = m_pGpio != nullptr && m_pGpio->levelOf(m_pins.irCutGroup, m_pins.irCutPin, level);
        std::fprintf(o, "IR-cut filter  gpio %d/%d = %s  (%s)\n", m_pins.irCutGroup, m_pins.irCutPin,
                     known ? std::to_string(level).c_str() : "-",
                     !known ? "never driven" : level == m_pins.irCutDayLevel ? "in, day" : "out, night");
    }
    if (m_pins.hasLeds) {
        bool known = m_pGpio != nullptr && m_pGpio->levelOf(m_pins.ledGroup, m_pins.ledPin, level);
        std::fprintf(o, "IR LEDs        gpio %d/%d = %s  (%s)\n", m_pins.ledGroup, m_pins.ledPin,
                     known ? std::to_string(level).c_str() : "-",
                     !known ? "never driven" : level == m_pins.ledDayLevel ? "off" : "on");
    } else {
        std::fprintf(o, "IR LEDs        none on this board\n");
    }
    std::fprintf(o, "light          %d %% (%s)\n", m_nLight, lightText().c_str());
    std::fprintf(o, "last ISP commands sent:\n");
    std::vector<SimIsp::Call> sets;
    for (const SimIsp::Call& c : m_recentIsp)
        if (c.nDirection == KSIA_SET) sets.push_back(c);
    size_t first = sets.size() > 8 ? sets.size() - 8 : 0;
    for (size_t i = first; i < sets.size(); ++i)
        std::fprintf(o, "  set %3d %-24s <- %d%s\n", sets[i].nCommand, ispCommandName(sets[i].nCommand).c_str(),
                     sets[i].nValueIn, sets[i].nResult == 0 ? "" : "  (failed)");
    if (sets.empty()) std::fprintf(o, "  (none lately; 'isp' lists reads too)\n");
}

void FisheyeFrontEnd::printSummary(FILE* o) const {
    std::fprintf(o,
                 "  ISP commands          %d sets, %d reads, %d failed\n"
                 "  GPIO writes           %d\n",
                 m_nIspSets, m_nIspGets, m_nIspFailures, m_nGpioWrites);
}

std::string FisheyeFrontEnd::help() const {
    return "  isp [N]                     the last N ISP driver commands\n"
           "  zoom wide|tele [fast]  focus near|far [fast]  focus auto  lens reset\n";
}

bool FisheyeFrontEnd::command(const std::string& cmd, const std::vector<std::string>& args, FILE* o,
                              std::string& error) {
    if (cmd != "isp") return false;
    int count = 12;
    if (!args.empty() && (!parseInt(args[0], count) || count < 1 || count > 64)) {
        error = "usage: isp [N] with N from 1 to 64";
        return true;
    }
    size_t first = m_recentIsp.size() > static_cast<size_t>(count) ? m_recentIsp.size() - static_cast<size_t>(count) : 0;
    for (size_t i = first; i < m_recentIsp.size(); ++i) {
        const SimIsp::Call& c = m_recentIsp[i];
        char result[32] = "ok";
        if (c.nResult != 0) std::snprintf(result, sizeof(result), "error 0x%x", static_cast<unsigned int>(c.nResult));
        if (c.nDirection == KSIA_SET)
            std::fprintf(o, "  set %3d %-24s <- %-6d %s\n", c.nCommand, ispCommandName(c.nCommand).c_str(),
                         c.nValueIn, result);
        else
            std::fprintf(o, "  get %3d %-24s -> %-6d %s\n", c.nCommand, ispCommandName(c.nCommand).c_str(),
                         c.nValueOut, result);
    }
    return true;
}

}  // namespace camsim
