#pragma once
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "camsim/SerialFrontEnd.h"
#include "drivers/serial/FCBEV7310SenseController.h"
#include "drivers/serial/ViscaSenseController.h"
#include "visca/SimViscaModule.h"

namespace camsim {

// A VISCA zoom block camera on the serial line (the FCB-EV7310 and the other
// Sony block cameras): the simulated block of the row's model at the far end
// of the line, run by the module's controller, which this front end constructs
// (`Controller` of the row's factory). Its commands drive the lens through the
// controller (zoom, focus, iris, one-push focus) and, on the FCB-EV7310, the
// baud change and the restart; the line's commands (fault, trace) come with it.
class ViscaFrontEnd : public SerialFrontEnd {
public:
    using MakeController = ViscaSenseController* (*)();

    // The factory of a row whose module is run by `Controller`.
    template <class Controller>
    static std::unique_ptr<SimFrontEnd> create(const SimModule& row, const ModuleConfigure& record,
                                               SimModule::Link link, std::string& problem) {
        return build(row, record, link, problem, [] { return static_cast<ViscaSenseController*>(new Controller()); },
                     std::is_base_of<FCBEV7310SenseController, Controller>::value);
    }

    void attach(SensorControllerManager& manager) override;
    void detach() override;
    std::string dayNightSource() const override;
    std::string help() const override;
    bool command(const std::string& cmd, const std::vector<std::string>& args, FILE* out,
                 std::string& error) override;

    // The simulated block of a front end's line (a problem text when the
    // row's device is no VISCA block), and what it took, for the status.
    static SimViscaModule* blockOf(SerialLine& line, std::string& problem);
    static std::string blockCounts(const SimViscaModule& block);

protected:
    void setModuleNight(bool night) override { m_pBlock->setNight(night); }
    bool moduleNight() const override { return m_pBlock->isNight(); }
    std::string deviceCounts() const override { return blockCounts(*m_pBlock); }

private:
    ViscaFrontEnd(const SimModule& row, SimModule::Link link, MakeController make, bool baudAndRestart)
        : SerialFrontEnd(row, link), m_make(make), m_bBaudAndRestart(baudAndRestart) {}
    static std::unique_ptr<SimFrontEnd> build(const SimModule& row, const ModuleConfigure& record,
                                              SimModule::Link link, std::string& problem, MakeController make,
                                              bool baudAndRestart);
    void printModuleStatus(FILE* out) override;
    bool cmdZoom(const std::vector<std::string>& args, FILE* out, std::string& error);
    bool cmdFocus(const std::vector<std::string>& args, FILE* out, std::string& error);
    bool cmdBaud(const std::vector<std::string>& args, FILE* out, std::string& error);

    MakeController m_make;
    bool m_bBaudAndRestart;
    int m_nRecordBaud = 9600;
    ViscaSenseController* m_pCamera = nullptr;  // owned by the manager, between attach and detach
    SimViscaModule* m_pBlock = nullptr;         // the line's device
};

}  // namespace camsim
