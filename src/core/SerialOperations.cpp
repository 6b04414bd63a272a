// The serial-line operations that every serial module controller shares: reply
// search, packet checksum, draining the port and printing a packet.
#include <cstdio>
#include <vector>

#include "core/ISensorController.h"
#include "platform/KSLogger.h"

namespace {
// A drain reads the port in chunks of this size until a read returns less.
const int kDrainChunk = 20;
// Read time-out of a drain, in the serial port's time-out unit.
const int kDrainTimeout = 1;
}  // namespace

int ISensorController::checkUARTRecv(const unsigned char* expected, int expectedLength,
                                     const unsigned char* received, int receivedLength) {
    if (receivedLength < 1 || expectedLength < 1 || expected == nullptr || received == nullptr) return 0;
    for (int start = 0; start + expectedLength <= receivedLength; ++start) {
        if (received[start] != expected[0]) continue;
        int k = 1;
        while (k < expectedLength && received[start + k] == expected[k]) ++k;
        if (k == expectedLength) return 1;
    }
    return 0;
}

void ISensorController::computeSum(unsigned char* packet, int length) {
    if (packet == nullptr || length < 2) return;
    if (length < 4) {
        packet[length - 2] = 0;
        return;
    }
    unsigned int sum = 0;
    for (int i = 1; i <= length - 3; ++i) sum += packet[i];
    packet[length - 2] = static_cast<unsigned char>(sum & 0xFF);
}

void ISensorController::clearUartBuffer() {
    KSLogger::consolePuts("Clear UART buffer");
    char chunk[kDrainChunk];
    // The port's read never blocks past its time-out, so this ends once the
    // line has been quiet for one time-out; a line that never goes quiet is
    // read for as long as it talks, as a drain must.
    while (m_pUART->read(m_nUARTPort, chunk, kDrainChunk, kDrainTimeout) == kDrainChunk) {
    }
}

void ISensorController::recodeArray(const unsigned char* bytes, int length) {
    if (bytes == nullptr || length < 1) return;
    // "0xNN," is at most 5 characters per byte; the last one has no comma, which
    // leaves room for the terminating zero.
    std::vector<char> text(static_cast<size_t>(length) * 5 + 1, '\0');
    size_t used = 0;
    for (int i = 0; i < length && used < text.size(); ++i) {
        int n = std::snprintf(text.data() + used, text.size() - used, i == 0 ? "0x%x" : ",0x%x", bytes[i]);
        if (n < 0) break;
        used += static_cast<size_t>(n);
    }
    ErrorPrintf("%s", text.data());
}
