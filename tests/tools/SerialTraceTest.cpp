// camsim's serial trace: the bytes of a binary protocol in hex, those of a
// text protocol as quoted text with its control characters escaped; the reads
// since the last write on one line; nothing kept while tracing is off.
#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <vector>

#include "camsim/SerialTrace.h"

namespace {

const unsigned char* bytes(const std::string& text) { return reinterpret_cast<const unsigned char*>(text.data()); }
int length(const std::string& text) { return static_cast<int>(text.size()); }

}  // namespace

TEST(SerialTraceTest, HexShowsEachByteAndJoinsTheReadsOfOneAnswer) {
    const unsigned char packet[] = {0x81, 0x01, 0x04, 0x42, 0x00, 0xFF};
    EXPECT_EQ("81 01 04 42 00 FF", camsim::SerialTrace::format(packet, 6, false));
    EXPECT_EQ("", camsim::SerialTrace::format(packet, 0, false));

    camsim::SerialTrace trace;
    trace.setEnabled(true);
    trace.sent(packet, 6);
    const unsigned char first[] = {0x90, 0x41};
    const unsigned char second[] = {0xFF};
    trace.received(first, 2);
    trace.received(second, 1);
    trace.timedOut(300);
    const std::vector<std::string> lines = trace.take();
    ASSERT_EQ(3u, lines.size());
    EXPECT_TRUE(std::regex_match(lines[0], std::regex("\\d\\d:\\d\\d:\\d\\d\\.\\d{3} -> 81 01 04 42 00 FF"))) << lines[0];
    EXPECT_TRUE(std::regex_match(lines[1], std::regex("\\d\\d:\\d\\d:\\d\\d\\.\\d{3} <- 90 41 FF"))) << lines[1];
    EXPECT_TRUE(std::regex_match(lines[2], std::regex("\\d\\d:\\d\\d:\\d\\d\\.\\d{3} <- nothing within 300 ms")))
        << lines[2];
}

TEST(SerialTraceTest, TextIsQuotedWithControlCharactersEscaped) {
    EXPECT_EQ("\":W011032\"", camsim::SerialTrace::format(bytes(":W011032"), 8, true));
    const std::string odd = std::string(":R\r\n\t\"\\", 7) + std::string(1, '\0') + "\x1b\x7f\xA5";
    EXPECT_EQ("\":R\\r\\n\\t\\\"\\\\\\x00\\x1B\\x7F\\xA5\"", camsim::SerialTrace::format(bytes(odd), length(odd), true));
    EXPECT_EQ("\"\"", camsim::SerialTrace::format(bytes(""), 0, true));

    camsim::SerialTrace trace;
    trace.setText(true);
    trace.sent(bytes(":W011032"), 8);  // tracing off: counted, not kept
    EXPECT_TRUE(trace.take().empty());
    long written = 0, read = 0;
    trace.counts(written, read);
    EXPECT_EQ(8, written);

    trace.setEnabled(true);
    trace.sent(bytes(":R0110"), 6);
    trace.received(bytes(":R01"), 4);
    trace.received(bytes("102A"), 4);
    const std::vector<std::string> lines = trace.take();
    ASSERT_EQ(2u, lines.size());
    EXPECT_TRUE(std::regex_match(lines[0], std::regex("\\d\\d:\\d\\d:\\d\\d\\.\\d{3} -> \":R0110\""))) << lines[0];
    // Two reads of one answer are one text.
    EXPECT_TRUE(std::regex_match(lines[1], std::regex("\\d\\d:\\d\\d:\\d\\d\\.\\d{3} <- \":R01102A\""))) << lines[1];
    trace.counts(written, read);
    EXPECT_EQ(14, written);
    EXPECT_EQ(8, read);
}
