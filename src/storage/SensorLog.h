#pragma once
#include "platform/KSLogger.h"

// Binds a rotating log to its file and mirrors every entry to standard output.
class SensorLog {
public:
    int init(const char* path, unsigned int size, unsigned int count);
    int WriteSensorLog(const char* tag, const char* text);

private:
    KSLogger m_logger;
};
