#pragma once
// Helpers shared by the fuzz targets (fuzz/targets/*.cpp).
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

// A property every input must keep; a violation aborts, which libFuzzer and
// the replay both report as a finding.
#define FUZZ_CHECK(cond)                                                                         \
    do {                                                                                         \
        if (!(cond)) {                                                                           \
            std::fprintf(stderr, "fuzz property violated: %s (%s:%d)\n", #cond, __FILE__, __LINE__); \
            std::abort();                                                                        \
        }                                                                                        \
    } while (0)

namespace fuzzsupport {

// Makes a temporary directory the platform root on the first call (removed
// when the process exits) and returns it.
const std::string& useTempRoot();

// Writes `bytes` to a camera path under the root (directories made as needed),
// plainly: the fuzz input is the file, whatever it holds.
void writeFile(const std::string& cameraPath, const std::string& bytes);
// The bytes of a camera path under the root; "" and `exists` false when missing.
std::string readFile(const std::string& cameraPath, bool* exists = nullptr);

// The input split at its NUL bytes into exactly `count` parts (missing parts
// are empty; NUL bytes beyond the last separator stay in the last part).
std::vector<std::string> splitInput(const uint8_t* data, size_t size, size_t count);

}  // namespace fuzzsupport
