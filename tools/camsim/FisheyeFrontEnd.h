#pragma once
#include <deque>
#include <string>
#include <vector>

#include "camsim/SimBoardIO.h"
#include "camsim/SimFrontEnd.h"
#include "camsim/SimModule.h"
#include "ksia/SimIsp.h"

namespace camsim {

// The fisheye ISP board (module 88): the simulated ISP driver library, the
// light sensor on the ADC, a GPIO controller that records the IR-cut filter
// and IR LED pins named in the module's detail, and a silent serial port.
class FisheyeFrontEnd : public SimFrontEnd {
public:
    explicit FisheyeFrontEnd(const ModuleConfigure& module);
    // The factory of its row in the module table.
    static std::unique_ptr<SimFrontEnd> create(const SimModule& row, const ModuleConfigure& record,
                                               SimModule::Link link, std::string& problem);

    std::string name() const override { return "fisheye board"; }
    void attach(SensorControllerManager& manager) override;
    void detach() override;
    std::string schemeValues(int index) const override;
    bool lensByParameters() const override { return true; }
    const char* parameterName(int id) const override;
    bool parameterId(const std::string& name, int& id) const override;
    void setLight(int percent) override;
    int light() const override { return m_nLight; }
    std::string lightText() const override;
    std::string dayNightSource() const override;
    std::string pictureState() const override;
    bool irLampsOn() const override;
    void activity(int& gpioWrites, int& ispSets, int& ispReads) const override {
        gpioWrites = m_nGpioWrites, ispSets = m_nIspSets, ispReads = m_nIspGets;
    }
    void forget() override;
    void report(const Printer& print) override;
    void printStatus(FILE* out) override;
    void printSummary(FILE* out) const override;
    std::string help() const override;
    bool command(const std::string& cmd, const std::vector<std::string>& args, FILE* out,
                 std::string& error) override;

private:
    std::string describeGpio(int group, int pin, int level) const;

    int m_nModuleId;
    BoardPins m_pins;
    SimGPIO* m_pGpio = nullptr;  // owned by the manager's safe pointer
    int m_nLight = 80;
    std::deque<SimIsp::Call> m_recentIsp;
    int m_nIspSets = 0;
    int m_nIspGets = 0;
    int m_nIspFailures = 0;
    int m_nGpioWrites = 0;
};

}  // namespace camsim
