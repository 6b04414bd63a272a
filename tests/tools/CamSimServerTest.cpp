// camsim serve's pages and JSON API, through an HTTP client on loopback, against
// the simulator camera in this process on a temporary root and the virtual clock.
#include <ftw.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <httplib.h>

#include <atomic>
#include <cstdio>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <vector>

#include "camsim/CamSim.h"
#include "camsim/CamSimServer.h"
#include "camsim/RootSetup.h"
#include "TestRoot.h"
#include "tools/CamsimChild.h"
#include "platform/KSFile.h"
#include "platform/SensorParameterParser.h"
#include "storage/SensorFile.h"

namespace {

using nlohmann::json;

const char* const kSchemeFile = "/mnt/mtd/code/config_file/sensor0.cfg";

class CamSimServerTest : public ::testing::Test {
protected:
    void SetUp() override {
        char tmpl[] = "/tmp/camsim-serve-test-XXXXXX";
        ASSERT_NE(nullptr, ::mkdtemp(tmpl));
        dir = tmpl;
        camsim::CamSim::Options options;
        options.root = dir + "/camroot";
        options.startHour = 10;  // scheme 0 (06:00-18:00) in force
        // The library's lines (and this test's) are echoed to standard error, so
        // that a failure shows them.
        options.verbose = true;
        options.output = stderr;
        ASSERT_TRUE(sim.start(options));
        std::string error;
        ASSERT_TRUE(server.start("127.0.0.1", 0, error)) << error;
        ASSERT_GT(server.port(), 0);
    }
    void TearDown() override {
        server.stop();
        sim.stop();
        ::nftw(dir.c_str(), testutil::removeEntry, 16, FTW_DEPTH | FTW_PHYS);
    }

    httplib::Client client() const { return httplib::Client("127.0.0.1", server.port()); }

    // A request and its JSON answer; the status is 0 when none came.
    json get(const std::string& path, int& status) const {
        auto r = client().Get(path.c_str());
        status = r ? r->status : 0;
        return r ? json::parse(r->body, nullptr, false) : json();
    }
    json post(const std::string& path, const std::string& body, int& status,
              const char* type = "application/json") const {
        auto r = client().Post(path.c_str(), body, type);
        status = r ? r->status : 0;
        return r ? json::parse(r->body, nullptr, false) : json();
    }
    int value(int id) const {
        int status = 0;
        json v = get("/api/parameters", status);
        EXPECT_EQ(200, status);
        return v["values"].value(std::to_string(id), -1);
    }
    std::string real(const std::string& cameraPath) const { return dir + "/camroot" + cameraPath; }
    // The scheme file in force, read through the camera's root.
    static std::string schemeFile() {
        std::string content;
        KSFile::readAll(kSchemeFile, content);
        return content;
    }

