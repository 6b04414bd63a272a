#include "camsim/CamSimServer.h"

#include <httplib.h>
#include <sched.h>

#include <chrono>
#include <map>
#include <nlohmann/json.hpp>
#include <vector>

#include "camsim/CamSim.h"
#include "camsim/CommandLine.h"
#include "camsim/WebAssets.h"
#include "platform/ConfigFileNameConst.h"
#include "platform/SensorLanguageConfigParser.h"
#include "platform/SensorParameterParser.h"
#include "storage/SensorFile.h"

namespace camsim {
namespace {

using nlohmann::json;

const char* const kJson = "application/json; charset=utf-8";
// Longest run of the virtual clock one request may ask for.
const int kMaxRunSeconds = 3600;
// Connections a browser keeps open each hold a worker until they close; enough
// workers that several tabs never wait for one another.
const size_t kWorkers = 32;
const time_t kKeepAliveSeconds = 2;

void reply(httplib::Response& res, int status, const json& body) {
    res.status = status;
    // Lines that a file or the library printed may hold any bytes: replaced, not thrown on.
    res.set_content(body.dump(-1, ' ', false, json::error_handler_t::replace), kJson);
}

void fail(httplib::Response& res, int status, const std::string& message) { reply(res, status, {{"error", message}}); }

// Whether a Host header names this machine by address or as localhost ("127.0.0.1:8080",
// "[::1]:8080", "localhost:8080"), not by a name that some DNS server answers for.
bool hostIsAddress(const std::string& host) {
    if (!host.empty() && host[0] == '[') return host.find(']') != std::string::npos;
    const std::string name = host.substr(0, host.rfind(':'));
    if (name == "localhost") return true;
    if (name.empty()) return false;
    for (char c : name)
        if ((c < '0' || c > '9') && c != '.') return false;
    return true;
}

// The request's body as a JSON object; otherwise a 400 with the reason, and false.
bool objectBody(const httplib::Request& req, httplib::Response& res, json& body) {
    try {
        body = json::parse(req.body);
    } catch (const json::parse_error& e) {
        fail(res, 400, std::string("malformed JSON: ") + e.what());
        return false;
    }
    if (!body.is_object()) {
        fail(res, 400, "the body must be a JSON object");
        return false;
    }
    return true;
}

// A whole number member of the body in [low, high]; otherwise a 400, and false.
bool intMember(const json& body, const char* name, int low, int high, httplib::Response& res, int& value) {
    auto it = body.find(name);
    if (it == body.end() || !it->is_number_integer() || it->get<long long>() < low || it->get<long long>() > high) {
        fail(res, 400,
             std::string("'") + name + "' must be a whole number from " + std::to_string(low) + " to " +
                 std::to_string(high));
        return false;
    }
    value = static_cast<int>(it->get<long long>());
    return true;
}

json valuesJson(const std::map<int, int>& values) {
    json out = json::object();
    for (const auto& kv : values) out[std::to_string(kv.first)] = kv.second;
    return out;
}

// The last line camsim printed for a command, without its "error: " mark.
std::string lastLine(const std::vector<std::string>& lines) {
    if (lines.empty()) return std::string();
    const std::string& l = lines.back();
    return l.compare(0, 7, "error: ") == 0 ? l.substr(7) : l;
}

}  // namespace

CamSimServer::CamSimServer(CamSim& sim) : m_sim(sim) {}

CamSimServer::~CamSimServer() { stop(); }

bool CamSimServer::start(const std::string& address, int port, std::string& error) {
    m_pServer.reset(new httplib::Server());
    httplib::Server& s = *m_pServer;
    s.new_task_queue = [] { return new httplib::ThreadPool(kWorkers); };
    s.set_keep_alive_timeout(kKeepAliveSeconds);
    // Small answers go out at once rather than waiting for the peer's acknowledgement.
    s.set_tcp_nodelay(true);
    s.set_payload_max_length(kMaxBodyBytes);
    routes();
    m_nPort = port == 0 ? s.bind_to_any_port(address) : (s.bind_to_port(address, port) ? port : -1);
    if (m_nPort <= 0) {
        error = "cannot listen on " + address + " port " + std::to_string(port) +
                " (address not of this machine, or the port in use)";
        m_pServer.reset();
        return false;
    }
    m_thread = std::thread([this] {
        // The camera's threads share one CPU under the batch policy (SimScheduling.h);
        // the server's (this one and the workers it starts) answer a browser as any
        // program does, on every CPU under the normal policy, so that a busy machine
        // does not queue them behind everything else on that one CPU.
        cpu_set_t all;
        CPU_ZERO(&all);
        for (int cpu = 0; cpu < CPU_SETSIZE; ++cpu) CPU_SET(cpu, &all);
        ::sched_setaffinity(0, sizeof(all), &all);
        struct sched_param none {};
        ::sched_setscheduler(0, SCHED_OTHER, &none);
        m_pServer->listen_after_bind();
    });
    // stop() only ends a server that is running: wait until it is.
    while (!s.is_running()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return true;
}

void CamSimServer::stop() {
    if (!m_pServer) return;
    m_pServer->stop();
    if (m_thread.joinable()) m_thread.join();
    m_pServer.reset();
}

void CamSimServer::routes() {
    httplib::Server& s = *m_pServer;
    s.Get("/api/parameters", [this](const httplib::Request&, httplib::Response& res) { getParameters(res); });
    s.Post("/api/parameters",
           [this](const httplib::Request& req, httplib::Response& res) { postParameters(req, res); });
    s.Post("/api/flush", [this](const httplib::Request&, httplib::Response& res) { postFlush(res); });
    s.Get("/api/status", [this](const httplib::Request&, httplib::Response& res) { getStatus(res); });
    s.Post("/api/light", [this](const httplib::Request& req, httplib::Response& res) { postLight(req, res); });
    s.Post("/api/time", [this](const httplib::Request& req, httplib::Response& res) { postTime(req, res); });
    s.Post("/api/run", [this](const httplib::Request& req, httplib::Response& res) { postRun(req, res); });
    s.Get("/api/languages", [this](const httplib::Request&, httplib::Response& res) { getLanguages(res); });
    s.Get(R"(/api/ui/([^/]+))", [this](const httplib::Request& req, httplib::Response& res) { getTexts(req, res); });
    s.Get(R"(/[^/]*)", [](const httplib::Request& req, httplib::Response& res) {
        const WebAsset* asset = findWebAsset(req.path);
        if (asset == nullptr) {
            fail(res, 404, "no page " + req.path);
            return;
        }
        res.set_header("Cache-Control", "no-cache");
        res.set_content(asset->data, asset->size, asset->contentType);
    });
    // A page of another site that the browser shows may post to this address too
    // (a form or a fetch needs no permission for that), also under a name of its
    // own that its DNS server points at this address: a change must come from this
    // server's own page, reached by address or as localhost, or from a client that
    // names no origin (curl, tests).
    s.set_pre_routing_handler([](const httplib::Request& req, httplib::Response& res) {
        if (req.method == "GET" || req.method == "HEAD" || !req.has_header("Origin"))
            return httplib::Server::HandlerResponse::Unhandled;
        const std::string origin = req.get_header_value("Origin");
        const std::string host = req.get_header_value("Host");
        if (origin == "http://" + host && hostIsAddress(host)) return httplib::Server::HandlerResponse::Unhandled;
        fail(res, 403,
             origin == "http://" + host
                 ? "refused: a change from a page reached by the name " + host +
                       "; open the page by the server's address (or localhost)"
                 : "refused: a request from the page of another origin (" + origin + ")");
        return httplib::Server::HandlerResponse::Handled;
    });
    // Anything else: a JSON error rather than an empty page. A handler's own
    // error body stays as it is.
    s.set_error_handler([](const httplib::Request& req, httplib::Response& res) {
        if (!res.body.empty()) return;
        if (res.status == 413)
            fail(res, 413, "the body is larger than " + std::to_string(kMaxBodyBytes / 1024) + " KiB");
        else if (res.status == 404)
            fail(res, 404, "nothing at " + req.method + " " + req.path);
        else
            fail(res, res.status, "request refused (HTTP " + std::to_string(res.status) + ")");
    });
    s.set_exception_handler([](const httplib::Request&, httplib::Response& res, std::exception_ptr ep) {
        std::string what = "unknown";
        try {
            std::rethrow_exception(ep);
        } catch (const std::exception& e) {
            what = e.what();
        } catch (...) {
        }
        fail(res, 500, "the request failed: " + what);
    });
}

void CamSimServer::getParameters(httplib::Response& res) {
    std::map<int, int> values;
    if (!m_sim.parameterValues(values)) {
        fail(res, 503, "the controller gave no parameters");
        return;
    }
    json names = json::object();
    for (const auto& kv : values) {
        const char* name = m_sim.parameterName(kv.first);
        if (name != nullptr) names[std::to_string(kv.first)] = name;
    }
    reply(res, 200,
          {{"module", m_sim.moduleName()},
           {"text", SensorParameterParser::createSensorParameterString(values)},
           {"values", valuesJson(values)},
           {"names", names}});
}

void CamSimServer::postParameters(const httplib::Request& req, httplib::Response& res) {
    std::string text;
    if (req.get_header_value("Content-Type").compare(0, 10, "text/plain") == 0) {
        text = req.body;
    } else {
        json body;
        if (!objectBody(req, res, body)) return;
        auto it = body.find("text");
        if (it == body.end() || !it->is_string()) {
            fail(res, 400, "'text' must be a parameter list text such as \"(1,50)(3,40)\"");
            return;
        }
        text = it->get<std::string>();
    }
    text = trim(text);
    std::map<int, int> values;
    if (text.empty() || text[0] != '(' || !SensorParameterParser::parseSensorParameter(text, values) ||
        values.empty()) {
        fail(res, 400, "not a parameter list: expected (id,value)(id,value)...");
        return;
    }
    // The command line holds the text as one word: no blanks or quotes in it.
    std::string word;
    for (char c : text)
        if (c != ' ' && c != '\t' && c != '\r' && c != '\n') word += c;
    if (word.find('"') != std::string::npos) {
        fail(res, 400, "not a parameter list: expected (id,value)(id,value)...");
        return;
    }
    std::vector<std::string> lines;
    CamSim::Refusal refusal;
    if (m_sim.run("set " + word, lines, &refusal)) {
        reply(res, 200, {{"accepted", true}, {"values", valuesJson(values)}, {"message", lastLine(lines)}});
        return;
    }
    json out = {{"accepted", false}, {"message", lastLine(lines)}};
    if (refusal.id != 0) {
        out["id"] = refusal.id;
        const char* name = m_sim.parameterName(refusal.id);
        if (name != nullptr) out["name"] = name;
        out["reason"] = refusal.reason.empty() ? lastLine(lines) : refusal.reason;
    } else {
        out["reason"] = lastLine(lines);
    }
    reply(res, 422, out);
}

void CamSimServer::postFlush(httplib::Response& res) {
    std::vector<std::string> lines;
    const bool ok = m_sim.run("flush", lines);
    std::string message;
    for (const std::string& l : lines) message += (message.empty() ? "" : "\n") + l;
    reply(res, ok ? 200 : 409, {{"saved", ok}, {"message", message}});
}

void CamSimServer::getStatus(httplib::Response& res) {
    const CamSim::Snapshot s = m_sim.snapshot();
    reply(res, 200,
          {{"deviceTime", s.deviceTime},
           {"clockMs", s.clockMs},
           {"dayNight", s.dayNight == 1 ? "day" : s.dayNight == 0 ? "night" : "-"},
           {"dayNightMode", s.dayNightMode},
           {"dayNightSource", s.dayNightSource},
           {"picture", s.picture},
           {"lamps", s.lamps},
           {"scheme", s.scheme},
           {"schemeMode", s.schemeAuto ? "auto" : "manual"},
           {"light", s.light},
           {"lightText", s.lightText},
           {"unsaved", s.unsaved}});
}

void CamSimServer::postLight(const httplib::Request& req, httplib::Response& res) {
    json body;
    int level = 0;
    if (!objectBody(req, res, body) || !intMember(body, "level", 0, 100, res, level)) return;
    std::vector<std::string> lines;
    const bool ok = m_sim.run("light " + std::to_string(level), lines);
    reply(res, ok ? 200 : 500, {{"ok", ok}, {"light", level}, {"message", lastLine(lines)}});
}

void CamSimServer::postTime(const httplib::Request& req, httplib::Response& res) {
    json body;
    if (!objectBody(req, res, body)) return;
    auto it = body.find("time");
    int h = 0, m = 0, sec = 0;
    if (it == body.end() || !it->is_string() || !parseTimeOfDay(it->get<std::string>(), h, m, sec)) {
        fail(res, 400, "'time' must be a time of day \"HH:MM\" or \"HH:MM:SS\" (00:00 to 23:59:59)");
        return;
    }
    char text[16];
    std::snprintf(text, sizeof(text), "%02d:%02d:%02d", h, m, sec);
    std::vector<std::string> lines;
    const bool ok = m_sim.run(std::string("time ") + text, lines);
    reply(res, ok ? 200 : 500, {{"ok", ok}, {"message", lastLine(lines)}});
}

void CamSimServer::postRun(const httplib::Request& req, httplib::Response& res) {
    json body;
    int seconds = 0;
    if (!objectBody(req, res, body) || !intMember(body, "seconds", 1, kMaxRunSeconds, res, seconds)) return;
    std::vector<std::string> lines;
    const bool ok = m_sim.run("run " + std::to_string(seconds) + "s", lines);
    reply(res, ok ? 200 : 500, {{"ok", ok}, {"message", lastLine(lines)}});
}

void CamSimServer::getLanguages(httplib::Response& res) {
    std::vector<SensorLanguageConfig> list;
    if (!SensorLanguageConfigParser::parse(ConfigFileNameConst::getSensorLanguageConfigFileName(), list)) {
        fail(res, 500, "the language list " + ConfigFileNameConst::getSensorLanguageConfigFileName() +
                           " could not be read");
        return;
    }
    json out = json::array();
    for (const SensorLanguageConfig& l : list) out.push_back({{"id", l.getLanguageId()}, {"folder", l.getFolderName()}});
    reply(res, 200, {{"languages", out}});
}

void CamSimServer::getTexts(const httplib::Request& req, httplib::Response& res) {
    const std::string word = req.matches[1];
    int id = 0;
    if (!parseInt(word, id)) {
        fail(res, 400, "'" + word + "' is not a language id (a whole number; GET /api/languages lists them)");
        return;
    }
    std::vector<SensorLanguageConfig> list;
    SensorLanguageConfigParser::parse(ConfigFileNameConst::getSensorLanguageConfigFileName(), list);
    const SensorLanguageConfig* language = nullptr;
    for (const SensorLanguageConfig& l : list)
        if (l.getLanguageId() == id) language = &l;
    if (language == nullptr) {
        fail(res, 404, "no language " + word + " in " + ConfigFileNameConst::getSensorLanguageConfigFileName());
        return;
    }
    // Prepared afresh from the root's files, as the camera application does
    // when it builds its pages: a style or language file edited shows at the
    // next load.
    SensorFile file;
    if (!file.init("", "")) {
        fail(res, 500, "the web-interface texts could not be prepared from the root's files");
        return;
    }
    reply(res, 200,
          {{"language", id},
           {"folder", language->getFolderName()},
           {"style", file.getUIStyleConfig()},
           {"common", file.getUICommonConfig(id)},
           {"texts", file.getUILanguageConfig(id)}});
}

}  // namespace camsim
