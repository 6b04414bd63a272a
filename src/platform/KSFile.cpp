#include "platform/KSFile.h"

#include <atomic>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <vector>

#include "platform/FileChangeObserver.h"
#include "platform/FsUtil.h"
#include "platform/PlatformRoot.h"

namespace {

std::atomic<bool> g_crashBeforeRename{false};
std::atomic<void (*)(const std::string&)> g_beforeRead{nullptr};

const char kTempMarker[] = ".kstmp.";
const size_t kTempMarkerLength = sizeof(kTempMarker) - 1;
const size_t kTempSuffixLength = 6;  // the XXXXXX of mkstemp

// True for a temporary file name of a replacement ("<file>.kstmp.XXXXXX");
// when target is given, only for one of that file.
bool isTempName(const std::string& name, const std::string* target) {
    if (target != nullptr)
        return name.size() > target->size() + kTempMarkerLength &&
               name.compare(0, target->size(), *target) == 0 &&
               name.compare(target->size(), kTempMarkerLength, kTempMarker) == 0;
    if (name.size() <= kTempMarkerLength + kTempSuffixLength) return false;
    const size_t marker = name.size() - kTempSuffixLength - kTempMarkerLength;
    if (name.compare(marker, kTempMarkerLength, kTempMarker) != 0) return false;
    for (size_t i = name.size() - kTempSuffixLength; i < name.size(); ++i)
        if (!std::isalnum(static_cast<unsigned char>(name[i]))) return false;
    return true;
}

// Removes the temporary files that writes interrupted by a power cut left in
// dir (those of one target file, or all of them). A temporary file written
// within a minute of now may belong to a write in progress in another thread
// and is left alone; one dated in the future (the clock was set back since) is
// stale.
int removeStaleTemps(const std::string& dir, const std::string* target) {
    const time_t now = ::time(nullptr);
    FsUtil::noteCall(FsUtil::CallListDir, dir);
    DIR* d = ::opendir(dir.c_str());
    if (d == nullptr) return 0;
    std::vector<std::string> stale;
    while (struct dirent* e = ::readdir(d)) {
        if (!isTempName(e->d_name, target)) continue;
        std::string full = dir + "/" + e->d_name;
        struct stat st {};
        FsUtil::noteCall(FsUtil::CallStat, full);
        if (::stat(full.c_str(), &st) == 0 && S_ISREG(st.st_mode) &&
            (now - st.st_mtime > 60 || st.st_mtime - now > 60))
            stale.push_back(full);
    }
    ::closedir(d);
    int removed = 0;
    for (const std::string& s : stale) {
        FsUtil::noteCall(FsUtil::CallRemove, s);
        if (::unlink(s.c_str()) == 0) ++removed;
    }
    return removed;
}

// True when the file at path holds exactly `data`.
bool sameContent(const std::string& path, const std::string& data) {
    struct stat st {};
    FsUtil::noteCall(FsUtil::CallStat, path);
    if (::stat(path.c_str(), &st) != 0 || !S_ISREG(st.st_mode)) return false;
    if (static_cast<unsigned long long>(st.st_size) != data.size()) return false;
    FsUtil::noteCall(FsUtil::CallOpen, path);
    int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return false;
    // One byte more than expected is asked for, so that a file grown since the stat
    // shows as different. A regular file answers a read short only at its end, so
    // the usual case is a single read.
    const size_t want = data.size() + 1;
    // The configuration files are small: they are compared in a buffer on the stack.
    char local[4096];
    std::string large;
    char* cur = local;
    if (want > sizeof(local)) {
        large.resize(want);
        cur = &large[0];
    }
    size_t got = 0;
    bool ok = true;
    while (got < want) {
        const size_t asked = want - got;
        FsUtil::noteCall(FsUtil::CallRead, path);
        ssize_t n = ::read(fd, cur + got, asked);
        if (n < 0) {
            if (errno == EINTR) continue;
            ok = false;
            break;
        }
        got += static_cast<size_t>(n);
        if (static_cast<size_t>(n) < asked) break;  // the end of the file
    }
    ::close(fd);
    return ok && got == data.size() && (got == 0 || std::memcmp(cur, data.data(), got) == 0);
}

bool writeFd(int fd, const std::string& path, const char* p, size_t n) {
    while (n > 0) {
        FsUtil::noteCall(FsUtil::CallWrite, path);
        ssize_t w = ::write(fd, p, n);
        if (w < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        p += w;
        n -= static_cast<size_t>(w);
    }
    return true;
}

}  // namespace

KSFile::KSFile() = default;

KSFile::~KSFile() { close(); }

bool KSFile::open(const std::string& path, int mode) {
    close();
    m_strPath = PlatformRoot::resolve(path);
    if (mode == ModeRead) {
        FsUtil::noteCall(FsUtil::CallOpen, m_strPath);
        m_nFd = ::open(m_strPath.c_str(), O_RDONLY | O_CLOEXEC);
        if (m_nFd < 0) return false;
        struct stat st {};
        FsUtil::noteCall(FsUtil::CallStat, m_strPath);
        if (::fstat(m_nFd, &st) != 0 || S_ISDIR(st.st_mode)) {
            ::close(m_nFd);
            m_nFd = -1;
            return false;
        }
        m_nMode = mode;
        return true;
    }
    if (mode != ModeWrite) return false;
    if (FsUtil::isDirectory(m_strPath)) return false;
    std::string dir = FsUtil::dirName(m_strPath);
    if (!FsUtil::makeDirs(dir)) return false;
    FsUtil::noteCall(FsUtil::CallStat, dir);
    if (::access(dir.c_str(), W_OK) != 0) return false;
    // The bytes are kept here; the temporary file is made on close, and only
    // when they differ from the file's content, so an unchanged replacement
    // touches nothing on the flash.
    m_bWriting = true;
    m_strData.clear();
    m_nMode = mode;
    return true;
}

long long KSFile::read(void* buffer, long long length) {
    if (m_nFd < 0 || m_nMode != ModeRead || length < 0) return -1;
    if (void (*hook)(const std::string&) = g_beforeRead.load()) hook(m_strPath);
    char* p = static_cast<char*>(buffer);
    long long total = 0;
    while (total < length) {
        FsUtil::noteCall(FsUtil::CallRead, m_strPath);
        ssize_t n = ::read(m_nFd, p + total, static_cast<size_t>(length - total));
        if (n < 0) {
            if (errno == EINTR) continue;
            return -1;
        }
        if (n == 0) break;
        total += n;
    }
    return total;
}

long long KSFile::write(const void* buffer, long long length) {
    if (!m_bWriting || length < 0) return -1;
    m_strData.append(static_cast<const char*>(buffer), static_cast<size_t>(length));
    return length;
}

void KSFile::reserveWrite(long long length) {
    if (m_bWriting && length > 0) m_strData.reserve(static_cast<size_t>(length));
}

long long KSFile::getLength() {
    if (m_bWriting) return static_cast<long long>(m_strData.size());
    if (m_nFd < 0) return -1;
    struct stat st {};
    FsUtil::noteCall(FsUtil::CallStat, m_strPath);
    if (::fstat(m_nFd, &st) != 0) return -1;
    return static_cast<long long>(st.st_size);
}

bool KSFile::close() {
    if (m_nFd >= 0) {
        ::close(m_nFd);
        m_nFd = -1;
        return true;
    }
    if (!m_bWriting) return true;
    m_bWriting = false;
    bool ok = sameContent(m_strPath, m_strData) || commit();
    m_strData.clear();
    m_strData.shrink_to_fit();
    return ok;
}

bool KSFile::commit() {
    const std::string base = FsUtil::baseName(m_strPath);
    removeStaleTemps(FsUtil::dirName(m_strPath), &base);
    std::string tmpl = m_strPath + kTempMarker + "XXXXXX";
    std::vector<char> name(tmpl.begin(), tmpl.end());
    name.push_back('\0');
    FsUtil::noteCall(FsUtil::CallCreate, m_strPath);
    int fd = ::mkstemp(name.data());
    if (fd < 0) return false;
    ::fchmod(fd, 0644);
    bool ok = writeFd(fd, m_strPath, m_strData.data(), m_strData.size());
    FsUtil::noteCall(FsUtil::CallSync, m_strPath);
    ok = ok && ::fsync(fd) == 0;
    ::close(fd);
    if (ok && g_crashBeforeRename.load()) return false;  // the temporary file stays, as a power cut leaves it
    FsUtil::noteCall(FsUtil::CallRename, m_strPath);
    if (!ok || ::rename(name.data(), m_strPath.c_str()) != 0) {
        ::unlink(name.data());
        return false;
    }
    FsUtil::syncDir(FsUtil::dirName(m_strPath));
    FileChangeObserver::notify(m_strPath);
    return true;
}

void KSFile::discard() {
    if (!m_bWriting) {
        close();
        return;
    }
    m_bWriting = false;
    m_strData.clear();
}

int KSFile::removeStaleTemporaries(const std::string& dir) {
    return removeStaleTemps(PlatformRoot::resolve(dir), nullptr);
}

bool KSFile::isExist(const std::string& path) {
    struct stat st {};
    const std::string resolved = PlatformRoot::resolve(path);
    FsUtil::noteCall(FsUtil::CallStat, resolved);
    return ::stat(resolved.c_str(), &st) == 0;
}

bool KSFile::readAll(const std::string& path, std::string& out) {
    KSFile f;
    if (!f.open(path, ModeRead)) return false;
    long long len = f.getLength();
    if (len < 0) return false;
    std::string data(static_cast<size_t>(len), '\0');
    long long n = f.read(&data[0], len);
    if (n != len) return false;
    out.swap(data);
    return true;
}

bool KSFile::writeAll(const std::string& path, const std::string& data) {
    KSFile f;
    if (!f.open(path, ModeWrite)) return false;
    if (f.write(data.data(), static_cast<long long>(data.size())) < 0) return false;
    return f.close();
}

void KSFile::simulateCrashBeforeRename(bool enable) { g_crashBeforeRename.store(enable); }

void KSFile::setBeforeReadHook(void (*hook)(const std::string& resolvedPath)) { g_beforeRead.store(hook); }
