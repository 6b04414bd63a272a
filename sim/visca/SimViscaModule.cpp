#include "visca/SimViscaModule.h"

#include <algorithm>
#include <cstdlib>

namespace {

const int kBauds[4] = {9600, 19200, 38400, 115200};

// How the value bytes of a command are checked and stored.
enum Shape { OnOff, Nibble, Byte, Nibbles, Special };

struct KnownCommand {
    uint8_t code;
    Shape shape;
    int length;  // value bytes
    int maxValue;  // of the nibble-coded value (Nibble, Nibbles) or the byte
    uint8_t defaultByte;
};

// The commands of the block camera's command list that this model knows, by
// the byte after 81 01 04. Special ones are handled in handleCommand.
const KnownCommand kCommands[] = {
    {0x52, OnOff, 1, 0, 0x03},      // high resolution
    {0x62, OnOff, 1, 0, 0x03},      // freeze
    {0x5A, OnOff, 1, 0, 0x03},      // auto slow shutter
    {0x59, OnOff, 1, 0, 0x03},      // spot AE
    {0x33, OnOff, 1, 0, 0x03},      // back light
    {0x06, OnOff, 1, 0, 0x02},      // digital zoom
    {0x5E, OnOff, 1, 0, 0x03},      // high sensitivity
    {0x61, OnOff, 1, 0, 0x03},      // left-right reverse
    {0x66, OnOff, 1, 0, 0x03},      // picture flip
    {0x3E, OnOff, 1, 0, 0x03},      // exposure compensation on/off
    {0x58, OnOff, 1, 0, 0x02},      // AF sensitivity
    {0x5C, OnOff, 1, 0, 0x03},      // point-light focus (CV7500; this library's own code)
    {0x5F, Nibble, 1, 3, 0x00},     // low-light chroma suppress
    {0x5B, Nibble, 1, 5, 0x00},     // gamma
    {0x53, Nibble, 1, 5, 0x02},     // noise reduction
    {0x2C, Nibble, 1, 15, 0x0F},    // gain limit
    {0x57, Nibble, 1, 2, 0x00},     // AF mode
    {0x11, Nibble, 1, 1, 0x00},     // IR correction
    {0x3D, Nibble, 1, 15, 0x03},    // wide-dynamic mode
    {0x35, Nibble, 1, 5, 0x00},     // white balance mode
    {0x5D, Byte, 1, 0x30, 0x01},    // AE response
    {0x42, Nibbles, 4, 0x0F, 0},    // aperture (sharpness)
    {0x4A, Nibbles, 4, 0x15, 0},    // shutter
    {0x4B, Nibbles, 4, 0x11, 0},    // iris
    {0x4C, Nibbles, 4, 0x0F, 0},    // gain
    {0x4D, Nibbles, 4, 0x1F, 0},    // bright
    {0x43, Nibbles, 4, 0xFF, 0},    // R gain
    {0x44, Nibbles, 4, 0xFF, 0},    // B gain
    {0x49, Nibbles, 4, 0x0E, 0},    // colour gain
    {0x4F, Nibbles, 4, 0x0E, 0},    // hue
    {0x4E, Nibbles, 4, 0x0E, 0},    // exposure compensation
    {0x21, Nibbles, 4, 0x1C, 0},    // threshold
    {0x28, Nibbles, 4, 0xF000, 0},  // focus near limit
    {0x27, Nibbles, 4, 0xFFFF, 0},  // AF active / interval time
    {0x29, Nibbles, 4, 0xFFFF, 0},  // spot AE position
    {0x2D, Special, 8, 0, 0},       // wide-dynamic parameter set
    {0x14, Special, 2, 0, 0},       // highlight compensation
    {0x37, Special, 2, 0, 0},       // defog
    // This library's own codes for what only some models have (a model knows
    // them when its profile lists them in `extra`).
    {0x2A, Nibbles, 4, 0x15, 0},    // shutter limit (CMD8100, CMD7300)
    {0x1A, Nibbles, 4, 0x1C, 0},    // day-to-night sensitivity (CMD8300)
};
const uint8_t kOwnCodes[] = {0x2A, 0x1A};

const KnownCommand* findCommand(uint8_t code) {
    for (const KnownCommand& c : kCommands)
        if (c.code == code) return &c;
    return nullptr;
}

int nibblesOf(const std::vector<uint8_t>& v, size_t from, size_t count) {
    int value = 0;
    for (size_t i = from; i < from + count && i < v.size(); ++i) value = (value << 4) | (v[i] & 0x0F);
    return value;
}

bool allNibbles(const std::vector<uint8_t>& v) {
    for (uint8_t b : v)
        if (b > 0x0F) return false;
    return true;
}

std::vector<uint8_t> fourNibbles(int value) {
    return {static_cast<uint8_t>((value >> 12) & 0xF), static_cast<uint8_t>((value >> 8) & 0xF),
            static_cast<uint8_t>((value >> 4) & 0xF), static_cast<uint8_t>(value & 0xF)};
}

// Lens speeds in position units per millisecond; a direct move runs at the top speed.
int lensSpeed(int p) { return (std::min(p, 7) + 1) * 2; }

}  // namespace

