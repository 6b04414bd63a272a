#include "platform/KSFile.h"

#include <gtest/gtest.h>
#include <dirent.h>
#include <sys/stat.h>
#include <utime.h>

#include <ctime>
#include <vector>

#include "TestRoot.h"
#include "platform/DiskManager.h"

using testutil::TempRoot;

namespace {
ino_t inodeOf(const std::string& p) {
    struct stat st {};
    return ::stat(p.c_str(), &st) == 0 ? st.st_ino : 0;
}
int countTemps(const std::string& dir) {
    int n = 0;
    DIR* d = ::opendir(dir.c_str());
    if (!d) return 0;
    while (struct dirent* e = ::readdir(d))
        if (std::string(e->d_name).find(".kstmp.") != std::string::npos) ++n;
    ::closedir(d);
    return n;
}
}  // namespace

TEST(KSFileTest, PathsResolveUnderThePlatformRoot) {
    TempRoot root;
    EXPECT_EQ(PlatformRoot::resolve("/mnt/mtd/a.cfg"), root.dir() + "/mnt/mtd/a.cfg");
    EXPECT_EQ(PlatformRoot::resolve("relative/x"), "relative/x");
    ASSERT_TRUE(KSFile::writeAll("/mnt/mtd/a.cfg", "(1,2)"));
    EXPECT_EQ(root.read("/mnt/mtd/a.cfg"), "(1,2)");
    EXPECT_TRUE(KSFile::isExist("/mnt/mtd/a.cfg"));
    EXPECT_TRUE(DiskManager::isFileExist("/mnt/mtd/a.cfg"));
    EXPECT_FALSE(DiskManager::isFileExist("/mnt/mtd/b.cfg"));
}

TEST(KSFileTest, ReadModeGivesLengthAndBytes) {
    TempRoot root;
    root.write("/hd1/x.txt", "hello world");
    KSFile f;
    ASSERT_TRUE(f.open("/hd1/x.txt", KSFile::ModeRead));
    EXPECT_EQ(f.getLength(), 11);
    char buf[32] = {};
    EXPECT_EQ(f.read(buf, 5), 5);
    EXPECT_EQ(std::string(buf), "hello");
    EXPECT_EQ(f.read(buf, 32), 6);
    EXPECT_EQ(f.write("x", 1), -1);  // not open for writing
    EXPECT_TRUE(f.close());
    EXPECT_EQ(f.read(buf, 1), -1);
}

TEST(KSFileTest, OpenFailures) {
    TempRoot root;
    KSFile f;
    EXPECT_FALSE(f.open("/missing/file", KSFile::ModeRead));
    EXPECT_FALSE(f.open("/hd1", 7));
    root.write("/hd1/dir/file", "x");
    EXPECT_FALSE(f.open("/hd1/dir", KSFile::ModeRead));   // a directory
    EXPECT_FALSE(f.open("/hd1/dir", KSFile::ModeWrite));  // cannot replace a directory
    EXPECT_FALSE(f.open("/hd1/dir/file/sub", KSFile::ModeWrite));  // parent is a file
    std::string out = "keep";
    EXPECT_FALSE(KSFile::readAll("/nope", out));
    EXPECT_EQ(out, "keep");
}

TEST(KSFileTest, WriteReplacesOnCloseOnly) {
    TempRoot root;
    root.write("/mnt/f.cfg", "old");
    KSFile w;
    ASSERT_TRUE(w.open("/mnt/f.cfg", KSFile::ModeWrite));
    EXPECT_EQ(w.write("new content", 11), 11);
    EXPECT_EQ(w.getLength(), 11);
    EXPECT_EQ(root.read("/mnt/f.cfg"), "old");  // nothing visible before the commit
    ASSERT_TRUE(w.close());
    EXPECT_EQ(root.read("/mnt/f.cfg"), "new content");
    EXPECT_EQ(countTemps(root.real("/mnt")), 0);
}

TEST(KSFileTest, ReaderHoldingOldContentKeepsItAcrossAReplace) {
    TempRoot root;
    root.write("/mnt/f.cfg", "(1,1)");
    KSFile r;
    ASSERT_TRUE(r.open("/mnt/f.cfg", KSFile::ModeRead));
    ASSERT_TRUE(KSFile::writeAll("/mnt/f.cfg", "(2,2)(3,3)"));
    char buf[16] = {};
    EXPECT_EQ(r.getLength(), 5);
    EXPECT_EQ(r.read(buf, 15), 5);
    EXPECT_EQ(std::string(buf), "(1,1)");
    EXPECT_EQ(root.read("/mnt/f.cfg"), "(2,2)(3,3)");
}

