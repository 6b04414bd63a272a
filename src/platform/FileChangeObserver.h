#pragma once
#include <string>

// Tells one registered observer about every file that the platform's file
// layer changes: a replacement committed by KSFile, a log line appended or a
// log rotated by KSLogger, a file moved or removed by sy_system. The observer
// gets the resolved host path after the change, on the thread that made it,
// so a tool can follow the camera's files without scanning them.
class FileChangeObserver {
public:
    using Callback = void (*)(const std::string& resolvedPath);

    // Registers the observer; nullptr removes it.
    static void set(Callback callback);
    // Called by the file layer after a change.
    static void notify(const std::string& resolvedPath);
};