SimViscaModule::Profile SimViscaModule::profile(const std::string& model) {
    Profile p;
    if (model == "EH4300") {
        // An earlier generation: no defog, no highlight compensation, gamma
        // standard and straight only; on external sync (register 0x56 = 0)
        // after power-on.
        p.name = model;
        p.lacking = {0x37, 0x14, 0x5C};
        p.maxValues = {{0x5B, 1}};
        p.registers = {{0x56, 0}};
        return p;
    }
    if (model == "CV7500") {
        // No back light compensation; point-light focus; bright compensation
        // levels 0-3 on the highlight command.
        p.name = model;
        p.lacking = {0x33};
        return p;
    }
    if (model == "CH3310") {
        // No defog, no highlight compensation; gamma 0-4, gain limit up to 14,
        // focus near limit up to 0xC000.
        p.name = model;
        p.lacking = {0x37, 0x14, 0x5C};
        p.maxValues = {{0x5B, 4}, {0x2C, 14}, {0x28, 0xC000}};
        return p;
    }
    if (model == "CMD8100" || model == "CMD7300") {
        // No defog, highlight compensation or point-light focus; a shutter limit
        // (the slowest shutter of automatic exposure).
        p.name = model;
        p.lacking = {0x37, 0x14, 0x5C};
        p.extra = {0x2A};
        return p;
    }
    if (model == "CMD8100_Old") {
        // The earlier firmware: no shutter limit; the video format in register
        // 0x72, 1080p (0x07) after power-on.
        p.name = model;
        p.lacking = {0x37, 0x14, 0x5C};
        p.registers = {{0x72, 0x07}};
        return p;
    }
    if (model == "CMD8300") {
        // Defog and highlight compensation; separate day-to-night sensitivity
        // beside the night-to-day threshold (0x21); no point-light focus.
        p.name = model;
        p.lacking = {0x5C};
        p.extra = {0x1A};
        return p;
    }
    p.name = "FCB-EV7310";
    p.lacking = {0x5C};
    return p;
}

SimViscaModule::SimViscaModule() {
    m_profile = profile("FCB-EV7310");
    m_registers[0x00] = 0;
}

void SimViscaModule::setProfile(const Profile& profile) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_profile = profile;
    for (auto& r : profile.registers) m_registers[r.first] = r.second;
}

void SimViscaModule::setRegister(uint8_t reg, int value) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_registers[reg] = value;
}

bool SimViscaModule::lacks(uint8_t code) const {
    for (uint8_t c : m_profile.lacking)
        if (c == code) return true;
    for (uint8_t own : kOwnCodes) {
        if (own != code) continue;
        for (uint8_t c : m_profile.extra)
            if (c == code) return false;
        return true;
    }
    return false;
}

int SimViscaModule::maxValueOf(uint8_t code, int standard) const {
    auto it = m_profile.maxValues.find(code);
    return it == m_profile.maxValues.end() ? standard : it->second;
}

// ---- line ----

int SimViscaModule::moduleBaudLocked() const { return kBauds[m_moduleBaudIndex]; }

void SimViscaModule::setNight(bool night) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_night = night;
}

