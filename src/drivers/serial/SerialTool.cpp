#include "drivers/serial/SerialTool.h"

#include <cstdio>

#include "platform/KSLogger.h"

namespace {
template <class T>
void printValues(const T* values, int length) {
    for (int i = 0; values != nullptr && i < length; ++i)
        KSLogger::consolePrintf("0x%02x\t", static_cast<unsigned int>(values[i]));
    KSLogger::consolePrintf("\n");
}
}  // namespace

void SerialTool::printArray(const unsigned char* bytes, int length) { printValues(bytes, length); }
void SerialTool::printIntArray(const int* values, int length) { printValues(values, length); }
