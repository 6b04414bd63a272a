#pragma once
#include <mutex>
#include <string>

#include "platform/Format.h"

// Rotating text log: at most `count` files of at most `size` bytes each
// (name, name.1, name.2, ...). Every line carries a time stamp and the tag.
// A log that cannot be written never fails the caller.
//
// The library's console lines (standard output) go through consolePrintf and
// consolePuts, so that a program can switch them off as a whole (benchmarks do).
class KSLogger {
public:
    // Console lines on (the default) or off; off, they are dropped.
    static void setConsoleEnabled(bool enabled);
    static bool isConsoleEnabled();
    // printf and puts to standard output while the console is on; 0 when it is off.
    static int consolePrintf(const char* fmt, ...) KS_PRINTF_FORMAT(1, 2);
    static int consolePuts(const char* text);

    bool init(const char* path, unsigned int size, unsigned int count);
    bool writeLog(const char* tag, const char* text);

private:
    void rotate();
    std::mutex m_mutex;
    std::string m_strPath;  // resolved
    unsigned int m_nSize = 0;
    unsigned int m_nCount = 0;
};
