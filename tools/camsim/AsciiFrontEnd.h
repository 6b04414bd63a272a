#pragma once
#include <memory>
#include <string>
#include <vector>

#include "ascii/SimAsciiModule.h"
#include "camsim/SerialFrontEnd.h"
#include "drivers/serial/AsciiSenseController.h"

namespace camsim {

// A camera module of the ASCII register protocol on the serial line (Hitachi,
// Hitachi-compatible, SC110N-C, CMD7200): the simulated register module of
// the row's model at the far end (SimAsciiModule), run by the module's
// controller, which this front end constructs (`Controller` of the row's
// factory). The trace shows the commands and answers as text. A module with a
// status register (`StatusRegister`, NoStatus for none) shows day or night in
// its bit 0, which the controller's worker reads once a second. The lens
// operations of the controller's table (zoom tele/wide/stop, focus
// near/far/stop/onepush, iris open/close: set-only ids) are commands where the
// module has them; the line's commands (fault, trace) come with it.
class AsciiFrontEnd : public SerialFrontEnd {
public:
    enum { NoStatus = -1 };
    using MakeController = AsciiSenseController* (*)();

    // The factory of a row whose module is run by `Controller`.
    template <class Controller, int StatusRegister = NoStatus>
    static std::unique_ptr<SimFrontEnd> create(const SimModule& row, const ModuleConfigure& record,
                                               SimModule::Link link, std::string& problem) {
        return build(row, record, link, problem,
                     [] { return static_cast<AsciiSenseController*>(new Controller()); }, StatusRegister);
    }

    void attach(SensorControllerManager& manager) override;
    // The status worker is not counted: it and the day/night worker share the
    // line, so at any moment one of them may wait for the other's transaction
    // on the line's lock rather than on the clock.
    int clockThreads() const override { return 0; }
    void detach() override;
    std::string dayNightSource() const override;
    std::string help() const override;
    bool command(const std::string& cmd, const std::vector<std::string>& args, FILE* out,
                 std::string& error) override;

protected:
    bool reportsDayNight() const override { return m_nStatusRegister != NoStatus; }
    void setModuleNight(bool night) override;
    bool moduleNight() const override;
    std::string deviceCounts() const override;

private:
    // A lens command word and its argument, run as the set-only id of the
    // controller's row of that name.
    struct LensOp {
        const char* command;   // "zoom"
        const char* argument;  // "tele"
        const char* rowName;   // "ZoomTele"
        int id;                // the row's id; 0 when the module has none
    };

    AsciiFrontEnd(const SimModule& row, SimModule::Link link, MakeController make, int statusRegister);
    static std::unique_ptr<SimFrontEnd> build(const SimModule& row, const ModuleConfigure& record,
                                              SimModule::Link link, std::string& problem, MakeController make,
                                              int statusRegister);
    void printModuleStatus(FILE* out) override;

    MakeController m_make;
    int m_nStatusRegister;
    std::vector<LensOp> m_lensOps;
    AsciiSenseController* m_pCamera = nullptr;  // owned by the manager, between attach and detach
    SimAsciiModule* m_pModule = nullptr;         // the line's device
};

}  // namespace camsim
