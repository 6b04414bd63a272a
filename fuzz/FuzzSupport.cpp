#include "FuzzSupport.h"

#include <ftw.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <sstream>

#include "platform/FsUtil.h"
#include "platform/PlatformRoot.h"

namespace fuzzsupport {

namespace {

std::string g_root;

int removeEntry(const char* path, const struct stat*, int, struct FTW*) { return ::remove(path); }

void removeRoot() {
    if (!g_root.empty()) ::nftw(g_root.c_str(), removeEntry, 16, FTW_DEPTH | FTW_PHYS);
}

}  // namespace

const std::string& useTempRoot() {
    if (g_root.empty()) {
        char tmpl[] = "/tmp/sensorctl-fuzz-XXXXXX";
        if (::mkdtemp(tmpl) == nullptr) {
            std::perror("mkdtemp");
            std::abort();
        }
        g_root = tmpl;
        PlatformRoot::set(g_root);
        std::atexit(removeRoot);
    }
    return g_root;
}

void writeFile(const std::string& cameraPath, const std::string& bytes) {
    const std::string real = useTempRoot() + cameraPath;
    FsUtil::makeDirs(FsUtil::dirName(real));
    std::ofstream f(real, std::ios::binary | std::ios::trunc);
    f.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!f) {
        std::fprintf(stderr, "cannot write %s\n", real.c_str());
        std::abort();
    }
}

std::string readFile(const std::string& cameraPath, bool* exists) {
    const std::string real = useTempRoot() + cameraPath;
    std::ifstream f(real, std::ios::binary);
    if (exists != nullptr) *exists = static_cast<bool>(f);
    std::stringstream ss;
    ss << f.rdbuf();
    return ss.str();
}

std::vector<std::string> splitInput(const uint8_t* data, size_t size, size_t count) {
    std::vector<std::string> parts(count);
    size_t part = 0;
    for (size_t i = 0; i < size; ++i) {
        if (data[i] == 0 && part + 1 < count) {
            ++part;
            continue;
        }
        parts[part].push_back(static_cast<char>(data[i]));
    }
    return parts;
}

}  // namespace fuzzsupport
