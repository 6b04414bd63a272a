#include "platform/TermiosUARTController.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <string>

#include "platform/PlatformRoot.h"

namespace {

struct BaudEntry {
    int baud;
    speed_t speed;
};
const BaudEntry kBauds[] = {{1200, B1200},   {2400, B2400},   {4800, B4800},   {9600, B9600},
                            {19200, B19200}, {38400, B38400}, {57600, B57600}, {115200, B115200}};

bool speedOf(int baud, speed_t& speed) {
    for (const BaudEntry& e : kBauds) {
        if (e.baud == baud) {
            speed = e.speed;
            return true;
        }
    }
    return false;
}

int64_t monotonicMs() {
    struct timespec ts;
    ::clock_gettime(CLOCK_MONOTONIC, &ts);
    return static_cast<int64_t>(ts.tv_sec) * 1000 + ts.tv_nsec / 1000000;
}

// Raw mode with the given line settings; false when the settings are not valid.
bool applyLine(int fd, int baud, int dataBits, int stopBits, int parity) {
    speed_t speed;
    if (!speedOf(baud, speed) || dataBits < 5 || dataBits > 8 || stopBits < 1 || stopBits > 2 || parity < 0 ||
        parity > 2)
        return false;
    struct termios t;
    if (::tcgetattr(fd, &t) != 0) return false;
    ::cfmakeraw(&t);
    t.c_iflag &= ~static_cast<tcflag_t>(IXON | IXOFF | IXANY | INPCK | ISTRIP);
    t.c_cflag &= ~static_cast<tcflag_t>(CSIZE | CSTOPB | PARENB | PARODD | CRTSCTS);
    t.c_cflag |= CLOCAL | CREAD;
    static const tcflag_t kSizes[] = {CS5, CS6, CS7, CS8};
    t.c_cflag |= kSizes[dataBits - 5];
    if (stopBits == 2) t.c_cflag |= CSTOPB;
    if (parity != 0) {
        t.c_cflag |= PARENB;
        if (parity == 1) t.c_cflag |= PARODD;
        t.c_iflag |= INPCK;
    }
    // The descriptor is non-blocking; reads wait with poll, so VMIN/VTIME play no part.
    t.c_cc[VMIN] = 0;
    t.c_cc[VTIME] = 0;
    if (::cfsetispeed(&t, speed) != 0 || ::cfsetospeed(&t, speed) != 0) return false;
    return ::tcsetattr(fd, TCSANOW, &t) == 0;
}

}  // namespace

TermiosUARTController::~TermiosUARTController() {
    for (int fd : m_fds)
        if (fd >= 0) ::close(fd);
}

bool TermiosUARTController::isValidLine(int baudRate, int dataBits, int stopBits, int parity) {
    speed_t speed;
    return speedOf(baudRate, speed) && dataBits >= 5 && dataBits <= 8 && stopBits >= 1 && stopBits <= 2 &&
           parity >= 0 && parity <= 2;
}

int TermiosUARTController::fdOf(int port) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (port < 0 || port >= static_cast<int>(m_fds.size())) return -1;
    return m_fds[static_cast<size_t>(port)];
}

int TermiosUARTController::open(const char* device) {
    if (device == nullptr || *device == '\0') return -1;
    std::string path = PlatformRoot::resolve(device);
    int fd = ::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) return -1;
    if (!::isatty(fd) || !applyLine(fd, 9600, 8, 1, 0)) {
        ::close(fd);
        return -1;
    }
    ::tcflush(fd, TCIOFLUSH);
    std::lock_guard<std::mutex> lock(m_mutex);
    for (size_t i = 0; i < m_fds.size(); ++i) {
        if (m_fds[i] < 0) {
            m_fds[i] = fd;
            return static_cast<int>(i);
        }
    }
    if (m_fds.size() >= MaxPorts) {
        ::close(fd);
        return -1;
    }
    m_fds.push_back(fd);
    return static_cast<int>(m_fds.size() - 1);
}

int TermiosUARTController::close(int port) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (port < 0 || port >= static_cast<int>(m_fds.size()) || m_fds[static_cast<size_t>(port)] < 0) return -1;
    ::close(m_fds[static_cast<size_t>(port)]);
    m_fds[static_cast<size_t>(port)] = -1;
    return 1;
}

int TermiosUARTController::setParameter(int port, int baudRate, int dataBits, int stopBits, int parity) {
    int fd = fdOf(port);
    if (fd < 0) return -1;
    return applyLine(fd, baudRate, dataBits, stopBits, parity) ? 1 : 0;
}

int TermiosUARTController::write(int port, const char* data, int length) {
    int fd = fdOf(port);
    if (fd < 0) return -1;
    if (data == nullptr || length < 0) return -1;
    unsigned long calls = 0;
    int done = 0;
    while (done < length) {
        ++calls;
        ssize_t n = ::write(fd, data + done, static_cast<size_t>(length - done));
        if (n > 0) {
            done += static_cast<int>(n);
            continue;
        }
        if (n < 0 && errno == EINTR) continue;
        if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
            // The output queue is full: wait until it drains a little.
            struct pollfd p = {fd, POLLOUT, 0};
            ++calls;
            if (::poll(&p, 1, 1000) < 0 && errno != EINTR) break;
            if (p.revents & (POLLERR | POLLHUP | POLLNVAL)) break;
            continue;
        }
        break;
    }
    m_nSyscalls.fetch_add(calls, std::memory_order_relaxed);
    return done;
}

int TermiosUARTController::read(int port, char* buffer, int capacity, int timeout) {
    int fd = fdOf(port);
    if (fd < 0) return -1;
    if (buffer == nullptr || capacity < 1) return 0;
    unsigned long calls = 0;
    const int64_t deadline = monotonicMs() + static_cast<int64_t>(timeout < 0 ? 0 : timeout) * TimeoutUnitMs;
    int got = 0;
    for (;;) {
        // Take what is there first: a reply that has already arrived costs one call.
        ++calls;
        ssize_t n = ::read(fd, buffer + got, static_cast<size_t>(capacity - got));
        if (n > 0) {
            got += static_cast<int>(n);
            if (got >= capacity) break;
            continue;
        }
        if (n < 0 && errno == EINTR) continue;
        if (n < 0 && errno != EAGAIN && errno != EWOULDBLOCK) break;
        int64_t left = deadline - monotonicMs();
        if (left <= 0) break;
        struct pollfd p = {fd, POLLIN, 0};
        ++calls;
        int r = ::poll(&p, 1, static_cast<int>(left));
        if (r < 0 && errno != EINTR) break;
        if (r > 0 && (p.revents & (POLLNVAL | POLLERR))) break;
        if (r > 0 && (p.revents & POLLHUP) && !(p.revents & POLLIN)) break;
        if (r == 0) break;
    }
    m_nSyscalls.fetch_add(calls, std::memory_order_relaxed);
    return got;
}

unsigned long TermiosUARTController::getSystemCallCount() const {
    return m_nSyscalls.load(std::memory_order_relaxed);
}