TEST(KSFileTest, IdenticalReplacementLeavesTheFileUntouched) {
    TempRoot root;
    ASSERT_TRUE(KSFile::writeAll("/mnt/f.cfg", "(1,2)(3,4)"));
    ino_t before = inodeOf(root.real("/mnt/f.cfg"));
    ASSERT_NE(before, 0u);
    ASSERT_TRUE(KSFile::writeAll("/mnt/f.cfg", "(1,2)(3,4)"));
    EXPECT_EQ(inodeOf(root.real("/mnt/f.cfg")), before);
    ASSERT_TRUE(KSFile::writeAll("/mnt/f.cfg", "(1,2)(3,5)"));
    EXPECT_NE(inodeOf(root.real("/mnt/f.cfg")), before);
    EXPECT_EQ(countTemps(root.real("/mnt")), 0);
}

TEST(KSFileTest, IdenticalReplacementIsFoundAtEverySize) {
    TempRoot root;
    // Around the size that is compared in a buffer on the stack, and well above it.
    for (size_t size : {size_t(0), size_t(1), size_t(4094), size_t(4095), size_t(4096), size_t(4097), size_t(20000)}) {
        std::string content(size, 'a');
        for (size_t i = 0; i < size; ++i) content[i] = static_cast<char>('a' + i % 26);
        ASSERT_TRUE(KSFile::writeAll("/mnt/big.cfg", content)) << size;
        const ino_t before = inodeOf(root.real("/mnt/big.cfg"));
        ASSERT_TRUE(KSFile::writeAll("/mnt/big.cfg", content)) << size;
        EXPECT_EQ(inodeOf(root.real("/mnt/big.cfg")), before) << size;
        if (size == 0) continue;
        // The last byte differs: the file is replaced.
        std::string changed = content;
        changed.back() = '#';
        ASSERT_TRUE(KSFile::writeAll("/mnt/big.cfg", changed)) << size;
        EXPECT_NE(inodeOf(root.real("/mnt/big.cfg")), before) << size;
        std::string back;
        ASSERT_TRUE(KSFile::readAll("/mnt/big.cfg", back)) << size;
        EXPECT_EQ(back, changed) << size;
    }
}

TEST(KSFileTest, CrashBetweenWriteAndRenameKeepsTheOldContent) {
    TempRoot root;
    ASSERT_TRUE(KSFile::writeAll("/mnt/f.cfg", "old"));
    KSFile::simulateCrashBeforeRename(true);
    EXPECT_FALSE(KSFile::writeAll("/mnt/f.cfg", "new"));
    KSFile::simulateCrashBeforeRename(false);
    EXPECT_EQ(root.read("/mnt/f.cfg"), "old");
    EXPECT_EQ(countTemps(root.real("/mnt")), 1);
    // After the restart an old leftover is cleared by the next write of that file.
    DIR* d = ::opendir(root.real("/mnt").c_str());
    std::string leftover;
    while (struct dirent* e = ::readdir(d))
        if (std::string(e->d_name).find(".kstmp.") != std::string::npos) leftover = root.real("/mnt/") + e->d_name;
    ::closedir(d);
    struct utimbuf old {1000000, 1000000};
    ASSERT_EQ(::utime(leftover.c_str(), &old), 0);
    ASSERT_TRUE(KSFile::writeAll("/mnt/f.cfg", "new"));
    EXPECT_EQ(root.read("/mnt/f.cfg"), "new");
    EXPECT_EQ(countTemps(root.real("/mnt")), 0);
}

TEST(KSFileTest, EmptyWriteMakesAnEmptyFile) {
    TempRoot root;
    ASSERT_TRUE(KSFile::writeAll("/mnt/empty", ""));
    EXPECT_TRUE(root.exists("/mnt/empty"));
    std::string out = "x";
    EXPECT_TRUE(KSFile::readAll("/mnt/empty", out));
    EXPECT_EQ(out, "");
}

