#include "effio/SimEffioProcessor.h"

#include "drivers/serial/EffioSenseController.h"

namespace {
const uint8_t kStart = 0xA5;
const uint8_t kWrite = 0x01;
const uint8_t kRead = 0x02;

uint8_t sumOf(const std::vector<uint8_t>& v, size_t n) {
    unsigned int s = 0;
    for (size_t i = 0; i < n && i < v.size(); ++i) s += v[i];
    return static_cast<uint8_t>(s & 0xFF);
}
}  // namespace

SimEffioProcessor::Profile SimEffioProcessor::profile() {
    Profile p;
    p.name = "Effio";
    size_t count = 0;
    const EffioParameter* table = EffioSenseController::parameterTable(count);
    for (size_t i = 0; i < count; ++i) {
        const EffioParameter& row = table[i];
        Category& c = p.categories[row.category];
        const size_t end = static_cast<size_t>(row.byteNo + row.byteCount());
        if (c.bytes.size() < end) c.bytes.resize(end, 0);
        uint8_t bytes[2] = {0, 0};
        if (row.isBitField()) {
            c.bytes[static_cast<size_t>(row.byteNo)] = EffioSenseController::modifyAppointedBits(
                c.bytes[static_cast<size_t>(row.byteNo)], row.defaultValue, row.startBit, row.bitCount);
        } else {
            EffioSenseController::splitData(row.defaultValue, row.byteCount(), bytes);
            for (int k = 0; k < row.byteCount(); ++k) c.bytes[static_cast<size_t>(row.byteNo + k)] = bytes[k];
        }
    }
    Category version;
    version.bytes = {1, 2};
    version.readOnly = true;
    p.categories[VersionCategory] = version;
    return p;
}

SimEffioProcessor::SimEffioProcessor() { m_profile = profile(); }

void SimEffioProcessor::setProfile(const Profile& profile) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_profile = profile;
}

int SimEffioProcessor::moduleBaudLocked() const { return m_profile.baud; }

void SimEffioProcessor::receiveLocked(const uint8_t* data, int length, int64_t nowMs) {
    const int64_t wireUs = static_cast<int64_t>(byteTimeUs());
    for (int i = 0; i < length; ++i) {
        const int64_t at = nowMs + (wireUs * (i + 1) + 999) / 1000;
        // A frame broken off is forgotten once the line has been quiet a while.
        if (!m_inbuf.empty() && at - m_lastByteMs > InterByteGapMs) m_inbuf.clear();
        m_lastByteMs = at;
        const uint8_t b = data[i];
        if (m_inbuf.empty() && b != kStart) continue;  // noise between frames
        m_inbuf.push_back(b);
        if (m_inbuf.size() == 2 && b != kWrite && b != kRead) {
            m_inbuf.clear();
            answerStatus(CommunicationError, at, 0);
            continue;
        }
        if (m_inbuf.size() < 5) continue;
        const int count = m_inbuf[4];
        if (m_inbuf.size() == 5 && (count == 0 || count > MaxData)) {
            m_inbuf.clear();
            answerStatus(OtherError, at, 0);
            continue;
        }
        const size_t frameLength = 6 + (m_inbuf[1] == kWrite ? static_cast<size_t>(count) : 0);
        if (m_inbuf.size() == frameLength) {
            std::vector<uint8_t> frame;
            frame.swap(m_inbuf);
            handleFrame(frame, at);
        }
    }
}

void SimEffioProcessor::answer(std::vector<uint8_t> bytes, int64_t at, uint8_t requestSum) {
    bytes.push_back(static_cast<uint8_t>((sumOf(bytes, bytes.size()) + requestSum) & 0xFF));
    int64_t replyAt = at + m_replyDelayMs;
    bool dropped = false;
    replyFaulted(replyAt, std::move(bytes), dropped);
}

void SimEffioProcessor::answerStatus(int code, int64_t at, uint8_t requestSum) {
    ++m_statusCounts[code];
    answer({kStart, static_cast<uint8_t>(code)}, at, requestSum);
}

void SimEffioProcessor::handleFrame(const std::vector<uint8_t>& frame, int64_t at) {
    ++m_frames;
    m_received.push_back(frame);
    if (m_received.size() > 1000) m_received.erase(m_received.begin(), m_received.begin() + 500);
    if (roll(Silent)) return;
    if (sumOf(frame, frame.size() - 1) != frame.back()) {
        answerStatus(CommunicationError, at, frame.back());
        return;
    }
    const int category = frame[2];
    const size_t byteNo = frame[3];
    const size_t count = frame[4];
    auto it = m_profile.categories.find(category);
    if (it == m_profile.categories.end()) {
        answerStatus(CategoryError, at, frame.back());
        return;
    }
    Category& c = it->second;
    if (byteNo + count > c.bytes.size()) {
        answerStatus(ByteError, at, frame.back());
        return;
    }
    if (frame[1] == kRead) {
        std::vector<uint8_t> a = {kStart, kRead};
        a.insert(a.end(), c.bytes.begin() + static_cast<long>(byteNo),
                 c.bytes.begin() + static_cast<long>(byteNo + count));
        answer(std::move(a), at, frame.back());
        return;
    }
    if (c.readOnly) {
        answerStatus(OtherError, at, frame.back());
        return;
    }
    if (roll(BufferFull)) {
        answerStatus(CommunicationError, at, frame.back());
        return;
    }
    for (size_t k = 0; k < count; ++k) c.bytes[byteNo + k] = frame[5 + k];
    ++m_writes;
    answerStatus(Done, at, frame.back());
}

int SimEffioProcessor::byteAt(int category, int byteNo) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    auto it = m_profile.categories.find(category);
    if (it == m_profile.categories.end() || byteNo < 0 || static_cast<size_t>(byteNo) >= it->second.bytes.size())
        return -1;
    return it->second.bytes[static_cast<size_t>(byteNo)];
}

void SimEffioProcessor::setByte(int category, int byteNo, uint8_t value) {
    std::lock_guard<std::mutex> lock(m_mutex);
    auto it = m_profile.categories.find(category);
    if (it == m_profile.categories.end() || byteNo < 0 || static_cast<size_t>(byteNo) >= it->second.bytes.size())
        return;
    it->second.bytes[static_cast<size_t>(byteNo)] = value;
}

int SimEffioProcessor::writeCount() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_writes;
}

int SimEffioProcessor::frameCount() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_frames;
}

int SimEffioProcessor::statusCount(int code) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    auto it = m_statusCounts.find(code);
    return it == m_statusCounts.end() ? 0 : it->second;
}

std::vector<std::vector<uint8_t>> SimEffioProcessor::receivedFrames() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_received;
}