void SimViscaModule::setBaudIndex(int index) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (index < 0 || index > 3) return;
    m_registers[0x00] = index;
    m_moduleBaudIndex = index;
}

void SimViscaModule::receiveLocked(const uint8_t* data, int length, int64_t nowMs) {
    if (isRestartingLocked(nowMs)) return;  // a restarting module hears nothing
    const int64_t wireUs = static_cast<int64_t>(byteTimeUs());
    for (int i = 0; i < length; ++i) {
        // Only a packet's first byte has bit 7 set (the terminator aside): such a
        // byte in the middle of a packet starts a new one, the broken one is lost.
        if ((data[i] & 0x80) && data[i] != 0xFF && !m_inbuf.empty()) m_inbuf.clear();
        m_inbuf.push_back(data[i]);
        if (data[i] == 0xFF || m_inbuf.size() >= 64) {
            std::vector<uint8_t> packet;
            packet.swap(m_inbuf);
            // The packet is complete once its last byte has crossed the line.
            int64_t at = nowMs + (wireUs * (i + 1) + 999) / 1000;
            handlePacket(packet, at);
        }
    }
}

// ---- packets ----

int SimViscaModule::freeSocket(int64_t at) {
    for (int s = 1; s <= 2; ++s)
        if (m_socketBusyUntil[s] <= at) return s;
    return 0;
}

void SimViscaModule::handlePacket(const std::vector<uint8_t>& p, int64_t at) {
    ++m_packets;
    m_received.push_back(p);
    if (m_received.size() > 1000) m_received.erase(m_received.begin(), m_received.begin() + 500);
    if (roll(Silent)) return;
    int64_t replyAt = at + m_replyDelayMs;
    const bool restartPacket = p == std::vector<uint8_t>{0xFE, 0x05, 0x03, 0x01, 0x01, 0x0A, 0xFF};
    if (restartPacket) {
        ++m_restarts;
        m_restartUntil = at + RestartMs;
        clearOutput();
        return;
    }
    bool dropped = false;
    if (p.size() < 3 || p.back() != 0xFF || p[0] != 0x81) {
        replyFaulted(replyAt, {0x90, 0x60, 0x02, 0xFF}, dropped);
        return;
    }
    if (p.size() >= 5 && p[1] == 0x09 && p[2] == 0x04) {
        std::vector<uint8_t> answer;
        if (!lacks(p[3]) && handleInquiry(p, answer, at))
            replyFaulted(replyAt, answer, dropped);
        else
            replyFaulted(replyAt, {0x90, 0x60, 0x02, 0xFF}, dropped);
        return;
    }
    if (!(p.size() >= 5 && p[1] == 0x01 && p[2] == 0x04)) {
        replyFaulted(replyAt, {0x90, 0x60, 0x02, 0xFF}, dropped);
        return;
    }
    if (roll(BufferFull)) {
        replyFaulted(replyAt, {0x90, 0x60, 0x03, 0xFF}, dropped);
        return;
    }
    int socket = freeSocket(at);
    if (socket == 0) {
        replyFaulted(replyAt, {0x90, 0x60, 0x03, 0xFF}, dropped);
        return;
    }
    bool ok = false, notExecutable = false;
    int64_t doneAt = replyAt;
    if (!lacks(p[3])) handleCommand(p, at, socket, ok, notExecutable, doneAt);
    const bool immediate = doneAt <= replyAt;
    const uint8_t y = static_cast<uint8_t>(socket);
    if (!ok) {
        replyFaulted(replyAt, {0x90, 0x60, 0x02, 0xFF}, dropped);
        return;
    }
    if (notExecutable) {
        replyFaulted(replyAt, {0x90, static_cast<uint8_t>(0x60 | y), 0x41, 0xFF}, dropped);
        return;
    }
    ++m_commands;
    m_socketBusyUntil[socket] = std::max(doneAt, replyAt);
    replyFaulted(replyAt, {0x90, static_cast<uint8_t>(0x40 | y), 0xFF}, dropped);
    // A command carried out at once completes right behind its acknowledgement.
    if (!dropped && immediate) reply(replyAt, {0x90, static_cast<uint8_t>(0x50 | y), 0xFF});
}

