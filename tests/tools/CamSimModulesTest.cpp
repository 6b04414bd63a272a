// The simulator camera with the front ends of its module table (--module):
// the FCB-EV7310 and the other VISCA block cameras on the simulated block,
// in-process and over a pseudo-terminal, the module without image settings,
// the line's fault injection and trace, and the refusals. Each run is its own
// camsim process on a root of the test; the device time is camsim's virtual
// clock, so the library's waits (serial time-outs, the 20 s restart) take no
// real time in-process.
#include <ftw.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <fstream>
#include <iostream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "tools/CamsimChild.h"

namespace {

int removeEntry(const char* path, const struct stat*, int, struct FTW*) { return ::remove(path); }

// camsim's modules, in the order of its table.
const std::string kModuleNames =
    "fisheye, fcbev7310, noui, eh4300, cv7500, ch3310, cmd8100, cmd8100old, cmd7300, cmd8300, hitachi, hitachicompat, "
    "sc110nc, cmd7200, effio, it1, it1zoom, iipc368, kestraisp, itn, seawolf";

bool contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

int count(const std::string& text, const std::string& part) {
    int n = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++n;
    return n;
}

// The text of the output from the echo of `command` on (to the next echoed command).
std::string after(const std::string& output, const std::string& command) {
    const size_t at = output.find("> " + command + "\n");
    if (at == std::string::npos) return std::string();
    const size_t next = output.find("] > ", at + command.size() + 3);
    return output.substr(at, next == std::string::npos ? std::string::npos : next - at);
}

class CamSimModulesTest : public ::testing::Test {
protected:
    void SetUp() override {
        struct stat st {};
        if (::stat(CamsimChild::path().c_str(), &st) != 0) GTEST_FAIL() << "camsim not built at " << CamsimChild::path();
        char tmpl[] = "/tmp/camsim-modules-XXXXXX";
        ASSERT_NE(nullptr, ::mkdtemp(tmpl));
        dir = tmpl;
        root = dir + "/camroot";
    }
    void TearDown() override { ::nftw(dir.c_str(), removeEntry, 16, FTW_DEPTH | FTW_PHYS); }

    CamsimChild::Result run(const std::string& module, const std::string& commands,
                            const std::vector<std::string>& more = {}) {
        std::vector<std::string> args = {"--root", root, "--time", "12:00", "--module", module};
        args.insert(args.end(), more.begin(), more.end());
        args.push_back("-c");
        args.push_back(commands);
        return CamsimChild::run(args, 120);
    }

