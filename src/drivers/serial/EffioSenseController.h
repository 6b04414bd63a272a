#pragma once
#include <cstddef>

#include "core/SensorTypes.h"
#include "drivers/serial/EffioParameter.h"
#include "drivers/serial/SerialSenseController.h"

// Controller of a Sony Effio camera processor on a serial line. The processor
// keeps its settings in a store addressed by category number and byte number;
// a frame carries a start byte, a command, the category, the byte, a count,
// the data and a checksum (the sum modulo 256 of the bytes before it):
//
//   write  A5 01 cc bb nn d0 .. dn-1 ss   answered by the status A5 tt ss
//   read   A5 02 cc bb nn ss              answered by A5 02 d0 .. dn-1 ss
//
// In an answer the checksum also counts the checksum of the frame it answers,
// so that an answer that comes too late for its frame is not taken for the
// answer to the next one. Status tt: 00 done, 01 communication error (a damaged frame: the write is
// tried again), 02 category number error, 03 byte number error, anything else
// another error (these three are final). A parameter that is a bit field of
// a byte is written by reading the byte, changing its bits and writing it back.
class EffioSenseController : public SerialSenseController {
public:
    enum {
        SensorType = SensorTypes::Effio,
        StartByte = 0xA5,
        WriteCommand = 0x01,
        ReadCommand = 0x02,
        StatusLength = 3,
        MaxData = 16,
        FrameCapacity = 6 + MaxData,
        ReadTimeout = SearchTimeout,
        VersionCategory = 0x00,
        VersionLength = 2
    };
    // Status codes of a write's answer.
    enum { StatusDone = 0x00, CommunicationError = 0x01, CategoryError = 0x02, ByteError = 0x03, OtherError = 0x04 };

    EffioSenseController();
    ~EffioSenseController() override;

    // The parameter table, ascending by id.
    static const EffioParameter* parameterTable(size_t& count);

    // Builds a frame (command, category, byte, count, data, checksum) into
    // `frame`; its length, 0 when it does not fit `capacity` or count is
    // outside 0..MaxData.
    static int assembleData(unsigned char* frame, int capacity, int command, int category, int byteNo,
                            const unsigned char* data, int count);
    // `value` as `count` bytes, high byte first (the low `count` bytes of it).
    static void splitData(int value, int count, unsigned char* out);
    // `original` with its `bitCount` bits from `startBit` replaced by the low
    // bits of `value`; bits outside the byte are ignored.
    static unsigned char modifyAppointedBits(unsigned char original, int value, int startBit, int bitCount);
    // The sum modulo 256 of `length` bytes.
    static unsigned char checksum(const unsigned char* bytes, int length);
    // The text of a status code: "Communication error", "Category number
    // error", "Byte number error" or "Other error".
    static const char* statusText(int status);
    // Checks a read's answer to a request whose checksum was `requestSum`: 1
    // and the data copied out when it is a read answer of `count` data bytes
    // with a right checksum; 0 for another length or start ("getParmaters recv
    // len error"), -1 for a wrong checksum ("check sum error expect=%d , but
    // actual = %d"). Prints the reason.
    static int checkReadAnswer(const unsigned char* answer, int length, int count, unsigned char requestSum,
                               unsigned char* data);

    // Writes `count` bytes from category/byte; 1 when the processor reported done.
    int setParameters(int category, int byteNo, const unsigned char* data, int count);
    // Reads `count` bytes from category/byte; 1 and `data` filled on success.
    int getParameters(int category, int byteNo, int count, unsigned char* data);
    // The parameter-list forms of the pipeline stay visible beside the frame ones.
    using ISensorController::getParameters;
    using ISensorController::setParameters;

    // ---- overridden operations ----
    int getMirrorValue(int& value) override;
    int getParameterFromSensor(int id, int& value) override;
    int setParameterToSensor(int id, int value) override;
    int setSensorVideoSystem(int sensorType, const VideoResolution& res) override;
    int initController(int sensorType, const ModuleConfigure& cfg) override;
    // HDR on or off (the table's row 57).
    int updateHDRMode(int mode) override;

    const EffioParameter* findRow(int id) const;

private:
    int writeRow(const EffioParameter& row, int value);
    int readRow(const EffioParameter& row, int& value);
};
