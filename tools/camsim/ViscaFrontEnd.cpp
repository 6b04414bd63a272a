#include "camsim/ViscaFrontEnd.h"

#include <cstdio>
#include <cstdlib>

#include "camsim/CommandLine.h"
#include "platform/ModuleParameterParser.h"

namespace camsim {
namespace {

// A lens position: "0x6000" or "24576", 0 to 0xFFFF.
bool parsePosition(const std::string& text, int& value) {
    const bool hex = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    char* end = nullptr;
    const long v = std::strtol(text.c_str(), &end, hex ? 16 : 10);
    if (text.empty() || end == text.c_str() || *end != '\0' || v < 0 || v > 0xFFFF) return false;
    value = static_cast<int>(v);
    return true;
}

std::string positionText(int value) {
    char buf[32];
    std::snprintf(buf, sizeof(buf), "0x%04X (%d)", static_cast<unsigned int>(value), value);
    return buf;
}

// A lens speed: 0-7, "fast" (7); `fallback` when none is given.
bool parseSpeed(const std::vector<std::string>& args, size_t at, int fallback, int& speed) {
    if (args.size() <= at) {
        speed = fallback;
        return true;
    }
    if (args.size() > at + 1) return false;
    if (toLower(args[at]) == "fast") {
        speed = 7;
        return true;
    }
    return parseInt(args[at], speed);
}

const int kDefaultSpeed = 3;

}  // namespace

std::unique_ptr<SimFrontEnd> ViscaFrontEnd::build(const SimModule& row, const ModuleConfigure& record,
                                                  SimModule::Link link, std::string& problem, MakeController make,
                                                  bool baudAndRestart) {
    std::unique_ptr<ViscaFrontEnd> front(new ViscaFrontEnd(row, link, make, baudAndRestart));
    if (!front->openLine(record, problem)) return nullptr;
    front->m_pBlock = blockOf(front->m_line, problem);
    if (front->m_pBlock == nullptr) return nullptr;
    ModuleParameterParser parameters;
    std::string line;
    if (parameters.parse(record.getParameters()) && parameters.getValue("RS485", line))
        std::sscanf(line.c_str(), "%d", &front->m_nRecordBaud);
    return std::unique_ptr<SimFrontEnd>(front.release());
}

SimViscaModule* ViscaFrontEnd::blockOf(SerialLine& line, std::string& problem) {
    SimViscaModule* block = line.deviceAs<SimViscaModule>();
    if (block == nullptr) problem = "the module's line has no simulated VISCA block at its far end";
    return block;
}

std::string ViscaFrontEnd::blockCounts(const SimViscaModule& block) {
    return "the module took " + std::to_string(block.packetCount()) + " packets, carried out " +
           std::to_string(block.commandCount());
}

void ViscaFrontEnd::attach(SensorControllerManager& manager) {
    m_pCamera = m_make();
    nameParameters(*m_pCamera);
    attachController(manager, m_pCamera);
}

void ViscaFrontEnd::detach() {
    m_pCamera = nullptr;
    SerialFrontEnd::detach();
}

std::string ViscaFrontEnd::dayNightSource() const { return "the block's own day/night state (inquiry 81 09 04 01 FF)"; }

void ViscaFrontEnd::printModuleStatus(FILE* o) {
    SimViscaModule& d = *m_pBlock;
    const int64_t now = SerialLine::nowMs();
    const int zoom = d.zoomPosition(now);
    std::fprintf(o, "block          %s, %s; AE mode 0x%02X%s\n", d.modelName().c_str(), d.isNight() ? "night" : "day",
                 d.aeMode(), d.isRestarting(now) ? "; restarting" : "");
    std::fprintf(o, "lens           zoom %s ratio %d, focus %s\n", positionText(zoom).c_str(),
                 ViscaSenseController::zoomRatioOf(zoom), positionText(d.focusPosition(now)).c_str());
}

std::string ViscaFrontEnd::help() const {
    std::string text =
        "  zoom                        the zoom position and its ratio (x1000), read from the module\n"
        "  zoom in|out [SPEED|fast]    zoom at speed 0-7 (default 3); zoom stop; tele|wide as in|out\n"
        "  zoom to POS [focus POS]     zoom (and focus) to a position (0x6000 or 24576)\n"
        "  focus | focus to POS        the focus position | focus to a position\n"
        "  focus near|far [SPEED|fast] focus at speed 0-7 (default 3); focus stop\n"
        "  focus onepush | auto | manual   one-push focus | the focus mode\n"
        "  iris up|down                one iris step (manual or iris-priority exposure)\n";
    if (m_bBaudAndRestart)
        text +=
            "  baud | baud N               the module's baud register | change the module's baud (restart, 20 s)\n"
            "  restart                     restart the module (20 s without an answer)\n";
    return text + SerialFrontEnd::help();
}

bool ViscaFrontEnd::command(const std::string& cmd, const std::vector<std::string>& args, FILE* o,
                            std::string& error) {
    if (SerialFrontEnd::command(cmd, args, o, error)) return true;
    if (m_pCamera == nullptr) return false;
    if (cmd == "zoom") return cmdZoom(args, o, error);
    if (cmd == "focus") return cmdFocus(args, o, error);
    if (cmd == "iris") {
        const std::string a = args.size() == 1 ? toLower(args[0]) : std::string();
        if (a != "up" && a != "down") {
            error = "usage: iris up|down";
            return true;
        }
        if ((a == "up" ? m_pCamera->IrisUp() : m_pCamera->IrisDown()) != 0)
            std::fprintf(o, "ok: iris %s\n", a.c_str());
        else
            error = "iris " + a + " failed";
        return true;
    }
    if (m_bBaudAndRestart && cmd == "baud") return cmdBaud(args, o, error);
    if (m_bBaudAndRestart && cmd == "restart") {
        if (!args.empty()) {
            error = "usage: restart";
            return true;
        }
        if (static_cast<FCBEV7310SenseController*>(m_pCamera)->restartCamera() != 0)
            std::fprintf(o, "ok: the module restarted (%d s without an answer)\n",
                         FCBEV7310SenseController::RestartSeconds);
        else
            error = "the restart packet could not be sent";
        return true;
    }
    return false;
}

bool ViscaFrontEnd::cmdZoom(const std::vector<std::string>& args, FILE* o, std::string& error) {
    const std::string a = args.empty() ? std::string() : toLower(args[0]);
    const std::string usage = "usage: zoom | zoom in|out [SPEED|fast] | zoom stop | zoom to POS [focus POS]";
    if (a.empty()) {
        int position = 0, ratio = 0;
        if (m_pCamera->getZoomValue(position, ratio) != 0) {
            char r[32];
            std::snprintf(r, sizeof(r), "x%d.%02d", ratio / 1000, ratio % 1000 / 10);
            std::fprintf(o, "zoom position %s, ratio %d (%s)\n", positionText(position).c_str(), ratio, r);
        } else {
            error = "the zoom position could not be read";
        }
        return true;
    }
    if (a == "in" || a == "tele" || a == "out" || a == "wide") {
        int speed = 0;
        if (!parseSpeed(args, 1, kDefaultSpeed, speed)) {
            error = usage;
            return true;
        }
        const bool in = a == "in" || a == "tele";
        if ((in ? m_pCamera->ZoomIn(speed) : m_pCamera->ZoomOut(speed)) != 0)
            std::fprintf(o, "ok: zooming %s at speed %d ('zoom stop' stops; 'zoom' reads the position)\n",
                         in ? "in" : "out", speed);
        else
            error = std::string("zoom ") + (in ? "in" : "out") + " at speed " + std::to_string(speed) + " failed";
        return true;
    }
    if (a == "stop" && args.size() == 1) {
        if (m_pCamera->StopZoomContrl() != 0)
            std::fprintf(o, "ok: zoom stopped\n");
        else
            error = "zoom stop failed";
        return true;
    }
    int zoom = 0, focus = 0;
    if (a == "to" && args.size() == 2 && parsePosition(args[1], zoom)) {
        if (m_pCamera->setZoomValue(zoom) != 0)
            std::fprintf(o, "ok: zoom to %s (the lens gets there on the device clock)\n", positionText(zoom).c_str());
        else
            error = "zoom to " + positionText(zoom) + " failed";
        return true;
    }
    if (a == "to" && args.size() == 4 && toLower(args[2]) == "focus" && parsePosition(args[1], zoom) &&
        parsePosition(args[3], focus)) {
        if (m_pCamera->setZoomAndFocusValue(zoom, focus) != 0)
            std::fprintf(o, "ok: zoom to %s and focus to %s\n", positionText(zoom).c_str(), positionText(focus).c_str());
        else
            error = "zoom to " + positionText(zoom) + " and focus to " + positionText(focus) + " failed";
        return true;
    }
    error = usage;
    return true;
}

bool ViscaFrontEnd::cmdFocus(const std::vector<std::string>& args, FILE* o, std::string& error) {
    const std::string a = args.empty() ? std::string() : toLower(args[0]);
    const std::string usage =
        "usage: focus | focus to POS | focus near|far [SPEED|fast] | focus stop | focus onepush|auto|manual";
    if (a.empty()) {
        int position = 0;
        if (m_pCamera->getFocusValue(position) != 0)
            std::fprintf(o, "focus position %s\n", positionText(position).c_str());
        else
            error = "the focus position could not be read";
        return true;
    }
    if (a == "near" || a == "far") {
        int speed = 0;
        if (!parseSpeed(args, 1, kDefaultSpeed, speed)) {
            error = usage;
            return true;
        }
        if ((a == "near" ? m_pCamera->FocusNear(speed) : m_pCamera->FocusFar(speed)) != 0)
            std::fprintf(o, "ok: focusing %s at speed %d ('focus stop' stops)\n", a.c_str(), speed);
        else
            error = "focus " + a + " at speed " + std::to_string(speed) + " failed";
        return true;
    }
    if (args.size() == 1 && (a == "stop" || a == "onepush" || a == "auto" || a == "manual")) {
        int r = 0;
        if (a == "stop") r = m_pCamera->StopFocusContrl();
        if (a == "onepush") r = m_pCamera->OnePushTrigger();
        if (a == "auto" || a == "manual") r = m_pCamera->setFocusMode(a == "auto" ? 0 : 1);
        if (r != 0)
            std::fprintf(o, "ok: focus %s\n", a.c_str());
        else
            error = "focus " + a + " failed";
        return true;
    }
    int position = 0;
    if (a == "to" && args.size() == 2 && parsePosition(args[1], position)) {
        if (m_pCamera->setFocusValue(position) != 0)
            std::fprintf(o, "ok: focus to %s\n", positionText(position).c_str());
        else
            error = "focus to " + positionText(position) + " failed";
        return true;
    }
    error = usage;
    return true;
}

bool ViscaFrontEnd::cmdBaud(const std::vector<std::string>& args, FILE* o, std::string& error) {
    FCBEV7310SenseController* camera = static_cast<FCBEV7310SenseController*>(m_pCamera);
    if (args.empty()) {
        int index = -1;
        if (camera->getCameraBaudRate(index) != 0)
            std::fprintf(o, "module baud register %d (%d baud)\n", index, FCBEV7310SenseController::baudOfIndex(index));
        else
            error = "the module's baud register could not be read";
        return true;
    }
    int baud = 0;
    if (args.size() != 1 || !parseInt(args[0], baud)) {
        error = "usage: baud | baud 9600|19200|38400|115200";
        return true;
    }
    if (camera->changeCameraBuadrate(baud) == 0) {
        error = "the module's baud could not be changed to " + std::to_string(baud);
        return true;
    }
    const std::string after =
        baud == m_nRecordBaud ? std::string()
                              : ": the line carries nothing intelligible until the module is back at that baud ('baud " +
                                    std::to_string(m_nRecordBaud) + "')";
    std::fprintf(o, "ok: the module runs at %d baud after its restart; the library's port is back at the record's %d baud%s\n",
                 baud, m_nRecordBaud, after.c_str());
    return true;
}

}  // namespace camsim
