// camsim's module table: what `camsim --module NAME` can fit.
//
// Adding a module: write its front end (a SimFrontEnd; a module on the serial
// line derives from SerialFrontEnd, a VISCA block camera needs none of its own:
// ViscaFrontEnd::create<ItsController>) in a file of its own under
// tools/camsim, add it to tools/CMakeLists.txt, and add one row below: the
// name, a description, the module id and sensor type, the module record used
// when the root's moduleConfig.xml has none of that id, the front end's
// factory, the simulated device on its serial line and its model (nullptr,
// nullptr for a module without a line), whether it is a serial module and the
// names of the front end's own commands.
//
// The device: a SimModule::DeviceFactory builds the simulated device for the
// row's model name; SerialLine has one per device kind (viscaBlock for a model
// profile of SimViscaModule, asciiModule for a register file of SimAsciiModule,
// effioProcessor). A new kind of device (any SimSerialDevice) needs only a
// function of that signature; its front end reaches it with
// SerialLine::deviceAs<ItsDevice>(). The line brings fault injection and the
// trace for every kind, in-process and over the pseudo-terminal. CamSim.cpp needs no change; `help`, the refusals and --module's list
// of names follow the table.
#include "camsim/SimModule.h"

#include "camsim/AsciiFrontEnd.h"
#include "camsim/EffioFrontEnd.h"
#include "camsim/FisheyeFrontEnd.h"
#include "camsim/IspBoardFrontEnd.h"
#include "camsim/NoUIFrontEnd.h"
#include "camsim/RootSetup.h"
#include "camsim/SerialLine.h"
#include "camsim/ViscaFrontEnd.h"
#include "drivers/ispboard/IIPC368ZoomSensorController.h"
#include "drivers/ispboard/IT1SenseController.h"
#include "drivers/ispboard/IT1ZoomModuleSenseController.h"
#include "drivers/ispboard/ITNSenseController.h"
#include "drivers/ispboard/KestraISPSenseController.h"
#include "drivers/ispboard/SeawolfSenseController.h"
#include "drivers/serial/CMD7200SenseController.h"
#include "drivers/serial/CMD7300SenseController.h"
#include "drivers/serial/CMD8100SenseController.h"
#include "drivers/serial/CMD8100_OldSenseController.h"
#include "drivers/serial/CMD8300SenseController.h"
#include "drivers/serial/EffioSenseController.h"
#include "drivers/serial/FCBEV7310SenseController.h"
#include "drivers/serial/HitachCompatSenseController.h"
#include "drivers/serial/HitachSenseController.h"
#include "drivers/serial/NoSensorUIController.h"
#include "drivers/serial/SC110N_CSenseController.h"
#include "drivers/serial/SONYCH3310SenseController.h"
#include "drivers/serial/SONYCV7500SenseController.h"
#include "drivers/serial/SONYEH4300SenseController.h"

