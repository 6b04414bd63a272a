#pragma once
#include <atomic>
#include <cstddef>
#include <string>

#include "drivers/serial/AsciiParameter.h"
#include "drivers/serial/SerialSenseController.h"

class GThread;

// The engine shared by the controllers of ASCII register camera modules: a
// command is text, ":W"/":w" + register address + data in hexadecimal for a
// write and ":R"/":r" + address for a read. The module echoes every command it
// accepted, character for character; the answer to a read is the read command
// with the register's value in the data digits. A module is its parameter
// table (AsciiParameter rows) and its start-up exchange.
//
// Some modules report their state in a status register; a worker thread then
// reads it once a second (threadBody), so that the day/night machinery follows
// the module's own day/night state.
class AsciiSenseController : public SerialSenseController {
public:
    enum {
        CommandCapacity = 32,  // the longest command or answer text, terminator included
        MaxHexDigits = 8,
        ReadTimeout = SearchTimeout,
        StatusPeriodSeconds = 1,
        StatusNightBit = 0x01  // the status register's bit that says night
    };

    // `className` names the start line and the messages; `table` outlives the controller.
    AsciiSenseController(int sensorType, const char* className, const AsciiParameter* table, size_t count);
    ~AsciiSenseController() override;

    // `prefix` followed by `value` in upper-case hexadecimal, zero-padded to `width`
    // digits (0 to 8; longer values keep all their digits), truncated to
    // CommandCapacity - 1 characters.
    static std::string assembleString(const char* prefix, int value, int width);
    // The value of `length` hexadecimal digits (1 to 8, either case); 0 for
    // any other character or length, 1 on success.
    static int ascToHex(const char* text, int length, int& value);

    // Writes `text` and expects its echo: an answer of another length prints
    // "===recv(%d times) @sendData failed,send:", one that differs
    // "===check(%d times) @sendData failed,send:", each with the packet; three
    // attempts with a drain between them. 1 when echoed.
    int sendData(const char* text);
    // Sends the read command `text` and expects `expectedLength` characters:
    // the command's first six (":R"/":r" and the address), then the value's
    // hexadecimal digits. 1 and `value` set on success, else 0 (value untouched).
    int recvData(const char* text, int expectedLength, int& value);

    // The judgement of a read's answer: AnswerOk (and `value` set) when it is
    // `expectedLength` characters that repeat the command's first six and carry
    // hexadecimal digits after them; AnswerLength for another length;
    // AnswerMismatch when it does not repeat the command or carries a non-hex digit.
    enum AnswerCheck { AnswerOk = 1, AnswerLength = 0, AnswerMismatch = -1 };
    static int checkReadAnswer(const char* command, const unsigned char* answer, int length, int expectedLength,
                               int& value);

    const AsciiParameter* findRow(int id) const { return AsciiParameter::find(m_pTable, m_nTableSize, id); }
    const char* className() const { return m_pszClassName; }

    // ---- overridden operations ----
    int getMirrorValue(int& value) override;
    int getParameterFromSensor(int id, int& value) override;
    int setParameterToSensor(int id, int value) override;
    int setSensorVideoSystem(int sensorType, const VideoResolution& res) override;
    int NotifySensorInitComplate() override;
    // The module's day/night state (1 day, 0 night): as the worker last read it,
    // else read now from the status register; 0 for a module without one.
    int getDNStatusFromSensor(int& status) override;

    // One pass of the worker: reads the status register, then waits a second.
    void threadBody();
    // Stops the worker and waits until it has ended; safe to call more than once.
    void stopModuleWorker();
    bool isModuleWorkerRunning() const;
    // Passes of the worker so far; the module's state as last read (1 day, 0 night, -1 unknown).
    int workerPassCount() const { return m_nWorkerPasses.load(); }
    int moduleDNState() const { return m_nModuleDN.load(); }

protected:
    // Prints the start line "__<class>::init,ModuleConfigure is(%s,%s)" and opens the port.
    bool openModule(const ModuleConfigure& cfg);
    // Writes a register: `prefix` (":W" + address) followed by the data.
    int writeRegister(const char* prefix, int data, int width);
    // The status register that the worker reads (a read command and its answer
    // length); the worker is created here and started when initialisation is complete.
    void setStatusRegister(const char* readCommand, int answerLength, const char* workerName);
    // Reads the status register once; 1 and m_nModuleDN updated on success.
    int readStatus();

private:
    // Prints a refused answer: what went wrong ("recv" or "check"), the packet and the answer.
    void reportAnswer(const char* what, const char* operation, int attempt, const unsigned char* packet, int length,
                      const unsigned char* reply, int n);

    const char* m_pszClassName;
    const AsciiParameter* m_pTable;
    size_t m_nTableSize;
    std::string m_strStatusRead;
    int m_nStatusLength = 0;
    GThread* m_pWorker = nullptr;
    std::atomic<int> m_nWorkerPasses{0};
    std::atomic<int> m_nModuleDN{-1};
};