    std::string dir;
    camsim::CamSim sim;
    camsim::CamSimServer server{sim};
};

TEST_F(CamSimServerTest, ServesThePagesBuiltIntoTheProgram) {
    auto page = client().Get("/");
    ASSERT_TRUE(page);
    EXPECT_EQ(200, page->status);
    EXPECT_EQ("text/html; charset=utf-8", page->get_header_value("Content-Type"));
    EXPECT_NE(std::string::npos, page->body.find("/app.js"));
    auto script = client().Get("/app.js");
    ASSERT_TRUE(script);
    EXPECT_EQ(200, script->status);
    EXPECT_NE(std::string::npos, script->body.find("/api/ui/"));
    auto missing = client().Get("/nothing.html");
    ASSERT_TRUE(missing);
    EXPECT_EQ(404, missing->status);
    EXPECT_NE(std::string::npos, json::parse(missing->body)["error"].get<std::string>().find("/nothing.html"));
}

TEST_F(CamSimServerTest, HandsTheTextsExactlyAsTheLibraryPreparesThem) {
    int status = 0;
    json langs = get("/api/languages", status);
    ASSERT_EQ(200, status);
    ASSERT_EQ(2u, langs["languages"].size());
    EXPECT_EQ(1, langs["languages"][0]["id"]);
    EXPECT_EQ("english", langs["languages"][0]["folder"]);
    EXPECT_EQ("chinese", langs["languages"][1]["folder"]);

    SensorFile file;  // the platform root is the camera's
    ASSERT_TRUE(file.init("", ""));
    for (int language : {1, 2}) {
        json texts = get("/api/ui/" + std::to_string(language), status);
        ASSERT_EQ(200, status);
        EXPECT_EQ(language, texts["language"]);
        EXPECT_EQ(file.getUIStyleConfig(), texts["style"].get<std::string>());
        EXPECT_EQ(file.getUICommonConfig(language), texts["common"].get<std::string>());
        EXPECT_EQ(file.getUILanguageConfig(language), texts["texts"].get<std::string>());
    }
    json english = get("/api/ui/1", status);
    // Merged for the fisheye board: the infrared tab added, the defog tab taken out.
    EXPECT_NE(std::string::npos, english["style"].get<std::string>().find("InfraredLamp"));
    EXPECT_EQ(std::string::npos, english["style"].get<std::string>().find("Defog\""));
    EXPECT_NE(std::string::npos, english["texts"].get<std::string>().find("Brightness"));
    json chinese = get("/api/ui/2", status);
    EXPECT_NE(std::string::npos, chinese["texts"].get<std::string>().find("亮度"));
}

TEST_F(CamSimServerTest, SetsParametersAndReadsThemBack) {
    int status = 0;
    json r = post("/api/parameters", R"j({"text":"(1,61)(3,44)"})j", status);
    EXPECT_EQ(200, status) << r.dump();
    EXPECT_TRUE(r["accepted"].get<bool>());
    EXPECT_EQ(61, r["values"]["1"]);
    EXPECT_EQ(61, value(1));
    EXPECT_EQ(44, value(3));
    // A plain-text body is the list itself.
    post("/api/parameters", "(2,33)", status, "text/plain");
    EXPECT_EQ(200, status);
    EXPECT_EQ(33, value(2));
    json all = get("/api/parameters", status);
    EXPECT_EQ("brightness", all["names"]["1"]);
    EXPECT_EQ("fisheye", all["module"]);
    std::map<int, int> fromText;
    ASSERT_TRUE(SensorParameterParser::parseSensorParameter(all["text"].get<std::string>(), fromText));
    EXPECT_EQ(33, fromText[2]);
    json st = get("/api/status", status);
    EXPECT_NE(std::string::npos, st["unsaved"].get<std::string>().find("brightness=61"));
}

TEST_F(CamSimServerTest, RefusalCarriesTheLibrarysReasonAndWritesNothing) {
    const std::string before = schemeFile();
    ASSERT_FALSE(before.empty());
    struct stat st0 {};
    ASSERT_EQ(0, ::stat(real(kSchemeFile).c_str(), &st0));
    const int brightness = value(1);
    int status = 0;
    json r = post("/api/parameters", R"j({"text":"(1,160)"})j", status);
    EXPECT_EQ(422, status);
    EXPECT_FALSE(r["accepted"].get<bool>());
    EXPECT_EQ(1, r["id"]);
    EXPECT_EQ("brightness", r["name"]);
    EXPECT_NE(std::string::npos, r["reason"].get<std::string>().find("out of range")) << r.dump();
    EXPECT_EQ(brightness, value(1));
    // An id the camera does not have: refused by the library too.
    r = post("/api/parameters", R"j({"text":"(999,1)"})j", status);
    EXPECT_EQ(422, status);
    EXPECT_EQ(999, r["id"]);
    EXPECT_FALSE(r["reason"].get<std::string>().empty());
    // Nothing on disk changed, and a save has nothing new to write.
    EXPECT_EQ(before, schemeFile());
    struct stat st1 {};
    ASSERT_EQ(0, ::stat(real(kSchemeFile).c_str(), &st1));
    EXPECT_EQ(st0.st_ino, st1.st_ino);
    EXPECT_EQ(st0.st_mtim.tv_nsec, st1.st_mtim.tv_nsec);
    json saved = post("/api/flush", "", status);
    EXPECT_EQ(200, status);
    EXPECT_EQ(before, schemeFile());
}

TEST_F(CamSimServerTest, BadRequestsGetAClearError) {
    struct Case {
        const char* path;
        std::string body;
        int status;
        const char* words;
    };
    const std::vector<Case> cases = {
        {"/api/parameters", R"j({"text":)j", 400, "malformed JSON"},
        {"/api/parameters", "[1,2]", 400, "JSON object"},
        {"/api/parameters", R"j({"list":"(1,2)"})j", 400, "'text'"},
        {"/api/parameters", R"j({"text":"brightness=3"})j", 400, "not a parameter list"},
        {"/api/parameters", R"j({"text":"(1,2"})j", 400, "not a parameter list"},
        {"/api/parameters", R"j({"text":"(1,\"2)"})j", 400, "not a parameter list"},
        {"/api/parameters", std::string(70 * 1024, '('), 413, "64 KiB"},
        {"/api/light", R"j({"level":101})j", 400, "'level'"},
        {"/api/light", R"j({"level":"10"})j", 400, "'level'"},
        {"/api/time", R"j({"time":"25:00"})j", 400, "'time'"},
        {"/api/run", R"j({"seconds":0})j", 400, "'seconds'"},
        {"/api/run", R"j({"seconds":99999})j", 400, "'seconds'"},
        {"/api/nothing", "{}", 404, "nothing at POST /api/nothing"},
    };
    const int brightness = value(1);
    for (const Case& c : cases) {
        int status = 0;
        json r = post(c.path, c.body, status);
        EXPECT_EQ(c.status, status) << c.path << " " << c.body.substr(0, 40);
        ASSERT_TRUE(r.is_object()) << c.path;
        EXPECT_NE(std::string::npos, r.value("error", std::string()).find(c.words))
            << c.path << ": " << r.dump().substr(0, 200);
    }
    int status = 0;
    json r = get("/api/ui/7", status);
    EXPECT_EQ(404, status);
    EXPECT_NE(std::string::npos, r["error"].get<std::string>().find("no language 7"));
    r = get("/api/ui/english", status);
    EXPECT_EQ(400, status);
    EXPECT_NE(std::string::npos, r["error"].get<std::string>().find("not a language id"));
    EXPECT_EQ(brightness, value(1));
}

TEST_F(CamSimServerTest, ChangesFromThePageOfAnotherOriginAreRefused) {
    const int brightness = value(1);
    httplib::Client c = client();
    auto r = c.Post("/api/parameters", httplib::Headers{{"Origin", "http://elsewhere.example"}}, "(1,7)", "text/plain");
    ASSERT_TRUE(r);
    EXPECT_EQ(403, r->status);
    EXPECT_NE(std::string::npos, json::parse(r->body)["error"].get<std::string>().find("elsewhere.example"));
    EXPECT_EQ(brightness, value(1));
    // A name that some DNS server points at this address: refused as well.
    const std::string named = "camera.example:" + std::to_string(server.port());
    r = c.Post("/api/parameters", httplib::Headers{{"Origin", "http://" + named}, {"Host", named}}, "(1,7)",
               "text/plain");
    ASSERT_TRUE(r);
    EXPECT_EQ(403, r->status);
    EXPECT_NE(std::string::npos, json::parse(r->body)["error"].get<std::string>().find("by the name"));
    EXPECT_EQ(brightness, value(1));
    // The server's own page names its own origin.
    const std::string own = "http://127.0.0.1:" + std::to_string(server.port());
    r = c.Post("/api/parameters", httplib::Headers{{"Origin", own}}, "(1,7)", "text/plain");
    ASSERT_TRUE(r);
    EXPECT_EQ(200, r->status);
    EXPECT_EQ(7, value(1));
}

TEST_F(CamSimServerTest, FlushSavesToTheSchemeFile) {
    int status = 0;
    post("/api/parameters", R"j({"text":"(2,57)"})j", status);
    ASSERT_EQ(200, status);
    EXPECT_EQ(std::string::npos, schemeFile().find("(2,57)"));
    json r = post("/api/flush", "", status);
    EXPECT_EQ(200, status);
    EXPECT_TRUE(r["saved"].get<bool>());
    EXPECT_NE(std::string::npos, r["message"].get<std::string>().find("sensor0.cfg"));
    EXPECT_NE(std::string::npos, schemeFile().find("(2,57)"));
    json st = get("/api/status", status);
    EXPECT_EQ("", st["unsaved"]);
}

TEST_F(CamSimServerTest, StatusFollowsTheLightAndTheClock) {
    int status = 0;
    json st = get("/api/status", status);
    ASSERT_EQ(200, status);
    EXPECT_EQ("day", st["dayNight"]);
    EXPECT_FALSE(st["lamps"].get<bool>());
    EXPECT_EQ(0, st["scheme"]);
    EXPECT_EQ(80, st["light"]);
    const int64_t start = st["clockMs"];

    post("/api/light", R"j({"level":10})j", status);
    ASSERT_EQ(200, status);
    post("/api/run", R"j({"seconds":2})j", status);
    ASSERT_EQ(200, status);
    st = get("/api/status", status);
    EXPECT_EQ(start + 2000, st["clockMs"].get<int64_t>());
    EXPECT_EQ("night", st["dayNight"]);
    EXPECT_TRUE(st["lamps"].get<bool>());
    EXPECT_EQ(10, st["light"]);
    EXPECT_NE(std::string::npos, st["picture"].get<std::string>().find("IR-cut filter out"));

    post("/api/time", R"j({"time":"19:00"})j", status);
    ASSERT_EQ(200, status);
    post("/api/run", R"j({"seconds":2})j", status);
    st = get("/api/status", status);
    EXPECT_NE(std::string::npos, st["deviceTime"].get<std::string>().find(" 19:00:0")) << st.dump();
    EXPECT_EQ(1, st["scheme"]);  // the evening scheme's window
}

TEST_F(CamSimServerTest, SeveralClientsAtOnceLeaveAConsistentFile) {
    const int kThreads = 4, kRequests = 25;
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([this, t, &failures] {
            httplib::Client c("127.0.0.1", server.port());
            for (int i = 0; i < kRequests; ++i) {
                const int v = 10 + t * kRequests + i;  // 10..109: 100+ is refused
                auto r = c.Post("/api/parameters", "{\"text\":\"(3," + std::to_string(v) + ")\"}", "application/json");
                if (!r || r->status != (v <= 100 ? 200 : 422)) ++failures;
                auto s = c.Get("/api/status");
                if (!s || s->status != 200) ++failures;
                if (i % 10 == 0) {
                    auto f = c.Post("/api/flush", "", "application/json");
                    if (!f || f->status != 200) ++failures;
                }
            }
        });
    }
    for (std::thread& t : threads) t.join();
    EXPECT_EQ(0, failures.load());
    const int last = value(3);
    EXPECT_GE(last, 10);
    EXPECT_LE(last, 100);
    int status = 0;
    post("/api/flush", "", status);
    EXPECT_EQ(200, status);
    std::map<int, int> saved;
    ASSERT_TRUE(SensorParameterParser::parseSensorParameter(schemeFile(), saved));
    EXPECT_EQ(last, saved[3]);
    EXPECT_EQ(value(1), saved[1]);
}

// The command itself: camsim serve as a program of its own.
class CamSimServeCommand : public ::testing::Test {
protected:
    void SetUp() override {
        char tmpl[] = "/tmp/camsim-serve-cli-XXXXXX";
        ASSERT_NE(nullptr, ::mkdtemp(tmpl));
        dir = tmpl;
    }
    void TearDown() override { ::nftw(dir.c_str(), testutil::removeEntry, 16, FTW_DEPTH | FTW_PHYS); }
    std::string dir;
};

TEST_F(CamSimServeCommand, ServesOnTheLoopbackUntilTerminated) {
    CamsimChild child;
    ASSERT_TRUE(child.start({"--root", dir + "/camroot", "--time", "10:00", "serve", "--port", "0"}));
    const std::string said = "camsim serve: listening on http://127.0.0.1:";
    ASSERT_TRUE(child.waitFor(said, 60)) << child.output();
    ASSERT_TRUE(child.waitFor("/ (no authentication", 10)) << child.output();
    const int port = std::atoi(child.output().c_str() + child.output().find(said) + said.size());
    ASSERT_GT(port, 0);
    {
        httplib::Client c("127.0.0.1", port);
        auto r = c.Get("/api/status");
        ASSERT_TRUE(r);
        EXPECT_EQ(200, r->status);
        EXPECT_EQ("day", json::parse(r->body)["dayNight"]);
        r = c.Post("/api/parameters", "(1,66)", "text/plain");
        ASSERT_TRUE(r);
        EXPECT_EQ(200, r->status);
    }
    ::kill(child.pid(), SIGTERM);
    CamsimChild::Result end = child.finish(30);
    EXPECT_EQ(0, end.exitCode) << end.output;
    EXPECT_NE(std::string::npos, end.output.find("camsim serve: stopping"));
    // The value set and not saved is named as camsim leaves.
    EXPECT_NE(std::string::npos, end.output.find("brightness=66")) << end.output;
    // Nothing listens there any more.
    httplib::Client after("127.0.0.1", port);
    after.set_connection_timeout(2);
    EXPECT_FALSE(after.Get("/api/status"));
}

TEST_F(CamSimServeCommand, RefusesABadPortAndAnAddressNotOfThisMachine) {
    CamsimChild::Result bad = CamsimChild::run({"serve", "--port", "70000"});
    EXPECT_EQ(2, bad.exitCode);
    EXPECT_NE(std::string::npos, bad.output.find("--port wants 0-65535")) << bad.output;
    // 192.0.2.1 is a documentation address: no machine has it.
    CamsimChild::Result away =
        CamsimChild::run({"--root", dir + "/camroot", "serve", "--port", "0", "--listen", "192.0.2.1"});
    EXPECT_EQ(2, away.exitCode);
    EXPECT_NE(std::string::npos, away.output.find("cannot listen on 192.0.2.1")) << away.output;
}

}  // namespace
