// The termios serial port on a real kernel tty: a pseudo-terminal pair whose
// slave side is reached through the platform root, as "/dev/ttyS1" would be.
#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "TestRoot.h"
#include "platform/FsUtil.h"
#include "platform/TermiosUARTController.h"

using namespace testutil;

namespace {

// A pseudo-terminal pair; the slave is linked into the test root under `device`.
struct Pty {
    int master = -1;
    std::string slave;
    Pty(const TempRoot& root, const std::string& device) {
        master = ::posix_openpt(O_RDWR | O_NOCTTY);
        if (master < 0 || ::grantpt(master) != 0 || ::unlockpt(master) != 0) return;
        char name[128];
        if (::ptsname_r(master, name, sizeof(name)) != 0) return;
        slave = name;
        FsUtil::makeDirs(FsUtil::dirName(root.real(device)));
        if (::symlink(name, root.real(device).c_str()) != 0) slave.clear();
    }
    ~Pty() {
        if (master >= 0) ::close(master);
    }
    bool ok() const { return master >= 0 && !slave.empty(); }
    // What the port wrote, waiting up to `ms` for `n` bytes.
    std::string readMaster(size_t n, int ms = 1000) {
        std::string out;
        auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
        while (out.size() < n && std::chrono::steady_clock::now() < end) {
            struct pollfd p = {master, POLLIN, 0};
            if (::poll(&p, 1, 20) > 0) {
                char b[256];
                ssize_t r = ::read(master, b, sizeof(b));
                if (r > 0) out.append(b, static_cast<size_t>(r));
            }
        }
        return out;
    }
    struct termios attrs() const {
        struct termios t {};
        ::tcgetattr(master, &t);  // a pty master reports its slave's settings
        return t;
    }
};

class TermiosTest : public ::testing::Test {
protected:
    TempRoot root;
    Pty pty{root, "/dev/ttyS1"};
    TermiosUARTController uart;
    void SetUp() override {
        if (!pty.ok()) GTEST_SKIP() << "no pseudo-terminal";
    }
};

}  // namespace

TEST_F(TermiosTest, OpenPutsTheLineInRawModeAndSetParameterAppliesSettings) {
    int port = uart.open("/dev/ttyS1");
    ASSERT_GE(port, 0);
    struct termios t = pty.attrs();
    EXPECT_EQ(B9600, ::cfgetospeed(&t));
    EXPECT_EQ(CS8, t.c_cflag & CSIZE);
    EXPECT_EQ(0u, t.c_lflag & (ICANON | ECHO | ISIG | IEXTEN));
    EXPECT_EQ(0u, t.c_iflag & (IXON | IXOFF | ICRNL | INLCR | IGNCR));
    EXPECT_EQ(0u, t.c_oflag & OPOST);
    EXPECT_EQ(0u, t.c_cflag & CRTSCTS);
    EXPECT_NE(0u, t.c_cflag & CLOCAL);
    EXPECT_NE(0u, t.c_cflag & CREAD);

    // A pseudo-terminal keeps the speed, the stop bits and the odd-parity flag as
    // set; its driver always reports 8 data bits without parity enabled.
    ASSERT_EQ(1, uart.setParameter(port, 38400, 7, 2, 1));
    t = pty.attrs();
    EXPECT_EQ(B38400, ::cfgetospeed(&t));
    EXPECT_EQ(B38400, ::cfgetispeed(&t));
    EXPECT_NE(0u, t.c_cflag & CSTOPB);
    EXPECT_NE(0u, t.c_cflag & PARODD);

    ASSERT_EQ(1, uart.setParameter(port, 115200, 5, 1, 2));
    t = pty.attrs();
    EXPECT_EQ(B115200, ::cfgetospeed(&t));
    EXPECT_EQ(0u, t.c_cflag & CSTOPB);
    EXPECT_EQ(0u, t.c_cflag & PARODD);

    // Refused settings leave the line as it was.
    EXPECT_EQ(0, uart.setParameter(port, 1234, 8, 1, 0));
    EXPECT_EQ(0, uart.setParameter(port, -9600, 8, 1, 0));
    EXPECT_EQ(0, uart.setParameter(port, 9600, 9, 1, 0));
    EXPECT_EQ(0, uart.setParameter(port, 9600, 8, 3, 0));
    EXPECT_EQ(0, uart.setParameter(port, 9600, 8, 1, 3));
    t = pty.attrs();
    EXPECT_EQ(B115200, ::cfgetospeed(&t));
    for (int baud : {1200, 2400, 4800, 9600, 19200, 57600}) EXPECT_EQ(1, uart.setParameter(port, baud, 8, 1, 0)) << baud;
}

