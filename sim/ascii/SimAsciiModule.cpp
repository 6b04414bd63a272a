#include "ascii/SimAsciiModule.h"

#include <cstdio>

#include "drivers/serial/AsciiParameter.h"
#include "drivers/serial/CMD7200SenseController.h"
#include "drivers/serial/HitachCompatSenseController.h"
#include "drivers/serial/HitachSenseController.h"
#include "drivers/serial/SC110N_CSenseController.h"

namespace {

// The length of a command by its letter after ':'; 0 for a letter the module does not know.
size_t lengthOf(char letter) {
    switch (letter) {
    case 'W': return 8;
    case 'w': return 10;
    case 'R': return 6;
    case 'r': return 10;
    default: return 0;
    }
}

bool hexValue(const std::string& s, size_t from, size_t count, int& value) {
    if (from + count > s.size()) return false;
    int v = 0;
    for (size_t i = from; i < from + count; ++i) {
        char c = s[i];
        int d = 0;
        if (c >= '0' && c <= '9')
            d = c - '0';
        else if (c >= 'A' && c <= 'F')
            d = c - 'A' + 10;
        else if (c >= 'a' && c <= 'f')
            d = c - 'a' + 10;
        else
            return false;
        v = (v << 4) | d;
    }
    value = v;
    return true;
}

}  // namespace

SimAsciiModule::Profile SimAsciiModule::profile(const std::string& module) {
    Profile p;
    p.name = module;
    size_t count = 0;
    if (module == "Hitach" || module == "HitachCompat") {
        const AsciiParameter* table = module == "Hitach" ? HitachSenseController::parameterTable(count)
                                                         : HitachCompatSenseController::parameterTable(count);
        addTable(p, table, count);
        addRegister(p, HitachSenseController::StatusRegister, 2, 0, 0, 0xFF);
        addRegister(p, 0x1701, 2, 0, 0, 1);  // PAL 1280x720 (third generation)
        addRegister(p, 0xFCC0, 2, 0, 0, 1);  // NTSC 1280x960 (0) or 1280x720 (1)
        return p;
    }
    if (module == "SC110N-C") {
        const AsciiParameter* table = SC110N_CSenseController::parameterTable(count);
        addTable(p, table, count);
        addRegister(p, SC110N_CSenseController::StatusRegister, 4, 0, 0, 0xFFFF);
        addRegister(p, 0xFBFF, 2, 0, 0, 0xFF);
        return p;
    }
    if (module == "CMD7200") {
        const AsciiParameter* table = CMD7200SenseController::parameterTable(count);
        addTable(p, table, count);
        return p;
    }
    return p;
}

void SimAsciiModule::addRegister(Profile& profile, uint16_t address, int width, int value, int lo, int hi) {
    Register& r = profile.registers[address];
    r.width = width;
    r.value = value;
    r.accepted.emplace_back(lo, hi);
}

void SimAsciiModule::addTable(Profile& profile, const AsciiParameter* table, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        const AsciiParameter& row = table[i];
        const bool known = profile.registers.count(row.address) != 0;
        Register& r = profile.registers[row.address];
        r.width = row.width;
        if (!known) r.value = row.inRange(row.defaultValue) ? row.dataOf(row.defaultValue) : 0;
        for (int v = row.minValue; v <= row.maxValue; ++v) {
            int d = row.dataOf(v);
            if (row.codes == nullptr) {
                r.accepted.emplace_back(row.minValue, row.maxValue);
                break;
            }
            r.accepted.emplace_back(d, d);
        }
    }
}

SimAsciiModule::SimAsciiModule() {}

void SimAsciiModule::setProfile(const Profile& profile) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_profile = profile;
    m_writes.clear();
}

int SimAsciiModule::moduleBaudLocked() const { return m_profile.baud; }

void SimAsciiModule::receiveLocked(const uint8_t* data, int length, int64_t nowMs) {
    const int64_t wireUs = static_cast<int64_t>(byteTimeUs());
    for (int i = 0; i < length; ++i) {
        const char c = static_cast<char>(data[i]);
        if (c == ':') {
            // A new command; a broken one before it is lost.
            m_inbuf.assign(1, c);
            m_expected = 0;
            continue;
        }
        if (m_inbuf.empty()) continue;  // noise between commands
        m_inbuf.push_back(c);
        if (m_inbuf.size() == 2) {
            m_expected = lengthOf(c);
            if (m_expected == 0) {
                // Not a command letter: the whole command is ignored.
                ++m_packets;
                m_received.push_back(m_inbuf);
                m_inbuf.clear();
                continue;
            }
        }
        if (m_expected != 0 && m_inbuf.size() == m_expected) {
            std::string text;
            text.swap(m_inbuf);
            m_expected = 0;
            // The command is complete once its last byte has crossed the line.
            handleCommand(text, nowMs + (wireUs * (i + 1) + 999) / 1000);
        }
    }
}

void SimAsciiModule::handleCommand(const std::string& text, int64_t at) {
    ++m_packets;
    m_received.push_back(text);
    if (m_received.size() > 1000) m_received.erase(m_received.begin(), m_received.begin() + 500);
    if (roll(Silent) || roll(BufferFull)) return;
    std::string answer = carryOut(text);
    if (answer.empty()) return;
    ++m_commands;
    int64_t replyAt = at + m_replyDelayMs;
    bool dropped = false;
    replyFaulted(replyAt, std::vector<uint8_t>(answer.begin(), answer.end()), dropped);
}

std::string SimAsciiModule::carryOut(const std::string& text) {
    int address = 0;
    if (text.size() < 6 || !hexValue(text, 2, 4, address)) return std::string();
    auto it = m_profile.registers.find(static_cast<uint16_t>(address));
    if (it == m_profile.registers.end()) return std::string();
    Register& r = it->second;
    const char letter = text[1];
    const int width = letter == 'W' || letter == 'R' ? 2 : 4;
    if (width != r.width) return std::string();
    if (letter == 'R' || letter == 'r') {
        int zero = 0;
        if (letter == 'r' && (!hexValue(text, 6, 4, zero) || zero != 0)) return std::string();
        char digits[8];
        std::snprintf(digits, sizeof(digits), "%0*X", width, static_cast<unsigned int>(r.value));
        return text.substr(0, 6) + digits;
    }
    int data = 0;
    if (!hexValue(text, 6, static_cast<size_t>(width), data)) return std::string();
    bool ok = false;
    for (auto& range : r.accepted)
        if (data >= range.first && data <= range.second) ok = true;
    if (!ok) return std::string();
    r.value = data;
    ++m_writes[static_cast<uint16_t>(address)];
    return text;
}

int SimAsciiModule::registerValue(uint16_t address) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    auto it = m_profile.registers.find(address);
    return it == m_profile.registers.end() ? -1 : it->second.value;
}

void SimAsciiModule::setRegister(uint16_t address, int value) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_profile.registers[address].value = value;
}

int SimAsciiModule::writeCount(uint16_t address) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    auto it = m_writes.find(address);
    return it == m_writes.end() ? 0 : it->second;
}

int SimAsciiModule::commandCount() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_commands;
}

int SimAsciiModule::packetCount() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_packets;
}

std::vector<std::string> SimAsciiModule::receivedCommands() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_received;
}
