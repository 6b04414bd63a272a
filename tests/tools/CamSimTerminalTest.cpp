// The simulator camera at an interactive prompt: camsim on a pseudo-terminal, as a
// user meets it, with Ctrl-C typed on that terminal. The prompt's own clock follows
// real time, so these tests wait (bounded) for camsim's output, never for the library.
#include <ftw.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <string>

#include "tools/CamsimChild.h"

namespace {

int removeEntry(const char* path, const struct stat*, int, struct FTW*) { return ::remove(path); }

class CamSimTerminalTest : public ::testing::Test {
protected:
    void SetUp() override {
        struct stat st {};
        if (::stat(CamsimChild::path().c_str(), &st) != 0) GTEST_FAIL() << "camsim not built";
        char tmpl[] = "/tmp/camsim-term-XXXXXX";
        ASSERT_NE(nullptr, ::mkdtemp(tmpl));
        dir = tmpl;
    }
    void TearDown() override { ::nftw(dir.c_str(), removeEntry, 16, FTW_DEPTH | FTW_PHYS); }

    // camsim on a terminal, up and at its first prompt; false (the test skipped)
    // where this test program cannot start it (a cross build under an emulator).
    bool startAtPrompt(CamsimChild& child) {
        if (!child.start({"--root", dir + "/camroot", "--time", "10:00"}, true)) {
            std::cout << "camsim could not be started from this test program\n";
            return false;
        }
        EXPECT_TRUE(child.waitFor("camsim> ", 60)) << child.output();
        return true;
    }

    std::string dir;
};

TEST_F(CamSimTerminalTest, FirstQuitWithUnsavedValuesAsksAndTheSecondLeaves) {
    CamsimChild child;
    if (!startAtPrompt(child)) GTEST_SKIP();
    size_t mark = child.output().size();
    child.send("set (1,61)\n");
    ASSERT_TRUE(child.waitFor("camsim> ", 30, mark)) << child.output();
    mark = child.output().size();
    child.send("quit\n");
    ASSERT_TRUE(child.waitFor("values set and not saved", 30, mark)) << child.output();
    ASSERT_TRUE(child.waitFor("'quit' again or 'quit!' leaves without saving", 30, mark)) << child.output();
    // Still there: the prompt comes back and answers.
    ASSERT_TRUE(child.waitFor("camsim> ", 30, mark)) << child.output();
    mark = child.output().size();
    child.send("quit\n");
    CamsimChild::Result r = child.finish(60);
    EXPECT_EQ(r.exitCode, 0) << r.output;
    // The second quit leaves without asking again.
    EXPECT_EQ(r.output.find("values set and not saved", mark), std::string::npos) << r.output.substr(mark);
}

TEST_F(CamSimTerminalTest, CtrlCStopsALongRunWithItsProgressLineAndASecondAtThePromptLeaves) {
    CamsimChild child;
    if (!startAtPrompt(child)) GTEST_SKIP();
    size_t mark = child.output().size();
    child.send("run 48h\n");
    // A run of more than a second of real time draws its progress line on a terminal.
    ASSERT_TRUE(child.waitFor("  run: ", 60, mark)) << child.output().substr(mark);
    ASSERT_TRUE(child.waitFor("%), device time ", 30, mark)) << child.output().substr(mark);
    mark = child.output().size();
    child.send("\x03");  // Ctrl-C on the terminal
    ASSERT_TRUE(child.waitFor("interrupted (Ctrl-C) after ", 60, mark)) << child.output().substr(mark);
    ASSERT_TRUE(child.waitFor("camsim> ", 30, mark)) << child.output().substr(mark);
    // The run ended early, and says how far it came.
    const std::string tail = child.output().substr(mark);
    EXPECT_NE(tail.find(" s of 172800 s; device time "), std::string::npos) << tail;
    mark = child.output().size();
    child.send("\x03");  // at the empty prompt: leave
    CamsimChild::Result r = child.finish(60);
    EXPECT_NE(r.output.find("Ctrl-C at the prompt: leaving", mark), std::string::npos) << r.output.substr(mark);
    EXPECT_EQ(r.exitCode, 0) << r.output.substr(mark);
}

TEST_F(CamSimTerminalTest, EventsWhileAtThePromptGiveThePromptBack) {
    CamsimChild child;
    if (!startAtPrompt(child)) GTEST_SKIP();
    size_t mark = child.output().size();
    // Dark: the day/night worker switches to night on its own, while camsim waits
    // at the prompt for the next command.
    child.send("light 2\n");
    ASSERT_TRUE(child.waitFor("ok: light 2 %", 30, mark)) << child.output().substr(mark);
    ASSERT_TRUE(child.waitFor("camsim> ", 30, mark)) << child.output().substr(mark);
    mark = child.output().size();
    ASSERT_TRUE(child.waitFor("daynight NIGHT", 60, mark)) << child.output().substr(mark);
    const size_t event = child.output().find("daynight NIGHT", mark);
    ASSERT_TRUE(child.waitFor("camsim> ", 30, event)) << child.output().substr(mark);
    child.send("quit!\n");
    EXPECT_EQ(child.finish(60).exitCode, 0);
}

}  // namespace