void SimViscaModule::startMove(Move& m, int current, int target, int64_t at, int speed, int socket) {
    m.active = true;
    m.startMs = at;
    m.from = current;
    m.to = target;
    m.endMs = at + std::abs(target - current) / std::max(speed, 1);
    m.socket = socket;
    const uint8_t y = static_cast<uint8_t>(socket);
    reply(m.endMs + m_replyDelayMs, {0x90, static_cast<uint8_t>(0x50 | y), 0xFF});
}

int SimViscaModule::positionOf(Move& m, int stored, int64_t at) {
    if (!m.active) return stored;
    if (at >= m.endMs || m.endMs == m.startMs) return m.to;
    return m.from + static_cast<int>((m.to - m.from) * (at - m.startMs) / (m.endMs - m.startMs));
}

void SimViscaModule::stopMove(Move& m, int64_t at) {
    // The move's completion is due when it ends; a stop ends it now.
    if (!m.active) return;
    int pos = positionOf(m, m.to, at);
    const uint8_t done = static_cast<uint8_t>(0x50 | m.socket);
    cancelReply({0x90, done, 0xFF}, m.endMs + m_replyDelayMs);
    m_socketBusyUntil[m.socket] = at;
    reply(at + m_replyDelayMs, {0x90, done, 0xFF});
    m.active = false;
    m.to = pos;
}

void SimViscaModule::settleLocked(int64_t nowMs) {
    if (m_zoomMove.active && nowMs >= m_zoomMove.endMs) {
        m_zoom = m_zoomMove.to;
        m_zoomMove.active = false;
    }
    if (m_focusMove.active && nowMs >= m_focusMove.endMs) {
        m_focus = m_focusMove.to;
        m_focusMove.active = false;
    }
    if (m_restartUntil >= 0 && nowMs >= m_restartUntil) {
        m_restartUntil = -1;
        int idx = m_registers[0x00];
        m_moduleBaudIndex = idx >= 0 && idx < 4 ? idx : 0;
        m_inbuf.clear();
    }
}

