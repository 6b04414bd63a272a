#pragma once
// Switches the library's console lines off while it exists (through the platform
// logger), so that benchmark tables stay readable; the previous setting comes back after.
#include "platform/KSLogger.h"

class QuietConsole {
public:
    QuietConsole() : m_bWasEnabled(KSLogger::isConsoleEnabled()) { KSLogger::setConsoleEnabled(false); }
    ~QuietConsole() { KSLogger::setConsoleEnabled(m_bWasEnabled); }
    QuietConsole(const QuietConsole&) = delete;
    QuietConsole& operator=(const QuietConsole&) = delete;

private:
    bool m_bWasEnabled;
};
