#pragma once
#include <stdexcept>
#include <string>

// The library's one exception type. It carries a message that what() returns.
class KSRuntimeError : public std::runtime_error {
public:
    explicit KSRuntimeError(const std::string& message) : std::runtime_error(message) {}
    explicit KSRuntimeError(const char* message) : std::runtime_error(message) {}
    std::string getMessage() const { return what(); }
};
