#include "platform/FileChangeObserver.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "TestRoot.h"
#include "platform/KSFile.h"
#include "platform/KSLogger.h"
#include "platform/SySystem.h"

using testutil::TempRoot;

namespace {
std::vector<std::string> g_changed;
void record(const std::string& path) { g_changed.push_back(path); }

struct Observing {
    Observing() {
        g_changed.clear();
        FileChangeObserver::set(record);
    }
    ~Observing() { FileChangeObserver::set(nullptr); }
};
}  // namespace

TEST(FileChangeObserverTest, ACommittedReplacementIsReportedAndAnUnchangedOneIsNot) {
    TempRoot root;
    Observing observing;
    ASSERT_TRUE(KSFile::writeAll("/mnt/mtd/a.cfg", "(1,2)"));
    ASSERT_EQ(1u, g_changed.size());
    EXPECT_EQ(root.dir() + "/mnt/mtd/a.cfg", g_changed[0]);
    ASSERT_TRUE(KSFile::writeAll("/mnt/mtd/a.cfg", "(1,2)"));  // same bytes: no write, no report
    EXPECT_EQ(1u, g_changed.size());
    KSFile::simulateCrashBeforeRename(true);
    EXPECT_FALSE(KSFile::writeAll("/mnt/mtd/a.cfg", "(1,3)"));  // not committed: not reported
    KSFile::simulateCrashBeforeRename(false);
    EXPECT_EQ(1u, g_changed.size());
}

TEST(FileChangeObserverTest, LogLinesMovesAndRemovalsAreReported) {
    TempRoot root;
    Observing observing;
    KSLogger log;
    ASSERT_TRUE(log.init("/mnt/mtd/log/x.log", 100, 2));
    ASSERT_TRUE(log.writeLog("t", "one"));
    ASSERT_EQ(1u, g_changed.size());
    EXPECT_EQ(root.dir() + "/mnt/mtd/log/x.log", g_changed.back());
    ASSERT_TRUE(KSFile::writeAll("/mnt/mtd/b.cfg", "b"));
    g_changed.clear();
    EXPECT_EQ(0, sy_system("mv /mnt/mtd/b.cfg /mnt/mtd/c.cfg", 30));
    ASSERT_EQ(2u, g_changed.size());
    EXPECT_EQ(root.dir() + "/mnt/mtd/b.cfg", g_changed[0]);
    EXPECT_EQ(root.dir() + "/mnt/mtd/c.cfg", g_changed[1]);
    EXPECT_EQ(0, sy_system("rm /mnt/mtd/c.cfg", 30));
    ASSERT_EQ(3u, g_changed.size());
    EXPECT_EQ(root.dir() + "/mnt/mtd/c.cfg", g_changed[2]);
    FileChangeObserver::set(nullptr);
    ASSERT_TRUE(KSFile::writeAll("/mnt/mtd/d.cfg", "d"));
    EXPECT_EQ(3u, g_changed.size());
}
