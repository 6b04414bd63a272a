#pragma once
#include <string>

// Every fixed absolute path of the camera ("/mnt/mtd/...", "/hd1/...", "/dev/...")
// resolves under one root directory. On the camera the root is "/"; tests and the
// simulator camera point it at a directory of their own.
class PlatformRoot {
public:
    // Sets the root directory (default "/"). A trailing slash is ignored.
    static void set(const std::string& dir);
    static std::string get();
    static bool isDefault();
    // Absolute paths are placed under the root; relative paths are left as they are.
    static std::string resolve(const std::string& path);
};
