#include "platform/DiskManager.h"

#include "platform/KSFile.h"

bool DiskManager::isFileExist(const std::string& path) { return KSFile::isExist(path); }
