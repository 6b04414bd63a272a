#pragma once
#include <map>
#include <string>
#include <vector>

#include "camsim/SerialLine.h"
#include "camsim/SimBoardIO.h"
#include "camsim/SimFrontEnd.h"
#include "camsim/SimModule.h"

class ISensorController;

namespace camsim {

// What the front ends of modules on the serial line share: the line with its
// simulated device (SerialLine: fault injection, trace), a GPIO controller that
// records writes, a device that switches day and night by itself with the
// light of the scene (night below 30 %, day from 50 %; how the device shows it
// is the family's: setModuleNight; a device without such a state ignores the
// light), and the application's
// way of running a controller that the factory does not build: the front end
// constructs it and hands it to the manager with setSensorController before
// init. A module family adds its controller and commands in a subclass.
class SerialFrontEnd : public SimFrontEnd {
public:
    enum { NightBelow = 30, DayFrom = 50 };

    std::string name() const override;
    void detach() override;
    std::string schemeValues(int index) const override;
    // The names of the controller's parameter table (none by default).
    const char* parameterName(int id) const override;
    bool parameterId(const std::string& name, int& id) const override;
    void setLight(int percent) override;
    int light() const override { return m_nLight; }
    std::string lightText() const override;
    std::string pictureState() const override;
    void forget() override;
    void report(const Printer& print) override;
    void printStatus(FILE* out) override;
    void printSummary(FILE* out) const override;
    std::string help() const override { return SerialLine::help(m_bTraceText); }
    bool command(const std::string& cmd, const std::vector<std::string>& args, FILE* out,
                 std::string& error) override;

protected:
    SerialFrontEnd(const SimModule& row, SimModule::Link link);
    // Opens the line for the module record; false with the reason in `problem`.
    bool openLine(const ModuleConfigure& record, std::string& problem) { return m_line.open(record, problem); }
    // Hands the manager the port, the GPIO controller and `controller`.
    void attachController(SensorControllerManager& manager, ISensorController* controller);
    // The status lines of the module itself, before the line's.
    virtual void printModuleStatus(FILE* out) = 0;
    // Whether the device has a day/night state of its own that the
    // controller reads over the line (the light switches it).
    virtual bool reportsDayNight() const { return true; }
    // Puts the simulated device in night (or day) mode, as the module does by
    // itself with the scene's light; whether it is in night mode.
    virtual void setModuleNight(bool night) = 0;
    virtual bool moduleNight() const = 0;
    // What the device took, for the status ("the module took 3 packets,
    // carried out 2"); empty when it counts nothing.
    virtual std::string deviceCounts() const { return std::string(); }
    // The GPIO controller handed to the manager; nullptr before attach.
    SimGPIO* gpio() { return m_pGpio; }
    // The traffic is text (ASCII commands): the trace shows it so.
    void setTraceText() {
        m_bTraceText = true;
        m_line.setTraceText(true);
    }
    // A name of a parameter table as a command word: "LowLightChromaSuppress"
    // -> "low-light-chroma-suppress", "WBMode" -> "wb-mode", "DTNTime_H" -> "dtn-time-h".
    static std::string commandWord(const char* name);
    // Names the controller's parameters (m_names) after the rows of its table
    // (findRow(id) with `name`, ids 0-499), and takes its row "Sharpness" as
    // the parameter of the sample schemes.
    template <class Controller>
    void nameParameters(const Controller& controller) {
        for (int id = 0; id < 500; ++id)
            if (const auto* row = controller.findRow(id)) {
                m_names[id] = commandWord(row->name);
                if (std::string(row->name) == "Sharpness") setSchemeParameter(id, row->minValue, row->maxValue);
            }
    }
    // The parameter that camsim's sample schemes set (its id and range); a
    // family sets it from its table in attach (by default id 1, 0-100).
    void setSchemeParameter(int id, int minValue, int maxValue) {
        m_nSchemeId = id;
        m_nSchemeMin = minValue;
        m_nSchemeMax = maxValue;
    }

    const SimModule& m_row;
    SerialLine m_line;
    // Parameter names by id ("low-light-chroma-suppress"), from the controller's table.
    std::map<int, std::string> m_names;

private:
    SimGPIO* m_pGpio = nullptr;  // owned by the manager's safe pointer
    int m_nLight = 80;
    bool m_bTraceText = false;
    int m_nSchemeId = 1, m_nSchemeMin = 0, m_nSchemeMax = 100;
};

}  // namespace camsim
