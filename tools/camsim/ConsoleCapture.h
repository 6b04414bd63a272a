#pragma once
#include <condition_variable>
#include <cstdio>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

// Takes over the process's standard output, where the library prints its
// console lines, so that the simulator can show them apart from its own
// output: echoed with a prefix ("verbose" on), kept for error messages of the
// command that caused them, and remembered for "logs console".
class ConsoleCapture {
public:
    ConsoleCapture() = default;
    ~ConsoleCapture();
    ConsoleCapture(const ConsoleCapture&) = delete;
    ConsoleCapture& operator=(const ConsoleCapture&) = delete;

    // Redirects standard output into a pipe read by a thread of this object.
    // False when that is not possible; the simulator then runs uncaptured.
    bool start();
    // Gives standard output back.
    void stop();
    bool isActive() const { return m_bActive; }

    // The simulator's own output (the original standard output).
    FILE* out() const { return m_pOut != nullptr ? m_pOut : stdout; }

    // Waits until every line printed so far has been read and returns the
    // lines that arrived since the previous take.
    std::vector<std::string> take();
    // The last lines seen, oldest first.
    std::vector<std::string> recent(size_t count) const;
    void setEcho(bool echo);
    bool echo() const;

private:
    void readerLoop();
    void handleLine(const std::string& line);

    bool m_bActive = false;
    int m_nRealFd = -1;
    int m_nPipeRead = -1;
    FILE* m_pOut = nullptr;
    std::thread m_reader;
    mutable std::mutex m_mutex;
    std::condition_variable m_cond;
    std::vector<std::string> m_pending;
    std::deque<std::string> m_recent;
    unsigned long m_nMarkerSent = 0;
    unsigned long m_nMarkerSeen = 0;
    bool m_bEcho = false;
};
