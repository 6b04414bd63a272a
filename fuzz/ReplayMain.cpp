// The fuzz targets without libFuzzer: feeds every file of the given
// directories (and every file given) to the target once, in name order, so
// that the committed corpora run as regression tests in every build.
#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

bool isDirectory(const std::string& path) {
    struct stat st {};
    return ::stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

void listFiles(const std::string& dir, std::vector<std::string>& out) {
    DIR* d = ::opendir(dir.c_str());
    if (d == nullptr) return;
    std::vector<std::string> names;
    while (dirent* e = ::readdir(d)) {
        const std::string name = e->d_name;
        if (name == "." || name == "..") continue;
        if (!isDirectory(dir + "/" + name)) names.push_back(dir + "/" + name);
    }
    ::closedir(d);
    std::sort(names.begin(), names.end());
    out.insert(out.end(), names.begin(), names.end());
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<std::string> files;
    for (int i = 1; i < argc; ++i) {
        if (isDirectory(argv[i]))
            listFiles(argv[i], files);
        else
            files.push_back(argv[i]);
    }
    if (files.empty()) {
        std::fprintf(stderr, "replay: no inputs\n");
        return 1;
    }
    for (const std::string& path : files) {
        std::ifstream f(path, std::ios::binary);
        if (!f) {
            std::fprintf(stderr, "replay: cannot read %s\n", path.c_str());
            return 1;
        }
        std::stringstream ss;
        ss << f.rdbuf();
        const std::string bytes = ss.str();
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
    }
    std::fprintf(stderr, "replay: %zu inputs, every property held\n", files.size());
    return 0;
}
