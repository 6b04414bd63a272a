#pragma once
// The CMD zoom block controllers (CMD8100, its earlier firmware, CMD7300)
// against the simulated block with their model's profile: what the three have
// in common, checked once here for each of them.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/ISensorController.h"
#include "doubles/ViscaControllerFixture.h"

namespace testutil {

template <class T>
class CMDControllerFixture : public ViscaControllerFixture<T> {
protected:
    typedef ViscaControllerFixture<T> Base;
    using Base::bench;
    using Base::ctl;
    using Base::initOutput;

    // The model's profile name, the detail text of a good record.
    virtual const char* model() const = 0;
    virtual const char* detail() const = 0;
    static const char* params() { return "RS485=9600,8,1,0"; }

    void SetUp() override {
        Base::SetUp();
        bench.module.setProfile(SimViscaModule::profile(model()));
    }
    int init() { return Base::init(detail(), params()); }
    int init(const std::string& d, const std::string& p) { return Base::init(d, p); }

    // The start line comes first, with the class name; the controller's own
    // start-up sends nothing; the whole start-up comes up against the module.
    void expectStartUp(const char* className) {
        Base::make();
        ModuleConfigure cfg(T::SensorType, detail(), params());
        testing::internal::CaptureStdout();
        int r = ctl->initController(T::SensorType, cfg);
        std::string out = testing::internal::GetCapturedStdout();
        ASSERT_EQ(1, r);
        EXPECT_EQ(0u, out.find(std::string("__") + className + "::init,ModuleConfigure is(" + detail() + "," +
                               params() + ")\n"))
            << out;
        EXPECT_NE(std::string::npos, out.find("RS485(/dev/ttyS1) param is (9600,8,1,0)"));
        EXPECT_TRUE(bench.module.receivedPackets().empty());
        ctl.reset();
        ASSERT_EQ(1, init());
        EXPECT_EQ(ISensorController::InitSuccess, ctl->getSensorStatus());
    }

    typedef typename Base::RecordCase RecordCase;
    // The records that every CMD module refuses (`withGeneration`: the detail
    // text of a good record carries "generation").
    std::vector<RecordCase> commonBadRecords(bool withGeneration) const {
        const std::string gen = withGeneration ? ";generation=1" : "";
        return {
            {"isInfrared=1" + gen, params(), "get RS232DeviceName from detail failed"},
            {detail(), "GUIConfigName=x", "get RS232Parameter from senseParameter failed"},
            {detail(), "RS485=9600,8,1", "parse RS485 param failed,nRet=3"},
            {"RS485=/dev/ttyS7;isInfrared=1" + gen, params(), "open uart (/dev/ttyS7) failed"},
        };
    }

