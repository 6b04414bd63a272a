#pragma once
#include <cstdint>

#include "core/SensorTypes.h"
#include "drivers/ispboard/IspBoardSenseController.h"
#include "drivers/ispboard/SeawolfFrame.h"

// The Seawolf board: a command byte per register reached with the board's own
// frames (SeawolfFrame), the answer checked for its checksum, then for its
// command, data length and value. Besides the image settings: lens type,
// fluorescent compensation, exposure area and preference, gain boost and the
// resolution (also written from the video system), and seven commands.
// Register table: SeawolfSenseController::boardTable, docs/ispboard.md.
class SeawolfSenseController : public IspBoardSenseController {
public:
    enum { SensorType = SensorTypes::Seawolf };
    enum : uint16_t { RegMirror = 0x06, RegLensType = 0x10, RegResolution = 0x1D };
    enum { IdMirror = 6, IdLensType = 16, IdResolution = 29 };
    // The values of the resolution register.
    enum { Resolution1080 = 0, Resolution720 = 1, ResolutionD1 = 2 };

    SeawolfSenseController();
    ~SeawolfSenseController() override;
    static const IspBoardTable& boardTable();

    // ---- the board's own frame exchange ----
    // Writes the checksum into the frame's last byte: the complement of the
    // sum modulo 256 of the bytes before it.
    static void computeCheckSum(unsigned char* frame, int length);
    // One exchange under the family mutex: the frame out (its checksum
    // computed), the answer in: its length, or ShortWrite, ReadFailed (bytes
    // missing, or no start byte), AnswerTooLong (a data length that the
    // capacity cannot take: the rest is left on the line), ChecksumMismatch
    // ("the checksum get from sensor is error!").
    int sendCommand(unsigned char* frame, int length, unsigned char* answer, int capacity);

    // ---- overridden operations, in slot order ----
    int getMirrorValue(int& value) override;
    int setSensorVideoSystem(int sensorType, const VideoResolution& res) override;
    int initController(int sensorType, const ModuleConfigure& cfg) override;

protected:
    int writeBoardRegister(const IspBoardTable::Register& reg, int value) override;
    int readBoardRegister(const IspBoardTable::Register& reg, int& value) override;

private:
    // sendCommand with the family mutex held.
    int exchange(unsigned char* frame, int length, unsigned char* answer, int capacity);
    // A frame of `command` and its answer, once more after a drain when the
    // first failed: 1 when the answer carries `answerCommand` and a value of
    // the register's width (`expectValue` when not negative), with that value.
    int transact(uint8_t command, const IspBoardTable::Register& reg, int value, uint8_t answerCommand, int expectValue,
                 int& answerValue);
};
