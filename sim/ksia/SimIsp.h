#pragma once
#include <cstdint>
#include <map>
#include <mutex>
#include <vector>

#include "drivers/fisheye/KsiaDriver.h"

// The simulated ISP driver library of the fisheye board: the state behind
// ksia_preinit and ksia_ioctrl of the host build, and its control API for
// tests and the simulator camera.
//
// Behaviour of the simulated library:
//   - It keeps a value for every command of the contract, starting from
//     defaults (see reset()); a set stores the value, a get answers it.
//   - A set is checked against the command's range and refused with
//     ErrOutOfRange (value not stored); get-only commands (177, 241) refuse
//     sets with ErrReadOnly; unknown commands answer ErrUnknownCommand, a
//     null value pointer ErrNullValue, a direction other than 0/1 ErrDirection.
//   - Command 241 answers the scene level set with setSceneLevel(); a large
//     level is a dark scene (the controller reports night when the level
//     reaches the day-to-night threshold of command 50).
//   - Setting command 49 to 2 (night picture) starts a night switch: command
//     177 then answers 1 until the switch time (setNightSwitchBusyMs) has
//     passed on the platform clock, 0 afterwards. The virtual clock of the
//     platform drives it in tests.
//   - Every call is recorded (calls()); failCommand() makes a command fail
//     with a given code, for every call or for a number of calls. A failed
//     call changes nothing and leaves a get's output untouched.
// All members are thread-safe.
class SimIsp {
public:
    enum {
        ErrUnknownCommand = 0x1001,
        ErrOutOfRange = 0x1002,
        ErrReadOnly = 0x1003,
        ErrNullValue = 0x1004,
        ErrDirection = 0x1005,
        ErrInjected = 0x10FF
    };
    static constexpr int DefaultSceneLevel = 10;
    static constexpr int64_t DefaultNightSwitchBusyMs = 300;

    struct Call {
        int nCommand = 0;
        int nDirection = 0;
        bool bHasValue = false;  // false when the value pointer was null
        int nValueIn = 0;        // *value on entry
        int nValueOut = 0;       // *value on return
        int nResult = 0;
        int64_t nTimeMs = 0;  // platform monotonic time of the call
    };

    static SimIsp& instance();

    // The library entry points.
    int preinit(const KsiaPreinitInfo* p_pInfo);
    int ioctrl(int p_nCommand, int p_nDirection, int* p_pValue);

    // Back to the power-on state: default values, no calls, no failures, no
    // pre-initialisation, default scene level and switch time.
    void reset();

    // Scene level answered by command 241.
    void setSceneLevel(int p_nLevel);
    int sceneLevel() const;
    // How long command 177 reads busy after a night switch; 0 never busy.
    void setNightSwitchBusyMs(int64_t p_nMs);
    bool isNightSwitchBusy() const;

    // Makes the command fail with p_nCode (non-zero): for p_nTimes calls, or
    // for every call when p_nTimes is negative.
    void failCommand(int p_nCommand, int p_nCode = ErrInjected, int p_nTimes = -1);
    void clearFailure(int p_nCommand);
    void clearFailures();

    // Direct access to the stored values, past every range check (e.g. to make
    // a get answer a value the library would never accept in a set).
    void setValue(int p_nCommand, int p_nValue);
    // False for a command the library does not know.
    bool getValue(int p_nCommand, int& p_nValue) const;
    // The stored value, or -1 for an unknown command.
    int value(int p_nCommand) const;

    // The recorded calls, oldest first.
    std::vector<Call> calls() const;
    void clearCalls();
    // Calls of a command, in one direction (0 or 1) or both (-1).
    int callCount(int p_nCommand, int p_nDirection = -1) const;
    // The value of the latest successful set of a command; false if none.
    bool lastSet(int p_nCommand, int& p_nValue) const;

    int preinitCount() const;
    // The record of the latest ksia_preinit (zeroed before any).
    KsiaPreinitInfo preinitInfo() const;

    // The command table of the library.
    static bool isKnownCommand(int p_nCommand);
    static bool isGetOnly(int p_nCommand);
    static bool isAccepted(int p_nCommand, int p_nValue);

private:
    SimIsp();
    void resetLocked();
    bool isNightSwitchBusyLocked() const;

    struct Failure {
        int nCode;
        int nTimes;
    };

    mutable std::mutex m_objMutex;
    std::map<int, int> m_mapValues;
    std::map<int, Failure> m_mapFailures;
    std::vector<Call> m_vecCalls;
    int m_nPreinitCount = 0;
    KsiaPreinitInfo m_objPreinit{};
    int64_t m_nBusyMs = DefaultNightSwitchBusyMs;
    bool m_bSwitching = false;
    int64_t m_nSwitchStartMs = 0;
};
