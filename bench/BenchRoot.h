#pragma once
// A temporary platform root on tmpfs for benchmarks, so figures show the
// library's own cost rather than the disk's. The library's console lines are off
// while it exists.
#include <ftw.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "QuietConsole.h"
#include "platform/PlatformRoot.h"

class BenchRoot {
public:
    BenchRoot() {
        char tmpl[] = "/dev/shm/sensorctl-bench-XXXXXX";
        char* d = ::mkdtemp(tmpl);
        if (d == nullptr) {
            char fallback[] = "/tmp/sensorctl-bench-XXXXXX";
            d = ::mkdtemp(fallback);
        }
        m_dir = d ? d : "/tmp";
        PlatformRoot::set(m_dir);
    }
    ~BenchRoot() {
        PlatformRoot::set("/");
        ::nftw(m_dir.c_str(), remove, 16, FTW_DEPTH | FTW_PHYS);
    }
    const std::string& dir() const { return m_dir; }

private:
    static int remove(const char* p, const struct stat*, int, struct FTW*) { return ::remove(p); }
    QuietConsole m_quiet;
    std::string m_dir;
};
