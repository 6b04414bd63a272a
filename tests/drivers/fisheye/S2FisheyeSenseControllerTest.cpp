#include "drivers/fisheye/S2FisheyeSenseController.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>

#include "drivers/fisheye/FisheyeTestSupport.h"
#include "platform/GThread.h"
#include "platform/KestraTime.h"
#include "storage/IdManager.h"
#include "storage/SensorCache.h"

using testutil::IspCall;
using testutil::ispCalls;
using testutil::ispSets;
using testutil::TestableFisheye;

namespace {

class FisheyeTest : public ::testing::Test {
protected:
    void SetUp() override {
        testutil::resetBoard();
        cam.reset(new TestableFisheye());
        cam->markReady();
        SimIsp::instance().clearCalls();
    }
    void TearDown() override {
        cam.reset();
        SimAdc::uninstall();
    }

    // Runs a set through the dispatcher and returns its result with what it printed.
    int setCaptured(int id, int value, std::string& printed) {
        ::testing::internal::CaptureStdout();
        int r = cam->setParameterToSensor(id, value);
        printed = ::testing::internal::GetCapturedStdout();
        return r;
    }
    int getCaptured(int id, int& value, std::string& printed) {
        ::testing::internal::CaptureStdout();
        int r = cam->getParameterFromSensor(id, value);
        printed = ::testing::internal::GetCapturedStdout();
        return r;
    }

