#pragma once
// A serial port double that records what is written and can be told to fail.
#include <string>
#include <vector>

#include "app/IUARTController.h"

class FakeUART : public IUARTController {
public:
    std::vector<std::string> written;
    int writeLimit = -1;  // when >= 0, at most this many bytes are accepted
    std::string toRead;
    // Bytes that arrive with the next write (the module's answer to it).
    std::string reply;

    int open(const char*) override { return 0; }
    int setParameter(int, int, int, int, int) override { return 1; }
    int write(int, const char* data, int length) override {
        int n = writeLimit >= 0 && writeLimit < length ? writeLimit : length;
        written.emplace_back(data, static_cast<size_t>(n));
        toRead += reply;
        reply.clear();
        return n;
    }
    int read(int, char* buffer, int capacity, int) override {
        int n = static_cast<int>(toRead.size()) < capacity ? static_cast<int>(toRead.size()) : capacity;
        for (int i = 0; i < n; ++i) buffer[i] = toRead[static_cast<size_t>(i)];
        toRead.erase(0, static_cast<size_t>(n));
        return n;
    }
};
