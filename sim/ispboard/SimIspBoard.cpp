#include "ispboard/SimIspBoard.h"

#include "drivers/ispboard/IspBoardFrame.h"

SimIspBoard::SimIspBoard(const IspBoardTable& table) : m_table(table) { powerOn(); }

void SimIspBoard::powerOn() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_registers.clear();
    for (size_t i = 0; i < m_table.registerCount; ++i)
        m_registers[m_table.registers[i].address] = m_table.registers[i].powerOn;
}

// ---- the line ----

void SimIspBoard::setBoardBaud(int baud) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (baud > 0) m_boardBaud = baud;
}

void SimIspBoard::receiveLocked(const uint8_t* data, int length, int64_t nowMs) {
    const int64_t wireUs = byteTimeUs();
    for (int i = 0; i < length; ++i) {
        const int64_t at = nowMs + (wireUs * (i + 1) + 999) / 1000;
        // A frame broken off by a pause is dropped, as a board's receiver does.
        if (!m_inbuf.empty() && at - m_lastByteMs > FrameGapMs) m_inbuf.clear();
        m_lastByteMs = at;
        if (m_inbuf.empty() && data[i] != IspBoardFrame::Start) continue;  // noise between frames
        m_inbuf.push_back(data[i]);
        if (m_inbuf.size() < 2) continue;
        const int need = IspBoardFrame::commandLength(m_inbuf[1]);
        if (need != 0 && static_cast<int>(m_inbuf.size()) < need) continue;
        std::vector<uint8_t> frame;
        frame.swap(m_inbuf);
        handleFrame(frame, at);
    }
}

// ---- frames ----

void SimIspBoard::handleFrame(const std::vector<uint8_t>& f, int64_t at) {
    m_received.push_back(f);
    ++m_receivedTotal;
    if (m_received.size() > 1000) m_received.erase(m_received.begin(), m_received.begin() + 500);
    if (roll(Silent)) return;
    const int64_t replyAt = at + m_replyDelayMs;
    const uint8_t op = f.size() > 1 ? f[1] : 0;
    const int n = static_cast<int>(f.size());
    if (IspBoardFrame::commandLength(op) != n || IspBoardFrame::sum(f.data(), n - 1) != f[static_cast<size_t>(n - 1)]) {
        refuse(replyAt, op, IspBoardFrame::BadFrame);
        return;
    }
    const uint16_t address = static_cast<uint16_t>((f[2] << 8) | f[3]);
    const IspBoardTable::Register* reg = m_table.findRegister(address);
    const int width = (op == IspBoardFrame::Write16 || op == IspBoardFrame::Read16) ? 16 : 8;
    if (reg == nullptr || reg->width != width) {
        refuse(replyAt, op, IspBoardFrame::UnknownRegister);
        return;
    }
    if (roll(BufferFull)) {
        refuse(replyAt, op, BusyCode);
        return;
    }
    if (op == IspBoardFrame::Write8 || op == IspBoardFrame::Write16) {
        const int value = width == 16 ? (f[4] | (f[5] << 8)) : f[4];
        if (!reg->writable) {
            refuse(replyAt, op, IspBoardFrame::ReadOnly);
            return;
        }
        if (value < reg->minValue || value > reg->maxValue) {
            refuse(replyAt, op, IspBoardFrame::ValueOutOfRange);
            return;
        }
        m_registers[address] = value;
        ++m_writes;
        answer(replyAt, {5, op, f[2], f[3], 0});
        return;
    }
    const int value = m_registers[address];
    ++m_reads;
    if (width == 16)
        answer(replyAt, {7, op, f[2], f[3], static_cast<uint8_t>(value & 0xFF), static_cast<uint8_t>(value >> 8), 0});
    else
        answer(replyAt, {6, op, f[2], f[3], static_cast<uint8_t>(value & 0xFF), 0});
}

void SimIspBoard::refuse(int64_t at, uint8_t op, uint8_t code) {
    ++m_refusals;
    answer(at, {4, static_cast<uint8_t>(op | IspBoardFrame::Refused), code, 0});
}

void SimIspBoard::answer(int64_t at, std::vector<uint8_t> bytes) {
    if (rollFrame(TooLong)) {
        // Padded to more than the reader's buffer, count and checksum still right.
        bytes.pop_back();
        while (bytes.size() < LongAnswerLength - 1) bytes.push_back(0);
        bytes[0] = LongAnswerLength;
        bytes.push_back(0);
    }
    bytes.back() = IspBoardFrame::sum(bytes.data(), static_cast<int>(bytes.size()) - 1);
    if (rollFrame(WrongChecksum)) bytes.back() = static_cast<uint8_t>(bytes.back() ^ 0x5A);
    if (rollFrame(ShortAnswer)) bytes.resize(bytes.size() > 2 ? bytes.size() - 2 : 1);
    bool dropped = false;
    replyFaulted(at, std::move(bytes), dropped);
}

// ---- faults of the answer frame ----

void SimIspBoard::setFrameFaultProbability(FrameFault kind, double probability) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (kind >= 0 && kind < FrameFaultCount) m_frameProbability[kind] = probability;
}
void SimIspBoard::injectFrameFault(FrameFault kind) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (kind >= 0 && kind < FrameFaultCount) ++m_frameOneShot[kind];
}
void SimIspBoard::clearFrameFaults() {
    std::lock_guard<std::mutex> lock(m_mutex);
    for (int i = 0; i < FrameFaultCount; ++i) {
        m_frameProbability[i] = 0;
        m_frameOneShot[i] = 0;
    }
}
const char* SimIspBoard::frameFaultName(FrameFault kind) {
    static const char* const names[FrameFaultCount] = {"checksum", "long", "short"};
    return kind >= 0 && kind < FrameFaultCount ? names[kind] : "?";
}

bool SimIspBoard::rollFrame(FrameFault kind) {
    if (m_frameOneShot[kind] > 0) {
        --m_frameOneShot[kind];
        return true;
    }
    if (m_frameProbability[kind] <= 0) return false;
    return std::uniform_real_distribution<double>(0.0, 1.0)(m_rng) < m_frameProbability[kind];
}

// ---- state ----

int SimIspBoard::registerValue(uint16_t address) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    auto it = m_registers.find(address);
    return it == m_registers.end() ? -1 : it->second;
}
void SimIspBoard::setRegister(uint16_t address, int value) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_table.findRegister(address) != nullptr) m_registers[address] = value;
}
int SimIspBoard::writeCount() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_writes;
}
int SimIspBoard::readCount() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_reads;
}
int SimIspBoard::refusalCount() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_refusals;
}
std::vector<std::vector<uint8_t>> SimIspBoard::receivedFrames() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_received;
}
size_t SimIspBoard::frameMark() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_receivedTotal;
}
std::vector<std::vector<uint8_t>> SimIspBoard::framesSince(size_t mark) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    const size_t newer = m_receivedTotal > mark ? m_receivedTotal - mark : 0;
    const size_t keep = newer < m_received.size() ? newer : m_received.size();
    return std::vector<std::vector<uint8_t>>(m_received.end() - static_cast<long>(keep), m_received.end());
}
