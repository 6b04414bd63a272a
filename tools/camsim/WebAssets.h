#pragma once
#include <cstddef>
#include <string>

namespace camsim {

// One file of the pages that `camsim serve` serves (tools/camsim/web), built
// into the program (cmake/EmbedFiles.cmake).
struct WebAsset {
    const char* path;         // "/index.html"
    const char* contentType;  // "text/html; charset=utf-8"
    const char* data;
    size_t size;
};

// The files, ending with an entry whose path is nullptr.
extern const WebAsset kWebAssets[];

// The file served at a request path ("/" is "/index.html"); nullptr when none.
inline const WebAsset* findWebAsset(const std::string& path) {
    const std::string wanted = path == "/" ? std::string("/index.html") : path;
    for (const WebAsset* a = kWebAssets; a->path != nullptr; ++a)
        if (wanted == a->path) return a;
    return nullptr;
}

}  // namespace camsim
