// The simulator camera as a new user meets it: what it keeps, what it says,
// how it behaves in a long run. Each case drives camsim as its own process.
#include <ftw.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "tools/CamsimChild.h"

namespace {

int removeEntry(const char* path, const struct stat*, int, struct FTW*) { return ::remove(path); }

bool contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

[[maybe_unused]] std::string readFile(const std::string& path) {
    std::ifstream f(path, std::ios::binary);
    std::stringstream ss;
    ss << f.rdbuf();
    return ss.str();
}

class CamSimUserTest : public ::testing::Test {
protected:
    void SetUp() override {
        struct stat st {};
        if (::stat(CamsimChild::path().c_str(), &st) != 0) GTEST_FAIL() << "camsim not built";
        char tmpl[] = "/tmp/camsim-user-XXXXXX";
        ASSERT_NE(nullptr, ::mkdtemp(tmpl));
        dir = tmpl;
        root = dir + "/camroot";
    }
    void TearDown() override { ::nftw(dir.c_str(), removeEntry, 16, FTW_DEPTH | FTW_PHYS); }

    // camsim on the test's root at 10:00 with commands given by -c.
    CamsimChild::Result commands(const std::string& text, const std::vector<std::string>& more = {}) {
        std::vector<std::string> args = {"--root", root, "--time", "10:00"};
        args.insert(args.end(), more.begin(), more.end());
        args.push_back("-c");
        args.push_back(text);
        return CamsimChild::run(args);
    }
    // Brings up a fresh root once, so that a test starts on an existing one.
    void prepareRoot() {
        CamsimChild::Result r = commands("status");
        ASSERT_EQ(0, r.exitCode) << r.output;
    }
    void writeRootFile(const std::string& cameraPath, const std::string& content) {
        std::ofstream(root + cameraPath, std::ios::binary | std::ios::trunc) << content;
    }

    std::string dir;
    std::string root;
};

// Files written are learnt from the platform's file layer: a file that the
// library did not write is not reported, however long the camera runs.
TEST_F(CamSimUserTest, TimelineReportsTheLibrarysWritesOnlyWithoutScanningTheRoot) {
    prepareRoot();
    CamsimChild child;
    ASSERT_TRUE(child.start({"--root", root, "--time", "10:00"}));
    child.send("echo ready\n");
    ASSERT_TRUE(child.waitFor("ready\n")) << child.output();
    writeRootFile("/hd1/stranger.txt", "not the library's");
    child.send("run 3s\nset brightness 61\nflush\nrun 2s\n");
    child.closeInput();
    CamsimChild::Result r = child.finish();
    EXPECT_EQ(0, r.exitCode) << r.output;
    EXPECT_FALSE(contains(r.output, "stranger.txt")) << r.output;
    EXPECT_TRUE(contains(r.output, "file     /mnt/mtd/code/config_file/sensor0.cfg written")) << r.output;
    // Output that is not a terminal gets no progress line.
    EXPECT_FALSE(contains(r.output, "\r")) << r.output;
}

// 20: the worker pauses on the virtual clock with the day/night lock held
// while it switches to night; a command waiting for that lock lets the time
// pass instead of hanging.
TEST_F(CamSimUserTest, RestartAfterASavedNightModeAnswersAtOnce) {
    CamsimChild::Result first = commands("daynight night; run 2s; flush");
    ASSERT_EQ(0, first.exitCode) << first.output;
    CamsimChild::Result second = commands("status; get 11; daynight auto; status");
    EXPECT_EQ(0, second.exitCode) << second.output;
    EXPECT_FALSE(contains(second.output, "[killed: timeout]")) << second.output;
    EXPECT_TRUE(contains(second.output, "day/night      DAY, mode 2")) << second.output;  // switch under way
    EXPECT_TRUE(contains(second.output, "   11 daynight-mode        2\n")) << second.output;
    EXPECT_TRUE(contains(second.output, "ok: day/night mode auto")) << second.output;
    // The saved night switch ended while 'daynight auto' waited for the lock.
    EXPECT_TRUE(contains(second.output, "gpio     1/5 <- 0  IR-cut filter out (night)")) << second.output;
    EXPECT_TRUE(contains(second.output, "day/night      NIGHT, mode 0")) << second.output;
}

// 12: the virtual time of a script does not depend on how fast the machine
// runs it: the same script on two fresh roots prints the same, byte for byte.
TEST_F(CamSimUserTest, AScriptIsRepeatableBitForBit) {
    const std::string script = "run 5s; status; light 10; run 8s; status; set brightness 66; flush; isp 4";
    std::string outputs[2];
    for (int i = 0; i < 2; ++i) {
        const std::string r = dir + "/root" + std::to_string(i);
        CamsimChild::Result run = CamsimChild::run({"--root", r, "--time", "10:00", "-c", script});
        ASSERT_EQ(0, run.exitCode) << run.output;
        std::string o = run.output;
        for (size_t at = o.find(r); at != std::string::npos; at = o.find(r)) o.replace(at, r.size(), "ROOT");
        outputs[i] = o;
    }
    EXPECT_EQ(outputs[0], outputs[1]);
    // The first command comes when the start-up's own waits have passed, no later.
    EXPECT_TRUE(contains(outputs[0], "[10:00:04] > run 5s\n")) << outputs[0];
}

}  // namespace
