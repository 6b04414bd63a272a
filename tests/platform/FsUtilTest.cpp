#include "platform/FsUtil.h"

#include <gtest/gtest.h>

#include <mutex>
#include <string>
#include <vector>

#include "TestRoot.h"
#include "platform/KSFile.h"

using testutil::TempRoot;

namespace {
std::mutex g_mu;
std::vector<std::string> g_synced;
void recordSync(FsUtil::Call call, const std::string& path) {
    if (call != FsUtil::CallSync) return;
    std::lock_guard<std::mutex> l(g_mu);
    g_synced.push_back(path);
}

// Records the paths synced (directories and files) for the life of the object.
struct SyncRecorder {
    SyncRecorder() {
        g_synced.clear();
        FsUtil::setCallObserver(recordSync);
    }
    ~SyncRecorder() { FsUtil::setCallObserver(nullptr); }
    std::vector<std::string> synced() const {
        std::lock_guard<std::mutex> l(g_mu);
        return g_synced;
    }
};
}  // namespace

TEST(FsUtilTest, EveryCreatedDirectoryHasItsParentSynced) {
    TempRoot root;
    SyncRecorder rec;
    ASSERT_TRUE(FsUtil::makeDirs(root.real("/mnt/mtd/code")));
    std::vector<std::string> expected{root.dir(), root.real("/mnt"), root.real("/mnt/mtd")};
    EXPECT_EQ(expected, rec.synced());
    // Nothing created, nothing synced.
    ASSERT_TRUE(FsUtil::makeDirs(root.real("/mnt/mtd/code")));
    EXPECT_EQ(expected, rec.synced());
}

TEST(FsUtilTest, FailedCreationSyncsNothing) {
    TempRoot root;
    root.write("/plain", "x");
    SyncRecorder rec;
    EXPECT_FALSE(FsUtil::makeDirs(root.real("/plain/sub")));
    EXPECT_TRUE(rec.synced().empty());
}

TEST(FsUtilTest, FirstWriteIntoANewConfigurationDirectorySyncsItsParent) {
    TempRoot root;
    SyncRecorder rec;
    ASSERT_TRUE(KSFile::writeAll("/mnt/mtd/code/config_file/sensor.xml", "<sensor/>"));
    // Each new directory's entry in its parent, the file's bytes, then the
    // file's entry in the new directory.
    std::vector<std::string> expected{root.dir(), root.real("/mnt"), root.real("/mnt/mtd"),
                                      root.real("/mnt/mtd/code"), root.real("/mnt/mtd/code/config_file/sensor.xml"),
                                      root.real("/mnt/mtd/code/config_file")};
    EXPECT_EQ(expected, rec.synced());
}