namespace camsim {
namespace {

// The serial modules' line: device, day/night from the module (isInfrared=0).
const char* const kSerialDetail = "RS485=/dev/ttyS1;isInfrared=0";
// baud, data bits, stop bits, parity
const char* const kSerialLine = "RS485=9600,8,1,0";
// The CMD8100 (either firmware) names its generation in the detail, the CMD8300 the web
// interface's configuration in the parameters.
const char* const kCMD8100Detail = "RS485=/dev/ttyS1;isInfrared=0;generation=2";
const char* const kCMD8300Line = "RS485=9600,8,1,0;GUIConfigName=camsim";
// The ISP boards: the in-house ISP's detail keys; the ITN board's line under
// the RS232 keys and its day/night output on GPIO 0/5, day low.
const char* const kKestraDetail = "RS485=/dev/ttyS1;isInfrared=0;TNF=1;HDR=0";
const char* const kITNDetail = "RS232=/dev/ttyS1;isInfrared=0;GPIODNLevel=0,5,0";
const char* const kITNLine = "RS232=9600,8,1,0";
// The Hitachi modules say whether they are of the third generation.
const char* const kHitachDetail = "RS485=/dev/ttyS1;isInfrared=0;isThridGeneration=0";
// A module that reports no day/night state on the line: day and night come
// from the board's input (isInfrared=1), which camsim's GPIO holds at day.
const char* const kBoardDayNightDetail = "RS485=/dev/ttyS1;isInfrared=1";

}  // namespace

const std::vector<SimModule>& SimModule::table() {
    static const std::vector<SimModule> rows = {
        {"fisheye", "fisheye ISP board", 88, 0, kDefaultModuleDetail, kDefaultModuleParameters,
         &FisheyeFrontEnd::create, nullptr, nullptr, false, "isp zoom focus lens"},
        {"fcbev7310", "Sony FCB-EV7310 zoom block, VISCA", 73, FCBEV7310SenseController::SensorType, kSerialDetail,
         kSerialLine, &ViscaFrontEnd::create<FCBEV7310SenseController>, &SerialLine::viscaBlock, "FCB-EV7310", true,
         "zoom focus iris baud restart fault trace"},
        // The no-UI module's line reads baud, data bits, parity, stop bits; the
        // device answering its day/night inquiry is a VISCA block.
        {"noui", "module without image settings", 99, NoSensorUIController::SensorType, "RS485=/dev/ttyS1",
         "RS485=9600,8,0,1", &NoUIFrontEnd::create, &SerialLine::viscaBlock, "FCB-EV7310", true, "fault trace"},
        {"eh4300", "Sony EH4300 zoom block, VISCA", 74, SONYEH4300SenseController::SensorType, kSerialDetail,
         kSerialLine, &ViscaFrontEnd::create<SONYEH4300SenseController>, &SerialLine::viscaBlock, "EH4300", true,
         "zoom focus iris fault trace"},
        {"cv7500", "Sony CV7500 zoom block, VISCA", 75, SONYCV7500SenseController::SensorType, kSerialDetail,
         kSerialLine, &ViscaFrontEnd::create<SONYCV7500SenseController>, &SerialLine::viscaBlock, "CV7500", true,
         "zoom focus iris fault trace"},
        {"ch3310", "Sony CH3310 zoom block, VISCA", 76, SONYCH3310SenseController::SensorType, kSerialDetail,
         kSerialLine, &ViscaFrontEnd::create<SONYCH3310SenseController>, &SerialLine::viscaBlock, "CH3310", true,
         "zoom focus iris fault trace"},
        {"cmd8100", "CMD8100 zoom block, VISCA", 77, CMD8100SenseController::SensorType, kCMD8100Detail,
         kSerialLine, &ViscaFrontEnd::create<CMD8100SenseController>, &SerialLine::viscaBlock, "CMD8100", true,
         "zoom focus iris fault trace"},
        {"cmd8100old", "CMD8100 zoom block of the earlier firmware, VISCA", 78,
         CMD8100_OldSenseController::SensorType, kCMD8100Detail, kSerialLine,
         &ViscaFrontEnd::create<CMD8100_OldSenseController>, &SerialLine::viscaBlock, "CMD8100_Old", true,
         "zoom focus iris fault trace"},
        {"cmd7300", "CMD7300 zoom block, VISCA", 79, CMD7300SenseController::SensorType, kSerialDetail,
         kSerialLine, &ViscaFrontEnd::create<CMD7300SenseController>, &SerialLine::viscaBlock, "CMD7300", true,
         "zoom focus iris fault trace"},
        {"cmd8300", "CMD8300 zoom block, VISCA", 80, CMD8300SenseController::SensorType, kSerialDetail,
         kCMD8300Line, &ViscaFrontEnd::create<CMD8300SenseController>, &SerialLine::viscaBlock, "CMD8300", true,
         "zoom focus iris fault trace"},
        // The ASCII register modules; those with a status register show day and
        // night in its bit 0.
        {"hitachi", "Hitachi block camera, ASCII registers", 81, HitachSenseController::SensorType, kHitachDetail,
         kSerialLine, &AsciiFrontEnd::create<HitachSenseController, HitachSenseController::StatusRegister>,
         &SerialLine::asciiModule, "Hitach", true, "register fault trace"},
        {"hitachicompat", "Hitachi-compatible block camera, ASCII registers", 82,
         HitachCompatSenseController::SensorType, kHitachDetail, kSerialLine,
         &AsciiFrontEnd::create<HitachCompatSenseController, HitachSenseController::StatusRegister>,
         &SerialLine::asciiModule, "HitachCompat", true, "iris register fault trace"},
        {"sc110nc", "SC110N-C camera, ASCII registers", 83, SC110N_CSenseController::SensorType, kSerialDetail,
         kSerialLine, &AsciiFrontEnd::create<SC110N_CSenseController, SC110N_CSenseController::StatusRegister>,
         &SerialLine::asciiModule, "SC110N-C", true, "zoom focus register fault trace"},
        {"cmd7200", "CMD7200 camera, ASCII registers", 84, CMD7200SenseController::SensorType, kBoardDayNightDetail,
         kSerialLine, &AsciiFrontEnd::create<CMD7200SenseController>, &SerialLine::asciiModule, "CMD7200", true,
         "register fault trace"},
        {"effio", "Effio camera processor, checksummed frames", 85, EffioSenseController::SensorType,
         kBoardDayNightDetail, kSerialLine, &EffioFrontEnd::create, &SerialLine::effioProcessor, "Effio", true,
         "store fault trace"},
        // ISP boards: the simulated board of the controller's register table.
        {"it1", "IT1 ISP board", SensorTypes::IT1, IT1SenseController::SensorType, kSerialDetail, kSerialLine,
         &IspBoardFrontEnd::create<IT1SenseController>, &IspBoardFrontEnd::board, "IT1", true, "board fault trace"},
        {"it1zoom", "IT1 ISP board with a zoom lens", SensorTypes::IT1ZoomModule,
         IT1ZoomModuleSenseController::SensorType, kSerialDetail, kSerialLine,
         &IspBoardFrontEnd::create<IT1ZoomModuleSenseController>, &IspBoardFrontEnd::board, "IT1Zoom", true,
         "board fault trace"},
        {"iipc368", "IPC368 zoom board with privacy masks", SensorTypes::IIPC368Zoom,
         IIPC368ZoomSensorController::SensorType, kSerialDetail, kSerialLine,
         &IspBoardFrontEnd::create<IIPC368ZoomSensorController>, &IspBoardFrontEnd::board, "IIPC368", true,
         "board fault trace"},
        {"kestraisp", "in-house ISP board", SensorTypes::KestraISP, KestraISPSenseController::SensorType,
         kKestraDetail, kSerialLine, &IspBoardFrontEnd::create<KestraISPSenseController>, &IspBoardFrontEnd::board,
         "Kestra", true, "board fault trace"},
        {"itn", "ITN ISP board", SensorTypes::ITN, ITNSenseController::SensorType, kITNDetail, kITNLine,
         &IspBoardFrontEnd::create<ITNSenseController>, &IspBoardFrontEnd::board, "ITN", true, "board fault trace"},
        {"seawolf", "Seawolf ISP board", SensorTypes::Seawolf, SeawolfSenseController::SensorType, kSerialDetail,
         kSerialLine, &IspBoardFrontEnd::create<SeawolfSenseController>, &IspBoardFrontEnd::board, "Seawolf", true,
         "board fault trace"},
    };
    return rows;
}

const SimModule* SimModule::find(const std::string& name) {
    for (const SimModule& row : table())
        if (name == row.name) return &row;
    return nullptr;
}

std::string SimModule::names() {
    std::string text;
    for (const SimModule& row : table()) text += (text.empty() ? "" : ", ") + std::string(row.name);
    return text;
}

bool SimModule::offers(const std::string& command) const {
    const std::string words = std::string(" ") + commands + " ";
    return !command.empty() && words.find(" " + command + " ") != std::string::npos;
}

std::string SimModule::commandList() const {
    std::string text = commands;
    for (size_t at = text.find(' '); at != std::string::npos; at = text.find(' ', at + 2)) text.replace(at, 1, ", ");
    return text;
}

}  // namespace camsim
