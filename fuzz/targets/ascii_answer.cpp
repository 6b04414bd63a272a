// The ASCII register group's answer reader (AsciiSenseController): the input
// as a read's answer, whole and as the serial port delivers it (split at NUL
// bytes into pieces, released once the read command is written).
//
// Properties: an answer that passes the check repeats the command's first six
// characters and its digits give the value that assembleString writes back;
// ascToHex refuses exactly the texts with a non-hex character; recvData
// succeeds exactly when one of its (at most three) answer reads was a valid
// answer, with the value of that one; and a well-formed answer carrying a
// value from the input is read back as that value.
#include <cctype>
#include <string>
#include <vector>

#include "../../bench/IdleDevices.h"
#include "FuzzSupport.h"
#include "PieceUART.h"
#include "drivers/serial/AsciiSenseController.h"
#include "platform/KSLogger.h"

namespace {

class Reader : public AsciiSenseController {
public:
    Reader() : AsciiSenseController(60, "Reader", nullptr, 0) {}
    int initController(int, const ModuleConfigure&) override { return 1; }
};

std::string upper(std::string s) {
    for (char& c : s) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return s;
}

bool allHex(const std::string& s) {
    for (char c : s)
        if (!std::isxdigit(static_cast<unsigned char>(c))) return false;
    return true;
}

void checkRecvData(Reader& reader, PieceUART* uart, const std::vector<std::string>& pieces, const char* command,
                   int expectedLength) {
    uart->load(pieces);
    int value = -7;
    int result = reader.recvData(command, expectedLength, value);
    int answers = 0;
    int first = -1;
    for (auto& r : uart->reads) {
        if (r.first != expectedLength) continue;  // drains and the stale-input read
        ++answers;
        int v = 0;
        if (first < 0 &&
            AsciiSenseController::checkReadAnswer(command, reinterpret_cast<const unsigned char*>(r.second.data()),
                                                  static_cast<int>(r.second.size()), expectedLength, v) ==
                AsciiSenseController::AnswerOk)
            first = v;
    }
    FUZZ_CHECK(answers >= 1 && answers <= 3);
    FUZZ_CHECK((result == 1) == (first >= 0));
    FUZZ_CHECK(result == 1 ? value == first : value == -7);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzzsupport::useTempRoot();
    KSLogger::setConsoleEnabled(false);
    static PieceUART* uart = new PieceUART();
    static Reader* reader = [] {
        Reader* r = new Reader();
        uart->releaseOnWrite = true;
        r->setOperator(SafePointer<IUARTController>(uart), SafePointer<IGPIO>(new IdleGPIO()));
        return r;
    }();
    const std::string input(reinterpret_cast<const char*>(data), size);
    const std::vector<std::string> pieces = PieceUART::splitAtNul(input);
    std::string stream;
    for (const std::string& p : pieces) stream += p;

    // 1. The stream as an answer to a command with its own first six characters.
    if (stream.size() >= 6 && stream.find('\0') == std::string::npos) {
        const std::string head = stream.substr(0, 6);
        const int n = static_cast<int>(stream.size());
        int value = -1;
        int check = AsciiSenseController::checkReadAnswer(head.c_str(), reinterpret_cast<const unsigned char*>(stream.data()),
                                                          n, n, value);
        const std::string digits = stream.substr(6);
        const bool wellFormed = !digits.empty() && digits.size() <= 8 && allHex(digits);
        FUZZ_CHECK((check == AsciiSenseController::AnswerOk) == wellFormed);
        if (wellFormed)
            FUZZ_CHECK(AsciiSenseController::assembleString(head.c_str(), value, static_cast<int>(digits.size())) ==
                       head + upper(digits));
    }
    // 2. ascToHex on the stream's first bytes.
    for (int length = 1; length <= 8 && length <= static_cast<int>(stream.size()); ++length) {
        int v = -3;
        int r = AsciiSenseController::ascToHex(stream.data(), length, v);
        FUZZ_CHECK((r == 1) == allHex(stream.substr(0, static_cast<size_t>(length))));
        if (r == 0) FUZZ_CHECK(v == -3);
    }
    // 3. The pieces as what the port delivers after a read command.
    checkRecvData(*reader, uart, pieces, ":R0110", 8);
    checkRecvData(*reader, uart, pieces, ":r02200000", 10);
    // 4. A well-formed answer with a value from the input reads back as that value.
    int value = 0;
    for (size_t i = 0; i < 2 && i < stream.size(); ++i) value = (value << 8) | static_cast<unsigned char>(stream[i]);
    uart->load({AsciiSenseController::assembleString(":r0220", value, 4)});
    int back = -1;
    FUZZ_CHECK(reader->recvData(":r02200000", 10, back) == 1);
    FUZZ_CHECK(back == value);
    return 0;
}
