#include "platform/SySystem.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include <string>
#include <vector>

#include "platform/FileChangeObserver.h"
#include "platform/FsUtil.h"
#include "platform/KSFile.h"
#include "platform/KSLogger.h"
#include "platform/PlatformRoot.h"

extern char** environ;

namespace {

std::vector<std::string> splitWords(const char* command) {
    std::vector<std::string> words;
    std::string cur;
    for (const char* p = command; *p; ++p) {
        if (*p == ' ' || *p == '\t') {
            if (!cur.empty()) words.push_back(cur), cur.clear();
        } else {
            cur += *p;
        }
    }
    if (!cur.empty()) words.push_back(cur);
    return words;
}

bool hasShellSyntax(const char* command) { return std::strpbrk(command, ";|&<>$`*?'\"(){}[]~\\\n") != nullptr; }

// The target of cp and mv: a directory target receives the source's name.
std::string targetPath(const std::string& src, const std::string& dst) {
    std::string d = PlatformRoot::resolve(dst);
    if (FsUtil::isDirectory(d)) d += "/" + FsUtil::baseName(src);
    return d;
}

int runBuiltin(const std::vector<std::string>& w) {
    if (w[0] == "cp") {
        std::string data;
        if (!KSFile::readAll(w[1], data)) return 1;
        return KSFile::writeAll(targetPath(w[1], w[2]), data) ? 0 : 1;
    }
    if (w[0] == "mv") {
        std::string from = PlatformRoot::resolve(w[1]);
        std::string to = targetPath(w[1], w[2]);
        if (::rename(from.c_str(), to.c_str()) != 0) return 1;
        FsUtil::syncDir(FsUtil::dirName(to));
        FileChangeObserver::notify(from);
        FileChangeObserver::notify(to);
        return 0;
    }
    // rm [-f] A
    bool force = w.size() == 3;
    std::string p = PlatformRoot::resolve(w.back());
    if (::unlink(p.c_str()) != 0) return (force && errno == ENOENT) ? 0 : 1;
    // The removal is on disk before the command returns, as mv's rename is.
    FsUtil::syncDir(FsUtil::dirName(p));
    FileChangeObserver::notify(p);
    return 0;
}

bool isBuiltin(const std::vector<std::string>& w) {
    if (w.size() == 3 && (w[0] == "cp" || w[0] == "mv")) return w[1][0] != '-' && w[2][0] != '-';
    if (w.size() == 2 && w[0] == "rm") return w[1][0] != '-';
    if (w.size() == 3 && w[0] == "rm") return w[1] == "-f" && w[2][0] != '-';
    return false;
}

}  // namespace

int sy_system(const char* command, int timeoutSeconds) {
    if (command == nullptr || *command == '\0') return -1;
    if (!hasShellSyntax(command)) {
        std::vector<std::string> words = splitWords(command);
        if (!words.empty() && isBuiltin(words)) return runBuiltin(words);
    }
    if (!PlatformRoot::isDefault()) {
        KSLogger::consolePrintf("sy_system: refused \"%s\": only cp, mv and rm run under the platform root %s\n", command,
                    PlatformRoot::get().c_str());
        return -1;
    }

    posix_spawnattr_t attr;
    posix_spawnattr_init(&attr);
    posix_spawnattr_setflags(&attr, POSIX_SPAWN_SETPGROUP);
    posix_spawnattr_setpgroup(&attr, 0);
    const char* argv[] = {"/bin/sh", "-c", command, nullptr};
    pid_t pid = -1;
    int rc = posix_spawn(&pid, "/bin/sh", nullptr, &attr, const_cast<char* const*>(argv), environ);
    posix_spawnattr_destroy(&attr);
    if (rc != 0) return -1;

    // Child processes live in real time, so the limit is measured on the host clock.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(timeoutSeconds);
    int status = 0;
    for (;;) {
        pid_t r = ::waitpid(pid, &status, WNOHANG);
        if (r == pid) break;
        if (r < 0 && errno != EINTR) return -1;
        if (timeoutSeconds > 0 && std::chrono::steady_clock::now() >= deadline) {
            ::kill(-pid, SIGKILL);
            ::waitpid(pid, &status, 0);
            KSLogger::consolePrintf("sy_system: \"%s\" killed after %d s\n", command, timeoutSeconds);
            return -1;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    if (WIFEXITED(status)) return WEXITSTATUS(status);
    return -1;
}
