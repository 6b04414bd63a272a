#pragma once
#include <atomic>

// Process-wide switches of the platform.
class GlobalEnv {
public:
    static GlobalEnv* getInstance();
    bool getPrintFlag() const { return m_bPrintFlag.load(); }
    void setPrintFlag(bool on) { m_bPrintFlag.store(on); }

private:
    std::atomic<bool> m_bPrintFlag{false};
};
