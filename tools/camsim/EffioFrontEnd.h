#pragma once
#include <memory>
#include <string>
#include <vector>

#include "camsim/SerialFrontEnd.h"
#include "effio/SimEffioProcessor.h"

class EffioSenseController;

namespace camsim {

// An Effio camera processor on the serial line: the simulated processor
// (SimEffioProcessor, its category/byte store) at the far end, run by
// EffioSenseController. The processor reports no day/night state on the line;
// its commands are a look into its store (`store CATEGORY BYTE`) and the
// line's (fault, trace), the trace in hex.
class EffioFrontEnd : public SerialFrontEnd {
public:
    static std::unique_ptr<SimFrontEnd> create(const SimModule& row, const ModuleConfigure& record,
                                               SimModule::Link link, std::string& problem);

    void attach(SensorControllerManager& manager) override;
    std::string dayNightSource() const override;
    std::string help() const override;
    bool command(const std::string& cmd, const std::vector<std::string>& args, FILE* out,
                 std::string& error) override;

protected:
    bool reportsDayNight() const override { return false; }
    void setModuleNight(bool) override {}
    bool moduleNight() const override { return false; }
    std::string deviceCounts() const override;

private:
    EffioFrontEnd(const SimModule& row, SimModule::Link link);
    void printModuleStatus(FILE* out) override;

    SimEffioProcessor* m_pProcessor = nullptr;  // the line's device
};

}  // namespace camsim