    testutil::TempRoot root;
    std::unique_ptr<TestableFisheye> cam;
};

// Ids that map one to one onto an ISP command with a bounded range.
struct PlainId {
    int id;
    int command;
    int maxValue;
    const char* refusal;  // refusal text for maxValue + 1 ("" for a silent refusal)
    const char* failure;  // dispatcher's failure text
};

const PlainId kPlainIds[] = {
    {1, KSIA_BRIGHTNESS, 100, "IsAppointRange(101) out of range", "setBrightness failed"},
    {2, KSIA_SATURATION, 100, "IsAppointRange(101) out of range", "setSaturation failed"},
    {3, KSIA_CONTRAST, 100, "IsAppointRange(101) out of range", "setContrast failed"},
    {4, KSIA_SHARPNESS, 100, "IsAppointRange(101) out of range", "setSharpness failed "},
    {5, KSIA_SHUTTER_MODE, 1, "p_nShutterMode(2) out of range", "setShutterMode failed "},
    {6, KSIA_MAX_SHUTTER, 18, "p_nMaxShutter(19) out of range", "setMaxShutter failed "},
    {7, KSIA_FIXED_SHUTTER, 18, "p_nFixShutter(19) out of range", "setFixShutter failed "},
    {8, KSIA_GAIN_MODE, 1, "p_nGainMode(2) out of range", "setGainMode failed "},
    {9, KSIA_MAX_GAIN, 100, "IsAppointRange(101) out of range", "setMaxGain failed "},
    {10, KSIA_FIXED_GAIN, 100, "IsAppointRange(101) out of range", "setFixGain failed "},
    {14, KSIA_IRIS_MODE, 1, "p_nIrisMode(2) out of range", "setIrisMode failed "},
    {15, KSIA_IRIS_SPEED, 100, "IsAppointRange(101) out of range", "setIrisSpeed failed "},
    {16, KSIA_INDOOR_OUTDOOR, 2, "p_nRoomIntOrOutMode(3) out of range", "setRoomInnerOrOutMode failed "},
    {17, KSIA_WDR_MODE, 1, "p_nShutterMode(2) out of range", "setNRMode failed "},
    {18, KSIA_WDR_STRENGTH, 100, "IsAppointRange(101) out of range", "setWDRContrast failed "},
    {19, KSIA_PHOTOMETRY, 3, "p_nPhotometry(4) out of range", "setPhotometry failed "},
    {22, KSIA_NR2D_MODE, 2, "p_nNR2DMode(3) out of range", "setNR2DMode failed "},
    {23, KSIA_NR2D_MAX, 100, "IsAppointRange(101) out of range", "setNR2DMaxContrast failed "},
    {24, KSIA_NR2D_FIXED, 100, "IsAppointRange(101) out of range", "setNR2DFixContrast failed "},
    {25, KSIA_NR3D_MODE, 2, "p_nNR3DMode(3) out of range", "setNR3DMode failed "},
    {26, KSIA_NR3D_MAX, 100, "IsAppointRange(101) out of range", "setNR3DMaxContrast failed "},
    {27, KSIA_NR3D_FIXED, 100, "IsAppointRange(101) out of range", "setNR3DFixContrast failed "},
    {36, KSIA_IR_MANUAL_POWER, 100, "", "setInfraredManualValue failed "},
    {37, KSIA_HLC_MODE, 1, "p_nHLCMode(2) out of range", "setHLCMode failed "},
    {38, KSIA_HLC_STRENGTH, 100, "IsAppointRange(101) out of range", "setHLCContrast failed "},
    {40, KSIA_ZOOM_INTERVAL, 4, "", "setZoomInterval failed "},
    {54, KSIA_DEFOG, 1, "p_nShutterMode(2) out of range", "setDeFog failed "},
    {55, KSIA_DEFOG_STRENGTH, 100, "IsAppointRange(101) out of range", "setDeFogStrength failed "},
};

TEST_F(FisheyeTest, EveryBoundedIdSendsBothBoundsAndRefusesOutsideWithNothingSent) {
    for (const PlainId& p : kPlainIds) {
        SCOPED_TRACE("id " + std::to_string(p.id));
        std::string out;
        SimIsp::instance().clearCalls();
        EXPECT_EQ(1, setCaptured(p.id, 0, out));
        EXPECT_EQ(1, setCaptured(p.id, p.maxValue, out));
        std::vector<IspCall> expected = {{p.command, KSIA_SET, 0}, {p.command, KSIA_SET, p.maxValue}};
        EXPECT_EQ(expected, ispCalls());
        EXPECT_EQ(p.maxValue, SimIsp::instance().value(p.command));

        SimIsp::instance().clearCalls();
        EXPECT_EQ(0, setCaptured(p.id, p.maxValue + 1, out));
        if (p.refusal[0] != '\0') {
            EXPECT_NE(std::string::npos, out.find(p.refusal)) << out;
        } else {
            EXPECT_EQ(std::string::npos, out.find("out of range")) << out;
        }
        EXPECT_NE(std::string::npos, out.find(std::string(p.failure) + "\n")) << out;
        EXPECT_EQ(0, setCaptured(p.id, -1, out));
        EXPECT_TRUE(ispCalls().empty());
        EXPECT_EQ(p.maxValue, SimIsp::instance().value(p.command));
    }
}

TEST_F(FisheyeTest, PercentRefusalNamesTheFunctionAndLine) {
    std::string out;
    EXPECT_EQ(0, setCaptured(1, 101, out));
    EXPECT_EQ(0u, out.find("setBrightness   ")) << out;
    EXPECT_NE(std::string::npos, out.find(" IsAppointRange(101) out of range\nsetBrightness failed\n")) << out;
    EXPECT_EQ(0, setCaptured(9, -1, out));
    EXPECT_NE(std::string::npos, out.find("IsAppointRange(-1) out of range")) << out;
}

TEST_F(FisheyeTest, UncheckedIdsPassAnyValue) {
    const int cases[][2] = {{39, KSIA_BLC_MODE}, {41, KSIA_FOCUS_INTERVAL}, {56, KSIA_ANTI_SHAKE}};
    for (const auto& c : cases) {
        SimIsp::instance().clearCalls();
        EXPECT_EQ(1, cam->setParameterToSensor(c[0], 12345));
        EXPECT_EQ(1, cam->setParameterToSensor(c[0], -7));
        std::vector<IspCall> expected = {{c[1], KSIA_SET, 12345}, {c[1], KSIA_SET, -7}};
        EXPECT_EQ(expected, ispCalls()) << "id " << c[0];
    }
}

TEST_F(FisheyeTest, ShutterIndexEighteenIsAcceptedNineteenRefused) {
    EXPECT_EQ(1, cam->setMaxShutter(18));
    EXPECT_EQ(0, cam->setMaxShutter(19));
    EXPECT_EQ(1, cam->setFixShutter(18));
    EXPECT_EQ(0, cam->setFixShutter(19));
    EXPECT_EQ(2, SimIsp::instance().callCount(KSIA_MAX_SHUTTER) + SimIsp::instance().callCount(KSIA_FIXED_SHUTTER));
}

TEST_F(FisheyeTest, FailedCommandIsReportedByTheCheckerAndTheDispatcher) {
    SimIsp::instance().failCommand(KSIA_BRIGHTNESS, 0x2A);
    std::string out;
    EXPECT_EQ(0, setCaptured(1, 40, out));
    EXPECT_NE(std::string::npos, out.find("setBrightness  ")) << out;
    EXPECT_NE(std::string::npos, out.find("CheckKSEWFIResult are failed! errcode:0x2a\n")) << out;
    EXPECT_NE(std::string::npos, out.find("setBrightness failed\n")) << out;
}

// The board has no current-gain read of its own: the gain-indexed ISP tables get
// no gain from it, and asking sends nothing to the ISP.
TEST_F(FisheyeTest, CurrentGainIsNotSupported) {
    SimIsp::instance().setValue(KSIA_FIXED_GAIN, 57);
    int gain = -1;
    EXPECT_EQ(0, cam->getCurrentGain(gain));
    EXPECT_EQ(0, SimIsp::instance().callCount(KSIA_FIXED_GAIN, KSIA_GET));
}

TEST_F(FisheyeTest, CheckKSEWFIResultText) {
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(1, cam->CheckKSEWFIResult(0, "fn", 7));
    EXPECT_EQ(0, cam->CheckKSEWFIResult(0x1002, "setMirror", 123));
    std::string out = ::testing::internal::GetCapturedStdout();
    EXPECT_EQ("setMirror  123CheckKSEWFIResult are failed! errcode:0x1002\n\n", out);
}

TEST_F(FisheyeTest, IdsWithoutOperationAndUnknownIdsYieldOneWithoutCommands) {
    for (int id : {42, 45, 0, -3, 57, 499, 505, 10002}) {
        EXPECT_EQ(1, cam->setParameterToSensor(id, 5)) << id;
    }
    EXPECT_TRUE(ispCalls().empty());
}

TEST_F(FisheyeTest, SchemeWindowIdsAreAnsweredByTheBase) {
    EXPECT_EQ(1, cam->setParameterToSensor(500, 1));
    EXPECT_EQ(1, cam->setParameterToSensor(504, 3));
    EXPECT_TRUE(ispCalls().empty());
}

TEST_F(FisheyeTest, NothingHappensBeforeInitialisation) {
    TestableFisheye fresh;
    SimIsp::instance().clearCalls();
    int v = 77;
    EXPECT_EQ(0, fresh.setParameterToSensor(1, 50));
    EXPECT_EQ(0, fresh.setParameterToSensor(42, 50));
    EXPECT_EQ(0, fresh.getParameterFromSensor(1, v));
    EXPECT_EQ(77, v);
    EXPECT_TRUE(ispCalls().empty());
}

TEST_F(FisheyeTest, DayNightModeAndTimesGoToTheBase) {
    EXPECT_EQ(1, cam->setParameterToSensor(11, 3));
    EXPECT_EQ(3, cam->getStoredDayNightMode());
    EXPECT_EQ(1, cam->setParameterToSensor(28, 19));
    EXPECT_EQ(1, cam->setParameterToSensor(29, 30));
    EXPECT_EQ(1, cam->setParameterToSensor(30, 5));
    EXPECT_EQ(1, cam->setParameterToSensor(31, 15));
    EXPECT_EQ(1930, cam->dtnTime());
    EXPECT_EQ(515, cam->ntdTime());
    EXPECT_EQ(1, cam->setParameterToSensor(34, 9));
    EXPECT_EQ(9, cam->switchDelay());
    EXPECT_TRUE(ispCalls().empty());

    int v = -1;
    EXPECT_EQ(1, cam->getParameterFromSensor(28, v));
    EXPECT_EQ(18, v);
    EXPECT_EQ(1, cam->getParameterFromSensor(34, v));
    EXPECT_EQ(5, v);
    EXPECT_EQ(1, cam->getParameterFromSensor(11, v));
    EXPECT_EQ(0, v);
}

TEST_F(FisheyeTest, EqualSwitchTimesAfterInitialisationFailWithTheTimeText) {
    EXPECT_EQ(1, cam->setParameterToSensor(28, 18));
    EXPECT_EQ(1, cam->setParameterToSensor(29, 0));
    EXPECT_EQ(1, cam->setParameterToSensor(30, 6));
    EXPECT_EQ(1, cam->setParameterToSensor(31, 0));
    cam->setInitialisedFlag(true);
    std::string out;
    EXPECT_EQ(0, setCaptured(30, 18, out));
    EXPECT_NE(std::string::npos, out.find("getNTDTime_H failed\n")) << out;
    EXPECT_EQ(600, cam->ntdTime());
    EXPECT_EQ(0, setCaptured(28, 6, out));
    EXPECT_NE(std::string::npos, out.find("getDTNTime_H failed\n")) << out;
    EXPECT_EQ(1800, cam->dtnTime());
}

TEST_F(FisheyeTest, ThresholdsMustKeepDayToNightAboveNightToDay) {
    cam->getLastValueCache().setSensorValue(13, 40);
    std::string out;
    EXPECT_EQ(1, setCaptured(12, 60, out));
    EXPECT_EQ(60, SimIsp::instance().value(KSIA_DTN_THRESHOLD));
    SimIsp::instance().clearCalls();
    EXPECT_EQ(0, setCaptured(12, 40, out));
    EXPECT_NE(std::string::npos, out.find("Error:DTN<NTD @setDTNThreshold\nsetDTNThreshold failed \n")) << out;
    EXPECT_EQ(0, setCaptured(12, 101, out));
    EXPECT_NE(std::string::npos, out.find("IsAppointRange(101) out of range")) << out;
    EXPECT_TRUE(ispCalls().empty());

    cam->getLastValueCache().setSensorValue(12, 60);
    EXPECT_EQ(1, setCaptured(13, 59, out));
    EXPECT_EQ(59, SimIsp::instance().value(KSIA_NTD_THRESHOLD));
    SimIsp::instance().clearCalls();
    EXPECT_EQ(0, setCaptured(13, 60, out));
    EXPECT_NE(std::string::npos, out.find("Error:DTN<NTD @setNTDThreshold\nsetNTDThreshold failed \n")) << out;
    EXPECT_TRUE(ispCalls().empty());
}

TEST_F(FisheyeTest, ThresholdPartnerComesFromTheRequestFirst) {
    // A list that lowers both thresholds at once is checked against its own values.
    cam->getLastValueCache().setSensorValue(12, 70);
    cam->getLastValueCache().setSensorValue(13, 50);
    cam->getRequestCache().setSensorValues("(12,40)(13,20)");
    EXPECT_EQ(1, cam->setParameterToSensor(12, 40));
    EXPECT_EQ(1, cam->setParameterToSensor(13, 20));
    EXPECT_EQ(40, SimIsp::instance().value(KSIA_DTN_THRESHOLD));
    EXPECT_EQ(20, SimIsp::instance().value(KSIA_NTD_THRESHOLD));
}

TEST_F(FisheyeTest, InfraredBoardIgnoresTheIspThresholds) {
    cam->setDetectSource(1);
    EXPECT_EQ(1, cam->setParameterToSensor(12, 60));
    EXPECT_EQ(1, cam->setParameterToSensor(13, 500));
    EXPECT_TRUE(ispCalls().empty());
}

TEST_F(FisheyeTest, InfraredThresholdsAreStoredOnAnInfraredBoard) {
    cam->setDetectSource(1);
    cam->getLastValueCache().setSensorValue(33, 30);
    cam->getLastValueCache().setSensorValue(32, 70);
    std::string out;
    EXPECT_EQ(1, setCaptured(32, 80, out));
    EXPECT_EQ(80, cam->getStoredInfraredDTNThreshold());
    EXPECT_EQ(1, setCaptured(33, 20, out));
    EXPECT_EQ(20, cam->getStoredInfraredNTDThreshold());
    EXPECT_TRUE(ispCalls().empty());

    EXPECT_EQ(0, setCaptured(32, 25, out));
    EXPECT_NE(std::string::npos, out.find("Error:DTN(25)<NTD(30) @setInfraredDTNThreshold\n")) << out;
    EXPECT_NE(std::string::npos, out.find("getInfraredDayNightMode failed \n")) << out;
    EXPECT_EQ(0, setCaptured(33, 75, out));
    EXPECT_NE(std::string::npos, out.find("Error:DTN(70)<NTD(75) @setInfraredNTDThreshold \n")) << out;
    EXPECT_NE(std::string::npos, out.find("getInfraredNTDThreshold failed \n")) << out;
    EXPECT_EQ(0, setCaptured(32, 101, out));
    EXPECT_NE(std::string::npos, out.find("IsAppointRange(101) out of range")) << out;
    EXPECT_EQ(80, cam->getStoredInfraredDTNThreshold());
    EXPECT_EQ(20, cam->getStoredInfraredNTDThreshold());

    // The getters ignore what was stored.
    int v = 0;
    EXPECT_EQ(1, cam->getParameterFromSensor(32, v));
    EXPECT_EQ(70, v);
    EXPECT_EQ(1, cam->getParameterFromSensor(33, v));
    EXPECT_EQ(30, v);
    EXPECT_TRUE(ispCalls().empty());
}

TEST_F(FisheyeTest, InfraredThresholdsGoToTheIspUncheckedWithoutInfrared) {
    EXPECT_EQ(1, cam->setParameterToSensor(32, 65));
    EXPECT_EQ(1, cam->setParameterToSensor(33, 25));
    // The library refuses 150; the controller does not look at the answer.
    EXPECT_EQ(1, cam->setParameterToSensor(32, 150));
    std::vector<IspCall> expected = {
        {KSIA_DTN_THRESHOLD, KSIA_SET, 65}, {KSIA_NTD_THRESHOLD, KSIA_SET, 25}, {KSIA_DTN_THRESHOLD, KSIA_SET, 150}};
    EXPECT_EQ(expected, ispCalls());
    EXPECT_EQ(65, SimIsp::instance().value(KSIA_DTN_THRESHOLD));
    EXPECT_EQ(0, cam->getStoredInfraredDTNThreshold());
    int v = 0;
    EXPECT_EQ(1, cam->getParameterFromSensor(32, v));
    EXPECT_EQ(70, v);
}

TEST_F(FisheyeTest, MirrorIsExchangedOnACeilingMount) {
    EXPECT_EQ(1, cam->setParameterToSensor(20, 1));
    EXPECT_EQ(1, SimIsp::instance().value(KSIA_MIRROR));
    SimIsp::instance().setValue(KSIA_BE_AWAY, 1);
    EXPECT_EQ(1, cam->setParameterToSensor(20, 1));
    EXPECT_EQ(2, SimIsp::instance().value(KSIA_MIRROR));
    EXPECT_EQ(1, cam->setParameterToSensor(20, 2));
    EXPECT_EQ(1, SimIsp::instance().value(KSIA_MIRROR));
    EXPECT_EQ(1, cam->setParameterToSensor(20, 3));
    EXPECT_EQ(3, SimIsp::instance().value(KSIA_MIRROR));
    SimIsp::instance().clearCalls();
    std::string out;
    EXPECT_EQ(0, setCaptured(20, 4, out));
    EXPECT_NE(std::string::npos, out.find("p_nMirror(4) out of range\nsetMirror failed \n")) << out;
    EXPECT_TRUE(ispCalls().empty());
}

TEST_F(FisheyeTest, LeavingTheCeilingRestoresTheMirrorExchanged) {
    SimIsp::instance().setValue(KSIA_BE_AWAY, 1);
    SimIsp::instance().setValue(KSIA_MIRROR, 2);
    EXPECT_EQ(1, cam->setParameterToSensor(21, 0));
    std::vector<IspCall> expected = {{KSIA_MIRROR, KSIA_SET, 0}, {KSIA_BE_AWAY, KSIA_SET, 0}, {KSIA_MIRROR, KSIA_SET, 1}};
    EXPECT_EQ(expected, ispSets());
    EXPECT_EQ(1, SimIsp::instance().value(KSIA_MIRROR));
    EXPECT_EQ(0, SimIsp::instance().value(KSIA_BE_AWAY));
}

TEST_F(FisheyeTest, GoingToTheCeilingKeepsThePictureTheSameWay) {
    SimIsp::instance().setValue(KSIA_MIRROR, 1);
    EXPECT_EQ(1, cam->setBeAwayMode(1));
    // mirror 0, be-away 1, then setMirror(1), which exchanges it once on the ceiling
    std::vector<IspCall> expected = {{KSIA_MIRROR, KSIA_SET, 0}, {KSIA_BE_AWAY, KSIA_SET, 1}, {KSIA_MIRROR, KSIA_SET, 2}};
    EXPECT_EQ(expected, ispSets());
}

TEST_F(FisheyeTest, BeAwayWithoutMirrorOrWithoutChangeSendsOnlyTheMode) {
    EXPECT_EQ(1, cam->setBeAwayMode(1));
    SimIsp::instance().setValue(KSIA_MIRROR, 3);
    EXPECT_EQ(1, cam->setBeAwayMode(1));
    std::vector<IspCall> expected = {{KSIA_BE_AWAY, KSIA_SET, 1}, {KSIA_BE_AWAY, KSIA_SET, 1}};
    EXPECT_EQ(expected, ispSets());
    SimIsp::instance().clearCalls();
    std::string out;
    EXPECT_EQ(0, setCaptured(21, 2, out));
    EXPECT_NE(std::string::npos, out.find("setBeAwayMode(2) out of range\nsetBeAwayMode failed\n")) << out;
    EXPECT_TRUE(ispCalls().empty());
}

TEST_F(FisheyeTest, BeAwayResultIsThatOfTheModeCommand) {
    SimIsp::instance().setValue(KSIA_MIRROR, 1);
    SimIsp::instance().failCommand(KSIA_BE_AWAY, 0x33, -1);
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(0, cam->setBeAwayMode(1));
    ::testing::internal::GetCapturedStdout();
}

TEST_F(FisheyeTest, SmartInfraredModeZeroIsRememberedButFails) {
    std::string out;
    EXPECT_EQ(0, setCaptured(35, 0, out));
    EXPECT_EQ(0, cam->getRememberedSmartInfraredMode());
    EXPECT_NE(std::string::npos, out.find("setSmartInfraredMode failed \n"));
    EXPECT_TRUE(ispCalls().empty());
    EXPECT_EQ(1, cam->setSmartInfraredMode(2));
    EXPECT_EQ(2, cam->getRememberedSmartInfraredMode());
    EXPECT_EQ(0, cam->setSmartInfraredMode(0));
    EXPECT_EQ(0, cam->getRememberedSmartInfraredMode());
    EXPECT_EQ(1, cam->setSmartInfraredMode(1));
    EXPECT_EQ(0, setCaptured(35, 3, out));
    EXPECT_EQ(std::string::npos, out.find("out of range"));
    EXPECT_EQ(1, cam->getRememberedSmartInfraredMode());
    std::vector<IspCall> expected = {{KSIA_SMART_IR_MODE, KSIA_SET, 2}, {KSIA_SMART_IR_MODE, KSIA_SET, 1}};
    EXPECT_EQ(expected, ispCalls());
}

TEST_F(FisheyeTest, InfraredManualPowerIsRemembered) {
    EXPECT_EQ(1, cam->setInfraredManualValue(100));
    EXPECT_EQ(100, cam->getRememberedInfraredManualValue());
    EXPECT_EQ(0, cam->setInfraredManualValue(101));
    EXPECT_EQ(100, cam->getRememberedInfraredManualValue());
    EXPECT_EQ(1, SimIsp::instance().callCount(KSIA_IR_MANUAL_POWER));
}

TEST_F(FisheyeTest, ZoomAndFocusMovesSendTheirValues) {
    const int moves[][3] = {{43, KSIA_ZOOM_MOVE, 2}, {44, KSIA_ZOOM_MOVE, 4}, {46, KSIA_FOCUS_MOVE, 4},
                            {47, KSIA_FOCUS_MOVE, 2}, {48, KSIA_ZOOM_MOVE, 1}, {49, KSIA_ZOOM_MOVE, 3},
                            {50, KSIA_FOCUS_MOVE, 3}, {51, KSIA_FOCUS_MOVE, 1}, {52, KSIA_FOCUS_MOVE, 6}};
    for (const auto& m : moves) {
        SimIsp::instance().clearCalls();
        EXPECT_EQ(1, cam->setParameterToSensor(m[0], 999)) << m[0];
        std::vector<IspCall> expected = {{m[1], KSIA_SET, m[2]}};
        EXPECT_EQ(expected, ispCalls()) << m[0];
    }
    SimIsp::instance().clearCalls();
    EXPECT_EQ(1, cam->setParameterToSensor(53, 0));
    std::vector<IspCall> expected = {{KSIA_ZOOM_MOVE, KSIA_SET, 5}, {KSIA_FOCUS_MOVE, KSIA_SET, 5}};
    EXPECT_EQ(expected, ispCalls());
}

TEST_F(FisheyeTest, MoveFailuresAreReported) {
    SimIsp::instance().failCommand(KSIA_FOCUS_MOVE, 0x77);
    std::string out;
    EXPECT_EQ(0, setCaptured(52, 0, out));
    EXPECT_NE(std::string::npos, out.find("RunAutoFocus failed \n")) << out;
    EXPECT_EQ(0, setCaptured(53, 0, out));
    EXPECT_NE(std::string::npos, out.find("ResetZoomFocus failed \n")) << out;
    SimIsp::instance().clearFailures();
    SimIsp::instance().failCommand(KSIA_ZOOM_MOVE, 0x77);
    // The zoom half of the reset is not looked at.
    EXPECT_EQ(1, setCaptured(53, 0, out));
    EXPECT_EQ(0, setCaptured(48, 0, out));
    EXPECT_NE(std::string::npos, out.find("ZoomWideFast failed \n")) << out;
}

TEST_F(FisheyeTest, ZoomIntervalReadAboveFourFailsButKeepsTheAnswer) {
    int v = -1;
    SimIsp::instance().setValue(KSIA_ZOOM_INTERVAL, 4);
    EXPECT_EQ(1, cam->getZoomMoveInterval(v));
    EXPECT_EQ(4, v);
    SimIsp::instance().setValue(KSIA_ZOOM_INTERVAL, 5);
    EXPECT_EQ(0, cam->getZoomMoveInterval(v));
    EXPECT_EQ(5, v);
    EXPECT_EQ(0, cam->setZoomMoveInterval(5));
    EXPECT_EQ(2, SimIsp::instance().callCount(KSIA_ZOOM_INTERVAL));
}

TEST_F(FisheyeTest, FocusIntervalReadSendsTheRememberedValue) {
    EXPECT_EQ(1, cam->setFocusMoveInterval(9));
    int v = -1;
    EXPECT_EQ(1, cam->getFocusMoveInterval(v));
    EXPECT_EQ(0, v);
    std::vector<IspCall> expected = {{KSIA_FOCUS_INTERVAL, KSIA_SET, 9}, {KSIA_FOCUS_INTERVAL, KSIA_SET, 0}};
    EXPECT_EQ(expected, ispCalls());
}

TEST_F(FisheyeTest, GettersReadTheIsp) {
    const int reads[][2] = {{1, KSIA_BRIGHTNESS}, {2, KSIA_SATURATION}, {3, KSIA_CONTRAST}, {4, KSIA_SHARPNESS},
                            {5, KSIA_SHUTTER_MODE}, {6, KSIA_MAX_SHUTTER}, {7, KSIA_FIXED_SHUTTER}, {8, KSIA_GAIN_MODE},
                            {9, KSIA_MAX_GAIN}, {10, KSIA_FIXED_GAIN}, {12, KSIA_DTN_THRESHOLD}, {13, KSIA_NTD_THRESHOLD},
                            {14, KSIA_IRIS_MODE}, {15, KSIA_IRIS_SPEED}, {16, KSIA_INDOOR_OUTDOOR}, {17, KSIA_WDR_MODE},
                            {18, KSIA_WDR_STRENGTH}, {19, KSIA_PHOTOMETRY}, {20, KSIA_MIRROR}, {21, KSIA_BE_AWAY},
                            {22, KSIA_NR2D_MODE}, {23, KSIA_NR2D_MAX}, {24, KSIA_NR2D_FIXED}, {25, KSIA_NR3D_MODE},
                            {26, KSIA_NR3D_MAX}, {27, KSIA_NR3D_FIXED}, {35, KSIA_SMART_IR_MODE},
                            {36, KSIA_IR_MANUAL_POWER}, {37, KSIA_HLC_MODE}, {38, KSIA_HLC_STRENGTH},
                            {54, KSIA_DEFOG}, {55, KSIA_DEFOG_STRENGTH}, {56, KSIA_ANTI_SHAKE}};
    for (const auto& r : reads) {
        SimIsp::instance().setValue(r[1], 1000 + r[0]);
        int v = -1;
        EXPECT_EQ(1, cam->getParameterFromSensor(r[0], v)) << r[0];
        EXPECT_EQ(1000 + r[0], v) << r[0];
    }
}

TEST_F(FisheyeTest, FailedGetterPrintsItsText) {
    SimIsp::instance().failCommand(KSIA_BRIGHTNESS, 0x10);
    SimIsp::instance().failCommand(KSIA_SHARPNESS, 0x10);
    SimIsp::instance().failCommand(KSIA_WDR_MODE, 0x10);
    int v = 33;
    std::string out;
    EXPECT_EQ(0, getCaptured(1, v, out));
    EXPECT_NE(std::string::npos, out.find("getBrightness failed\n")) << out;
    EXPECT_EQ(33, v);
    EXPECT_EQ(0, getCaptured(4, v, out));
    EXPECT_NE(std::string::npos, out.find("getSharpness failed \n")) << out;
    EXPECT_EQ(0, getCaptured(17, v, out));
    EXPECT_NE(std::string::npos, out.find("getNRMode failed \n")) << out;
}

TEST_F(FisheyeTest, IdsWithoutGetterLeaveTheOutputAlone) {
    for (int id : {40, 41, 42, 43, 45, 50, 53, 57, 0, 600}) {
        int v = 4242;
        EXPECT_EQ(1, cam->getParameterFromSensor(id, v)) << id;
        EXPECT_EQ(4242, v) << id;
    }
    EXPECT_TRUE(ispCalls().empty());
}

TEST_F(FisheyeTest, ReadingTheBlcModeTurnsThePictureToDay) {
    SimIsp::instance().setValue(KSIA_BLC_MODE, 3);
    SimIsp::instance().setValue(KSIA_PICTURE_DAY_NIGHT, 2);
    cam->setDayPictureFlag(0);
    int v = -1;
    EXPECT_EQ(1, cam->getParameterFromSensor(39, v));
    EXPECT_EQ(3, v);
    EXPECT_EQ(1, SimIsp::instance().value(KSIA_PICTURE_DAY_NIGHT));
    EXPECT_EQ(1, cam->getDayNightState());

    cam->setDayPictureFlag(0);
    SimIsp::instance().failCommand(KSIA_PICTURE_DAY_NIGHT, 0x5);
    std::string out;
    EXPECT_EQ(0, getCaptured(39, v, out));
    EXPECT_NE(std::string::npos, out.find("turnPictureToDay failed\n")) << out;
    EXPECT_NE(std::string::npos, out.find("getBLCMode failed \n")) << out;
    EXPECT_EQ(0, cam->getDayNightState());
}

TEST_F(FisheyeTest, VideoSystemIsSentInverted) {
    VideoResolution res(1920, 1080);
    EXPECT_EQ(1, cam->updateSensorVideoSystem(1, res));
    EXPECT_EQ(1, cam->updateSensorVideoSystem(0, res));
    std::vector<IspCall> expected = {{KSIA_VIDEO_SYSTEM, KSIA_SET, 0}, {KSIA_VIDEO_SYSTEM, KSIA_SET, 1}};
    EXPECT_EQ(expected, ispCalls());
    SimIsp::instance().clearCalls();
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(0, cam->updateSensorVideoSystem(2, res));
    EXPECT_EQ(0, cam->updateSensorVideoSystem(-1, res));
    std::string out = ::testing::internal::GetCapturedStdout();
    EXPECT_EQ("not PAL or NTSC param!\nnot PAL or NTSC param!\n", out);
    EXPECT_TRUE(ispCalls().empty());
}

TEST_F(FisheyeTest, VideoSystemChangeWaitsThreeSecondsOnThePlatformClock) {
    testutil::VirtualClock clock;
    std::atomic<int> result{-1};
    std::thread t([&] {
        result = cam->setSensorVideoSystem(1, VideoResolution(1920, 1080));
        PlatformClock::threadLeaving();
    });
    ASSERT_TRUE(PlatformClock::waitForSleepers(1));
    clock.advance(2999);
    EXPECT_EQ(-1, result.load());
    clock.advance(1);
    t.join();
    EXPECT_EQ(1, result.load());
    EXPECT_EQ(0, SimIsp::instance().value(KSIA_VIDEO_SYSTEM));
}

TEST_F(FisheyeTest, DayNightFromTheSceneLevel) {
    SimIsp::instance().setValue(KSIA_DTN_THRESHOLD, 70);
    SimIsp::instance().setValue(KSIA_NTD_THRESHOLD, 30);
    int status = 7;
    SimIsp::instance().setSceneLevel(50);
    EXPECT_EQ(1, cam->getDNStatusFromSensor(status));
    EXPECT_EQ(7, status);  // between the thresholds: left as it was
    SimIsp::instance().setSceneLevel(70);
    EXPECT_EQ(1, cam->getDNStatusFromSensor(status));
    EXPECT_EQ(0, status);
    SimIsp::instance().setSceneLevel(31);
    EXPECT_EQ(1, cam->getDNStatusFromSensor(status));
    EXPECT_EQ(0, status);
    SimIsp::instance().setSceneLevel(30);
    EXPECT_EQ(1, cam->getDNStatusFromSensor(status));
    EXPECT_EQ(1, status);
    EXPECT_EQ(4, SimIsp::instance().callCount(KSIA_SCENE_LEVEL, KSIA_GET));
    EXPECT_EQ(4, SimIsp::instance().callCount(KSIA_DTN_THRESHOLD, KSIA_GET));
    EXPECT_EQ(4, SimIsp::instance().callCount(KSIA_NTD_THRESHOLD, KSIA_GET));
}

TEST_F(FisheyeTest, SceneLevelReadsAreNotChecked) {
    // A library that answers nothing leaves the presets: -1 >= -1 reads as night.
    SimIsp::instance().failCommand(KSIA_SCENE_LEVEL, 0x1);
    SimIsp::instance().failCommand(KSIA_DTN_THRESHOLD, 0x1);
    SimIsp::instance().failCommand(KSIA_NTD_THRESHOLD, 0x1);
    int status = 1;
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(1, cam->getDNStatusFromSensor(status));
    std::string out = ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(0, status);
    EXPECT_EQ(std::string::npos, out.find("CheckKSEWFIResult")) << out;
}

TEST_F(FisheyeTest, LightSensorWithSeventyThirtyThresholds) {
    cam->setDetectSource(1);
    cam->getLastValueCache().setSensorValue(32, 70);
    cam->getLastValueCache().setSensorValue(33, 30);
    ASSERT_EQ(1, cam->setInfraredDTNThreshold(70));
    ASSERT_EQ(1, cam->setInfraredNTDThreshold(30));
    SimAdc& adc = SimAdc::instance();
    int status = -1;

    adc.setReading(1714);  // 100 percent
    EXPECT_EQ(1, cam->getDNStatusFromLDR(status));
    EXPECT_EQ(1, status);
    adc.setReading(515);  // 30 percent
    EXPECT_EQ(1, cam->getDNStatusFromLDR(status));
    EXPECT_EQ(0, status);
    adc.setReading(857);  // 50 percent: keeps night
    EXPECT_EQ(1, cam->getDNStatusFromLDR(status));
    EXPECT_EQ(0, status);
    adc.setReading(1199);  // 69.95 percent, truncated to 69
    EXPECT_EQ(1, cam->getDNStatusFromLDR(status));
    EXPECT_EQ(0, status);
    adc.setReading(1200);  // 70 percent
    EXPECT_EQ(1, cam->getDNStatusFromLDR(status));
    EXPECT_EQ(1, status);
    adc.setReading(857);  // 50 percent: keeps day
    EXPECT_EQ(1, cam->getDNStatusFromLDR(status));
    EXPECT_EQ(1, status);
    adc.setReading(516);  // 30.1 percent, truncated to 30
    EXPECT_EQ(1, cam->getDNStatusFromLDR(status));
    EXPECT_EQ(0, status);
    EXPECT_EQ(0, cam->getLastLDRStatus());
    EXPECT_EQ(1, adc.lastChannel());
    EXPECT_EQ(0xC004677FUL, adc.lastRequest());
}

TEST_F(FisheyeTest, LightSensorStartsAsDay) {
    cam->setDetectSource(1);
    EXPECT_EQ(1, cam->getLastLDRStatus());
    // With both thresholds still 0 only full scale reads as day.
    SimAdc::instance().setReading(1713);
    int status = -1;
    EXPECT_EQ(1, cam->getDNStatusFromLDR(status));
    EXPECT_EQ(0, status);
    SimAdc::instance().setReading(1714);
    EXPECT_EQ(1, cam->getDNStatusFromLDR(status));
    EXPECT_EQ(1, status);
}

TEST_F(FisheyeTest, LightSensorFailures) {
    SimAdc::instance().setRequestFails(true);
    int status = 9;
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(0, cam->getDNStatusFromLDR(status));
    std::string out = ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(9, status);
    EXPECT_NE(std::string::npos, out.find("enable the adc ADC_GET_DATA error  ")) << out;
    EXPECT_NE(std::string::npos, out.find("getADCValue failed")) << out;

    SimAdc::instance().setRequestFails(false);
    SimAdc::instance().setOpenFails(true);
    TestableFisheye noAdc;
    EXPECT_FALSE(noAdc.isAdcOpen());
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(0, noAdc.getDNStatusFromLDR(status));
    out = ::testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string::npos, out.find("open adc fail ")) << out;
    EXPECT_EQ(9, status);
}

