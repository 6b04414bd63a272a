#pragma once
// Test helpers: a temporary platform root and the virtual clock.
#include <ftw.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include "platform/FsUtil.h"
#include "platform/PlatformClock.h"
#include "platform/PlatformRoot.h"

namespace testutil {

inline int removeEntry(const char* path, const struct stat*, int, struct FTW*) { return ::remove(path); }

// A fresh temporary directory set as the platform root for the life of the object.
class TempRoot {
public:
    TempRoot() {
        char tmpl[] = "/tmp/sensorctl-test-XXXXXX";
        char* d = ::mkdtemp(tmpl);
        m_dir = d ? d : "/tmp";
        PlatformRoot::set(m_dir);
    }
    ~TempRoot() {
        PlatformRoot::set("/");
        ::nftw(m_dir.c_str(), removeEntry, 16, FTW_DEPTH | FTW_PHYS);
    }
    const std::string& dir() const { return m_dir; }
    // The real path of a camera path such as "/mnt/mtd/log/SensorError.log".
    std::string real(const std::string& cameraPath) const { return m_dir + cameraPath; }
    void write(const std::string& cameraPath, const std::string& content) const {
        FsUtil::makeDirs(FsUtil::dirName(real(cameraPath)));
        std::ofstream f(real(cameraPath), std::ios::binary | std::ios::trunc);
        f << content;
    }
    std::string read(const std::string& cameraPath) const {
        std::ifstream f(real(cameraPath), std::ios::binary);
        std::stringstream ss;
        ss << f.rdbuf();
        return ss.str();
    }
    bool exists(const std::string& cameraPath) const {
        struct stat st {};
        return ::stat(real(cameraPath).c_str(), &st) == 0;
    }
    void remove(const std::string& cameraPath) const { ::unlink(real(cameraPath).c_str()); }

private:
    std::string m_dir;
};

// The virtual clock for the life of the object, starting at the given time of day.
class VirtualClock {
public:
    explicit VirtualClock(int hour = 12, int minute = 0, int second = 0) {
        // 2026-01-05 (a Monday) at midnight, device time.
        PlatformClock::useVirtual(1767571200);
        PlatformClock::setTimeOfDay(hour, minute, second);
    }
    ~VirtualClock() { PlatformClock::useReal(); }
    void advance(int64_t ms) { PlatformClock::advanceMs(ms); }
    void setTime(int hour, int minute, int second = 0) { PlatformClock::setTimeOfDay(hour, minute, second); }
};

}  // namespace testutil