    // The ids that the three modules share, each changing the module (the
    // exposure mode is left manual).
    void expectSharedRows() {
        Base::expectPacketsApplied({
            {0, 1, bytesOf({0x81, 0x01, 0x04, 0x39, 0x03, 0xFF})},  // manual: shutter, iris and gain go out
            {2, 15, bytesOf({0x81, 0x01, 0x04, 0x4C, 0x00, 0x00, 0x00, 0x0F, 0xFF})},
            {3, 4, bytesOf({0x81, 0x01, 0x04, 0x2C, 0x04, 0xFF})},
            {4, 21, bytesOf({0x81, 0x01, 0x04, 0x4A, 0x00, 0x00, 0x01, 0x05, 0xFF})},
            {5, 17, bytesOf({0x81, 0x01, 0x04, 0x4B, 0x00, 0x00, 0x01, 0x01, 0xFF})},
            {6, 6, bytesOf({0x81, 0x01, 0x04, 0x35, 0x05, 0xFF})},
            {7, 0xAB, bytesOf({0x81, 0x01, 0x04, 0x43, 0x00, 0x00, 0x0A, 0x0B, 0xFF})},
            {9, 255, bytesOf({0x81, 0x01, 0x04, 0x44, 0x00, 0x00, 0x0F, 0x0F, 0xFF})},
            {11, 1, bytesOf({0x81, 0x01, 0x04, 0x38, 0x03, 0xFF})},
            {12, 15, bytesOf({0x81, 0x01, 0x04, 0x28, 0x0F, 0x00, 0x00, 0x00, 0xFF})},
            {14, 1, bytesOf({0x81, 0x01, 0x04, 0x5E, 0x02, 0xFF})},
            {15, 1, bytesOf({0x81, 0x01, 0x04, 0x3D, 0x02, 0xFF})},
            {17, 5, bytesOf({0x81, 0x01, 0x04, 0x53, 0x05, 0xFF})},
            {19, 100, bytesOf({0x81, 0x01, 0x04, 0x42, 0x00, 0x00, 0x00, 0x0F, 0xFF})},
            {52, 1, bytesOf({0x81, 0x01, 0x04, 0x0B, 0x02, 0xFF})},
            {53, 1, bytesOf({0x81, 0x01, 0x04, 0x0B, 0x03, 0xFF})},
            {64, 1, bytesOf({0x81, 0x01, 0x04, 0x18, 0x01, 0xFF})},
            {0, 4, bytesOf({0x81, 0x01, 0x04, 0x39, 0x0D, 0xFF})},  // bright mode: bright goes out
            {1, 1, bytesOf({0x81, 0x01, 0x04, 0x4D, 0x00, 0x00, 0x00, 0x05, 0xFF})},
            {56, 100, bytesOf({0x81, 0x01, 0x04, 0x4D, 0x00, 0x00, 0x01, 0x0F, 0xFF})},
            {0, 1, bytesOf({0x81, 0x01, 0x04, 0x39, 0x03, 0xFF})},
        });
        // Focus steps complete when the lens stops: one at a time.
        expectMove(54, bytesOf({0x81, 0x01, 0x04, 0x08, 0x02, 0xFF}));
        EXPECT_EQ(SimViscaModule::MaxFocus, bench.module.focusPosition(PlatformClock::nowMs()));
        expectMove(55, bytesOf({0x81, 0x01, 0x04, 0x08, 0x03, 0xFF}));
        EXPECT_EQ(0x1000, bench.module.focusPosition(PlatformClock::nowMs()));
        Base::expectMirror(10);
        // Photometry: back light, then spot AE.
        ViscaPackets spot = Base::set(16, 2);
        EXPECT_EQ((ViscaPackets{bytesOf({0x81, 0x01, 0x04, 0x33, 0x03, 0xFF}),
                                bytesOf({0x81, 0x01, 0x04, 0x59, 0x02, 0xFF})}),
                  spot);
        EXPECT_EQ(bytesOf({0x02}), bench.module.valueOf(0x59));
        ASSERT_EQ(2u, Base::set(16, 1).size());
        EXPECT_EQ(bytesOf({0x02}), bench.module.valueOf(0x33));
        EXPECT_EQ(bytesOf({0x03}), bench.module.valueOf(0x59));
        // Day/night mode and its switch times are the controller's: taken, nothing sent.
        Base::expectControllersOwn({{13, 1}, {60, 20}, {61, 30}, {62, 5}, {63, 10}});
    }

    // A command that completes when the lens stops; the line settles after it.
    void expectMove(int id, const std::vector<uint8_t>& packet) {
        SCOPED_TRACE(id);
        ViscaPackets p = Base::set(id, 1);
        ASSERT_EQ(1u, p.size());
        EXPECT_EQ(packet, p[0]);
        bench.clock.advance(20000);
        ctl->clearUartBuffer();
    }

    // The refusal of every ranged row, and ids that are not the module's send nothing.
    void expectRefusals(int atLeast, std::initializer_list<int> notTheModules) {
        EXPECT_GT(Base::expectEveryRefusal(), atLeast);
        testing::internal::CaptureStdout();
        EXPECT_EQ(0, ctl->setParameter(16, 3));
        EXPECT_EQ(0, ctl->setParameter(0, 5));
        std::string o = testing::internal::GetCapturedStdout();
        EXPECT_NE(std::string::npos, o.find("p_nPhotometry(3) is out of range"));
        EXPECT_NE(std::string::npos, o.find("p_nExposalMode(5) is out of range"));
        size_t mark = bench.packetMark();
        for (int id : notTheModules) EXPECT_EQ(0, ctl->setParameter(id, 1)) << id;
        EXPECT_EQ(mark, bench.packetMark());
    }

    // Faults spoil a noise reduction set as they do for every module.
    void expectFaults() {
        Base::expectFaultsRefuse(17, 4);
        Base::expectOneShotFaultsGetThrough(17, 0x53, 1, 4);
    }
};

}  // namespace testutil
