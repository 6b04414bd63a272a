#pragma once

// The in-memory record of one parameter scheme's daily window. Times are
// hour * 100 + minute; the window is start <= now < end.
class ParamScheme {
public:
    int setStartTime(int t) { m_nStartTime = t; return 1; }
    int getStartTime(int& t) const { t = m_nStartTime; return 1; }
    int setEndTime(int t) { m_nEndTime = t; return 1; }
    int getEndTime(int& t) const { t = m_nEndTime; return 1; }
    int setEnableFlag(int f) { m_nEnable = f; return 1; }
    int getEnableFlag(int& f) const { f = m_nEnable; return 1; }

private:
    int m_nStartTime = 0;
    int m_nEndTime = 0;
    int m_nEnable = 0;
};
