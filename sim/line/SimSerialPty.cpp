#include "line/SimSerialPty.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <termios.h>
#include <time.h>
#include <unistd.h>

#include "line/SimSerialDevice.h"

namespace {
int baudOf(speed_t s) {
    switch (s) {
    case B1200: return 1200;
    case B2400: return 2400;
    case B4800: return 4800;
    case B9600: return 9600;
    case B19200: return 19200;
    case B38400: return 38400;
    case B57600: return 57600;
    case B115200: return 115200;
    default: return 0;
    }
}
}  // namespace

SimSerialPty::SimSerialPty(SimSerialDevice& module, Clock clock) : m_module(module), m_clock(clock) {}

SimSerialPty::~SimSerialPty() { stop(); }

int64_t SimSerialPty::nowMs() {
    struct timespec ts;
    ::clock_gettime(CLOCK_MONOTONIC, &ts);
    return static_cast<int64_t>(ts.tv_sec) * 1000 + ts.tv_nsec / 1000000;
}

bool SimSerialPty::start() {
    if (m_nMaster >= 0) return true;
    int fd = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (fd < 0) return false;
    if (::grantpt(fd) != 0 || ::unlockpt(fd) != 0) {
        ::close(fd);
        return false;
    }
    char name[128];
    if (::ptsname_r(fd, name, sizeof(name)) != 0) {
        ::close(fd);
        return false;
    }
    m_strSlave = name;
    m_nSlaveKeep = ::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (m_nSlaveKeep >= 0) {
        struct termios t;
        if (::tcgetattr(m_nSlaveKeep, &t) == 0) {
            ::cfmakeraw(&t);
            ::cfsetispeed(&t, B9600);
            ::cfsetospeed(&t, B9600);
            ::tcsetattr(m_nSlaveKeep, TCSANOW, &t);
        }
    }
    int flags = ::fcntl(fd, F_GETFL);
    ::fcntl(fd, F_SETFL, flags | O_NONBLOCK);
    m_nMaster = fd;
    m_bStop = false;
    m_thread = std::thread([this] { run(); });
    return true;
}

void SimSerialPty::stop() {
    m_bStop = true;
    if (m_thread.joinable()) m_thread.join();
    if (m_nMaster >= 0) ::close(m_nMaster);
    if (m_nSlaveKeep >= 0) ::close(m_nSlaveKeep);
    m_nMaster = -1;
    m_nSlaveKeep = -1;
}

void SimSerialPty::run() {
    unsigned char buf[256];
    while (!m_bStop.load()) {
        // The line runs at the baud the slave side was set to.
        struct termios t;
        if (::tcgetattr(m_nMaster, &t) == 0) {
            int baud = baudOf(::cfgetospeed(&t));
            if (baud != 0 && baud != m_module.getLineBaud()) m_module.setLineBaud(baud);
        }
        // Sleep until input comes or the next byte is due (at most 5 ms, to see a stop).
        int64_t now = m_clock();
        int64_t next = m_module.nextOutputTime();
        int64_t waitMs = 5;
        if (next >= 0) waitMs = next <= now ? 0 : (next - now < 5 ? next - now : 5);
        struct pollfd p = {m_nMaster, POLLIN, 0};
        struct timespec ts = {0, static_cast<long>(waitMs) * 1000000L};
        int r = ::ppoll(&p, 1, &ts, nullptr);
        now = m_clock();
        if (r > 0 && (p.revents & POLLIN)) {
            ssize_t n = ::read(m_nMaster, buf, sizeof(buf));
            if (n > 0) m_module.receive(buf, static_cast<int>(n), now);
        }
        int n = m_module.takeOutput(buf, sizeof(buf), now);
        int done = 0;
        while (done < n && !m_bStop.load()) {
            ssize_t w = ::write(m_nMaster, buf + done, static_cast<size_t>(n - done));
            if (w > 0) {
                done += static_cast<int>(w);
            } else if (w < 0 && errno != EINTR && errno != EAGAIN) {
                break;
            } else {
                struct pollfd o = {m_nMaster, POLLOUT, 0};
                ::poll(&o, 1, 5);
            }
        }
    }
}
