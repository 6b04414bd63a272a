#include "storage/SensorLog.h"

#include <cstdio>

int SensorLog::init(const char* path, unsigned int size, unsigned int count) {
    return m_logger.init(path, size, count) ? 1 : 0;
}

int SensorLog::WriteSensorLog(const char* tag, const char* text) {
    KSLogger::consolePrintf("%s\n", text ? text : "");
    return m_logger.writeLog(tag, text) ? 1 : 0;
}
