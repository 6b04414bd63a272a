#pragma once
// The console output of a call, and counting a text in it.
#include <gtest/gtest.h>

#include <string>

namespace testutil {

// Runs `call` with stdout captured into `out`; its result.
template <class F>
auto capturedOutput(std::string& out, F&& call) -> decltype(call()) {
    testing::internal::CaptureStdout();
    auto r = call();
    out = testing::internal::GetCapturedStdout();
    return r;
}

inline size_t countOf(const std::string& hay, const std::string& needle) {
    size_t n = 0;
    for (size_t p = hay.find(needle); p != std::string::npos; p = hay.find(needle, p + 1)) ++n;
    return n;
}

}  // namespace testutil
