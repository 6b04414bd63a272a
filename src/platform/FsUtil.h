#pragma once
#include <atomic>
#include <string>

// Small file-system helpers of the platform layer. Paths given here are
// already resolved under the platform root.
class FsUtil {
public:
    // Creates the directory and its parents; true if it exists afterwards.
    // The parent of each directory created is synced, so that the new entry
    // survives a power cut.
    static bool makeDirs(const std::string& dir);
    static std::string dirName(const std::string& path);
    static std::string baseName(const std::string& path);
    static bool isDirectory(const std::string& path);
    // Flushes a directory entry change (rename, create) to disk.
    static void syncDir(const std::string& dir);

    // The file-system calls the platform's file layer makes, reported one by one
    // to an observer when one is set (the counting benchmark tallies them per file).
    enum Call { CallOpen, CallRead, CallStat, CallCreate, CallWrite, CallSync, CallRename, CallRemove,
                CallMakeDir, CallListDir };
    using CallObserver = void (*)(Call call, const std::string& path);
    // nullptr removes the observer.
    static void setCallObserver(CallObserver observer);
    static void noteCall(Call call, const std::string& path) {
        if (CallObserver o = s_observer.load(std::memory_order_relaxed)) o(call, path);
    }

private:
    static std::atomic<CallObserver> s_observer;
};
