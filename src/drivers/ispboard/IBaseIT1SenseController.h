#pragma once
#include <atomic>
#include <cstdint>

#include "drivers/ispboard/IspBoardSenseController.h"

class GThread;

// The base of the IT1 board family: image settings in the board's registers
// (table: IBaseIT1SenseController::it1Table, docs/ispboard.md), the shutter
// limits with their rules, white balance through the chroma pairs RY1/BY1 to
// RY4/BY4, the board's day/night modes, and two workers:
//
// - autoThreadFunc ("IT1AutoThread"), once a second: while the board decides
//   day/night itself (mode 0), reads the board's day/night status, which
//   getDNStatusFromSensor then reports;
// - externalTriggerThreadFunc ("IT1TriggerThread"), every 200 ms: while the
//   day/night mode is 3 (external trigger), reads the board's trigger input and
//   puts the picture into night mode while it is high, day mode while low.
//
// Both start when start-up is complete (NotifySensorInitComplate), pause on the platform
// clock (so a stop ends a pause at once) and are stopped first in the destructor.
// They never wait for the line: while another exchange holds the family mutex
// a worker leaves that pass out. An owner that stops the controller stops
// these first (stopBoardWorkers, then stopWorker): a day/night pass may be
// waiting for the line behind one of their exchanges.
class IBaseIT1SenseController : public IspBoardSenseController {
public:
    // The family's registers (addresses of this library's own board definition).
    enum : uint16_t {
        RegBrightness = 0x0010,
        RegContrast = 0x0011,
        RegSaturation = 0x0012,
        RegSharpness = 0x0013,
        RegGamma = 0x0014,
        RegMirror = 0x0020,        // bit 0 horizontal, bit 1 vertical, others the board's
        RegShutterMode = 0x0030,   // 0 automatic, 1 fixed
        RegFixedShutter = 0x0031,
        RegShutterLimit = 0x0032,  // 16 bits: minimum << 8 | maximum
        RegWhiteBalance = 0x0040,  // 0 automatic, 1 manual
        RegChroma1 = 0x0041,       // RYn in the high nibble, BYn in the low nibble; 1 to 4
        RegDayNight = 0x0050,      // bit 0 the board decides, bit 1 night
        RegDayNightStatus = 0x0051,  // read-only: 1 day, 0 night, as the board sees it
        RegDayToNight = 0x0052,    // 16 bits
        RegNightToDay = 0x0053,    // 16 bits
        RegIrisValue1 = 0x0060,    // 1 to 4
        RegIrisVoltage = 0x0064,
        RegNightColor = 0x0070,
        RegTriggerInput = 0x0080   // read-only: the external trigger input's level
    };
    // The parameter ids that the controller codes itself.
    enum {
        IdMirror = 6,
        IdShutterMode = 8,
        IdFixedShutter = 9,
        IdMinShutter = 10,
        IdMaxShutter = 11,
        IdRedChroma = 13,
        IdBlueChroma = 14,
        IdDayNightMode = 15,
        IdIrisSpeed = 18
    };
    enum { ChromaPairs = 4, IrisValues = 4, IrisSpeeds = 4, AutoPeriodMs = 1000, TriggerPeriodMs = 200 };
    // Day/night modes of id 15.
    enum { BoardDecides = 0, AlwaysDay = 1, AlwaysNight = 2, ExternalTrigger = 3 };

    // The IT1 board's register and parameter table.
    static const IspBoardTable& it1Table();
    // The four iris values of an iris speed (0-3).
    static const uint8_t (&irisValuesOf(int speed))[IrisValues];

    ~IBaseIT1SenseController() override;

    // ---- overridden operations, in slot order ----
    int getMirrorValue(int& value) override;
    int getDNStatusFromSensor(int& status) override;
    int turnPictureToDay() override;
    int turnPictureToNight() override;
    // Starts the workers (after a successful initController); 0 before.
    int NotifySensorInitComplate() override;
    int initController(int sensorType, const ModuleConfigure& cfg) override;

    // ---- the board's day/night ----
    int openDayNightMode();   // the board decides
    int closeDayNightMode();  // the controller decides
    // Night picture on / off. These hide ISensorController::enterNightMode (the
    // day/night machinery's step), which stays reachable through the base class.
    int enterNightMode();
    int exitNightMode();
    int base_setDayToNightTransition(int value);
    int base_setNightToDayTransition(int value);

    // ---- the workers ----
    int autoThreadFunc();
    int externalTriggerThreadFunc();
    // Stops both workers and waits for them; safe to call more than once.
    void stopBoardWorkers() override;
    GThread& getAutoThread() { return *m_pAutoThread; }
    GThread& getTriggerThread() { return *m_pTriggerThread; }
    int getAutoPassCount() const { return m_nAutoPasses.load(); }
    int getTriggerPassCount() const { return m_nTriggerPasses.load(); }
    int getDayNightModeOfBoard() const { return m_nBoardDNMode.load(); }

protected:
    IBaseIT1SenseController(int sensorType, const IspBoardTable& table);

    int setOwnParameter(const IspBoardTable::Parameter& row, int value) override;
    int getOwnParameter(const IspBoardTable::Parameter& row, int& value) override;
    // Opens the port (the serial modules' texts here; the zoom board has its own).
    virtual bool openPort(const ModuleConfigure& cfg);
    // Reads back the registers whose values the controller composes with.
    void readBack();

private:
    int setShutterLimit(int id, int value);
    int setChroma(bool red, int value);
    int setIrisSpeed(int value);
    int setDayNightModeOfBoard(int mode);
    // Night picture on or off; with `tryOnly` (the workers) Busy while the line is in use.
    int setNightBit(int on, bool tryOnly);

    GThread* m_pAutoThread = nullptr;
    GThread* m_pTriggerThread = nullptr;
    std::atomic<bool> m_bBoardReady{false};  // set before the workers start
    std::atomic<int> m_nBoardDNMode{BoardDecides};
    std::atomic<int> m_nBoardDNStatus{-1};
    std::atomic<int> m_nLastTrigger{-1};
    std::atomic<int> m_nAutoPasses{0};
    std::atomic<int> m_nTriggerPasses{0};
};