TEST_F(FisheyeTest, AdcIsOpenedOnceAndClosedWithTheController) {
    SimAdc& adc = SimAdc::instance();
    int opens = adc.openCount();
    {
        TestableFisheye local;
        EXPECT_TRUE(local.isAdcOpen());
        EXPECT_EQ(opens + 1, adc.openCount());
        EXPECT_EQ("/dev/adc", adc.lastOpenPath());
        int status = 0;
        local.getDNStatusFromLDR(status);
        local.getDNStatusFromLDR(status);
        EXPECT_EQ(opens + 1, adc.openCount());
    }
    EXPECT_EQ(1, adc.openDescriptors());  // only the fixture's controller
}

TEST_F(FisheyeTest, PictureToDaySendsDay) {
    EXPECT_EQ(1, cam->turnPictureToDay());
    std::vector<IspCall> expected = {{KSIA_PICTURE_DAY_NIGHT, KSIA_SET, 1}};
    EXPECT_EQ(expected, ispCalls());
}

TEST_F(FisheyeTest, PictureToNightPollsUntilTheSwitchIsDone) {
    testutil::VirtualClock clock;
    SimIsp::instance().setNightSwitchBusyMs(100);
    int result = -1;
    int64_t start = PlatformClock::nowMs();
    testutil::runOnVirtualClock([&] { result = cam->turnPictureToNight(); }, 5);
    int64_t took = PlatformClock::nowMs() - start;
    EXPECT_EQ(1, result);
    EXPECT_EQ(2, SimIsp::instance().value(KSIA_PICTURE_DAY_NIGHT));
    int polls = SimIsp::instance().callCount(KSIA_NIGHT_SWITCH_BUSY, KSIA_GET);
    // busy for 100 ms polled every 20 ms, then 40 ms to settle
    EXPECT_GE(polls, 5);
    EXPECT_LE(polls, 7);
    EXPECT_GE(took, 140);
    EXPECT_LT(took, 200);
}

