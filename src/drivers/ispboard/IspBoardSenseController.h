#pragma once
#include <cstdint>
#include <functional>
#include <map>

#include "core/ISensorController.h"
#include "drivers/ispboard/IspBoardTable.h"
#include "platform/KSMutex.h"

class SerialLineSettings;

// The frame exchange shared by the controllers of ISP boards that answer
// count-prefixed, checksummed frames over a serial line (frames: IspBoardFrame),
// and the parameter path over a board's register table (IspBoardTable).
//
// Every exchange, with its second attempt and the drain after a failure, holds
// the family mutex m_FrameMutex from the first write to the last checksum test;
// the cached register values (for registers that carry several fields) are
// kept under the same mutex, so a read-modify-write of such a register is one
// exchange as far as every other thread is concerned.
class IspBoardSenseController : public ISensorController {
public:
    enum {
        AnswerCapacity = 10,  // the answer buffer of setParameterValue/getParameterValue
        ReadTimeout = 6,      // units of IUARTController::TimeoutUnitMs
        MaxFrameLength = 256,
        // A line that keeps talking cannot keep recvLeftData forever.
        MaxDrainBytes = 512,
        // Negative results of baseSendCommand.
        ShortWrite = -1,
        ReadFailed = -2,
        ChecksumMismatch = -3,
        AnswerTooLong = -4,
        // tryReadRegister / modifyRegister: the line is in use, nothing was done.
        Busy = -5
    };

    IspBoardSenseController(int sensorType, const IspBoardTable& table);

    // ---- the frame exchange ----
    // Writes the checksum into the frame's last byte: the sum modulo 256 of the
    // bytes before it (0 for a frame of one byte).
    static void computeCheckSum(unsigned char* frame, int length);
    // One exchange: the frame (its checksum computed) out, the answer in. The
    // answer's length, or ShortWrite, ReadFailed, ChecksumMismatch, AnswerTooLong.
    int baseSendCommand(unsigned char* frame, int length, unsigned char* answer, int capacity);
    // baseSendCommand up to twice: the first positive result, else the second result.
    int sendCommand(unsigned char* frame, int length, unsigned char* answer, int capacity);
    // A write: 1 when the board acknowledged it (an answer of 5 bytes that echoes
    // the frame's operation and register), else 0 after a drain of the line.
    int setParameterValue(const char* frame, int length) override;
    using ISensorController::getParameterValue;
    // A read: 1 and the 8- or 16-bit value of an answer of 6 or 7 bytes.
    int getParameterValue(const char* frame, int length, int& value);
    // Reads single bytes (time-out 6) until a read yields nothing.
    void recvLeftData();

    // ---- register bytes ----
    static int assembleData(unsigned char high, unsigned char low);
    // The byte with bit `bit` (0-7) set when `value` is non-zero, cleared otherwise.
    static unsigned char modifyAppointedBit(unsigned char byte, int bit, int value);
    // The byte with its high / low nibble replaced by the low 4 bits of `value`.
    static unsigned char modifyHighFourBits(unsigned char byte, int value);
    static unsigned char modifyLowFourBits(unsigned char byte, int value);

    // ---- registers of the table ----
    // 1 when the board took / gave the value; the cache follows every success.
    int writeRegister(uint16_t address, int value);
    int readRegister(uint16_t address, int& value);
    // For the workers: readRegister, or Busy at once (nothing sent) while another
    // exchange holds the family mutex, so that a worker never waits for the line.
    int tryReadRegister(uint16_t address, int& value);
    // A read-modify-write of a register as one step under the family mutex:
    // `compose` gets the register's cached value (read from the board first
    // when none is cached) and gives the value to write, or refuses (false:
    // nothing is sent). 1 when written, 0 when an exchange failed, -1 refused;
    // with `tryOnly`, Busy at once while another exchange holds the family mutex.
    int modifyRegister(uint16_t address, const std::function<bool(int current, int& next)>& compose,
                       bool tryOnly = false);
    // The cached value of a register, read from the board when none is cached.
    bool currentRegister(uint16_t address, int& value);
    // The cached value of a register; false when none is cached.
    bool cachedRegister(uint16_t address, int& value);
    const IspBoardTable& getTable() const { return m_table; }
    // Stops the controller's own workers and waits for them (none here).
    virtual void stopBoardWorkers() {}

    // ---- overridden operations, in slot order ----
    int getParameterFromSensor(int id, int& value) override;
    int setParameterToSensor(int id, int value) override;
    int setSensorVideoSystem(int sensorType, const VideoResolution& res) override;

protected:
    // The controller's own coding of a row of kind Own; 0 (nothing done) here.
    virtual int setOwnParameter(const IspBoardTable::Parameter& row, int value);
    virtual int getOwnParameter(const IspBoardTable::Parameter& row, int& value);
    // Prints a text of the table with its "%d" replaced by the value (a newline added).
    static void printText(const char* text, int value);
    // Whether the value passes the row's range (compared unsigned after the minimum).
    static bool inRange(const IspBoardTable::Parameter& row, int value);

    // The texts that opening the port prints on failure: those of the serial
    // modules ("open uart (%s) failed") or the RS-485 texts of the zoom board
    // ("RS485 uart open(%s) failed", "RS485 setParameter failed(%s,%d,%d,%d,%d)").
    enum PortTexts { SerialModuleTexts, RS485Texts };
    // Opens the port from the module record ("isInfrared" besides), sets the
    // line, drains it. False, with the reason printed, on failure.
    bool openBoardPort(const ModuleConfigure& cfg, SerialLineSettings& line, PortTexts texts);

    // One register write / read on the line, m_FrameMutex held: 1 when the
    // board took / gave the value. The family's frames here; a board with a
    // frame exchange of its own overrides both.
    virtual int writeBoardRegister(const IspBoardTable::Register& reg, int value);
    virtual int readBoardRegister(const IspBoardTable::Register& reg, int& value);
    // recvLeftData with m_FrameMutex held.
    void drain();
    // The first step of an exchange, m_FrameMutex held: `checkSum` writes the
    // frame's checksum into its last byte, the frame goes out. 0, or ShortWrite
    // ("p_pszSendCommandLen = %d,nSendLength=%d") when it could not all go.
    int writeCommand(unsigned char* frame, int length, void (*checkSum)(unsigned char*, int));

    KSMutex m_FrameMutex;  // the frame exchange and m_registerCache

private:
    // The bodies of the public operations, with m_FrameMutex held.
    int exchange(unsigned char* frame, int length, unsigned char* answer, int capacity);
    int exchangeTwice(unsigned char* frame, int length, unsigned char* answer, int capacity);
    // exchangeTwice on a copy of the caller's frame, into a zeroed answer buffer.
    int exchangeCopy(const unsigned char* frame, int length, unsigned char* command,
                     unsigned char (&answer)[AnswerCapacity]);
    int writeFrame(const unsigned char* frame, int length);
    int readFrame(const unsigned char* frame, int length, int& value);
    int writeRegisterLocked(uint16_t address, int value);
    int readRegisterLocked(uint16_t address, int& value);
    int modifyRegisterLocked(uint16_t address, const std::function<bool(int current, int& next)>& compose);

    const IspBoardTable& m_table;
    std::map<uint16_t, int> m_registerCache;  // under m_FrameMutex
};
