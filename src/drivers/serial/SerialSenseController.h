#pragma once
#include <functional>
#include <string>

#include "core/ISensorController.h"
#include "platform/KSMutex.h"

// The transaction layer shared by the controllers of camera modules on a serial
// line: the port is opened and set up from the module record, every command is
// written through the application's IUARTController and confirmed by the
// module's reply, with three attempts and a drain of the port between them, all
// under the transaction mutex.
//
// Three reply forms: the search form takes one read of 3 bytes and looks for one
// of the module's two acknowledgement patterns in it; the byte form takes the
// same read and tests it byte by byte against the patterns from a first byte
// 0x90 (stray bytes fail it), printing a debug line per attempt; the message
// form reads VISCA messages (0x90 ... 0xFF) byte by byte, skipping completion
// messages.
class SerialSenseController : public ISensorController {
public:
    enum ReplyForm { SearchForm, MessageForm, ByteForm };
    enum {
        AttemptCount = 3,
        MaxMessageLength = 100,  // the receive buffer and the longest message read
        // Read time-outs, in units of IUARTController::TimeoutUnitMs.
        MessageInquiryTimeout = 2,
        MessageAckTimeout = 3,
        SearchTimeout = 4,
        // A line that keeps talking must not keep a transaction forever: at most
        // this many completion messages are skipped before a reply counts as failed.
        MaxSkippedCompletions = 16,
        // Reads of stale input (without waiting) before a transaction, at most.
        StaleReadLimit = 8
    };

    SerialSenseController(int sensorType, ReplyForm form);

    // Acknowledged command: 1 when the module acknowledged, 0 after three failed attempts.
    int setParameterValue(const char* packet, int length) override;
    // Inquiry: 1 and the answer copied out when exactly `answerLength` bytes came
    // back, 0 after three failed attempts.
    int getParameterValue(const char* packet, int length, char* answer, int answerLength) override;

    // The VISCA message reader: one byte at a time with the given time-out, bytes
    // before a 0x90 discarded, up to the first 0xFF or 100 bytes. The message
    // length, or -1 for a message longer than `capacity`, an empty or an unended one.
    int readViscaMessage(unsigned char* buffer, int capacity, int timeout);

    // The search form's two 3-byte acknowledgement patterns, tried in order.
    void setAckPatterns(const unsigned char first[3], const unsigned char second[3]);

    const std::string& getDeviceName() const { return m_strDeviceName; }
    int getConfiguredBaudrate() const { return m_nBaudrate; }

protected:
    // Opens the port from the module record: the device ("RS485" of the detail),
    // "isInfrared", the line settings (baud, data bits, stop bits, parity), then
    // the port's setParameter and a drain. False, with the reason printed, on failure.
    bool openSerialPort(const ModuleConfigure& cfg);
    // The text openSerialPort prints when the parameter string lacks the line settings.
    void setMissingLineText(const char* text) { m_pszMissingLineText = text; }
    // Whether the controller may reach the module (the base initialisation has
    // finished); logs "m_BaseSensorStatus != ISensorController::InitSuccess!" when not.
    bool statusReady();
    // One reply of the message form: message reads, completions skipped.
    int receiveMessage(unsigned char* buffer, int capacity, int timeout);

    // The judgement of one reply of exchange(): ReplyAccepted ends the
    // transaction with success; ReplyRetry refuses the reply (the check has
    // printed why, given the attempt number) and lets the next attempt come;
    // ReplyFinal refuses it with no further attempt (an answer that another
    // attempt would only repeat).
    enum ReplyVerdict { ReplyFinal = -1, ReplyRetry = 0, ReplyAccepted = 1 };
    using ReplyCheck = std::function<int(const unsigned char* reply, int length, int attempt)>;
    // A transaction of the protocols whose reply has a known length (ASCII
    // register modules, byte-frame processors), under the transaction mutex:
    // up to three attempts of writing the packet whole ("===send(%d times)
    // @<operation> failed,send(%d):" and the packet when short), one read of up
    // to `answerLength` bytes with `timeout`, and `check`; the port is drained
    // after each refused reply. 1 when a reply was accepted, else 0.
    int exchange(const char* operation, const unsigned char* packet, int length, int answerLength, int timeout,
                 const ReplyCheck& check);

    KSMutex m_UARTMutex;  // held for a whole transaction with its retries
    const char* m_pszMissingLineText = "get RS232Parameter from senseParameter failed";
    unsigned char m_szRecvBuf[MaxMessageLength];
    std::string m_strDeviceName;
    int m_nBaudrate = 9600;
    int m_nDataBits = 8;
    int m_nStopBits = 1;
    int m_nParity = 0;

private:
    // One transaction with its three attempts: a command (answer nullptr) waits for
    // an acknowledgement, an inquiry for an answer of answerLength bytes.
    int transact(const char* operation, const char* packet, int length, char* answer, int answerLength);

    // What is already in the port when a transaction starts is no reply to it
    // (a reply that came after its attempt's time-out, a completion): it is
    // read away without waiting, so that it is not taken for this packet's
    // acknowledgement or answer.
    void discardStaleInput();
    // The byte form's test of the 3 bytes read: byte 0 is 0x90, bytes 1 and 2 are
    // those of one of the patterns.
    bool isAckByteByByte() const;

    ReplyForm m_eForm;
    unsigned char m_ack[2][3];
};
