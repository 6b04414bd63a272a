#pragma once
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "camsim/SerialFrontEnd.h"
#include "drivers/ispboard/IBaseIT1SenseController.h"
#include "drivers/ispboard/ITNSenseController.h"
#include "drivers/ispboard/IspBoardSenseController.h"
#include "ispboard/SimIspBoard.h"

namespace camsim {

// An ISP board on the serial line (the IT1 family, the zoom boards, the
// in-house ISP, the ITN and Seawolf boards): the simulated board of the row's
// table at the far end of the line, run by the board's controller, which this
// front end constructs (`Controller` of the row's factory). The trace shows
// each frame with its checksum verdict in the board's frame shape; `board`
// shows the simulated board's registers and injects the faults of the answer
// frame. How the board shows day and night follows its controller: the IT1
// family's status register, the ITN board's GPIO input, the others none.
class IspBoardFrontEnd : public SerialFrontEnd {
public:
    using MakeController = IspBoardSenseController* (*)();

    // The factory of a row whose board is run by `Controller`.
    template <class Controller>
    static std::unique_ptr<SimFrontEnd> create(const SimModule& row, const ModuleConfigure& record,
                                               SimModule::Link link, std::string& problem) {
        const DayNight dn = std::is_base_of<IBaseIT1SenseController, Controller>::value ? StatusRegister
                            : std::is_base_of<ITNSenseController, Controller>::value    ? GpioInput
                                                                                        : Remembered;
        return build(
            row, record, link, problem, [] { return static_cast<IspBoardSenseController*>(new Controller()); }, dn);
    }
    // The device builder of the rows: the simulated board of a table, by the
    // name of its controller's board ("IT1", "IT1Zoom", "IIPC368", "Kestra",
    // "ITN", "Seawolf"); nullptr for another name.
    static std::unique_ptr<SimSerialDevice> board(const char* model);

    void attach(SensorControllerManager& manager) override;
    void beforeStop() override;
    void detach() override;
    int clockThreads() const override { return m_eDayNight == StatusRegister ? 2 : 0; }
    std::string dayNightSource() const override;
    std::string help() const override;
    bool command(const std::string& cmd, const std::vector<std::string>& args, FILE* out, std::string& error) override;

protected:
    void setModuleNight(bool night) override;
    bool moduleNight() const override;
    std::string deviceCounts() const override;

private:
    // Where the board shows day and night.
    enum DayNight { Remembered, StatusRegister, GpioInput };
    enum { GpioGroup = 0, GpioPin = 5 };  // the ITN record's GPIODNLevel=0,5,0

    IspBoardFrontEnd(const SimModule& row, SimModule::Link link, MakeController make, DayNight dn)
        : SerialFrontEnd(row, link), m_make(make), m_eDayNight(dn) {}
    static std::unique_ptr<SimFrontEnd> build(const SimModule& row, const ModuleConfigure& record, SimModule::Link link,
                                              std::string& problem, MakeController make, DayNight dn);
    void printModuleStatus(FILE* out) override;
    bool cmdBoard(const std::vector<std::string>& args, FILE* out, std::string& error);
    void printRegister(FILE* out, const IspBoardTable::Register& reg) const;

    MakeController m_make;
    DayNight m_eDayNight;
    bool m_bNight = false;
    IspBoardSenseController* m_pBoardController = nullptr;  // owned by the manager, between attach and detach
    SimIspBoard* m_pBoard = nullptr;                        // the line's device
};

}  // namespace camsim
