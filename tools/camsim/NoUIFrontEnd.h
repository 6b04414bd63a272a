#pragma once
#include <memory>
#include <string>

#include "camsim/SerialFrontEnd.h"
#include "visca/SimViscaModule.h"

namespace camsim {

// A camera whose image module offers no image settings (NoSensorUIController):
// every parameter is taken without effect, and the controller's "getDN" thread
// follows the module's day/night state over the RS-485 line. The device at the
// far end is the simulated VISCA block of the row's model, which answers that
// inquiry. Its commands are the line's (fault, trace).
class NoUIFrontEnd : public SerialFrontEnd {
public:
    static std::unique_ptr<SimFrontEnd> create(const SimModule& row, const ModuleConfigure& record,
                                               SimModule::Link link, std::string& problem);

    void attach(SensorControllerManager& manager) override;
    int clockThreads() const override { return 1; }  // the "getDN" thread
    // The module has no parameters to save: a scheme holds its window only.
    std::string schemeValues(int) const override { return std::string(); }
    std::string dayNightSource() const override;

private:
    NoUIFrontEnd(const SimModule& row, SimModule::Link link) : SerialFrontEnd(row, link) {}
    void printModuleStatus(FILE* out) override;
    void setModuleNight(bool night) override { m_pBlock->setNight(night); }
    bool moduleNight() const override { return m_pBlock->isNight(); }
    std::string deviceCounts() const override;

    SimViscaModule* m_pBlock = nullptr;  // the line's device
};

}  // namespace camsim
