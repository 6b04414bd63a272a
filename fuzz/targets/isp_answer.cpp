// The answer-frame reader of the ISP-board frame exchange
// (IspBoardSenseController::baseSendCommand), fed the input bytes as the serial
// port delivers them (the input split at NUL bytes into pieces that arrive
// without a pause; after the last piece the port is quiet).
//
// Properties: the result is what the frame rules give for the byte stream
// (-2 nothing or too little, -4 a count above the capacity, -3 a wrong
// checksum, else the count) and a positive result leaves exactly the answer's
// bytes in the buffer, never more than the capacity; a well-formed answer
// carrying bytes of the input is read whole, and as a 16-bit read answer it
// decodes to its value.
#include <cstring>
#include <string>
#include <vector>

#include "../../bench/IdleDevices.h"
#include "FuzzSupport.h"
#include "PieceUART.h"
#include "drivers/ispboard/IT1SenseController.h"
#include "drivers/ispboard/IspBoardFrame.h"

namespace {

// A port whose read goes on into the next pieces until it has its capacity, as
// a serial port gathers bytes that come without a pause until its time-out.
class GatheringUART : public PieceUART {
public:
    int read(int port, char* buffer, int capacity, int timeout) override {
        int got = 0;
        while (got < capacity) {
            int n = PieceUART::read(port, buffer + got, capacity - got, timeout);
            if (n < 1) break;
            got += n;
        }
        return got;
    }
};

// What baseSendCommand must return for a byte stream and a capacity.
int expected(const std::string& s, int capacity) {
    if (s.empty()) return IspBoardSenseController::ReadFailed;
    const int count = static_cast<unsigned char>(s[0]);
    if (count > capacity) return IspBoardSenseController::AnswerTooLong;
    if (count == 0 || static_cast<int>(s.size()) < count) return IspBoardSenseController::ReadFailed;
    const uint8_t sum = IspBoardFrame::sum(reinterpret_cast<const uint8_t*>(s.data()), count - 1);
    if (sum != static_cast<unsigned char>(s[static_cast<size_t>(count - 1)]))
        return IspBoardSenseController::ChecksumMismatch;
    return count;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzzsupport::useTempRoot();
    static GatheringUART* uart = new GatheringUART();
    static IT1SenseController* ctl = [] {
        IT1SenseController* c = new IT1SenseController();
        c->setOperator(SafePointer<IUARTController>(uart), SafePointer<IGPIO>(new IdleGPIO()));
        return c;
    }();
    const std::string input(reinterpret_cast<const char*>(data), size);
    const std::vector<std::string> pieces = PieceUART::splitAtNul(input);
    std::string stream;
    for (const std::string& p : pieces) stream += p;

    // 1. The input as the answer, at the capacities the family uses and at the largest.
    for (int capacity : {5, 7, static_cast<int>(IspBoardSenseController::AnswerCapacity), 255}) {
        std::vector<unsigned char> answer(static_cast<size_t>(capacity) + 1, 0xEE);
        unsigned char frame[5] = {IspBoardFrame::Start, IspBoardFrame::Read16, 0x00, 0x32, 0x00};
        uart->load(pieces);
        const int n = ctl->baseSendCommand(frame, 5, answer.data(), capacity);
        FUZZ_CHECK(n == expected(stream, capacity));
        FUZZ_CHECK(answer[static_cast<size_t>(capacity)] == 0xEE);  // nothing past the capacity
        if (n > 0) FUZZ_CHECK(std::memcmp(answer.data(), stream.data(), static_cast<size_t>(n)) == 0);
    }

    // 2. A 16-bit read answer whose value comes from the input, in the input's
    // pieces (the answer's bytes spread over them): read whole and decoded.
    int value = 0;
    for (size_t i = 0; i < 2 && i < stream.size(); ++i) value = (value << 8) | static_cast<unsigned char>(stream[i]);
    uint8_t a[7] = {7, IspBoardFrame::Read16, 0x00, 0x32, static_cast<uint8_t>(value & 0xFF),
                    static_cast<uint8_t>(value >> 8), 0};
    a[6] = IspBoardFrame::sum(a, 6);
    std::vector<std::string> spread;
    size_t at = 0;
    for (const std::string& p : pieces) {
        if (at >= 7) break;
        size_t n = p.empty() ? 1 : std::min<size_t>(p.size(), 7 - at);
        spread.emplace_back(reinterpret_cast<const char*>(a + at), n);
        at += n;
    }
    if (at < 7) spread.emplace_back(reinterpret_cast<const char*>(a + at), 7 - at);
    spread.push_back(stream.substr(0, 16));  // whatever follows stays on the line
    uart->load(spread);
    unsigned char frame[5];
    const int len = IspBoardFrame::read(0x0032, 16, frame);
    int decoded = -1;
    FUZZ_CHECK(ctl->getParameterValue(reinterpret_cast<const char*>(frame), len, decoded) == 1);
    FUZZ_CHECK(decoded == value);
    return 0;
}
