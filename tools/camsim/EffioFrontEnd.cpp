#include "camsim/EffioFrontEnd.h"

#include <cstdio>

#include "camsim/CommandLine.h"

#include "drivers/serial/EffioSenseController.h"

namespace camsim {

EffioFrontEnd::EffioFrontEnd(const SimModule& row, SimModule::Link link) : SerialFrontEnd(row, link) {
    m_line.setBusyMeaning("the processor answers a write with a communication error and does not carry it out");
}

std::unique_ptr<SimFrontEnd> EffioFrontEnd::create(const SimModule& row, const ModuleConfigure& record,
                                                   SimModule::Link link, std::string& problem) {
    std::unique_ptr<EffioFrontEnd> front(new EffioFrontEnd(row, link));
    if (!front->openLine(record, problem)) return nullptr;
    front->m_pProcessor = front->m_line.deviceAs<SimEffioProcessor>();
    if (front->m_pProcessor == nullptr) {
        problem = "the module's line has no simulated Effio processor at its far end";
        return nullptr;
    }
    return std::unique_ptr<SimFrontEnd>(front.release());
}

void EffioFrontEnd::attach(SensorControllerManager& manager) {
    EffioSenseController* camera = new EffioSenseController();
    nameParameters(*camera);
    attachController(manager, camera);
}

std::string EffioFrontEnd::dayNightSource() const {
    return "the board's day/night input (isInfrared=1), at day in camsim: the processor reports no day/night "
           "state";
}

std::string EffioFrontEnd::deviceCounts() const {
    return "the processor took " + std::to_string(m_pProcessor->frameCount()) + " frames, carried out " +
           std::to_string(m_pProcessor->writeCount()) + " writes";
}

void EffioFrontEnd::printModuleStatus(FILE* o) {
    const int major = m_pProcessor->byteAt(SimEffioProcessor::VersionCategory, 0);
    const int minor = m_pProcessor->byteAt(SimEffioProcessor::VersionCategory, 1);
    std::fprintf(o, "processor      Effio, version %d.%d; status answers: %d done, %d communication errors, %d other\n",
                 major, minor, m_pProcessor->statusCount(SimEffioProcessor::Done),
                 m_pProcessor->statusCount(SimEffioProcessor::CommunicationError),
                 m_pProcessor->statusCount(SimEffioProcessor::CategoryError) +
                     m_pProcessor->statusCount(SimEffioProcessor::ByteError) +
                     m_pProcessor->statusCount(SimEffioProcessor::OtherError));
}


std::string EffioFrontEnd::help() const {
    return "  store CATEGORY BYTE         a byte of the simulated processor's store, as it holds it\n" +
           SerialFrontEnd::help();
}

bool EffioFrontEnd::command(const std::string& cmd, const std::vector<std::string>& args, FILE* o,
                            std::string& error) {
    if (SerialFrontEnd::command(cmd, args, o, error)) return true;
    if (cmd != "store") return false;
    int category = 0, byteNo = 0;
    if (args.size() != 2 || !parseInt(args[0], category) || !parseInt(args[1], byteNo)) {
        error = "usage: store CATEGORY BYTE";
        return true;
    }
    const int value = m_pProcessor->byteAt(category, byteNo);
    if (value < 0)
        error = "the processor's store has no byte " + std::to_string(byteNo) + " in category " +
                std::to_string(category);
    else
        std::fprintf(o, "category %d byte %d = 0x%02X (%d)\n", category, byteNo, static_cast<unsigned int>(value),
                     value);
    return true;
}

}  // namespace camsim
