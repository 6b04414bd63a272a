#include "ispboard/SimIspBoard.h"

#include "drivers/ispboard/ITNFrame.h"
#include "drivers/ispboard/IspBoardFrame.h"
#include "drivers/ispboard/SeawolfFrame.h"

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
        if (m_inbuf.empty() && data[i] != startByte()) continue;  // noise between frames
        m_inbuf.push_back(data[i]);
        const int need = frameLength();
        if (need < 0 || static_cast<int>(m_inbuf.size()) < need) continue;
        std::vector<uint8_t> frame;
        frame.swap(m_inbuf);
        handleFrame(frame, at);
    }
}

// ---- the board's frame shapes ----

uint8_t SimIspBoard::startByte() const {
    switch (m_table.frames) {
    case IspBoardTable::ITNFrames: return ITNFrame::Start;
    case IspBoardTable::SeawolfFrames: return SeawolfFrame::Start;
    default: return IspBoardFrame::Start;
    }
}

int SimIspBoard::frameLength() const {
    const size_t have = m_inbuf.size();
    switch (m_table.frames) {
    case IspBoardTable::ITNFrames: return ITNFrame::Length;
    case IspBoardTable::SeawolfFrames:
        if (have < SeawolfFrame::HeadLength) return -1;
        // A length the board cannot take ends the frame at once: refused as bad.
        return m_inbuf[2] > SeawolfFrame::MaxDataLength ? static_cast<int>(have)
                                                        : SeawolfFrame::HeadLength + m_inbuf[2] + 1;
    default:
        if (have < 2) return -1;
        // An unknown operation: the frame ends here and is refused.
        return IspBoardFrame::commandLength(m_inbuf[1]) == 0 ? static_cast<int>(have)
                                                             : IspBoardFrame::commandLength(m_inbuf[1]);
    }
}

uint8_t SimIspBoard::checksumOf(IspBoardTable::FrameShape shape, const uint8_t* bytes, int length) {
    switch (shape) {
    case IspBoardTable::ITNFrames: return ITNFrame::checksum(bytes, length);
    case IspBoardTable::SeawolfFrames: return SeawolfFrame::checksum(bytes, length);
    default: return IspBoardFrame::sum(bytes, length - 1);
    }
}

uint8_t SimIspBoard::checksumOf(const std::vector<uint8_t>& f) const {
    return checksumOf(m_table.frames, f.data(), static_cast<int>(f.size()));
}

bool SimIspBoard::checksumOk(IspBoardTable::FrameShape shape, const uint8_t* bytes, int length) {
    return bytes != nullptr && length >= 2 && checksumOf(shape, bytes, length) == bytes[length - 1];
}

bool SimIspBoard::decode(const std::vector<uint8_t>& f, Command& c) const {
    const int n = static_cast<int>(f.size());
    if (n < 4 || checksumOf(f) != f.back()) return false;
    switch (m_table.frames) {
    case IspBoardTable::ITNFrames: {
        if (f[1] != ITNFrame::Write && f[1] != ITNFrame::Read) return false;
        c.write = f[1] == ITNFrame::Write;
        c.address = ITNFrame::address(f.data());
        const IspBoardTable::Register* reg = m_table.findRegister(c.address);
        c.width = reg != nullptr ? reg->width : 0;  // the frame carries 16 bits for every register
        c.value = ITNFrame::value(f.data());
        return true;
    }
    case IspBoardTable::SeawolfFrames:
        c.write = (f[1] & SeawolfFrame::ReadFlag) == 0;
        c.address = f[1] & 0x7F;
        if (c.write == (f[2] == 0)) return false;  // a write carries data, a read none
        c.width = c.write ? 8 * f[2] : 0;
        if (!c.write) {
            const IspBoardTable::Register* reg = m_table.findRegister(c.address);
            c.width = reg != nullptr ? reg->width : 0;
        }
        c.value = SeawolfFrame::value(f.data());
        return true;
    default:
        if (IspBoardFrame::commandLength(f[1]) != n) return false;
        c.write = f[1] == IspBoardFrame::Write8 || f[1] == IspBoardFrame::Write16;
        c.address = static_cast<uint16_t>((f[2] << 8) | f[3]);
        c.width = (f[1] == IspBoardFrame::Write16 || f[1] == IspBoardFrame::Read16) ? 16 : 8;
        c.value = c.width == 16 ? (f[4] | (f[5] << 8)) : f[4];
        return true;
    }
}

