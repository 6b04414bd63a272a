#include "platform/FsUtil.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

std::atomic<FsUtil::CallObserver> FsUtil::s_observer{nullptr};

void FsUtil::setCallObserver(CallObserver observer) { s_observer.store(observer); }

bool FsUtil::makeDirs(const std::string& dir) {
    if (dir.empty()) return false;
    if (isDirectory(dir)) return true;
    std::string parent = dirName(dir);
    if (parent != dir && !parent.empty() && !isDirectory(parent) && !makeDirs(parent)) return false;
    noteCall(CallMakeDir, dir);
    if (::mkdir(dir.c_str(), 0755) == 0) {
        syncDir(parent);
        return true;
    }
    return errno == EEXIST && isDirectory(dir);
}

std::string FsUtil::dirName(const std::string& path) {
    std::string::size_type pos = path.find_last_of('/');
    if (pos == std::string::npos) return ".";
    if (pos == 0) return "/";
    return path.substr(0, pos);
}

std::string FsUtil::baseName(const std::string& path) {
    std::string::size_type pos = path.find_last_of('/');
    return pos == std::string::npos ? path : path.substr(pos + 1);
}

bool FsUtil::isDirectory(const std::string& path) {
    struct stat st {};
    noteCall(CallStat, path);
    return ::stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

void FsUtil::syncDir(const std::string& dir) {
    noteCall(CallSync, dir);
    int fd = ::open(dir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return;
    ::fsync(fd);
    ::close(fd);
}