TEST_F(FisheyeTest, PictureToNightGivesUpPollingAfterASecond) {
    testutil::VirtualClock clock;
    SimIsp::instance().setNightSwitchBusyMs(60000);
    int result = -1;
    int64_t start = PlatformClock::nowMs();
    testutil::runOnVirtualClock([&] { result = cam->turnPictureToNight(); }, 10);
    int64_t took = PlatformClock::nowMs() - start;
    EXPECT_EQ(1, result);
    EXPECT_GE(took, 1040);
    EXPECT_LT(took, 1100);
    EXPECT_GE(SimIsp::instance().callCount(KSIA_NIGHT_SWITCH_BUSY), 50);
}

// A stop cuts every wait short; the poll must then end instead of asking the
// ISP again and again until the (held) clock has passed its second.
TEST_F(FisheyeTest, StopEndsTheNightSwitchPollWithTheClockHeld) {
    testutil::VirtualClock clock;
    SimIsp::instance().setNightSwitchBusyMs(60000);
    std::atomic<int> passes{0};
    TestableFisheye* c = cam.get();
    GThread poller(
        [&passes, c] {
            if (passes++ == 0)
                c->turnPictureToNight();
            else
                KestraTime(1, 0).wait();
        },
        "NightSwitchPoll");
    ASSERT_TRUE(poller.start());
    ASSERT_TRUE(PlatformClock::waitForSleepers(1));  // parked in its first 20 ms pause
    const int before = SimIsp::instance().callCount(KSIA_NIGHT_SWITCH_BUSY, KSIA_GET);
    const int64_t at = PlatformClock::nowMs();
    std::atomic<bool> stopped{false};
    std::thread stopper([&] {
        poller.stop();
        stopped = true;
    });
    // Bounded, in real time: the stop must not depend on the virtual clock moving.
    for (int i = 0; i < 200 && !stopped.load(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    const bool stoppedInTime = stopped.load();
    const int polls = SimIsp::instance().callCount(KSIA_NIGHT_SWITCH_BUSY, KSIA_GET) - before;
    const int64_t after = PlatformClock::nowMs();
    if (!stoppedInTime) PlatformClock::useReal();  // lets a spinning poll run out of its second
    stopper.join();
    EXPECT_TRUE(stoppedInTime);
    EXPECT_LE(polls, 2);
    EXPECT_EQ(at, after);
    cam.reset();
}

TEST_F(FisheyeTest, FailedNightPictureDoesNotPoll) {
    SimIsp::instance().failCommand(KSIA_PICTURE_DAY_NIGHT, 0x9);
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(0, cam->turnPictureToNight());
    ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(0, SimIsp::instance().callCount(KSIA_NIGHT_SWITCH_BUSY));
}

TEST_F(FisheyeTest, FixedAnswersOfTheController) {
    int v = 55;
    EXPECT_EQ(1, cam->getMirrorValue(v));
    EXPECT_EQ(55, v);
    EXPECT_EQ(1, cam->initFactorySetting());
    EXPECT_EQ(88, cam->getSensorType());
    EXPECT_EQ(0, cam->getConfigVersion());
    EXPECT_EQ(3, cam->getConfigVersion2());
}

TEST_F(FisheyeTest, RegisteredIdTypes) {
    IdManager& ids = cam->getIdManager();
    for (int id = 1; id <= 41; ++id) EXPECT_EQ(IdManager::TypeCommon, ids.getIdType(id)) << id;
    EXPECT_EQ(IdManager::TypeUnknown, ids.getIdType(42));
    for (int id = 43; id <= 53; ++id) EXPECT_EQ(IdManager::TypeSetOnly, ids.getIdType(id)) << id;
    for (int id = 54; id <= 56; ++id) EXPECT_EQ(IdManager::TypeCommon, ids.getIdType(id)) << id;
}

// ---- initController ----

class FisheyeInitTest : public FisheyeTest {
protected:
    void writeMachineInfo(const std::string& model = "KS-S2-FE") {
        root.write("/hd1/moduleConfig/machineInfo.xml",
                   "<machineInfo hardwareModel=\"" + model +
                       "\" hardwareCode=\"0x5a17\" hardwareDescription=\"S2 fisheye board\" productModel=\"IPC-FE12\" "
                       "barCode=\"6901234567892\" productionTime=\"2024-05-01 08:30:00\"/>\n");
    }
    int init(const std::string& detail, const std::string& parameters, std::string& printed) {
        ModuleConfigure cfg(88, detail, parameters);
        ::testing::internal::CaptureStdout();
        int r = cam->initController(88, cfg);
        printed = ::testing::internal::GetCapturedStdout();
        return r;
    }
};

TEST_F(FisheyeInitTest, InfraredBoardReadsItsDetailKeys) {
    writeMachineInfo();
    std::string out;
    int r = init("autoFocus=1;manualFocus=0;fisheye=360;isInfrared=1;GPIOInfraredLight=2,7,1;autoIris=1;GPIO=1,5,0",
                 "RS485=9600,8,1,0", out);
    EXPECT_EQ(1, r);
    EXPECT_EQ(0u, out.find("S2FisheyeSenseController::initController\n")) << out;
    EXPECT_NE(std::string::npos,
              out.find("=====*****==============initController========gpio group 2 pin  7  val 1 \n"))
        << out;
    EXPECT_EQ(std::string::npos, out.find("failed")) << out;
    EXPECT_EQ("1", cam->getAutoFocusDetail());
    EXPECT_EQ("0", cam->getManualFocusDetail());
    EXPECT_EQ("360", cam->getFisheyeDetail());
    EXPECT_EQ(1, cam->getAutoIris());
    EXPECT_EQ(1, cam->detectSource());
    EXPECT_TRUE(cam->ldrBoard());
    EXPECT_EQ(2, cam->infraredGroup());
    EXPECT_EQ(7, cam->infraredPin());
    EXPECT_EQ(1, cam->infraredDayLevel());
    EXPECT_EQ(1, cam->irCutGroup());
    EXPECT_EQ(5, cam->irCutPin());
    EXPECT_EQ(0, cam->irCutDayLevel());

    EXPECT_EQ(1, SimIsp::instance().preinitCount());
    KsiaPreinitInfo info = SimIsp::instance().preinitInfo();
    EXPECT_STREQ("KS-S2-FE", info.szHardwareModel);
    EXPECT_STREQ("0x5a17", info.szHardwareCode);
    EXPECT_STREQ("S2 fisheye board", info.szHardwareDescription);
    EXPECT_STREQ("IPC-FE12", info.szProductModel);
    EXPECT_STREQ("6901234567892", info.szBarCode);
    EXPECT_STREQ("2024-05-01 08:30:00", info.szProductionTime);
    std::vector<IspCall> expected = {{KSIA_INFRARED_PRESENT, KSIA_SET, 1}};
    EXPECT_EQ(expected, ispCalls());
}

TEST_F(FisheyeInitTest, BoardWithoutInfraredTellsTheIsp) {
    std::string out;
    EXPECT_EQ(1, init("isInfrared=0;GPIO=3,4,1", "", out));
    EXPECT_EQ(0, cam->detectSource());
    EXPECT_FALSE(cam->ldrBoard());
    std::vector<IspCall> expected = {{KSIA_INFRARED_PRESENT, KSIA_SET, 0}};
    EXPECT_EQ(expected, ispCalls());
    // No machine information: no pre-initialisation.
    EXPECT_EQ(0, SimIsp::instance().preinitCount());
    EXPECT_NE(std::string::npos, out.find("get autoFocus from detail failed\n")) << out;
    EXPECT_NE(std::string::npos, out.find("get manualFocus from detail failed\n")) << out;
    EXPECT_NE(std::string::npos, out.find("get fisheye from detail failed\n")) << out;
    EXPECT_NE(std::string::npos, out.find("get autoIris from detail failed\n")) << out;
    EXPECT_EQ(0, cam->getAutoIris());
    EXPECT_EQ(3, cam->irCutGroup());
    EXPECT_EQ(4, cam->irCutPin());
    EXPECT_EQ(1, cam->irCutDayLevel());
}

TEST_F(FisheyeInitTest, MissingInfraredKeyMeansNoInfrared) {
    std::string out;
    EXPECT_EQ(1, init("GPIO=1,2,0", "", out));
    EXPECT_NE(std::string::npos, out.find("get isInfrared from detail failed\n")) << out;
    EXPECT_EQ(0, cam->detectSource());
    EXPECT_EQ(0, SimIsp::instance().value(KSIA_INFRARED_PRESENT));
}

TEST_F(FisheyeInitTest, InfraredWithoutLightGpioStillMarksTheLight) {
    std::string out;
    EXPECT_EQ(1, init("isInfrared=1;GPIO=1,2,0", "", out));
    EXPECT_NE(std::string::npos, out.find("get GPIOInfraredLight from detail failed\n")) << out;
    EXPECT_TRUE(cam->ldrBoard());
    EXPECT_EQ(1, SimIsp::instance().value(KSIA_INFRARED_PRESENT));
}

TEST_F(FisheyeInitTest, MissingOrShortGpioFailsAfterTheRest) {
    std::string out;
    EXPECT_EQ(0, init("isInfrared=0", "", out));
    EXPECT_NE(std::string::npos, out.find("get GPIO from detail failed\n")) << out;
    EXPECT_NE(std::string::npos, out.find("parse GPIO param failed,nRet=-1\n")) << out;
    EXPECT_EQ(1, SimIsp::instance().callCount(KSIA_INFRARED_PRESENT));
    EXPECT_EQ(0, init("isInfrared=0;GPIO=1,2", "", out));
    EXPECT_NE(std::string::npos, out.find("parse GPIO param failed,nRet=2\n")) << out;
}

TEST_F(FisheyeInitTest, UnparsableTextsFail) {
    std::string out;
    EXPECT_EQ(0, init("isInfrared", "", out));
    EXPECT_NE(std::string::npos, out.find("parse detail failed\n")) << out;
    EXPECT_TRUE(ispCalls().empty());
    EXPECT_EQ(0, init("isInfrared=0;GPIO=1,2,0", "=9600", out));
    EXPECT_NE(std::string::npos, out.find("parse senseParameter failed\n")) << out;
}

TEST_F(FisheyeInitTest, LongMachineInformationIsCutToTheField) {
    writeMachineInfo(std::string(40, 'M'));
    std::string out;
    EXPECT_EQ(1, init("isInfrared=0;GPIO=1,2,0", "", out));
    KsiaPreinitInfo info = SimIsp::instance().preinitInfo();
    EXPECT_EQ(std::string(31, 'M'), std::string(info.szHardwareModel));
    EXPECT_STREQ("0x5a17", info.szHardwareCode);
}

}  // namespace
