#pragma once
#include <mutex>
#include <string>

// Rotating text log: at most `count` files of at most `size` bytes each
// (name, name.1, name.2, ...). Every line carries a time stamp and the tag.
// A log that cannot be written never fails the caller.
class KSLogger {
public:
    bool init(const char* path, unsigned int size, unsigned int count);
    bool writeLog(const char* tag, const char* text);

private:
    void rotate();
    std::mutex m_mutex;
    std::string m_strPath;  // resolved
    unsigned int m_nSize = 0;
    unsigned int m_nCount = 0;
};
