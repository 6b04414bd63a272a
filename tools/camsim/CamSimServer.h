#pragma once
#include <memory>
#include <string>
#include <thread>

namespace httplib {
class Server;
struct Request;
struct Response;
}  // namespace httplib

namespace camsim {

class CamSim;

// camsim serve: the image-settings pages of the simulated camera and a JSON API
// beside them (docs/camsim-http.md), over HTTP on one address. The pages are
// drawn in the browser from the texts that the library hands the web interface
// (SensorFile); every change goes to the camera through CamSim::run, which runs
// it as the prompt runs a command, one at a time with the clock's steps.
// No authentication: a development tool, bound to loopback unless told otherwise.
class CamSimServer {
public:
    // Largest request body taken (a parameter list, a JSON object); larger: 413.
    static const size_t kMaxBodyBytes = 64 * 1024;

    explicit CamSimServer(CamSim& sim);
    ~CamSimServer();
    CamSimServer(const CamSimServer&) = delete;
    CamSimServer& operator=(const CamSimServer&) = delete;

    // Binds the address and port (0: any free port) and starts serving on a
    // thread of its own. False, with the reason in `error`, when the address
    // cannot be bound.
    bool start(const std::string& address, int port, std::string& error);
    // Stops serving and waits for the requests under way.
    void stop();
    // The port bound (after start).
    int port() const { return m_nPort; }

private:
    void routes();
    void getParameters(httplib::Response& res);
    void postParameters(const httplib::Request& req, httplib::Response& res);
    void postFlush(httplib::Response& res);
    void getStatus(httplib::Response& res);
    void postLight(const httplib::Request& req, httplib::Response& res);
    void postTime(const httplib::Request& req, httplib::Response& res);
    void postRun(const httplib::Request& req, httplib::Response& res);
    void getLanguages(httplib::Response& res);
    void getTexts(const httplib::Request& req, httplib::Response& res);

    CamSim& m_sim;
    std::unique_ptr<httplib::Server> m_pServer;
    std::thread m_thread;
    int m_nPort = -1;
};

}  // namespace camsim
