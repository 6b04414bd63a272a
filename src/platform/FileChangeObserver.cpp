#include "platform/FileChangeObserver.h"

#include <atomic>

namespace {
std::atomic<FileChangeObserver::Callback> g_observer{nullptr};
}  // namespace

void FileChangeObserver::set(Callback callback) { g_observer.store(callback); }

void FileChangeObserver::notify(const std::string& resolvedPath) {
    Callback callback = g_observer.load();
    if (callback != nullptr) callback(resolvedPath);
}
