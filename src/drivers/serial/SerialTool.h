#pragma once

// The print helpers of the serial modules' tool classes: each byte as
// "0x%02x\t", then a newline (a newline alone for an empty array).
class SerialTool {
public:
    static void printArray(const unsigned char* bytes, int length);
    static void printIntArray(const int* values, int length);
};

// The tool class of each serial module: one body for all of them.
using EH4300_TOOL = SerialTool;
using CMD8100_TOOL = SerialTool;
using CMD8100_Old_TOOL = SerialTool;
using CMD8300_TOOL = SerialTool;
using CMD7300_TOOL = SerialTool;
using CV7500_TOOL = SerialTool;
using EFFIO_TOOL = SerialTool;
using CH3310_TOOL = SerialTool;
