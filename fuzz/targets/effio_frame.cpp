// The Effio frame reader and helpers (EffioSenseController): the input as a
// read's answer, whole and as the serial port delivers it (split at NUL bytes
// into pieces, released once the request is written), and as the fields of a
// frame, a bit field and a split value.
//
// Properties: checkReadAnswer accepts exactly the answers of the right length
// and start whose checksum (counting the request's) holds, and hands out their
// data bytes; getParameters succeeds exactly when one of its (at most three)
// answer reads was such an answer; assembleData's frames carry their fields
// and checksum; modifyAppointedBits changes exactly the field's bits;
// splitData gives the value's low bytes, high first.
#include <cstring>
#include <string>
#include <vector>

#include "../../bench/IdleDevices.h"
#include "FuzzSupport.h"
#include "PieceUART.h"
#include "drivers/serial/EffioSenseController.h"
#include "platform/KSLogger.h"

namespace {

unsigned char byteAt(const std::string& s, size_t i) { return i < s.size() ? static_cast<unsigned char>(s[i]) : 0; }

bool validAnswer(const std::string& a, int count, unsigned char requestSum) {
    if (static_cast<int>(a.size()) != count + 3 || count < 1 || count > EffioSenseController::MaxData) return false;
    if (byteAt(a, 0) != 0xA5 || byteAt(a, 1) != 0x02) return false;
    unsigned int sum = requestSum;
    for (size_t i = 0; i + 1 < a.size(); ++i) sum += byteAt(a, i);
    return (sum & 0xFF) == byteAt(a, a.size() - 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzzsupport::useTempRoot();
    KSLogger::setConsoleEnabled(false);
    static PieceUART* uart = new PieceUART();
    static EffioSenseController* ctl = [] {
        EffioSenseController* c = new EffioSenseController();
        uart->releaseOnWrite = true;
        c->setOperator(SafePointer<IUARTController>(uart), SafePointer<IGPIO>(new IdleGPIO()));
        return c;
    }();
    const std::string input(reinterpret_cast<const char*>(data), size);
    const std::vector<std::string> pieces = PieceUART::splitAtNul(input);
    std::string stream;
    for (const std::string& p : pieces) stream += p;

    // 1. The stream as a read's answer, the request's checksum its first byte.
    const unsigned char requestSum = byteAt(stream, 0);
    const int count = static_cast<int>(stream.size()) - 3;
    unsigned char out[EffioSenseController::MaxData + 3] = {0};
    int r = EffioSenseController::checkReadAnswer(reinterpret_cast<const unsigned char*>(stream.data()),
                                                  static_cast<int>(stream.size()), count, requestSum, out);
    FUZZ_CHECK((r == 1) == validAnswer(stream, count, requestSum));
    if (r == 1) FUZZ_CHECK(std::memcmp(out, stream.data() + 2, static_cast<size_t>(count)) == 0);

    // 2. The pieces as what the port delivers after a read of two bytes at 3/3.
    unsigned char request[EffioSenseController::FrameCapacity];
    const int requestLength =
        EffioSenseController::assembleData(request, sizeof(request), EffioSenseController::ReadCommand, 3, 3, nullptr, 2);
    FUZZ_CHECK(requestLength == 6);
    uart->load(pieces);
    unsigned char value[2] = {0x5A, 0x5A};
    int result = ctl->getParameters(3, 3, 2, value);
    int answers = 0;
    const std::string* first = nullptr;
    for (auto& rd : uart->reads) {
        if (rd.first != 5) continue;  // drains and the stale-input read
        ++answers;
        if (first == nullptr && validAnswer(rd.second, 2, request[5])) first = &rd.second;
    }
    FUZZ_CHECK(answers >= 1 && answers <= 3);
    FUZZ_CHECK((result == 1) == (first != nullptr));
    if (result == 1) FUZZ_CHECK(value[0] == byteAt(*first, 2) && value[1] == byteAt(*first, 3));
    else FUZZ_CHECK(value[0] == 0x5A && value[1] == 0x5A);

    // 3. A write frame of the input's fields.
    const int n = static_cast<int>(byteAt(stream, 0) % 20);
    unsigned char frame[EffioSenseController::FrameCapacity];
    const std::string payload = stream.size() > 3 ? stream.substr(3) : std::string();
    const bool enough = static_cast<int>(payload.size()) >= n;
    int length = EffioSenseController::assembleData(frame, sizeof(frame), EffioSenseController::WriteCommand,
                                                    byteAt(stream, 1), byteAt(stream, 2),
                                                    enough ? reinterpret_cast<const unsigned char*>(payload.data()) : nullptr, n);
    if (n > EffioSenseController::MaxData || (n > 0 && !enough)) {
        FUZZ_CHECK(length == 0);
    } else {
        FUZZ_CHECK(length == 6 + n);
        FUZZ_CHECK(frame[0] == 0xA5 && frame[1] == 0x01 && frame[2] == byteAt(stream, 1) && frame[3] == byteAt(stream, 2) &&
                   frame[4] == n);
        FUZZ_CHECK(n == 0 || std::memcmp(frame + 5, payload.data(), static_cast<size_t>(n)) == 0);
        FUZZ_CHECK(EffioSenseController::checksum(frame, length - 1) == frame[length - 1]);
    }

    // 4. A bit field and a split value.
    const unsigned char original = byteAt(stream, 0);
    const int fieldValue = byteAt(stream, 1);
    const int start = byteAt(stream, 2) % 10 - 1;  // -1 to 8
    const int bits = byteAt(stream, 3) % 10;       // 0 to 9
    const unsigned char changed = EffioSenseController::modifyAppointedBits(original, fieldValue, start, bits);
    if (start < 0 || start > 7 || bits < 1) {
        FUZZ_CHECK(changed == original);
    } else {
        const int width = start + bits > 8 ? 8 - start : bits;
        const unsigned int mask = ((1u << width) - 1u) << start;
        FUZZ_CHECK((changed & ~mask & 0xFF) == (original & ~mask & 0xFF));
        FUZZ_CHECK(((changed & mask) >> start) == (static_cast<unsigned int>(fieldValue) & ((1u << width) - 1u)));
    }
    int whole = 0;
    for (size_t i = 0; i < 4; ++i) whole = static_cast<int>((static_cast<unsigned int>(whole) << 8) | byteAt(stream, i));
    for (int c = 1; c <= 4; ++c) {
        unsigned char split[4] = {0, 0, 0, 0};
        EffioSenseController::splitData(whole, c, split);
        unsigned int back = 0;
        for (int i = 0; i < c; ++i) back = (back << 8) | split[i];
        const unsigned int low = c == 4 ? static_cast<unsigned int>(whole) : static_cast<unsigned int>(whole) & ((1u << (8 * c)) - 1u);
        FUZZ_CHECK(back == low);
    }
    return 0;
}
