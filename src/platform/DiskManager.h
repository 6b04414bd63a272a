#pragma once
#include <string>

class DiskManager {
public:
    static bool isFileExist(const std::string& path);
};
