#pragma once
#include <cstddef>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace camsim {

// The traffic of a serial line as trace lines in hex, each with the device
// time (HH:MM:SS.mmm) at which it happened: "-> 81 01 04 47 ... FF" for the
// bytes the library wrote, "<- 90 41 FF" for what it read (consecutive reads
// on one line until the next write), "<- nothing within 300 ms" for a read that
// got nothing. A line of a text protocol shows its traffic as text in double
// quotes instead (-> ":W011032"), with the quote, the backslash and every byte
// outside printable ASCII escaped (\r, \n, \t, \x00). Called from any thread that uses the port; the lines are taken
// by the simulator's thread. Bytes are counted whether tracing is on or not.
class SerialTrace {
public:
    // At most this many lines wait to be taken; more are counted, not kept.
    enum { MaxLines = 4000 };

    // What the bytes of a line say of themselves ("checksum ok"), shown after
    // them; empty for nothing. Called with the bytes of a write, or of the
    // reads since the last write.
    using Verdict = std::function<std::string(const unsigned char* bytes, int length)>;

    void setEnabled(bool on);
    void setVerdict(Verdict verdict);
    // Text rather than hex (see above).
    void setText(bool text);
    // The bytes as a trace line shows them: hex, or quoted text.
    static std::string format(const unsigned char* bytes, int length, bool text);
    bool enabled() const;
    void sent(const unsigned char* bytes, int length);
    void received(const unsigned char* bytes, int length);
    void timedOut(int timeoutMs);
    void note(const std::string& text);
    // The lines since the previous call.
    std::vector<std::string> take();
    void counts(long& written, long& read) const;

private:
    // The device time now, "HH:MM:SS.mmm".
    static std::string stamp();
    void addLocked(const std::string& line);
    void closeRunLocked();
    // "  <verdict>" for the bytes, or nothing.
    std::string verdictLocked(const unsigned char* bytes, int length) const;

    mutable std::mutex m_mutex;
    bool m_bEnabled = false;
    std::vector<std::string> m_lines;
    size_t m_nDropped = 0;
    bool m_bText = false;
    Verdict m_verdict;
    std::string m_strRun;  // bytes read since the last write
    std::string m_strRunStamp;
    long m_nWritten = 0;
    long m_nRead = 0;
};

}  // namespace camsim