namespace {
void truncateToThree(const std::string& resolvedPath) { (void)::truncate(resolvedPath.c_str(), 3); }
}  // namespace

TEST(KSFileTest, BeforeReadHookSeesTheFileBetweenLengthAndRead) {
    TempRoot root;
    root.write("/hd1/a.xml", "0123456789");
    KSFile f;
    ASSERT_TRUE(f.open("/hd1/a.xml", KSFile::ModeRead));
    ASSERT_EQ(f.getLength(), 10);
    KSFile::setBeforeReadHook(truncateToThree);
    char buf[16] = {};
    long long n = f.read(buf, 10);
    KSFile::setBeforeReadHook(nullptr);
    EXPECT_EQ(n, 3);
    EXPECT_STREQ(buf, "012");
}

TEST(KSFileTest, DiscardKeepsTheOldContent) {
    TempRoot root;
    root.write("/mnt/f.cfg", "old");
    KSFile w;
    ASSERT_TRUE(w.open("/mnt/f.cfg", KSFile::ModeWrite));
    w.write("new", 3);
    w.discard();
    EXPECT_FALSE(w.isOpen());
    EXPECT_EQ(root.read("/mnt/f.cfg"), "old");
    EXPECT_EQ(countTemps(root.real("/mnt")), 0);
}

TEST(KSFileTest, IdenticalReplacementDoesNotTouchTheDirectory) {
    TempRoot root;
    ASSERT_TRUE(KSFile::writeAll("/mnt/cfg/f.cfg", "(1,2)"));
    struct stat before {};
    ASSERT_EQ(::stat(root.real("/mnt/cfg").c_str(), &before), 0);
    ::usleep(20000);
    ASSERT_TRUE(KSFile::writeAll("/mnt/cfg/f.cfg", "(1,2)"));
    struct stat after {};
    ASSERT_EQ(::stat(root.real("/mnt/cfg").c_str(), &after), 0);
    // No temporary file was made and removed: the directory itself is unchanged.
    EXPECT_EQ(before.st_mtim.tv_sec, after.st_mtim.tv_sec);
    EXPECT_EQ(before.st_mtim.tv_nsec, after.st_mtim.tv_nsec);
    ASSERT_TRUE(KSFile::writeAll("/mnt/cfg/f.cfg", "(1,3)"));
    ASSERT_EQ(::stat(root.real("/mnt/cfg").c_str(), &after), 0);
    EXPECT_NE(before.st_mtim.tv_nsec + before.st_mtim.tv_sec * 1000000000LL,
              after.st_mtim.tv_nsec + after.st_mtim.tv_sec * 1000000000LL);
}

TEST(KSFileTest, RemoveStaleTemporariesSweepsTheDirectory) {
    TempRoot root;
    const time_t now = ::time(nullptr);
    struct Entry {
        std::string name;
        time_t mtime;
        bool removed;
    };
    const std::vector<Entry> entries = {
        {"a.cfg.kstmp.Ab12Cd", now - 120, true},     // of a file that exists
        {"gone.xml.kstmp.zzzzzz", now - 3600, true},  // of a file that is gone
        {"b.cfg.kstmp.Q1w2E3", now + 3600, true},    // dated after a clock set back
        {"c.cfg.kstmp.fresh1", now, false},          // a write in progress
        {"d.cfg.kstmp.abc", now - 120, false},       // not the name pattern
        {"e.cfg.kstmp.abc-ef", now - 120, false},
        {".kstmp.abcdef", now - 120, false},
        {"f.cfg", now - 120, false},
    };
    root.write("/mnt/a.cfg", "(1,2)");
    for (const Entry& e : entries) {
        root.write("/mnt/" + e.name, "x");
        struct utimbuf t {e.mtime, e.mtime};
        ASSERT_EQ(::utime(root.real("/mnt/" + e.name).c_str(), &t), 0);
    }
    EXPECT_EQ(KSFile::removeStaleTemporaries("/mnt"), 3);
    for (const Entry& e : entries) EXPECT_EQ(!e.removed, root.exists("/mnt/" + e.name)) << e.name;
    EXPECT_EQ(root.read("/mnt/a.cfg"), "(1,2)");
    EXPECT_EQ(KSFile::removeStaleTemporaries("/mnt/none"), 0);
}
