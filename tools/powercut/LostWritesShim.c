/* LD_PRELOAD shim of the power-cut test (tools/powercut): records what a
 * process does to the files of one directory so that the test can work out
 * what a power cut would have left, had it come at the moment the process was
 * killed.
 *
 * POWERCUT_DIR      the directory watched (a real path, no trailing '/')
 * POWERCUT_JOURNAL  the journal file; POWERCUT_JOURNAL.<n> keep renamed contents
 *
 * Journal lines (appended in order, never synced: a SIGKILL keeps them):
 *   rename <n> <synced> <target>  a file became <target>; its bytes are in
 *                                 POWERCUT_JOURNAL.<n>; <synced> is 1 when they
 *                                 were flushed (fsync) after the last write
 *   unlink <path>                 a file of the directory was removed (or
 *                                 renamed: a rename line follows)
 *   dirsync                       the directory itself was flushed (fsync)
 *   inplace <path>                a file of the directory was opened for
 *                                 writing other than as a new temporary file
 * A temporary file is one whose name holds ".kstmp." (the platform's atomic
 * replacement). */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#define MAX_FD 4096
#define MAX_PATH 4096

static char g_dir[MAX_PATH];
static size_t g_dirLen;
static int g_ready;
static int g_journalFd = -1;
static unsigned g_next;

/* Per descriptor: 0 not watched, 1 a file of the directory, 2 the directory. */
static unsigned char g_kind[MAX_FD];
static char* g_fdPath[MAX_FD];

/* Files of the directory written since their last fsync. */
#define MAX_DIRTY 256
static char* g_dirty[MAX_DIRTY];

static int (*real_open)(const char*, int, ...);
static int (*real_openat)(int, const char*, int, ...);
static int (*real_mkstemp)(char*);
static ssize_t (*real_write)(int, const void*, size_t);
static int (*real_close)(int);
static int (*real_fsync)(int);
static int (*real_fdatasync)(int);
static int (*real_rename)(const char*, const char*);
static int (*real_unlink)(const char*);