    std::string dir;
    std::string root;
};

#define SKIP_UNLESS_STARTED(r)                                                                      \
    if (!(r).started) GTEST_SKIP() << "camsim could not be started from this test program (cross build)"
// ... and, for a run with --serial pty, unless it had a pseudo-terminal.
#define SKIP_UNLESS_PTY(r)                                                 \
    SKIP_UNLESS_STARTED(r);                                                \
    if (contains((r).output, "no pseudo-terminal could be opened")) GTEST_SKIP() << (r).output

TEST_F(CamSimModulesTest, ScriptDrivesTheEV7310OverThePseudoTerminal) {
    const std::string script = dir + "/zoom.cam";
    std::ofstream(script) << "# the block over the real serial port\n"
                             "trace serial on\n"
                             "zoom to 0x6000\n"
                             "run 2s\n"
                             "zoom\n"
                             "trace serial off\n"
                             "status\n";
    CamsimChild::Result r =
        CamsimChild::run({"--root", root, "--time", "12:00", "--module", "fcbev7310", "--serial", "pty", script}, 120);
    SKIP_UNLESS_PTY(r);
    const std::string& o = r.output;
    EXPECT_EQ(0, r.exitCode) << o;
    EXPECT_TRUE(contains(o, "camsim: camera up")) << o;
    // The packet on the line and the module's acknowledgement, traced.
    EXPECT_TRUE(std::regex_search(o, std::regex("serial   \\d\\d:\\d\\d:\\d\\d\\.\\d\\d\\d -> 81 01 04 47 06 00 00 00 FF\n"))) << o;
    EXPECT_TRUE(std::regex_search(o, std::regex("serial   \\d\\d:\\d\\d:\\d\\d\\.\\d\\d\\d <- 90 41 FF"))) << o;
    EXPECT_TRUE(contains(o, "zoom position 0x6000 (24576), ratio 2000 (x2.00)")) << o;
    EXPECT_TRUE(std::regex_search(o, std::regex("serial line    pseudo-terminal /dev/pts/\\d+ linked as /dev/ttyS1, "
                                                "real serial port; port 9600 baud, module 9600 baud")))
        << o;
    EXPECT_TRUE(contains(o, "lens           zoom 0x6000 (24576) ratio 2000")) << o;
    // The link to the pseudo-terminal is gone with camsim.
    struct stat st {};
    EXPECT_NE(0, ::lstat((root + "/dev/ttyS1").c_str(), &st));
}

TEST_F(CamSimModulesTest, InProcessZoomFocusIrisAndOnePush) {
    CamsimChild::Result r = run("fcbev7310",
                                "zoom in 7; run 1s; zoom stop; zoom; zoom to 0x4000 focus 0x2000; run 2s; zoom; focus; "
                                "focus to 0x3000; run 1s; focus; focus near 2; run 200ms; focus stop; focus; "
                                "focus onepush; iris up; set exposal-mode 1; iris up; iris down; zoom wide fast; run 3s; "
                                "zoom; zoom to 0x10000; zoom sideways");
    SKIP_UNLESS_STARTED(r);
    const std::string& o = r.output;
    EXPECT_EQ(1, r.exitCode) << o;  // the refusals at the end
    EXPECT_TRUE(contains(o, "ok: zooming in at speed 7")) << o;
    // One second at the top speed (16 units a millisecond), then stopped.
    const std::string moved = after(o, "zoom");
    std::smatch m;
    ASSERT_TRUE(std::regex_search(moved, m, std::regex("zoom position 0x([0-9A-F]{4}) \\((\\d+)\\), ratio (\\d+)")))
        << o;
    EXPECT_GT(std::stoi(m[2].str()), 10000) << o;
    EXPECT_LT(std::stoi(m[2].str()), 20000) << o;
    EXPECT_TRUE(contains(o, "ok: zoom to 0x4000 (16384) and focus to 0x2000 (8192)")) << o;
    EXPECT_TRUE(contains(o, "zoom position 0x4000 (16384), ratio 1000 (x1.00)")) << o;
    EXPECT_TRUE(contains(o, "focus position 0x2000 (8192)")) << o;
    EXPECT_TRUE(contains(o, "focus position 0x3000 (12288)")) << o;
    EXPECT_TRUE(contains(o, "ok: focusing near at speed 2")) << o;
    EXPECT_TRUE(contains(o, "ok: focus onepush")) << o;
    // Iris steps only in manual (or iris-priority) exposure: refused by the block in full auto.
    EXPECT_TRUE(contains(o, "error: iris up failed: ===recv(3 times) @setParameterValue failed")) << o;
    EXPECT_TRUE(contains(after(o, "set exposal-mode 1"), "ok: exposal-mode=1")) << o;
    EXPECT_TRUE(contains(o, "ok: iris up\n")) << o;
    EXPECT_TRUE(contains(o, "ok: iris down\n")) << o;
    EXPECT_TRUE(contains(o, "ok: zooming out at speed 7")) << o;
    EXPECT_TRUE(contains(o, "zoom position 0x0000 (0), ratio 1000")) << o;
    EXPECT_TRUE(contains(o, "error: usage: zoom | zoom in|out [SPEED|fast] | zoom stop | zoom to POS [focus POS]")) << o;
    EXPECT_EQ(2, count(o, "error: usage: zoom")) << o;
}

TEST_F(CamSimModulesTest, EachFaultHasItsEffectAndFaultOffRecovers) {
    std::string sets;
    for (int i = 0; i < 20; ++i) sets += "set sharpness " + std::to_string(20 + i) + "; ";
    CamsimChild::Result r =
        run("fcbev7310", "trace serial on; fault silent; set sharpness 40; fault; fault off; set sharpness 41; "
                         "fault noise; set sharpness 42; fault full once; set sharpness 43; fault off; "
                         "fault drop 30%; " +
                             sets + "fault; fault off; fault; fault drop 101%; fault flood");
    SKIP_UNLESS_STARTED(r);
    const std::string& o = r.output;
    EXPECT_EQ(1, r.exitCode) << o;
    // Silence: three attempts, each with its time-out, then the library's message.
    const std::string silent = after(o, "set sharpness 40");
    EXPECT_TRUE(contains(silent, "error: parameter 1 (sharpness) = 40 refused: setSharpness error,value is 40 after "
                                 "===recv(3 times) @setParameterValue failed"))
        << o;
    EXPECT_EQ(3, count(silent, "-> 81 01 04 42 00 00 00 06 FF")) << silent;
    EXPECT_EQ(3, count(silent, "<- nothing within 300 ms")) << silent;
    EXPECT_TRUE(contains(o, "faults: silent 100 %")) << o;
    EXPECT_TRUE(contains(o, "ok: no faults; the module answers every packet")) << o;
    EXPECT_TRUE(contains(after(o, "set sharpness 41"), "ok: sharpness=41")) << o;
    // Noise before the reply: the message reader skips it, the set goes through.
    const std::string noise = after(o, "set sharpness 42");
    EXPECT_TRUE(contains(noise, "ok: sharpness=42")) << noise;
    // A stray byte (below 0x80, no frame byte) right before the acknowledgement.
    EXPECT_TRUE(std::regex_search(noise, std::regex(" <- [^\n]*[0-7][0-9A-F] 90 41 FF"))) << noise;
    // One "buffer full": the second attempt gets through.
    const std::string full = after(o, "set sharpness 43");
    EXPECT_TRUE(contains(full, "ok: sharpness=43")) << full;
    EXPECT_TRUE(contains(full, "90 60 03 FF")) << full;
    EXPECT_EQ(2, count(full, "-> 81 01 04 42 00 00 00 06 FF")) << full;
    // Three replies in ten lost: some sets take more than one attempt.
    EXPECT_TRUE(contains(o, "ok: fault drop 30 %: the reply is lost")) << o;
    const std::string dropped = o.substr(o.find("> fault drop 30%"), o.find("> fault\n", o.find("> fault drop 30%")) -
                                                                          o.find("> fault drop 30%"));
    EXPECT_GT(count(dropped, "-> 81 01 04 42"), 20) << dropped;
    EXPECT_TRUE(contains(o, "faults: drop 30 %")) << o;
    EXPECT_TRUE(contains(o, "faults: none")) << o;
    EXPECT_TRUE(contains(o, "error: '101%' is no share from 0% to 100%")) << o;
    EXPECT_TRUE(contains(o, "error: unknown fault 'flood'")) << o;
}

TEST_F(CamSimModulesTest, TraceLinesCarryHexAndTheDeviceTime) {
    CamsimChild::Result r = run("fcbev7310", "trace serial on; set sharpness 40; trace; trace serial off; "
                                             "set sharpness 41; run 2s; trace serial sideways");
    SKIP_UNLESS_STARTED(r);
    const std::string& o = r.output;
    EXPECT_EQ(1, r.exitCode) << o;
    EXPECT_TRUE(contains(o, "ok: serial trace on")) << o;
    EXPECT_TRUE(std::regex_search(o, std::regex("\\] serial   \\d\\d:\\d\\d:\\d\\d\\.\\d{3} -> 81 01 04 42 00 00 00 06 FF\n")))
        << o;
    EXPECT_TRUE(std::regex_search(o, std::regex("\\] serial   \\d\\d:\\d\\d:\\d\\d\\.\\d{3} <- 90 41 FF"))) << o;
    EXPECT_TRUE(contains(o, "trace serial on\n")) << o;
    // Off: the next set and the worker's inquiries are not traced.
    EXPECT_FALSE(contains(o, "-> 81 01 04 42 00 00 00 07 FF")) << o;
    EXPECT_TRUE(contains(o, "ok: sharpness=41")) << o;
    EXPECT_FALSE(contains(after(o, "run 2s"), "serial ")) << o;
    EXPECT_TRUE(contains(o, "error: usage: trace serial on|off")) << o;
}

TEST_F(CamSimModulesTest, BaudChangeAndRestartOnTheDeviceClock) {
    CamsimChild::Result r = run("fcbev7310", "baud; baud 19200; baud; baud 9600; baud; restart; status; baud 4800");
    SKIP_UNLESS_STARTED(r);
    const std::string& o = r.output;
    EXPECT_EQ(1, r.exitCode) << o;
    EXPECT_TRUE(contains(o, "module baud register 0 (9600 baud)")) << o;
    EXPECT_TRUE(contains(o, "ok: the module runs at 19200 baud after its restart; the library's port is back at the "
                            "record's 9600 baud: the line carries nothing intelligible")) << o;
    EXPECT_TRUE(contains(o, "error: the module's baud register could not be read: getCameraBaudRate szRecvBuf error")) << o;
    EXPECT_TRUE(contains(o, "ok: the module runs at 9600 baud after its restart; the library's port is back at the "
                            "record's 9600 baud\n")) << o;
    EXPECT_EQ(2, count(o, "module baud register 0 (9600 baud)")) << o;
    // Each restart keeps the block silent for 20 s of device time.
    EXPECT_TRUE(contains(o, "ok: the module restarted (20 s without an answer)")) << o;
    EXPECT_TRUE(std::regex_search(o, std::regex("\\[12:01:\\d\\d\\] > status"))) << o;
    EXPECT_TRUE(contains(o, "error: the module's baud could not be changed to 4800: p_nBuadrate out of range")) << o;
    EXPECT_LT(r.seconds, 30.0);  // the 60 s of restarts pass on the virtual clock
}

TEST_F(CamSimModulesTest, UnknownModuleIsRefusedWithTheNames) {
    CamsimChild::Result r = run("fcb9999", "status");
    SKIP_UNLESS_STARTED(r);
    EXPECT_EQ(2, r.exitCode) << r.output;
    EXPECT_TRUE(contains(r.output, "camsim: unknown module 'fcb9999'; the modules are " + kModuleNames))
        << r.output;
    struct stat st {};
    EXPECT_NE(0, ::stat(root.c_str(), &st));  // no root made for it

    CamsimChild::Result help = CamsimChild::run({"--help"}, 60);
    EXPECT_EQ(0, help.exitCode) << help.output;
    EXPECT_TRUE(contains(help.output, "--module NAME  the front end fitted: " + kModuleNames)) << help.output;

    CamsimChild::Result pty = run("fisheye", "status", {"--serial", "pty"});
    EXPECT_EQ(2, pty.exitCode) << pty.output;
    EXPECT_TRUE(contains(pty.output, "--serial pty is for the modules on a serial line; fisheye is not one")) << pty.output;
}

TEST_F(CamSimModulesTest, CommandsOfAnotherModuleAreRefusedNamingTheModule) {
    CamsimChild::Result r = run("fcbev7310", "isp 3; lens reset; help");
    SKIP_UNLESS_STARTED(r);
    const std::string& o = r.output;
    EXPECT_EQ(1, r.exitCode) << o;
    EXPECT_TRUE(contains(o, "error: the fcbev7310 module (Sony FCB-EV7310 zoom block, VISCA) has no 'isp' command (it "
                            "is one of the fisheye module's); its own commands: zoom, focus, iris, baud, restart, "
                            "fault, trace"))
        << o;
    EXPECT_TRUE(contains(o, "has no 'lens' command")) << o;
    EXPECT_TRUE(contains(o, "commands of the fcbev7310 module (Sony FCB-EV7310 zoom block, VISCA):")) << o;
    EXPECT_TRUE(contains(o, "  baud | baud N")) << o;
    EXPECT_TRUE(contains(o, "  trace serial on|off")) << o;
    EXPECT_TRUE(contains(o, "modules (camsim --module NAME): " + kModuleNames)) << o;

    CamsimChild::Result fisheye = run("fisheye", "baud 9600; fault silent; frobnicate");
    const std::string& f = fisheye.output;
    EXPECT_EQ(1, fisheye.exitCode) << f;
    EXPECT_TRUE(contains(f, "error: the fisheye board has no 'baud' command (it is one of the fcbev7310 module's); its "
                            "own commands: isp, zoom, focus, lens"))
        << f;
    EXPECT_TRUE(contains(f, "error: the fisheye board has no 'fault' command")) << f;
    EXPECT_TRUE(contains(f, "error: unknown command 'frobnicate' (type 'help')")) << f;
}

TEST_F(CamSimModulesTest, ModuleWithoutImageSettingsStartsAndFollowsTheModulesDayAndNight) {
    CamsimChild::Result r = run("noui", "status; set 1 77; light 10; run 6s; status; zoom; fault silent; run 5s; "
                                        "fault off; light 90; run 10s");
    SKIP_UNLESS_STARTED(r);
    const std::string& o = r.output;
    EXPECT_EQ(1, r.exitCode) << o;  // zoom is refused
    EXPECT_TRUE(contains(o, "front end: noui module (module without image settings)")) << o;
    EXPECT_TRUE(contains(o, "camsim: camera up")) << o;
    EXPECT_TRUE(contains(o, "module         no image settings; day")) << o;
    EXPECT_TRUE(contains(o, "the module's day/night state, read by the \"getDN\" thread")) << o;
    // No parameter is one of this module's; the schemes hold their windows only.
    EXPECT_TRUE(contains(o, "error: parameter 1 = 77 refused: not a parameter of this camera")) << o;
    EXPECT_FALSE(contains(o, "flush failed")) << o;
    EXPECT_TRUE(contains(o, "daynight NIGHT")) << o;
    EXPECT_TRUE(contains(o, "module         no image settings; night")) << o;
    EXPECT_TRUE(contains(o, "error: the noui module (module without image settings) has no 'zoom' command")) << o;
    EXPECT_TRUE(contains(o, "daynight DAY")) << o;
    EXPECT_LT(r.seconds, 30.0);
}

TEST_F(CamSimModulesTest, TheOtherBlockCamerasOfTheTableComeUpAndZoom) {
    // Their replies take the search form: the completion of a move that ends
    // after the acknowledgement was read comes before the next reply, which
    // fails once; the second read gets the position.
    for (const char* module : {"eh4300", "cv7500", "ch3310"}) {
        CamsimChild::Result r = run(module, "zoom to 0x4000; run 2s; zoom; zoom; status; quit!");
        SKIP_UNLESS_STARTED(r);
        const std::string& o = r.output;
        EXPECT_GE(1, r.exitCode) << module << "\n" << o;
        EXPECT_TRUE(contains(o, "lens           zoom 0x4000 (16384) ratio 1000")) << module << "\n" << o;
        EXPECT_TRUE(contains(o, std::string("front end: ") + module + " module")) << o;
        EXPECT_TRUE(contains(o, "zoom position 0x4000 (16384), ratio 1000")) << module << "\n" << o;
        ::nftw(root.c_str(), removeEntry, 16, FTW_DEPTH | FTW_PHYS);
    }
}

TEST_F(CamSimModulesTest, TheCMDBlockCamerasComeUpWithTheirKeysAndTakeParametersOnTheBlock) {
    struct Case {
        const char* module;
        const char* model;        // the simulated block's profile, as its status names it
        const char* startLine;    // the controller's start line with camsim's record
    };
    const Case cases[] = {
        {"cmd8100", "CMD8100",
         "__CMD8100SenseController::init,ModuleConfigure is(RS485=/dev/ttyS1;isInfrared=0;generation=2,"
         "RS485=9600,8,1,0)"},
        {"cmd8100old", "CMD8100_Old",
         "__CMD8100_OldSenseController::init,ModuleConfigure is(RS485=/dev/ttyS1;isInfrared=0;generation=2,"},
        {"cmd7300", "CMD7300", "__CMD7300SenseController::init,ModuleConfigure is(RS485=/dev/ttyS1;isInfrared=0,"},
        {"cmd8300", "CMD8300",
         "__CMD8300SenseController::init,ModuleConfigure is(RS485=/dev/ttyS1;isInfrared=0,"
         "RS485=9600,8,1,0;GUIConfigName=camsim)"},
    };
    for (const Case& c : cases) {
        CamsimChild::Result r = run(c.module,
                                    "status; trace serial on; set exposal-mode 1; trace serial off; status; "
                                    "zoom to 0x4000; run 2s; zoom; status; quit!",
                                    {"--verbose"});
        SKIP_UNLESS_STARTED(r);
        const std::string& o = r.output;
        EXPECT_EQ(0, r.exitCode) << c.module << "\n" << o;
        EXPECT_TRUE(contains(o, std::string("front end: ") + c.module + " module (CMD")) << o;
        EXPECT_TRUE(contains(o, c.startLine)) << o;
        EXPECT_TRUE(contains(o, "camsim: camera up")) << o;
        // Full auto at power-on; manual exposure after the set, as the block holds it.
        const std::string model = c.model;
        EXPECT_TRUE(contains(after(o, "status"), "block          " + model + ", day; AE mode 0x00\n")) << o;
        const std::string set = after(o, "set exposal-mode 1");
        EXPECT_TRUE(contains(set, "ok: exposal-mode=1")) << o;
        EXPECT_TRUE(std::regex_search(set, std::regex("serial   \\d\\d:\\d\\d:\\d\\d\\.\\d{3} -> 81 01 04 39 03 FF\n"))) << set;
        EXPECT_TRUE(std::regex_search(set, std::regex("serial   \\d\\d:\\d\\d:\\d\\d\\.\\d{3} <- 90 41 FF"))) << set;
        EXPECT_TRUE(contains(o.substr(o.find("> trace serial off")), "block          " + model + ", day; AE mode 0x03\n"))
            << o;
        EXPECT_TRUE(contains(o, "zoom position 0x4000 (16384), ratio 1000")) << o;
        EXPECT_TRUE(contains(o, "lens           zoom 0x4000 (16384) ratio 1000")) << o;
        ::nftw(root.c_str(), removeEntry, 16, FTW_DEPTH | FTW_PHYS);
    }
}

TEST_F(CamSimModulesTest, TheAsciiRegisterModulesComeUpAndTakeParametersInTheirRegisters) {
    struct Case {
        const char* module;
        const char* controller;  // its start line's class name
        const char* brightness;  // the register of brightness (id 1)
    };
    const Case cases[] = {{"hitachi", "HitachSenseController", "0110"},
                          {"hitachicompat", "HitachCompatSenseController", "0110"},
                          {"sc110nc", "SC110N_CSenseController", "FC10"},
                          {"cmd7200", "CMD7200SenseController", "0200"}};
    for (const Case& c : cases) {
        const std::string reg = c.brightness;
        CamsimChild::Result r = run(c.module,
                                    "register " + reg + "; trace serial on; set brightness 60; trace serial off; "
                                    "register " + reg + "; status; register 12345; quit!",
                                    {"--verbose"});
        SKIP_UNLESS_STARTED(r);
        const std::string& o = r.output;
        EXPECT_EQ(1, r.exitCode) << c.module << "\n" << o;  // the refused register
        EXPECT_TRUE(contains(o, std::string("front end: ") + c.module + " module (")) << o;
        EXPECT_TRUE(contains(o, std::string("__") + c.controller + "::init,ModuleConfigure is(RS485=/dev/ttyS1;")) << o;
        EXPECT_TRUE(contains(o, "camsim: camera up")) << o;
        // The module's register before and after the set, as the simulated module holds it.
        const std::string before = after(o, "register " + reg);
        EXPECT_TRUE(contains(before, "register " + reg + " = 0x")) << o;
        EXPECT_FALSE(contains(before, "(60)")) << o;
        EXPECT_TRUE(contains(o.substr(o.find("> trace serial off")), "register " + reg + " = 0x3C (60)")) << o;
        // The command and its echo as text.
        const std::string set = after(o, "set brightness 60");
        EXPECT_TRUE(contains(set, "ok: brightness=60")) << o;
        EXPECT_TRUE(std::regex_search(set, std::regex("serial   \\d\\d:\\d\\d:\\d\\d\\.\\d{3} -> \":W" + reg + "3C\"\n"))) << set;
        EXPECT_TRUE(std::regex_search(set, std::regex("serial   \\d\\d:\\d\\d:\\d\\d\\.\\d{3} <- \":W" + reg + "3C\"\n"))) << set;
        EXPECT_TRUE(std::regex_search(o, std::regex("the module took \\d+ commands, carried out \\d+"))) << o;
        EXPECT_TRUE(contains(o, "error: usage: register ADDR")) << o;
        ::nftw(root.c_str(), removeEntry, 16, FTW_DEPTH | FTW_PHYS);
    }
}

TEST_F(CamSimModulesTest, AsciiModulesOfferTheLensCommandsOfTheirTables) {
    CamsimChild::Result r = run("sc110nc", "zoom wide; register FD00; zoom stop; register FD00; focus far; "
                                           "register FD01; status; help; iris open; zoom sideways");
    SKIP_UNLESS_STARTED(r);
    const std::string& o = r.output;
    EXPECT_EQ(1, r.exitCode) << o;
    EXPECT_TRUE(contains(o, "ok: zoom wide")) << o;
    EXPECT_TRUE(contains(o, "register FD00 = 0x02 (2)")) << o;
    EXPECT_TRUE(contains(o, "register FD00 = 0x00 (0)")) << o;
    EXPECT_TRUE(contains(o, "register FD01 = 0x02 (2)")) << o;
    EXPECT_TRUE(contains(o, "lens           zoom FD00 = 0x00, focus FD01 = 0x02, focus onepush FD02 = 0x01")) << o;
    EXPECT_TRUE(contains(o, "  zoom tele|wide|stop")) << o;
    EXPECT_TRUE(contains(o, "  focus near|far|stop|onepush")) << o;
    EXPECT_TRUE(contains(o, "has no 'iris' command")) << o;
    EXPECT_TRUE(contains(o, "error: usage: zoom tele|wide|stop")) << o;

    ::nftw(root.c_str(), removeEntry, 16, FTW_DEPTH | FTW_PHYS);
    CamsimChild::Result compat = run("hitachicompat", "iris close; register 0174; iris open; register 0174; zoom tele");
    const std::string& c = compat.output;
    EXPECT_EQ(1, compat.exitCode) << c;
    EXPECT_TRUE(contains(c, "ok: iris close\n")) << c;
    EXPECT_TRUE(contains(c, "register 0174 = 0x02 (2)")) << c;
    EXPECT_TRUE(contains(c, "register 0174 = 0x01 (1)")) << c;
    EXPECT_TRUE(contains(c, "has no 'zoom' command")) << c;
}

TEST_F(CamSimModulesTest, AsciiModulesWithAStatusRegisterFollowTheLightOthersDoNot) {
    CamsimChild::Result r = run("hitachi", "light 10; run 3s; status; light 90; run 10s");
    SKIP_UNLESS_STARTED(r);
    const std::string& o = r.output;
    EXPECT_EQ(0, r.exitCode) << o;
    EXPECT_TRUE(contains(o, "daynight NIGHT")) << o;
    EXPECT_TRUE(contains(o, "module         Hitach register module, night (status register 0F00 = 0x0001)")) << o;
    EXPECT_TRUE(contains(o.substr(o.find("> light 90")), "daynight DAY")) << o;

    ::nftw(root.c_str(), removeEntry, 16, FTW_DEPTH | FTW_PHYS);
    CamsimChild::Result cmd = run("cmd7200", "light 10; run 3s; status");
    const std::string& c = cmd.output;
    EXPECT_EQ(0, cmd.exitCode) << c;
    EXPECT_FALSE(contains(c, "daynight NIGHT")) << c;
    EXPECT_TRUE(contains(c, "module         CMD7200 register module, no day/night state")) << c;
    EXPECT_TRUE(contains(c, "the board's day/night input (isInfrared=1)")) << c;
}

TEST_F(CamSimModulesTest, AsciiFaultsFailTheWriteAndFaultOffRecovers) {
    CamsimChild::Result r = run("hitachi", "set brightness 60; trace serial on; fault silent; set brightness 61; "
                                           "fault off; fault full; set brightness 62; register 0110; fault off; "
                                           "set brightness 63; register 0110");
    SKIP_UNLESS_STARTED(r);
    const std::string& o = r.output;
    EXPECT_EQ(1, r.exitCode) << o;
    // Silence: three attempts, each with its time-out.
    const std::string silent = after(o, "set brightness 61");
    EXPECT_TRUE(contains(silent, "error: parameter 1 (brightness) = 61 refused: setBrightness error,value is 61 after "
                                 "===recv(3 times) @sendData failed"))
        << o;
    EXPECT_EQ(3, count(silent, "-> \":W01103D\"")) << silent;
    EXPECT_EQ(0, count(silent, "<- \":W01103D\"")) << silent;
    // Busy: every command is ignored, the module keeps its value.
    EXPECT_TRUE(contains(o, "ok: fault full 100 %: the module is busy and ignores the command")) << o;
    const std::string busy = after(o, "set brightness 62");
    EXPECT_TRUE(contains(busy, "setBrightness error,value is 62")) << busy;
    EXPECT_EQ(3, count(busy, "-> \":W01103E\"")) << busy;
    EXPECT_TRUE(contains(after(o, "register 0110"), "register 0110 = 0x3C (60)")) << o;
    EXPECT_TRUE(contains(after(o, "set brightness 63"), "ok: brightness=63")) << o;
    EXPECT_TRUE(contains(o, "register 0110 = 0x3F (63)")) << o;
}

TEST_F(CamSimModulesTest, AsciiModuleOverThePseudoTerminal) {
    CamsimChild::Result r = run("hitachi", "trace serial on; set brightness 60; fault corrupt once; set contrast 70; "
                                           "register 0110; register 0111; status; quit!",
                                {"--serial", "pty"});
    SKIP_UNLESS_PTY(r);
    const std::string& o = r.output;
    EXPECT_EQ(0, r.exitCode) << o;
    EXPECT_TRUE(std::regex_search(o, std::regex("serial   \\d\\d:\\d\\d:\\d\\d\\.\\d{3} -> \":W01103C\"\n"))) << o;
    EXPECT_TRUE(std::regex_search(o, std::regex("serial   \\d\\d:\\d\\d:\\d\\d\\.\\d{3} <- \":W01103C\"\n"))) << o;
    // A changed byte of the echo: the write goes again.
    const std::string corrupt = after(o, "set contrast 70");
    EXPECT_TRUE(contains(corrupt, "ok: contrast=70")) << corrupt;
    EXPECT_EQ(2, count(corrupt, "-> \":W011146\"")) << corrupt;
    EXPECT_EQ(1, count(corrupt, "<- \":W011146\"")) << corrupt;
    EXPECT_TRUE(contains(o, "register 0110 = 0x3C (60)")) << o;
    EXPECT_TRUE(contains(o, "register 0111 = 0x46 (70)")) << o;
    EXPECT_TRUE(std::regex_search(o, std::regex("serial line    pseudo-terminal /dev/pts/\\d+ linked as /dev/ttyS1"))) << o;
}

TEST_F(CamSimModulesTest, TheEffioProcessorComesUpAndTakesParametersInItsStore) {
    CamsimChild::Result r = run("effio", "store 1 0; trace serial on; set brightness 60; set sharpness 9; "
                                         "trace serial off; store 1 0; store 1 3; status; store 9 9; light 10; run 3s",
                                {"--verbose"});
    SKIP_UNLESS_STARTED(r);
    const std::string& o = r.output;
    EXPECT_EQ(1, r.exitCode) << o;  // the byte the store lacks
    EXPECT_TRUE(contains(o, "front end: effio module (Effio camera processor, checksummed frames)")) << o;
    EXPECT_TRUE(contains(o, "__EffioSenseController::init,ModuleConfigure is(RS485=/dev/ttyS1;isInfrared=1,")) << o;
    EXPECT_TRUE(contains(o, "Effio version 1.2")) << o;
    EXPECT_TRUE(contains(o, "camsim: camera up")) << o;
    // The store before and after, as the simulated processor holds it.
    EXPECT_TRUE(contains(after(o, "store 1 0"), "category 1 byte 0 = 0x")) << o;
    EXPECT_FALSE(contains(after(o, "store 1 0"), "(60)")) << o;
    const std::string later = o.substr(o.find("> trace serial off"));
    EXPECT_TRUE(contains(later, "category 1 byte 0 = 0x3C (60)")) << o;
    // Sharpness is the low four bits of byte 3: read, changed, written back.
    std::smatch m;
    ASSERT_TRUE(std::regex_search(later, m, std::regex("category 1 byte 3 = 0x([0-9A-F]{2})"))) << o;
    EXPECT_EQ(9, std::stoi(m[1].str(), nullptr, 16) & 0x0F) << o;
    // The frames in hex: the write with its checksum and the processor's status answer.
    const std::string set = after(o, "set brightness 60");
    EXPECT_TRUE(std::regex_search(set, std::regex("serial   \\d\\d:\\d\\d:\\d\\d\\.\\d{3} -> A5 01 01 00 01 3C E4\n"))) << set;
    EXPECT_TRUE(std::regex_search(set, std::regex("serial   \\d\\d:\\d\\d:\\d\\d\\.\\d{3} <- A5 00 89\n"))) << set;
    const std::string sharp = after(o, "set sharpness 9");
    EXPECT_TRUE(contains(sharp, "-> A5 02 01 03 01 AC\n")) << sharp;
    EXPECT_TRUE(std::regex_search(sharp, std::regex("-> A5 01 01 03 01 [0-9A-F]9 "))) << sharp;
    EXPECT_TRUE(std::regex_search(o, std::regex("the processor took \\d+ frames, carried out \\d+ writes"))) << o;
    EXPECT_TRUE(contains(o, "error: the processor's store has no byte 9 in category 9")) << o;
    // No day/night state on the line: the light does not switch the camera.
    EXPECT_FALSE(contains(o, "daynight NIGHT")) << o;
}

TEST_F(CamSimModulesTest, EffioFaultsGetTheStatusTextsAndFaultOffRecovers) {
    CamsimChild::Result r = run("effio", "set brightness 60; trace serial on; fault full; set brightness 61; "
                                         "logs console 12; store 1 0; fault off; fault silent; set contrast 70; "
                                         "logs console 20; fault off; set brightness 62; store 1 0");
    SKIP_UNLESS_STARTED(r);
    const std::string& o = r.output;
    EXPECT_EQ(1, r.exitCode) << o;
    // Busy: each write is answered with a communication error, tried three times, not carried out.
    EXPECT_TRUE(contains(o, "ok: fault full 100 %: the processor answers a write with a communication error")) << o;
    const std::string busy = after(o, "set brightness 61");
    EXPECT_TRUE(contains(busy, "setBrightness error,value is 61")) << busy;
    EXPECT_EQ(3, count(after(o, "logs console 12"), "setParameters::send command failed (Communication error)")) << o;
    EXPECT_EQ(3, count(busy, "-> A5 01 01 00 01 3D E5\n")) << busy;
    EXPECT_EQ(3, count(busy, "<- A5 01 8B\n")) << busy;
    EXPECT_TRUE(contains(after(o, "store 1 0"), "category 1 byte 0 = 0x3C (60)")) << o;
    // Silence: the write gets nothing back.
    const std::string silent = after(o, "set contrast 70");
    EXPECT_TRUE(contains(silent, "error: parameter 2 (contrast) = 70 refused")) << silent;
    EXPECT_EQ(3, count(silent, "-> A5 01 01 01 01 46 EF\n")) << silent;
    EXPECT_EQ(0, count(silent, "<- A5")) << silent;
    EXPECT_TRUE(contains(after(o, "logs console 20"), "setParameters : recv len failed expectlen=3,actuallen=0")) << o;
    EXPECT_TRUE(contains(after(o, "set brightness 62"), "ok: brightness=62")) << o;
    EXPECT_TRUE(contains(o, "category 1 byte 0 = 0x3E (62)")) << o;
}

TEST_F(CamSimModulesTest, EffioProcessorOverThePseudoTerminal) {
    CamsimChild::Result r = run("effio", "trace serial on; set contrast 70; fault corrupt once; set hue 90; "
                                         "store 1 1; store 1 4; status; quit!",
                                {"--serial", "pty"});
    SKIP_UNLESS_PTY(r);
    const std::string& o = r.output;
    EXPECT_EQ(0, r.exitCode) << o;
    EXPECT_TRUE(std::regex_search(o, std::regex("serial   \\d\\d:\\d\\d:\\d\\d\\.\\d{3} -> A5 01 01 01 01 46 EF\n"))) << o;
    EXPECT_TRUE(contains(o, "category 1 byte 1 = 0x46 (70)")) << o;
    EXPECT_TRUE(contains(o, "ok: hue=90")) << o;
    EXPECT_TRUE(contains(o, "category 1 byte 4 = 0x5A (90)")) << o;
    EXPECT_TRUE(std::regex_search(o, std::regex("serial line    pseudo-terminal /dev/pts/\\d+ linked as /dev/ttyS1"))) << o;
}

TEST_F(CamSimModulesTest, EachIspBoardComesUpAndASetReachesTheBoardsRegisterWithTheChecksumTraced) {
    struct Case {
        const char* module;
        const char* startLine;  // the controller's start line
        const char* frame;      // the write of brightness 30 as the trace shows it
        const char* reg;        // the board's register line after it
    };
    const Case cases[] = {
        {"it1", "____IBaseIT1SenseController::init", "-> AA 01 00 10 1E D9", "Brightness               0x0010 = 30"},
        {"it1zoom", "____IBaseIT1SenseController::init", "-> AA 01 00 10 1E D9",
         "Brightness               0x0010 = 30"},
        {"iipc368", "____IBaseIT1SenseController::init", "-> AA 01 00 10 1E D9",
         "Brightness               0x0010 = 30"},
        {"kestraisp", "____KestraISPSenseController::init", "-> AA 01 01 01 1E CB",
         "Brightness               0x0101 = 30"},
        {"itn", "____ITNSenseController::init", "-> 5A 01 10 01 00 1E 0E", "Brightness               0x1001 = 30"},
        {"seawolf", "____SeawolfSenseController::init", "-> FF 01 01 1E E0", "Brightness               0x0001 = 30"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.module);
        CamsimChild::Result r = run(c.module,
                                    "trace serial on; set brightness 30; trace serial off; board brightness; "
                                    "status; quit!",
                                    {"--verbose"});
        SKIP_UNLESS_STARTED(r);
        const std::string& o = r.output;
        EXPECT_EQ(0, r.exitCode) << o;
        EXPECT_TRUE(contains(o, c.startLine)) << o;
        EXPECT_TRUE(contains(o, "camsim: camera up")) << o;
        const std::string set = after(o, "set brightness 30");
        EXPECT_TRUE(contains(set, "ok: brightness=30")) << o;
        EXPECT_TRUE(contains(set, std::string(c.frame) + "  checksum ok\n")) << set;
        EXPECT_TRUE(std::regex_search(set, std::regex("serial   \\d\\d:\\d\\d:\\d\\d\\.\\d{3} <- [0-9A-F ]+  checksum ok\n")))
            << set;
        EXPECT_TRUE(contains(after(o, "board brightness"), c.reg)) << o;
        EXPECT_TRUE(contains(o, "board          ")) << o;
        ::nftw(root.c_str(), removeEntry, 16, FTW_DEPTH | FTW_PHYS);
    }
}

TEST_F(CamSimModulesTest, TheTraceSaysWhenAnAnswersChecksumIsBad) {
    CamsimChild::Result r = run("kestraisp",
                                "trace serial on; board fault checksum; set contrast 40; trace serial off; "
                                "board contrast; board fault sideways; board nothing; quit!");
    SKIP_UNLESS_STARTED(r);
    const std::string& o = r.output;
    EXPECT_EQ(1, r.exitCode) << o;  // the two refused commands
    EXPECT_TRUE(contains(o, "ok: the board's next answer: checksum")) << o;
    const std::string set = after(o, "set contrast 40");
    // The answer with the wrong checksum, then the second attempt's good one.
    EXPECT_EQ(1, count(set, "  checksum bad\n")) << set;
    EXPECT_EQ(2, count(set, "-> AA 01 01 02 28 D6  checksum ok\n")) << set;
    EXPECT_TRUE(contains(set, "ok: contrast=40")) << set;
    EXPECT_TRUE(contains(after(o, "board contrast"), "Contrast                 0x0102 = 40")) << o;
    EXPECT_TRUE(contains(o, "error: usage: board fault checksum|long|short|off")) << o;
    EXPECT_TRUE(contains(o, "error: the board has no register nothing")) << o;
}

TEST_F(CamSimModulesTest, AnIspBoardOverThePseudoTerminal) {
    CamsimChild::Result r = run("it1", "set sharpness 9; board sharpness; status; quit!", {"--serial", "pty"});
    SKIP_UNLESS_STARTED(r);
    const std::string& o = r.output;
    if (contains(o, "no pseudo-terminal could be opened")) GTEST_SKIP() << o;
    EXPECT_EQ(0, r.exitCode) << o;
    EXPECT_TRUE(contains(o, "camsim: camera up")) << o;
    EXPECT_TRUE(contains(after(o, "set sharpness 9"), "ok: sharpness=9")) << o;
    EXPECT_TRUE(contains(after(o, "board sharpness"), "Sharpness                0x0013 = 9")) << o;
    EXPECT_TRUE(std::regex_search(o, std::regex("serial line    pseudo-terminal /dev/pts/\\d+ linked as /dev/ttyS1")))
        << o;
}

}  // namespace
