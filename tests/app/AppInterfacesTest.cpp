#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>

#include "app/IGPIO.h"
#include "app/IUARTController.h"
#include "app/ModuleConfigure.h"
#include "app/VideoResolution.h"
#include "platform/SafePointer.h"

namespace {

class FakeUART : public IUARTController {
public:
    int open(const char* device) override {
        m_device = device;
        return 3;
    }
    int setParameter(int port, int baudRate, int dataBits, int stopBits, int parity) override {
        return port == 3 && baudRate == 9600 && dataBits == 8 && stopBits == 1 && parity == 0;
    }
    int write(int port, const char* data, int length) override {
        if (port != 3) return -1;
        m_written.assign(data, static_cast<size_t>(length));
        return length;
    }
    int read(int port, char* buffer, int capacity, int timeout) override {
        if (port != 3 || timeout < 0) return -1;
        int n = static_cast<int>(m_written.size()) < capacity ? static_cast<int>(m_written.size()) : capacity;
        std::memcpy(buffer, m_written.data(), static_cast<size_t>(n));
        return n;
    }
    std::string m_device;
    std::string m_written;
};

class MockGPIO : public IGPIO {
public:
    MOCK_METHOD(int, open, (), (override));
    MOCK_METHOD(int, close, (), (override));
    MOCK_METHOD(int, notifySensorReady, (), (override));
    MOCK_METHOD(int, setDirection, (int, int, int), (override));
    MOCK_METHOD(int, setLevel, (int, int, int), (override));
    MOCK_METHOD(int, getLevel, (int, int, int&), (override));
};

// The vtable slot of a virtual member function, read from its member function
// pointer: under the Itanium C++ ABI it holds 1 + the slot's byte offset; under
// the ARM C++ ABI (32 and 64 bit) it holds the byte offset and the low bit of the
// adjustment word marks it virtual.
template <class F>
long slotOf(F f) {
    static_assert(sizeof(F) == 2 * sizeof(std::intptr_t), "two-word member function pointer");
    std::intptr_t raw[2];
    std::memcpy(raw, &f, sizeof(raw));
#if defined(__arm__) || defined(__aarch64__)
    if ((raw[1] & 1) == 0) return -1;
    return static_cast<long>(raw[0] / static_cast<std::intptr_t>(sizeof(void*)));
#else
    if ((raw[0] & 1) == 0) return -1;
    return static_cast<long>((raw[0] - 1) / static_cast<std::intptr_t>(sizeof(void*)));
#endif
}

}  // namespace

TEST(AppInterfacesTest, UARTSlotOrder) {
    // Slots 0 and 1 hold the two destructor entries.
    EXPECT_EQ(slotOf(&IUARTController::open), 2);
    EXPECT_EQ(slotOf(&IUARTController::setParameter), 3);
    EXPECT_EQ(slotOf(&IUARTController::write), 4);
    EXPECT_EQ(slotOf(&IUARTController::read), 5);
}

TEST(AppInterfacesTest, GPIOSlotOrder) {
    EXPECT_EQ(slotOf(&IGPIO::open), 2);
    EXPECT_EQ(slotOf(&IGPIO::close), 3);
    EXPECT_EQ(slotOf(&IGPIO::notifySensorReady), 4);
    EXPECT_EQ(slotOf(&IGPIO::setDirection), 5);
    EXPECT_EQ(slotOf(&IGPIO::setLevel), 6);
    EXPECT_EQ(slotOf(&IGPIO::getLevel), 7);
}

TEST(AppInterfacesTest, UARTThroughASafePointer) {
    FakeUART* fake = new FakeUART;
    SafePointer<IUARTController> uart(fake);
    int port = uart->open("/dev/ttyS1");
    EXPECT_EQ(port, 3);
    EXPECT_EQ(fake->m_device, "/dev/ttyS1");
    EXPECT_NE(uart->setParameter(port, 9600, 8, 1, 0), 0);
    EXPECT_EQ(uart->setParameter(port, 4800, 8, 1, 0), 0);
    EXPECT_EQ(uart->write(port, "MENUON", 6), 6);
    char buf[4];
    EXPECT_EQ(uart->read(port, buf, sizeof(buf), 100), 4);
    EXPECT_EQ(std::string(buf, 4), "MENU");
}

TEST(AppInterfacesTest, GPIOCalls) {
    using ::testing::_;
    using ::testing::DoAll;
    using ::testing::Return;
    using ::testing::SetArgReferee;
    MockGPIO* mock = new MockGPIO;
    SafePointer<IGPIO> gpio(mock);
    EXPECT_CALL(*mock, notifySensorReady()).WillOnce(Return(1));
    EXPECT_CALL(*mock, setLevel(1, 5, 0)).WillOnce(Return(1));
    EXPECT_CALL(*mock, getLevel(1, 5, _)).WillOnce(DoAll(SetArgReferee<2>(1), Return(1)));
    EXPECT_NE(gpio->notifySensorReady(), 0);
    EXPECT_NE(gpio->setLevel(1, 5, 0), 0);
    int level = -1;
    EXPECT_NE(gpio->getLevel(1, 5, level), 0);
    EXPECT_EQ(level, 1);
}

TEST(AppInterfacesTest, ModuleConfigure) {
    ModuleConfigure empty;
    EXPECT_EQ(empty.getModuleId(), 0);
    EXPECT_EQ(empty.getDetail(), "");
    EXPECT_EQ(empty.getParameters(), "");
    ModuleConfigure m(88, "RS485=/dev/ttyS1;isInfrared=1", "RS485=9600,8,1,0");
    EXPECT_EQ(m.getModuleId(), 88);
    EXPECT_EQ(m.getDetail(), "RS485=/dev/ttyS1;isInfrared=1");
    EXPECT_EQ(m.getParameters(), "RS485=9600,8,1,0");
    ModuleConfigure copy = m;
    EXPECT_TRUE(copy == m);
    copy.setModuleId(5);
    copy.setDetail("a=1");
    copy.setParameters("b=2");
    copy.setType("sensor");
    EXPECT_EQ(copy.getModuleId(), 5);
    EXPECT_EQ(copy.getDetail(), "a=1");
    EXPECT_EQ(copy.getParameters(), "b=2");
    EXPECT_EQ(copy.getType(), "sensor");
    EXPECT_TRUE(copy != m);
}

TEST(AppInterfacesTest, VideoResolution) {
    VideoResolution none;
    EXPECT_EQ(none.getVideoWidth(), 0);
    EXPECT_EQ(none.getVideoHeight(), 0);
    VideoResolution r(1920, 1080);
    EXPECT_EQ(r.getVideoWidth(), 1920);
    EXPECT_EQ(r.getVideoHeight(), 1080);
    r.setVideoWidth(1280);
    r.setVideoHeight(720);
    EXPECT_EQ(r.getVideoWidth(), 1280);
    EXPECT_EQ(r.getVideoHeight(), 720);
    EXPECT_TRUE(r == VideoResolution(1280, 720));
    EXPECT_TRUE(r != none);
}