void SimViscaModule::handleCommand(const std::vector<uint8_t>& p, int64_t at, int socket, bool& ok,
                                   bool& notExecutable, int64_t& doneAt) {
    const uint8_t code = p[3];
    std::vector<uint8_t> v(p.begin() + 4, p.end() - 1);
    ok = false;
    notExecutable = false;
    const bool manual = m_aeMode == 0x03;
    switch (code) {
    case 0x39:  // AE mode
        if (v.size() == 1 && (v[0] == 0x00 || v[0] == 0x03 || v[0] == 0x0A || v[0] == 0x0B || v[0] == 0x0D)) {
            m_aeMode = v[0];
            ok = true;
        }
        return;
    case 0x01:  // day/night
        if (v.size() == 1 && (v[0] == 0x02 || v[0] == 0x03)) {
            m_night = v[0] == 0x02;
            ok = true;
        }
        return;
    case 0x07:    // zoom stop / tele / wide
    case 0x08: {  // focus stop / far / near
        if (v.size() != 1) return;
        Move& m = code == 0x07 ? m_zoomMove : m_focusMove;
        int& stored = code == 0x07 ? m_zoom : m_focus;
        const int limit = code == 0x07 ? MaxZoom : MaxFocus;
        int hi = v[0] >> 4, lo = v[0] & 0x0F;
        int current = positionOf(m, stored, at);
        if (v[0] == 0x00) {
            stopMove(m, at);
            stored = current;
            ok = true;
            return;
        }
        int dir = 0, speed = 0;
        if (v[0] == 0x02) dir = 1, speed = 3;
        else if (v[0] == 0x03) dir = -1, speed = 3;
        else if (hi == 2 && lo <= 7) dir = 1, speed = lo;
        else if (hi == 3 && lo <= 7) dir = -1, speed = lo;
        else return;
        stopMove(m, at);
        stored = current;
        startMove(m, current, dir > 0 ? limit : (code == 0x07 ? 0 : 0x1000), at, lensSpeed(speed), socket);
        doneAt = m.endMs + m_replyDelayMs;
        ok = true;
        return;
    }
    case 0x47:    // zoom direct, or zoom and focus direct
    case 0x48: {  // focus direct
        if (!allNibbles(v) || !(v.size() == 4 || (code == 0x47 && v.size() == 8))) return;
        int zoom = nibblesOf(v, 0, 4);
        if (code == 0x47 && zoom > MaxZoom) return;
        if (code == 0x48 && zoom > MaxFocus) return;
        Move& m = code == 0x47 ? m_zoomMove : m_focusMove;
        int& stored = code == 0x47 ? m_zoom : m_focus;
        int current = positionOf(m, stored, at);
        stopMove(m, at);
        stored = current;
        startMove(m, current, zoom, at, lensSpeed(7), socket);
        doneAt = m.endMs + m_replyDelayMs;
        if (v.size() == 8) {
            int focus = nibblesOf(v, 4, 4);
            if (focus > MaxFocus) return;
            int fcur = positionOf(m_focusMove, m_focus, at);
            stopMove(m_focusMove, at);
            m_focus = fcur;
            m_focusMove.active = true;
            m_focusMove.startMs = at;
            m_focusMove.from = fcur;
            m_focusMove.to = focus;
            m_focusMove.endMs = at + std::abs(focus - fcur) / lensSpeed(7);
            m_focusMove.socket = socket;
        }
        ok = true;
        return;
    }
    case 0x0B:  // iris reset / up / down
        if (v.size() != 1 || !(v[0] == 0x00 || v[0] == 0x02 || v[0] == 0x03)) return;
        ok = true;
        if (!(manual || m_aeMode == 0x0B)) {
            notExecutable = true;
            return;
        }
        {
            int iris = nibbleValueLocked(0x4B);
            if (iris < 0) iris = 0;
            if (v[0] == 0x02 && iris < 0x11) ++iris;
            if (v[0] == 0x03 && iris > 0) --iris;
            if (v[0] == 0x00) iris = 0;
            m_values[0x4B] = fourNibbles(iris);
        }
        return;
    case 0x18:  // one-push AF
        if (v.size() == 1 && v[0] == 0x01) {
            ok = true;
            doneAt = at + m_replyDelayMs + 5 * FrameMs;
        }
        return;
    case 0x24:  // register write
        if (v.size() == 3 && v[1] <= 0x0F && v[2] <= 0x0F) {
            int value = (v[1] << 4) | v[2];
            if (v[0] == 0x00 && value > 3) return;
            m_registers[v[0]] = value;
            ok = true;
        }
        return;
    case 0x10:  // one-push white balance trigger
        ok = v.size() == 1 && v[0] == 0x05;
        return;
    case 0x0E:  // exposure compensation reset / up / down
        if (v.size() == 1 && (v[0] == 0x00 || v[0] == 0x02 || v[0] == 0x03)) {
            int e = m_values.count(0x4E) ? nibbleValueLocked(0x4E) : 7;
            if (v[0] == 0x00) e = 7;
            if (v[0] == 0x02 && e < 0x0E) ++e;
            if (v[0] == 0x03 && e > 0) --e;
            m_values[0x4E] = fourNibbles(e);
            ok = true;
        }
        return;
    case 0x38:  // focus auto / manual / one-push mode
        if (v.size() == 1 && (v[0] == 0x02 || v[0] == 0x03 || v[0] == 0x10)) {
            m_values[0x38] = v;
            ok = true;
        }
        return;
    default:
        break;
    }
    const KnownCommand* known = findCommand(code);
    if (known == nullptr || static_cast<int>(v.size()) != known->length) return;
    switch (known->shape) {
    case OnOff:
        if (v[0] != 0x02 && v[0] != 0x03) return;
        break;
    case Nibble:
        if (v[0] > maxValueOf(code, known->maxValue)) return;
        break;
    case Byte:
        if (v[0] < 1 || v[0] > maxValueOf(code, known->maxValue)) return;
        break;
    case Nibbles:
        if (!allNibbles(v) || nibblesOf(v, 0, 4) > maxValueOf(code, known->maxValue)) return;
        break;
    case Special:
        if (!allNibbles(v) && code != 0x37) return;
        if (code == 0x37 && !((v[0] == 0x02 && v[1] >= 1 && v[1] <= 3) || (v[0] == 0x03 && v[1] == 0x00))) return;
        break;
    }
    ok = true;
    // Exposure values that the exposure mode decides itself.
    if ((code == 0x4A && !(manual || m_aeMode == 0x0A)) || (code == 0x4B && !(manual || m_aeMode == 0x0B)) ||
        (code == 0x4C && !manual) || (code == 0x4D && m_aeMode != 0x0D)) {
        notExecutable = true;
        return;
    }
    m_values[code] = v;
}

