#pragma once
#include <string>

// Small file-system helpers of the platform layer. Paths given here are
// already resolved under the platform root.
class FsUtil {
public:
    // Creates the directory and its parents; true if it exists afterwards.
    static bool makeDirs(const std::string& dir);
    static std::string dirName(const std::string& path);
    static std::string baseName(const std::string& path);
    static bool isDirectory(const std::string& path);
    // Flushes a directory entry change (rename, create) to disk.
    static void syncDir(const std::string& dir);
};
