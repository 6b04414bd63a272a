#pragma once
// A serial port for the fuzz targets that hands out pieces of bytes: a read
// takes from the current piece and moves on to the next one when it is used
// up, as a port delivers a message that arrives in parts. With
// `releaseOnWrite` the pieces come only after the first write (the answer
// follows the request); every read is recorded with its capacity.
#include <algorithm>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "app/IUARTController.h"

class PieceUART : public IUARTController {
public:
    std::vector<std::string> pieces;
    size_t piece = 0, offset = 0;
    bool releaseOnWrite = false;
    bool written = false;
    std::vector<std::pair<int, std::string>> reads;  // capacity, bytes returned

    // The input split at its NUL bytes.
    static std::vector<std::string> splitAtNul(const std::string& s) {
        std::vector<std::string> out(1);
        for (char c : s) {
            if (c == '\0')
                out.emplace_back();
            else
                out.back() += c;
        }
        return out;
    }
    void load(const std::vector<std::string>& p) {
        pieces = p;
        piece = 0;
        offset = 0;
        written = false;
        reads.clear();
    }

    int open(const char*) override { return 0; }
    int setParameter(int, int, int, int, int) override { return 1; }
    int write(int, const char*, int length) override {
        written = true;
        return length;
    }
    int read(int, char* buffer, int capacity, int) override {
        int n = take(buffer, capacity);
        reads.emplace_back(capacity, std::string(buffer, static_cast<size_t>(n > 0 ? n : 0)));
        return n;
    }

private:
    int take(char* buffer, int capacity) {
        if (releaseOnWrite && !written) return 0;
        while (piece < pieces.size() && offset >= pieces[piece].size()) {
            ++piece;
            offset = 0;
        }
        if (piece >= pieces.size() || capacity < 1) return 0;
        int n = std::min<int>(capacity, static_cast<int>(pieces[piece].size() - offset));
        std::memcpy(buffer, pieces[piece].data() + offset, static_cast<size_t>(n));
        offset += static_cast<size_t>(n);
        return n;
    }
};
