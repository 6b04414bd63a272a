#pragma once
#include <atomic>
#include <cstdint>

#include "core/SensorTypes.h"
#include "drivers/ispboard/ITNFrame.h"
#include "drivers/ispboard/IspBoardSenseController.h"

// The ITN board: a register file reached with the board's own seven-byte
// frames (ITNFrame), each answer checked in stages; the port under the keys
// "RS232"; the day/night status read from a GPIO input that the detail key
// "GPIODNLevel" names (group,pin,day level). Register table:
// ITNSenseController::boardTable, docs/ispboard.md.
class ITNSenseController : public IspBoardSenseController {
public:
    enum { SensorType = SensorTypes::ITN, AnswerLength = ITNFrame::Length };
    enum : uint16_t { RegMirror = 0x1006, RegDayNightMode = 0x1015, RegNightPicture = 0x1020 };
    enum { IdMirror = 6, IdDayNightMode = 21 };

    ITNSenseController();
    ~ITNSenseController() override;
    static const IspBoardTable& boardTable();

    // ---- the board's own frame exchange ----
    // Writes the checksum into the frame's last byte: the exclusive or of the
    // bytes between the first and the last.
    static void computeCheckSum(unsigned char* frame, int length);
    // One exchange under the family mutex: the frame out (its checksum
    // computed), the seven-byte answer in, checked in stages: 2 the start byte
    // and the operation ("2 recv checksum error"), 3 the register ("3 recv
    // checksum error"), 4 the checksum ("4 recv checksum error"). The answer's
    // length, or ShortWrite, ReadFailed (a stage's bytes did not all come),
    // ChecksumMismatch (a stage's check failed), AnswerTooLong (a capacity
    // below seven: nothing read).
    int sendCommand(unsigned char* frame, int length, unsigned char* answer, int capacity);

    // ---- overridden operations, in slot order ----
    int getMirrorValue(int& value) override;
    int getDNStatusFromSensor(int& status) override;
    int turnPictureToDay() override;
    int turnPictureToNight() override;
    int initController(int sensorType, const ModuleConfigure& cfg) override;

    // Whether start-up found the day/night input in the detail.
    bool hasDayNightGpio() const { return m_nGpioPin.load() >= 0; }

protected:
    int writeBoardRegister(const IspBoardTable::Register& reg, int value) override;
    int readBoardRegister(const IspBoardTable::Register& reg, int& value) override;

private:
    // sendCommand with the family mutex held.
    int exchange(unsigned char* frame, int length, unsigned char* answer, int capacity);
    // A command and its answer, once more after a drain when the first failed:
    // 1 with the value that the answer carries.
    int transact(uint8_t op, uint16_t address, int value, int& answerValue);
    void readDayNightGpio(const ModuleConfigure& cfg);

    // The day/night input: set by start-up, read by the day/night worker.
    std::atomic<int> m_nGpioGroup{-1}, m_nGpioPin{-1}, m_nGpioDayLevel{1};
};
