#include "platform/PlatformRoot.h"

#include <mutex>

namespace {
std::mutex g_rootMutex;
std::string g_root = "/";
}  // namespace

void PlatformRoot::set(const std::string& dir) {
    std::string d = dir.empty() ? std::string("/") : dir;
    while (d.size() > 1 && d.back() == '/') d.pop_back();
    std::lock_guard<std::mutex> lock(g_rootMutex);
    g_root = d;
}

std::string PlatformRoot::get() {
    std::lock_guard<std::mutex> lock(g_rootMutex);
    return g_root;
}

bool PlatformRoot::isDefault() { return get() == "/"; }

std::string PlatformRoot::resolve(const std::string& path) {
    if (path.empty() || path[0] != '/') return path;
    // Every file access resolves its path: the root is read in place under the
    // lock rather than copied out first.
    std::lock_guard<std::mutex> lock(g_rootMutex);
    const std::string& root = g_root;
    if (root == "/") return path;
    // A path that already lies under the root is not placed there twice.
    if (path.compare(0, root.size(), root) == 0 && (path.size() == root.size() || path[root.size()] == '/'))
        return path;
    std::string out;
    out.reserve(root.size() + path.size());
    out.append(root).append(path);
    return out;
}