static void setup(void) {
    if (g_ready) return;
    real_open = dlsym(RTLD_NEXT, "open");
    real_openat = dlsym(RTLD_NEXT, "openat");
    real_mkstemp = dlsym(RTLD_NEXT, "mkstemp");
    real_write = dlsym(RTLD_NEXT, "write");
    real_close = dlsym(RTLD_NEXT, "close");
    real_fsync = dlsym(RTLD_NEXT, "fsync");
    real_fdatasync = dlsym(RTLD_NEXT, "fdatasync");
    real_rename = dlsym(RTLD_NEXT, "rename");
    real_unlink = dlsym(RTLD_NEXT, "unlink");
    const char* dir = getenv("POWERCUT_DIR");
    const char* journal = getenv("POWERCUT_JOURNAL");
    g_ready = 1;
    if (dir == NULL || journal == NULL) return;
    snprintf(g_dir, sizeof(g_dir), "%s", dir);
    g_dirLen = strlen(g_dir);
    g_journalFd = real_open(journal, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
}

static int isDir(const char* path) { return g_dirLen > 0 && strcmp(path, g_dir) == 0; }

static int inDir(const char* path) {
    return g_dirLen > 0 && strncmp(path, g_dir, g_dirLen) == 0 && path[g_dirLen] == '/' &&
           strchr(path + g_dirLen + 1, '/') == NULL;
}

static int isTemp(const char* path) { return strstr(path, ".kstmp.") != NULL; }

static void journal(const char* line) {
    if (g_journalFd >= 0) real_write(g_journalFd, line, strlen(line));
}

static void setDirty(const char* path, int dirty) {
    int freeSlot = -1;
    for (int i = 0; i < MAX_DIRTY; ++i) {
        if (g_dirty[i] != NULL && strcmp(g_dirty[i], path) == 0) {
            if (!dirty) {
                free(g_dirty[i]);
                g_dirty[i] = NULL;
            }
            return;
        }
        if (g_dirty[i] == NULL && freeSlot < 0) freeSlot = i;
    }
    if (dirty && freeSlot >= 0) g_dirty[freeSlot] = strdup(path);
}

static int isDirty(const char* path) {
    for (int i = 0; i < MAX_DIRTY; ++i)
        if (g_dirty[i] != NULL && strcmp(g_dirty[i], path) == 0) return 1;
    return 0;
}

static void watch(int fd, const char* path, int flags, int created) {
    if (fd < 0 || fd >= MAX_FD || g_dirLen == 0) return;
    if (isDir(path)) {
        g_kind[fd] = 2;
    } else if (inDir(path)) {
        g_kind[fd] = 1;
        free(g_fdPath[fd]);
        g_fdPath[fd] = strdup(path);
        int writing = (flags & (O_WRONLY | O_RDWR)) != 0;
        if (writing && !(created && isTemp(path))) {
            char line[MAX_PATH + 16];
            snprintf(line, sizeof(line), "inplace %s\n", path);
            journal(line);
        }
        if (writing && (flags & O_TRUNC)) setDirty(path, 1);
    }
}

/* The third argument of open and openat, present when a file may be created. */
#define MODE_ARG(mode, flags)                        \
    do {                                             \
        (mode) = 0;                                  \
        if ((flags) & (O_CREAT | O_TMPFILE)) {       \
            va_list ap;                              \
            va_start(ap, flags);                     \
            (mode) = (mode_t)va_arg(ap, int);        \
            va_end(ap);                              \
        }                                            \
    } while (0)

int open(const char* path, int flags, ...) {
    setup();
    mode_t mode;
    MODE_ARG(mode, flags);
    int fd = real_open(path, flags, mode);
    watch(fd, path, flags, 0);
    return fd;
}

int open64(const char* path, int flags, ...) __attribute__((alias("open")));

int openat(int dirfd, const char* path, int flags, ...) {
    setup();
    mode_t mode;
    MODE_ARG(mode, flags);
    int fd = real_openat(dirfd, path, flags, mode);
    if (path[0] == '/') watch(fd, path, flags, 0);
    return fd;
}

int mkstemp(char* tmpl) {
    setup();
    int fd = real_mkstemp(tmpl);
    watch(fd, tmpl, O_RDWR, 1);
    return fd;
}

int mkstemp64(char* tmpl) __attribute__((alias("mkstemp")));

ssize_t write(int fd, const void* buf, size_t n) {
    setup();
    if (fd >= 0 && fd < MAX_FD && g_kind[fd] == 1 && n > 0) setDirty(g_fdPath[fd], 1);
    return real_write(fd, buf, n);
}

int close(int fd) {
    setup();
    if (fd >= 0 && fd < MAX_FD) {
        g_kind[fd] = 0;
        free(g_fdPath[fd]);
        g_fdPath[fd] = NULL;
    }
    return real_close(fd);
}

static void synced(int fd) {
    if (fd < 0 || fd >= MAX_FD) return;
    if (g_kind[fd] == 1) setDirty(g_fdPath[fd], 0);
    if (g_kind[fd] == 2) journal("dirsync\n");
}

int fsync(int fd) {
    setup();
    int r = real_fsync(fd);
    if (r == 0) synced(fd);
    return r;
}

int fdatasync(int fd) {
    setup();
    int r = real_fdatasync(fd);
    if (r == 0) synced(fd);
    return r;
}

int rename(const char* from, const char* to) {
    setup();
    if (!inDir(to) || isTemp(to)) return real_rename(from, to);
    /* Keep the bytes that become the target. */
    char store[MAX_PATH];
    snprintf(store, sizeof(store), "%s.%u", getenv("POWERCUT_JOURNAL"), g_next);
    int in = real_open(from, O_RDONLY | O_CLOEXEC, 0);
    if (in >= 0) {
        int out = real_open(store, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        char buf[8192];
        ssize_t got;
        while ((got = read(in, buf, sizeof(buf))) > 0) real_write(out, buf, (size_t)got);
        real_close(out);
        real_close(in);
    }
    char line[MAX_PATH + 64];
    if (inDir(from) && !isTemp(from)) {
        /* A file of the directory moved: its old name goes with the same flush. */
        snprintf(line, sizeof(line), "unlink %s\n", from);
        journal(line);
    }
    snprintf(line, sizeof(line), "rename %u %d %s\n", g_next, isDirty(from) ? 0 : 1, to);
    ++g_next;
    journal(line);
    int r = real_rename(from, to);
    if (r == 0) setDirty(from, 0);
    return r;
}

int unlink(const char* path) {
    setup();
    if (inDir(path) && !isTemp(path)) {
        char line[MAX_PATH + 16];
        snprintf(line, sizeof(line), "unlink %s\n", path);
        journal(line);
    }
    return real_unlink(path);
}
