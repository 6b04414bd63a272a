#pragma once
// The simulator camera as a child process of a test: started with arguments,
// fed commands on its standard input, read on its standard output (and error),
// interrupted with SIGINT as Ctrl-C does.
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <climits>
#include <string>
#include <vector>

class CamsimChild {
public:
    struct Result {
        bool started = false;
        int exitCode = -1;
        std::string output;
        double seconds = 0;
    };

    static std::string path() {
        char self[PATH_MAX];
        ssize_t n = ::readlink("/proc/self/exe", self, sizeof(self) - 1);
        if (n <= 0) return std::string();
        self[n] = '\0';
        std::string dir(self);
        dir = dir.substr(0, dir.rfind('/'));  // .../tests
        return dir.substr(0, dir.rfind('/')) + "/tools/camsim";
    }

    // Runs camsim to its end with standard input from /dev/null (or `input`).
    static Result run(const std::vector<std::string>& args, int timeoutSeconds = 60, const std::string& input = "") {
        CamsimChild child;
        child.start(args);
        if (!input.empty()) child.send(input);
        child.closeInput();
        return child.finish(timeoutSeconds);
    }

    CamsimChild() = default;
    ~CamsimChild() {
        if (m_pid > 0) {
            ::kill(m_pid, SIGKILL);
            ::waitpid(m_pid, nullptr, 0);
        }
        closeInput();
        if (m_out >= 0) ::close(m_out);
    }
    CamsimChild(const CamsimChild&) = delete;
    CamsimChild& operator=(const CamsimChild&) = delete;

    // Starts camsim with the arguments; its standard input is a pipe of this object.
    // On a terminal (`onTerminal`), camsim's standard input, output and error are a
    // pseudo-terminal whose far end this object holds, and that terminal is camsim's
    // controlling terminal: a Ctrl-C sent on it interrupts camsim as a user's does.
    bool start(const std::vector<std::string>& args, bool onTerminal = false) {
        int in[2] = {-1, -1}, out[2] = {-1, -1}, status[2];  // status tells the parent whether exec worked
        int master = -1, slave = -1;
        if (onTerminal) {
            if (::openpty(&master, &slave, nullptr, nullptr, nullptr) != 0) return false;
        } else if (::pipe(in) != 0 || ::pipe(out) != 0) {
            return false;
        }
        if (::pipe(status) != 0) return false;
        ::fcntl(status[1], F_SETFD, FD_CLOEXEC);
        m_begin = std::chrono::steady_clock::now();
        m_pid = ::fork();
        if (m_pid == 0) {
            if (onTerminal) {
                ::setsid();
                ::ioctl(slave, TIOCSCTTY, 0);
                ::dup2(slave, STDIN_FILENO);
                ::dup2(slave, STDOUT_FILENO);
                ::dup2(slave, STDERR_FILENO);
                ::close(master);
                ::close(slave);
            } else {
                ::dup2(in[0], STDIN_FILENO);
                ::dup2(out[1], STDOUT_FILENO);
                ::dup2(out[1], STDERR_FILENO);
                ::close(in[1]);
                ::close(out[0]);
            }
            ::close(status[0]);
            std::vector<std::string> words;
#ifdef SENSORCTL_TEST_EMULATOR
            // A cross build: camsim is a target program too and runs under the emulator.
            std::string emulator = SENSORCTL_TEST_EMULATOR;
            size_t from = 0;
            for (size_t bar = emulator.find('|'); bar != std::string::npos; bar = emulator.find('|', from)) {
                words.push_back(emulator.substr(from, bar - from));
                from = bar + 1;
            }
            words.push_back(emulator.substr(from));
#endif
            words.push_back(path());
            words.insert(words.end(), args.begin(), args.end());
            std::vector<char*> argv;
            for (const std::string& w : words) argv.push_back(const_cast<char*>(w.c_str()));
            argv.push_back(nullptr);
            ::execv(words[0].c_str(), argv.data());
            int err = errno;
            ssize_t ignored = ::write(status[1], &err, sizeof(err));
            (void)ignored;
            ::_exit(127);
        }
        ::close(status[1]);
        if (onTerminal) {
            ::close(slave);
            m_in = ::dup(master);
            m_out = master;
        } else {
            ::close(in[0]);
            ::close(out[1]);
            m_in = in[1];
            m_out = out[0];
        }
        ::fcntl(m_in, F_SETFD, FD_CLOEXEC);
        ::fcntl(m_out, F_SETFD, FD_CLOEXEC);
        int execErr = 0;
        m_started = m_pid > 0 && ::read(status[0], &execErr, sizeof(execErr)) == 0;
        ::close(status[0]);
        return m_started;
    }

    bool started() const { return m_started; }
    pid_t pid() const { return m_pid; }
    const std::string& output() const { return m_output; }

    void send(const std::string& text) {
        if (m_in < 0) return;
        ssize_t ignored = ::write(m_in, text.data(), text.size());
        (void)ignored;
    }
    void closeInput() {
        if (m_in >= 0) ::close(m_in);
        m_in = -1;
    }
    void interrupt() {
        if (m_pid > 0) ::kill(m_pid, SIGINT);
    }

    // Reads output until `text` appears after position `from` (true) or the
    // time is up or the output ends (false).
    bool waitFor(const std::string& text, int timeoutSeconds = 30, size_t from = 0) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(timeoutSeconds);
        while (m_output.find(text, from) == std::string::npos) {
            if (!readSome(deadline)) return m_output.find(text, from) != std::string::npos;
        }
        return true;
    }

    // Reads to the end of the output and waits for the process.
    Result finish(int timeoutSeconds = 60) {
        Result r;
        r.started = m_started;
        const auto deadline = m_begin + std::chrono::seconds(timeoutSeconds);
        while (readSome(deadline)) {
        }
        if (std::chrono::steady_clock::now() >= deadline && m_pid > 0) {
            ::kill(m_pid, SIGKILL);
            m_output += "\n[killed: timeout]\n";
        }
        int st = 0;
        if (m_pid > 0) ::waitpid(m_pid, &st, 0);
        m_pid = -1;
        r.exitCode = WIFEXITED(st) ? WEXITSTATUS(st) : -1;
        r.output = m_output;
        r.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - m_begin).count();
        return r;
    }

private:
    // False at the end of the output or at the deadline.
    bool readSome(std::chrono::steady_clock::time_point deadline) {
        if (m_out < 0) return false;
        int left = static_cast<int>(
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now()).count());
        if (left <= 0) return false;
        struct pollfd p = {m_out, POLLIN, 0};
        int ready = ::poll(&p, 1, left);
        if (ready < 0 && errno == EINTR) return true;
        if (ready <= 0) return false;
        char buffer[4096];
        ssize_t n = ::read(m_out, buffer, sizeof(buffer));
        if (n <= 0) {
            ::close(m_out);
            m_out = -1;
            return false;
        }
        m_output.append(buffer, static_cast<size_t>(n));
        return true;
    }

    pid_t m_pid = -1;
    int m_in = -1;
    int m_out = -1;
    bool m_started = false;
    std::string m_output;
    std::chrono::steady_clock::time_point m_begin;
};
