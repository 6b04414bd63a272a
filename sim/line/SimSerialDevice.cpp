#include "line/SimSerialDevice.h"

#include <algorithm>

SimSerialDevice::SimSerialDevice() : m_rng(12345) {}

SimSerialDevice::~SimSerialDevice() = default;

void SimSerialDevice::settleLocked(int64_t) {}

// ---- line ----

int SimSerialDevice::byteTimeUs() const { return m_pacing ? 10 * 1000000 / moduleBaudLocked() : 0; }

bool SimSerialDevice::lineGarbled() const { return m_lineBaud != moduleBaudLocked(); }

void SimSerialDevice::setLineBaud(int baud) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_lineBaud = baud;
}
int SimSerialDevice::getLineBaud() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_lineBaud;
}
int SimSerialDevice::getModuleBaud() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return moduleBaudLocked();
}
void SimSerialDevice::setPacing(bool on) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_pacing = on;
}
void SimSerialDevice::setReplyDelayMs(int ms) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_replyDelayMs = ms < 0 ? 0 : ms;
}

void SimSerialDevice::receive(const uint8_t* data, int length, int64_t nowMs) {
    std::lock_guard<std::mutex> lock(m_mutex);
    settleLocked(nowMs);
    if (lineGarbled()) return;  // framing errors: nothing intelligible arrives
    if (data == nullptr || length < 1) return;
    receiveLocked(data, length, nowMs);
}

void SimSerialDevice::materialise(int64_t untilMs) {
    const int64_t untilUs = untilMs * 1000;
    while (!m_pending.empty() && m_pending.front().at * 1000 <= untilUs) {
        Message m = m_pending.front();
        m_pending.pop_front();
        int64_t t = std::max(m.at * 1000, m_wireEndUs);
        for (size_t i = 0; i < m.bytes.size(); ++i) {
            if (i > 0) t += static_cast<int64_t>(m.gapMs) * 1000;
            t += byteTimeUs();
            m_wire.emplace_back(t, m.bytes[i]);
        }
        m_wireEndUs = t;
    }
}

int SimSerialDevice::takeOutput(uint8_t* out, int capacity, int64_t untilMs) {
    std::lock_guard<std::mutex> lock(m_mutex);
    settleLocked(untilMs);
    materialise(untilMs);
    int n = 0;
    while (n < capacity && !m_wire.empty() && m_wire.front().first <= untilMs * 1000) {
        uint8_t b = m_wire.front().second;
        // At the wrong baud a byte arrives as something else, never a frame byte.
        if (lineGarbled()) b = static_cast<uint8_t>(0x20 | (b & 0x0F));
        out[n++] = b;
        m_wire.pop_front();
    }
    return n;
}

int64_t SimSerialDevice::timeOfByte(int count, int64_t untilMs) {
    std::lock_guard<std::mutex> lock(m_mutex);
    settleLocked(untilMs);
    materialise(untilMs);
    if (count < 1) return -1;
    if (static_cast<int>(m_wire.size()) < count) return -1;
    int64_t us = m_wire[static_cast<size_t>(count - 1)].first;
    if (us > untilMs * 1000) return -1;
    return (us + 999) / 1000;
}

int64_t SimSerialDevice::nextOutputTime() {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_wire.empty()) return (m_wire.front().first + 999) / 1000;
    if (!m_pending.empty()) return m_pending.front().at;
    return -1;
}

void SimSerialDevice::clearOutput() {
    m_pending.clear();
    m_wire.clear();
}

bool SimSerialDevice::cancelReply(const std::vector<uint8_t>& bytes, int64_t at) {
    for (auto it = m_pending.begin(); it != m_pending.end(); ++it) {
        if (it->bytes == bytes && it->at == at) {
            m_pending.erase(it);
            return true;
        }
    }
    return false;
}

// ---- faults ----

void SimSerialDevice::setFaultProbability(Fault kind, double probability) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (kind >= 0 && kind < FaultCount) m_probability[kind] = probability;
}
void SimSerialDevice::injectOnce(Fault kind) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (kind >= 0 && kind < FaultCount) ++m_oneShot[kind];
}
void SimSerialDevice::clearFaults() {
    std::lock_guard<std::mutex> lock(m_mutex);
    for (int i = 0; i < FaultCount; ++i) {
        m_probability[i] = 0;
        m_oneShot[i] = 0;
    }
}
void SimSerialDevice::setSeed(uint32_t seed) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_rng.seed(seed);
}
const char* SimSerialDevice::faultName(Fault kind) {
    static const char* const names[FaultCount] = {"drop", "noise", "split", "late", "corrupt", "silent", "full"};
    return kind >= 0 && kind < FaultCount ? names[kind] : "?";
}

bool SimSerialDevice::roll(Fault kind) {
    if (m_oneShot[kind] > 0) {
        --m_oneShot[kind];
        return true;
    }
    if (m_probability[kind] <= 0) return false;
    return std::uniform_real_distribution<double>(0.0, 1.0)(m_rng) < m_probability[kind];
}

// ---- replies ----

void SimSerialDevice::reply(int64_t at, std::vector<uint8_t> bytes) {
    Message m{at, std::move(bytes), 0};
    auto it = m_pending.begin();
    while (it != m_pending.end() && it->at <= at) ++it;
    m_pending.insert(it, std::move(m));
}

void SimSerialDevice::replyFaulted(int64_t& at, std::vector<uint8_t> bytes, bool& dropAll) {
    dropAll = roll(DropReply);
    if (dropAll) return;
    int gap = 0;
    if (roll(CorruptByte) && !bytes.empty()) {
        size_t i = std::uniform_int_distribution<size_t>(0, bytes.size() - 1)(m_rng);
        // Bit 5 flipped: a frame byte stops being one, an acknowledgement turns into
        // something else, a hex digit stops being one; never a valid reply by chance.
        bytes[i] = static_cast<uint8_t>(bytes[i] ^ 0x20);
    }
    if (roll(Noise)) {
        int n = std::uniform_int_distribution<int>(1, 4)(m_rng);
        std::vector<uint8_t> noise;
        for (int i = 0; i < n; ++i) noise.push_back(static_cast<uint8_t>(std::uniform_int_distribution<int>(0, 0x7F)(m_rng)));
        bytes.insert(bytes.begin(), noise.begin(), noise.end());
    }
    if (roll(SplitReply)) gap = SplitGapMs;
    if (roll(LateReply)) at += LateByMs;
    Message m{at, std::move(bytes), gap};
    auto it = m_pending.begin();
    while (it != m_pending.end() && it->at <= at) ++it;
    m_pending.insert(it, std::move(m));
}
