// The VISCA message reader of the serial transaction layer, fed the input bytes
// as the serial port delivers them (the input split at NUL bytes into pieces that
// arrive without a pause between them; after the last piece the port is quiet).
//
// Properties: the reader returns -1 or the bytes from the first 0x90 (after at
// most 100 bytes of noise) up to the first 0xFF after it, never longer than the
// capacity; and a well-formed answer placed after the input's own bytes turned
// into noise is read whole and decodes to the value it encodes.
#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "../../bench/IdleDevices.h"
#include "FuzzSupport.h"
#include "PieceUART.h"
#include "drivers/serial/SerialSenseController.h"
#include "drivers/serial/ViscaParameter.h"

namespace {

class Reader : public SerialSenseController {
public:
    Reader() : SerialSenseController(60, MessageForm) {}
    int getMirrorValue(int&) override { return 0; }
    int setSensorVideoSystem(int, const VideoResolution&) override { return 1; }
    int initController(int, const ModuleConfigure&) override { return 1; }
};

// What the reader must return for a byte stream: -1 or the expected message.
int expected(const std::string& stream, int capacity, std::string& message) {
    size_t i = 0, noise = 0;
    while (i < stream.size() && static_cast<unsigned char>(stream[i]) != 0x90) {
        if (++noise >= SerialSenseController::MaxMessageLength) return -1;
        ++i;
    }
    if (i >= stream.size()) return -1;
    message.clear();
    for (; i < stream.size() && message.size() < SerialSenseController::MaxMessageLength; ++i) {
        message += stream[i];
        if (static_cast<unsigned char>(stream[i]) == 0xFF && message.size() > 1) break;
    }
    bool ended = static_cast<unsigned char>(message.back()) == 0xFF && message.size() > 1;
    if (!ended && message.size() < SerialSenseController::MaxMessageLength) return -1;
    if (static_cast<int>(message.size()) > capacity) return -1;
    return static_cast<int>(message.size());
}

int readWith(Reader& reader, PieceUART* uart, const std::vector<std::string>& pieces, int capacity,
             unsigned char* out) {
    uart->load(pieces);
    return reader.readViscaMessage(out, capacity, 3);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzzsupport::useTempRoot();
    static PieceUART* uart = new PieceUART();
    static Reader* reader = [] {
        Reader* r = new Reader();
        r->setOperator(SafePointer<IUARTController>(uart), SafePointer<IGPIO>(new IdleGPIO()));
        return r;
    }();
    const std::string input(reinterpret_cast<const char*>(data), size);
    const std::vector<std::string> pieces = PieceUART::splitAtNul(input);
    std::string stream;
    for (const std::string& p : pieces) stream += p;

    // 1. The input as it comes, at the capacities the layer uses.
    const int capacities[] = {3, 4, 7, static_cast<int>(SerialSenseController::MaxMessageLength)};
    for (int capacity : capacities) {
        unsigned char out[SerialSenseController::MaxMessageLength];
        std::string want;
        int n = readWith(*reader, uart, pieces, capacity, out);
        int e = expected(stream, capacity, want);
        FUZZ_CHECK(n == e);
        FUZZ_CHECK(n == -1 || (n >= 1 && n <= capacity));
        if (n > 0) FUZZ_CHECK(std::string(reinterpret_cast<char*>(out), static_cast<size_t>(n)) == want);
    }

    // 2. Noise (the input without 0x90, at most 99 bytes) before a zoom position
    // answer that encodes a value taken from the input: read whole, decoded back.
    std::string noise;
    for (char c : stream)
        if (static_cast<unsigned char>(c) != 0x90 && noise.size() < SerialSenseController::MaxMessageLength - 1)
            noise += c;
    int value = 0;
    for (size_t i = 0; i < 2 && i < stream.size(); ++i) value = (value << 8) | static_cast<unsigned char>(stream[i]);
    unsigned char answer[7] = {0x90, 0x50, 0, 0, 0, 0, 0xFF};
    ViscaParameter::nibbles(value, 4, answer + 2);
    std::vector<std::string> framed = PieceUART::splitAtNul(noise);
    framed.back() += std::string(reinterpret_cast<char*>(answer), 7);
    unsigned char out[SerialSenseController::MaxMessageLength];
    int n = readWith(*reader, uart, framed, 7, out);
    // A 0xFF in the noise ends a message only after a 0x90, which the noise has none of.
    FUZZ_CHECK(n == 7);
    FUZZ_CHECK(std::memcmp(out, answer, 7) == 0);
    const ViscaParameter zoom = {0, "Zoom", nullptr, 0, 0, ViscaParameter::Nibbles, 0x47, 0, 0, 0};
    int decoded = -1;
    FUZZ_CHECK(zoom.decodeAnswer(out, decoded));
    FUZZ_CHECK(decoded == value);
    return 0;
}
