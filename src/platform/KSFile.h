#pragma once
#include <string>

// Platform file access. Paths resolve under the platform root.
//
// Mode 1 opens for reading. Mode 98 opens for writing with the content
// replaced: the bytes go to a temporary file in the same directory and replace
// the target atomically on close(), after being flushed to disk, so a power cut
// leaves either the old or the new content. A replacement whose bytes equal the
// current content leaves the file untouched (no flash write).
class KSFile {
public:
    enum { ModeRead = 1, ModeWrite = 98 };

    KSFile();
    ~KSFile();  // closes (and commits a write)
    KSFile(const KSFile&) = delete;
    KSFile& operator=(const KSFile&) = delete;

    bool open(const std::string& path, int mode);
    // Reads up to length bytes; returns the count read, -1 on error.
    long long read(void* buffer, long long length);
    // Appends length bytes; returns length, or -1 on error.
    long long write(const void* buffer, long long length);
    // Makes room for `length` bytes of writes in all, so that a file written in
    // several pieces is gathered without moving it.
    void reserveWrite(long long length);
    // Length of the file opened for reading, or of what was written so far.
    long long getLength();
    // Ends the access; for a write, commits the new content. False when the commit failed.
    bool close();
    // Ends a write without committing it: the file keeps its old content.
    void discard();
    bool isOpen() const { return m_nFd >= 0 || m_bWriting; }

    static bool isExist(const std::string& path);

    // Removes the temporary files that interrupted replacements left in a
    // directory: names of the form "<file>.kstmp.XXXXXX" (this class's own),
    // whichever file they belong to. One written within the last minute may
    // belong to a write in progress and stays. Returns how many were removed.
    static int removeStaleTemporaries(const std::string& dir);

    // Convenience: whole-file read and atomic whole-file replace.
    static bool readAll(const std::string& path, std::string& out);
    static bool writeAll(const std::string& path, const std::string& data);

    // Test hook: makes the next commits stop after the temporary file is
    // written and before the rename, as a power cut at that moment would.
    static void simulateCrashBeforeRename(bool enable);
    // Test hook: called by read() with the resolved path before it reads, so
    // that a test can change the file between getLength() and read(), as
    // another process might. nullptr removes the hook.
    static void setBeforeReadHook(void (*hook)(const std::string& resolvedPath));

private:
    bool commit();

    int m_nFd = -1;          // file opened for reading
    bool m_bWriting = false; // open for writing (the bytes are kept until close)
    int m_nMode = 0;
    std::string m_strPath;     // resolved target path
    std::string m_strData;     // bytes written so far
};
