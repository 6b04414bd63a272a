#pragma once
#include <cstdint>
#include <mutex>
#include <string>

// The simulated ADC of the board: the light sensor behind "/dev/adc".
//
// install() makes every AdcReader created afterwards talk to this simulation
// instead of the device; uninstall() restores the device. The simulation
// answers the data request on channel 1 with the reading set by setReading()
// (full scale 1714), and can be told to refuse the open or the request. It
// records opens, closes and requests for tests. All members are thread-safe.
class SimAdc {
public:
    static constexpr int FullScale = 1714;
    static constexpr int DefaultReading = 1200;  // a lit scene
    // Error answered by a refused request.
    static constexpr int ErrRequest = -1;

    static SimAdc& instance();

    // Routes AdcReader to the simulation (install) or back to the device.
    static void install();
    static void uninstall();

    // Back to the power-on state: default reading, nothing refused, counters zero.
    void reset();

    void setReading(int p_nValue);
    int reading() const;
    // Sets the reading as a percentage of full scale (0..100).
    void setPercent(int p_nPercent);

    // While set, opening the device fails / every request fails.
    void setOpenFails(bool p_bFail);
    void setRequestFails(bool p_bFail);

    int openCount() const;
    int closeCount() const;
    int requestCount() const;
    // How many simulated descriptors are open now.
    int openDescriptors() const;
    // Path, request number and channel of the latest open / request.
    std::string lastOpenPath() const;
    unsigned long lastRequest() const;
    int lastChannel() const;

    // The simulated device calls (used by the device object that install() provides).
    int open(const std::string& p_strPath);
    int request(int p_nFd, unsigned long p_ulRequest, int32_t* p_pChannel, int32_t* p_pValue);
    void close(int p_nFd);

private:
    SimAdc() = default;
    void resetLocked();

    mutable std::mutex m_objMutex;
    int m_nReading = DefaultReading;
    bool m_bOpenFails = false;
    bool m_bRequestFails = false;
    int m_nOpenCount = 0;
    int m_nCloseCount = 0;
    int m_nRequestCount = 0;
    int m_nOpenDescriptors = 0;
    int m_nNextFd = 100;
    std::string m_strLastOpenPath;
    unsigned long m_ulLastRequest = 0;
    int m_nLastChannel = -1;
};