TEST_F(TermiosTest, ReplyArrivingByteByByteIsReadWhole) {
    int port = uart.open("/dev/ttyS1");
    ASSERT_GE(port, 0);
    ASSERT_EQ(6, uart.write(port, "\x81\x01\x04\x5B\x02\xFF", 6));
    EXPECT_EQ(std::string("\x81\x01\x04\x5B\x02\xFF", 6), pty.readMaster(6));
    std::thread module([&] {
        for (char b : std::string("\x90\x41\xFF", 3)) {
            std::this_thread::sleep_for(std::chrono::milliseconds(30));
            ASSERT_EQ(1, ::write(pty.master, &b, 1));
        }
    });
    char buf[3] = {0, 0, 0};
    int n = uart.read(port, buf, 3, 4);
    module.join();
    ASSERT_EQ(3, n);
    EXPECT_EQ(std::string("\x90\x41\xFF", 3), std::string(buf, 3));
}

TEST_F(TermiosTest, ReadTimeOutIsHonoured) {
    int port = uart.open("/dev/ttyS1");
    ASSERT_GE(port, 0);
    char buf[4];
    auto t0 = std::chrono::steady_clock::now();
    EXPECT_EQ(0, uart.read(port, buf, 4, 1));
    auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - t0).count();
    EXPECT_GE(ms, IUARTController::TimeoutUnitMs - 1);
    EXPECT_LT(ms, 10 * IUARTController::TimeoutUnitMs);
    // Two of four bytes: the read returns them at the time-out.
    ASSERT_EQ(2, ::write(pty.master, "\x90\x50", 2));
    EXPECT_EQ(2, uart.read(port, buf, 4, 1));
    // Time-out 0 takes what is there and does not wait.
    EXPECT_EQ(0, uart.read(port, buf, 4, 0));
}

TEST_F(TermiosTest, ClosedOrUnknownPortsAreRefused) {
    int port = uart.open("/dev/ttyS1");
    ASSERT_GE(port, 0);
    EXPECT_EQ(1, uart.close(port));
    EXPECT_EQ(-1, uart.close(port));
    char buf[2];
    EXPECT_EQ(-1, uart.write(port, "ab", 2));
    EXPECT_EQ(-1, uart.read(port, buf, 2, 1));
    EXPECT_EQ(-1, uart.setParameter(port, 9600, 8, 1, 0));
    EXPECT_EQ(-1, uart.write(7, "ab", 2));
    EXPECT_EQ(-1, uart.write(-1, "ab", 2));
    EXPECT_EQ(-1, uart.open("/dev/ttyS9"));  // no such device under the root
    EXPECT_EQ(-1, uart.open(""));
    EXPECT_EQ(-1, uart.open(nullptr));
    root.write("/dev/notatty", "x");
    EXPECT_EQ(-1, uart.open("/dev/notatty"));
}

TEST_F(TermiosTest, SeveralPortsAtOnce) {
    Pty second(root, "/dev/ttyS2");
    ASSERT_TRUE(second.ok());
    int a = uart.open("/dev/ttyS1");
    int b = uart.open("/dev/ttyS2");
    ASSERT_GE(a, 0);
    ASSERT_GE(b, 0);
    EXPECT_NE(a, b);
    ASSERT_EQ(1, uart.setParameter(b, 19200, 8, 1, 0));
    struct termios ta = pty.attrs();
    EXPECT_EQ(B9600, ::cfgetospeed(&ta));
    struct termios tb = second.attrs();
    EXPECT_EQ(B19200, ::cfgetospeed(&tb));
    ASSERT_EQ(1, uart.write(a, "A", 1));
    ASSERT_EQ(1, uart.write(b, "B", 1));
    EXPECT_EQ("A", pty.readMaster(1));
    EXPECT_EQ("B", second.readMaster(1));
    // A closed index is reused by the next open.
    ASSERT_EQ(1, uart.close(a));
    EXPECT_EQ(a, uart.open("/dev/ttyS1"));
}

TEST_F(TermiosTest, LongWriteFinishesPartialWrites) {
    int port = uart.open("/dev/ttyS1");
    ASSERT_GE(port, 0);
    // More than the tty's buffers hold: the write waits for the far end to read.
    std::string data(256 * 1024, '\0');
    for (size_t i = 0; i < data.size(); ++i) data[i] = static_cast<char>(i * 7);
    std::string got;
    std::thread reader([&] { got = pty.readMaster(data.size(), 20000); });
    unsigned long calls0 = uart.getSystemCallCount();
    EXPECT_EQ(static_cast<int>(data.size()), uart.write(port, data.data(), static_cast<int>(data.size())));
    reader.join();
    EXPECT_EQ(data, got);
    EXPECT_GT(uart.getSystemCallCount() - calls0, 2u);  // it took more than one write
}