std::vector<uint8_t> SimIspBoard::reply(const std::vector<uint8_t>& f, const Command& c, int value) const {
    uint8_t b[MaxAnswerLength] = {};
    switch (m_table.frames) {
    case IspBoardTable::ITNFrames:
        return std::vector<uint8_t>(b, b + ITNFrame::build(ITNFrame::AnswerStart, f[1], c.address, value, b));
    case IspBoardTable::SeawolfFrames:
        return std::vector<uint8_t>(b, b + SeawolfFrame::build(f[1], c.width / 8, value, b));
    default:
        if (c.write) return {5, f[1], f[2], f[3], 0};
        if (c.width == 16)
            return {7, f[1], f[2], f[3], static_cast<uint8_t>(value & 0xFF), static_cast<uint8_t>(value >> 8), 0};
        return {6, f[1], f[2], f[3], static_cast<uint8_t>(value & 0xFF), 0};
    }
}

std::vector<uint8_t> SimIspBoard::refusal(const std::vector<uint8_t>& f, uint8_t code) const {
    uint8_t b[MaxAnswerLength] = {};
    const uint8_t op = f.size() > 1 ? f[1] : 0;
    switch (m_table.frames) {
    case IspBoardTable::ITNFrames: {
        const uint16_t address = f.size() > 3 ? ITNFrame::address(f.data()) : 0;
        ITNFrame::build(ITNFrame::AnswerStart, static_cast<uint8_t>(op | ITNFrame::Refused), address, code, b);
        return std::vector<uint8_t>(b, b + ITNFrame::Length);
    }
    case IspBoardTable::SeawolfFrames:
        return std::vector<uint8_t>(b, b + SeawolfFrame::build(SeawolfFrame::Refused, 1, code, b));
    default: return {4, static_cast<uint8_t>(op | IspBoardFrame::Refused), code, 0};
    }
}

// ---- frames ----

void SimIspBoard::handleFrame(const std::vector<uint8_t>& f, int64_t at) {
    m_received.push_back(f);
    ++m_receivedTotal;
    if (m_received.size() > 1000) m_received.erase(m_received.begin(), m_received.begin() + 500);
    if (roll(Silent)) return;
    const int64_t replyAt = at + m_replyDelayMs;
    Command c;
    if (!decode(f, c)) {
        refuse(replyAt, f, IspBoardFrame::BadFrame);
        return;
    }
    const IspBoardTable::Register* reg = m_table.findRegister(c.address);
    if (reg == nullptr || reg->width != c.width) {
        refuse(replyAt, f, IspBoardFrame::UnknownRegister);
        return;
    }
    if (roll(BufferFull)) {
        refuse(replyAt, f, BusyCode);
        return;
    }
    if (c.write) {
        if (!reg->writable) {
            refuse(replyAt, f, IspBoardFrame::ReadOnly);
            return;
        }
        if (c.value < reg->minValue || c.value > reg->maxValue) {
            refuse(replyAt, f, IspBoardFrame::ValueOutOfRange);
            return;
        }
        m_registers[c.address] = c.value;
        ++m_writes;
    } else {
        ++m_reads;
    }
    answer(replyAt, reply(f, c, m_registers[c.address]));
}

void SimIspBoard::refuse(int64_t at, const std::vector<uint8_t>& f, uint8_t code) {
    ++m_refusals;
    answer(at, refusal(f, code));
}

void SimIspBoard::answer(int64_t at, std::vector<uint8_t> bytes) {
    if (rollFrame(TooLong)) padTooLong(bytes);
    bytes.back() = checksumOf(bytes);
    if (rollFrame(WrongChecksum)) bytes.back() = static_cast<uint8_t>(bytes.back() ^ 0x5A);
    if (rollFrame(ShortAnswer)) bytes.resize(bytes.size() > 2 ? bytes.size() - 2 : 1);
    bool dropped = false;
    replyFaulted(at, std::move(bytes), dropped);
}

void SimIspBoard::padTooLong(std::vector<uint8_t>& bytes) const {
    switch (m_table.frames) {
    case IspBoardTable::ITNFrames:
        // Fixed-length answers: four bytes more than the answer, after it.
        bytes.insert(bytes.end() - 1, LongAnswerLength - ITNFrame::Length, 0);
        break;
    case IspBoardTable::SeawolfFrames:
        // A data length that makes the answer longer than the reader's buffer.
        bytes.insert(bytes.end() - 1, LongAnswerLength - bytes.size(), 0);
        bytes[2] = static_cast<uint8_t>(LongAnswerLength - SeawolfFrame::HeadLength - 1);
        break;
    default:
        // Padded to more than the reader's buffer, count and checksum still right.
        bytes.insert(bytes.end() - 1, LongAnswerLength - bytes.size(), 0);
        bytes[0] = LongAnswerLength;
        break;
    }
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
