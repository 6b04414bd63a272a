#pragma once
#include <map>
#include <string>

#include "platform/KSMutex.h"

// One persisted set of parameter values: a text file holding the parameter
// list text, plus the two reserved pairs 10000 and 10001 that record the
// version of the parameter layout that wrote it. A stored version of 999
// matches any expected version.
class SensorConfigFile {
public:
    enum { VersionId = 10000, Version2Id = 10001, VersionUnset = -10000, VersionWildcard = 999 };

    explicit SensorConfigFile(const std::string& path);

    std::string getFilePath() const { return m_strFilePath; }
    int isExist();
    int setVersion(int version);
    int setVersion2(int version);
    int getVersion() const { return m_nVersion; }
    int getVersion2() const { return m_nVersion2; }

    int readParametersFromFile(std::string& text);
    int readParametersFromFile(std::map<int, int>& values);
    int readParameterById(int id, int& value);
    int saveParametersToFile(const std::string& text);
    int saveParametersToFile(const std::map<int, int>& values);
    int modifyParameter(int id, int value);
    int modifyParameters(const std::map<int, int>& values);
    int modifyParameters(const std::string& text);
    int modifyIdUnEqualParameters(const std::map<int, int>& values);
    int modifyIdUnEqualParameters(const std::string& text);
    int isVersionEqual(int version);
    int isVersion2Equal(int version);

private:
    int isStoredEqual(int id, int expected);

    int m_nVersion = VersionUnset;
    int m_nVersion2 = VersionUnset;
    std::string m_strFilePath;
    KSMutex m_mutex;
};