bool SimViscaModule::handleInquiry(const std::vector<uint8_t>& p, std::vector<uint8_t>& answer, int64_t at) {
    const uint8_t code = p[3];
    answer = {0x90, 0x50};
    auto add = [&](const std::vector<uint8_t>& bytes) { answer.insert(answer.end(), bytes.begin(), bytes.end()); };
    if (code == 0x24 && p.size() == 6) {
        auto it = m_registers.find(p[4]);
        int value = it == m_registers.end() ? 0 : it->second;
        add({static_cast<uint8_t>((value >> 4) & 0xF), static_cast<uint8_t>(value & 0xF)});
    } else if (p.size() != 5) {
        return false;
    } else if (code == 0x47) {
        add(fourNibbles(positionOf(m_zoomMove, m_zoom, at)));
    } else if (code == 0x48) {
        add(fourNibbles(positionOf(m_focusMove, m_focus, at)));
    } else if (code == 0x39) {
        add({static_cast<uint8_t>(m_aeMode)});
    } else if (code == 0x01) {
        add({static_cast<uint8_t>(m_night ? 0x02 : 0x03)});
    } else if (code == 0x38) {
        auto it = m_values.find(code);
        add(it == m_values.end() ? std::vector<uint8_t>{0x02} : it->second);
    } else {
        const KnownCommand* known = findCommand(code);
        if (known == nullptr) return false;
        auto it = m_values.find(code);
        if (it != m_values.end()) {
            add(it->second);
        } else if (known->length == 1) {
            add({known->defaultByte});
        } else {
            add(std::vector<uint8_t>(static_cast<size_t>(known->length), 0));
        }
    }
    answer.push_back(0xFF);
    return true;
}

// ---- state views ----

int SimViscaModule::aeMode() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_aeMode;
}

std::vector<uint8_t> SimViscaModule::valueOf(uint8_t code) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    auto it = m_values.find(code);
    return it == m_values.end() ? std::vector<uint8_t>() : it->second;
}

int SimViscaModule::nibbleValue(uint8_t code) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return nibbleValueLocked(code);
}

int SimViscaModule::nibbleValueLocked(uint8_t code) const {
    auto it = m_values.find(code);
    if (it == m_values.end() || it->second.empty()) return -1;
    if (it->second.size() == 1) return it->second[0];
    return nibblesOf(it->second, 0, it->second.size());
}

int SimViscaModule::zoomPosition(int64_t nowMs) {
    std::lock_guard<std::mutex> lock(m_mutex);
    settleLocked(nowMs);
    return positionOf(m_zoomMove, m_zoom, nowMs);
}
int SimViscaModule::focusPosition(int64_t nowMs) {
    std::lock_guard<std::mutex> lock(m_mutex);
    settleLocked(nowMs);
    return positionOf(m_focusMove, m_focus, nowMs);
}
bool SimViscaModule::isNight() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_night;
}
int SimViscaModule::registerValue(uint8_t reg) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    auto it = m_registers.find(reg);
    return it == m_registers.end() ? 0 : it->second;
}
bool SimViscaModule::isRestartingLocked(int64_t nowMs) const { return m_restartUntil >= 0 && nowMs < m_restartUntil; }
bool SimViscaModule::isRestarting(int64_t nowMs) {
    std::lock_guard<std::mutex> lock(m_mutex);
    settleLocked(nowMs);
    return isRestartingLocked(nowMs);
}
int SimViscaModule::commandCount() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_commands;
}
int SimViscaModule::packetCount() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_packets;
}
int SimViscaModule::restartCount() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_restarts;
}
std::vector<std::vector<uint8_t>> SimViscaModule::receivedPackets() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_received;
}
