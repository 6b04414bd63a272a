#pragma once
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "line/SimSerialDevice.h"

// A simulated Effio camera processor on a serial line: a category/byte store
// behind checksummed frames, not a script of replies.
//
//   write  A5 01 cc bb nn d0 .. dn-1 ss   answered by the status A5 tt ss
//   read   A5 02 cc bb nn ss              answered by A5 02 d0 .. dn-1 ss (or an error status)
//
// ss is the sum modulo 256 of the bytes before it; in an answer it also counts
// the checksum of the frame answered, so that an answer that comes too late
// for its frame is not taken for the answer to the next one. Status tt: 00 done; 01
// communication error (wrong checksum, unknown command); 02 category number
// error (no such category); 03 byte number error (bytes beyond the category);
// 04 other error (a write to the read-only version category, a count of 0 or
// above 16). Bytes before a start byte are skipped; a frame broken off for
// more than InterByteGapMs is forgotten. Answers come one frame after the
// frame's last byte.
//
// Fault injection as for every simulated serial device (SimSerialDevice);
// BufferFull makes the processor answer a write with a communication error,
// the write not carried out.
class SimEffioProcessor : public SimSerialDevice {
public:
    enum { InterByteGapMs = 50, MaxData = 16, VersionCategory = 0 };
    enum { Done = 0x00, CommunicationError = 0x01, CategoryError = 0x02, ByteError = 0x03, OtherError = 0x04 };

    struct Category {
        std::vector<uint8_t> bytes;
        bool readOnly = false;
    };
    struct Profile {
        std::string name;
        std::map<int, Category> categories;
        int baud = 9600;
    };
    // The processor's store as the Effio controller's table lays it out, with
    // each field at its power-on value, and the version category (1.2).
    static Profile profile();

    SimEffioProcessor();
    void setProfile(const Profile& profile);

    // ---- state, for tests and tools ----
    // A stored byte, -1 when the store has no such byte.
    int byteAt(int category, int byteNo) const;
    void setByte(int category, int byteNo, uint8_t value);
    int writeCount() const;   // writes carried out
    int frameCount() const;   // complete frames received, any kind
    // How many answers of each status code were sent.
    int statusCount(int code) const;
    // The last frames received (at most the 1000 latest), oldest first.
    std::vector<std::vector<uint8_t>> receivedFrames() const;

protected:
    int moduleBaudLocked() const override;
    void receiveLocked(const uint8_t* data, int length, int64_t nowMs) override;

private:
    void handleFrame(const std::vector<uint8_t>& frame, int64_t at);
    // Queues an answer with its checksum, which also counts the checksum of
    // the frame it answers (0 when there was no whole frame).
    void answerStatus(int code, int64_t at, uint8_t requestSum);
    void answer(std::vector<uint8_t> bytes, int64_t at, uint8_t requestSum);

    Profile m_profile;
    std::vector<uint8_t> m_inbuf;
    int64_t m_lastByteMs = 0;
    int m_writes = 0, m_frames = 0;
    std::map<int, int> m_statusCounts;
    std::vector<std::vector<uint8_t>> m_received;
};
