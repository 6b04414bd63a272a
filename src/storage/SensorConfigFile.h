#pragma once
#include <map>
#include <string>

#include "platform/KSMutex.h"
#include "platform/SensorParameterParser.h"

class KSFile;

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
    // The same with the current values read from `source` instead of this file
    // (a source that cannot be read counts as empty): this file is replaced, in
    // one atomic step, by the pairs of `values`, each keeping the value `source`
    // holds for its id. `source` is left as it is.
    int modifyIdUnEqualParametersFrom(SensorConfigFile& source, const std::map<int, int>& values);
    int isVersionEqual(int version);
    int isVersion2Equal(int version);

    // ---- one read of the file for several answers ----
    using Pairs = SensorParameterParser::Pairs;
    // readParameterById for each of ids[0..count): found values go to values[],
    // the others stay as they are. 0 when the file cannot be read or parsed.
    int readParametersByIds(const int* ids, int* values, int count);
    // isVersionEqual(version) and isVersion2Equal(version2) from one read.
    void compareVersions(int version, int version2, int& equal, int& equal2);
    // modifyParameters with the given pairs (ascending, one per id). A result equal
    // to the file's content is not written again, and the file is read only once.
    int modifyParameters(const Pairs& given);
    // saveParametersToFile for a text this library formatted (well formed, so not
    // parsed again); `holdsVersion` tells whether it has a pair 10000 or 10001.
    int saveParameterList(const std::string& text, bool holdsVersion);

private:
    int isStoredEqual(int id, int expected);
    // The file's bytes (whole, zero bytes included), under m_mutex; prints the read failure.
    int readBytesLocked(std::string& bytes);
    // Parses the parameter list text of the file's bytes (up to the first zero byte) into m_pairs.
    bool parseBytesLocked(const std::string& bytes);
    // Appends the version pairs that a saved text without them gets.
    void appendVersions(std::string& out) const;
    // Opens the file for replacement, printing the failure.
    bool openForWrite(KSFile& file);
    // Writes the content and commits it, printing the failure.
    // Writes content, followed by the version pairs (as appendVersions) when asked,
    // and commits the file.
    int writeContent(KSFile& file, const std::string& content, bool withVersions = false);
    int saveIdUnEqualParameters(const std::map<int, int>& current, const std::map<int, int>& given);

    int m_nVersion = VersionUnset;
    int m_nVersion2 = VersionUnset;
    std::string m_strFilePath;
    KSMutex m_mutex;
    Pairs m_pairs;  // the pairs of the last read, under m_mutex (storage reused)
};
