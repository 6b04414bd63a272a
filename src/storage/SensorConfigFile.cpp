#include "storage/SensorConfigFile.h"

#include <cstdio>
#include <vector>

#include "platform/KSFile.h"
#include "platform/SensorParameterParser.h"

SensorConfigFile::SensorConfigFile(const std::string& path) : m_strFilePath(path) {}

int SensorConfigFile::isExist() { return KSFile::isExist(m_strFilePath) ? 1 : 0; }

int SensorConfigFile::setVersion(int version) {
    m_nVersion = version;
    return 1;
}

int SensorConfigFile::setVersion2(int version) {
    m_nVersion2 = version;
    return 1;
}

int SensorConfigFile::readParametersFromFile(std::string& text) {
    KSMutexGuard lock(m_mutex);
    KSFile file;
    if (!file.open(m_strFilePath, KSFile::ModeRead)) return 0;
    long long length = file.getLength();
    if (length < 0) return 0;
    // One byte more than the file, zero-filled, so the text ends at the first zero byte.
    std::vector<char> buffer(static_cast<size_t>(length) + 1, '\0');
    long long got = file.read(buffer.data(), length);
    if (got != length) {
        std::printf("________read file(%s) failed\n", m_strFilePath.c_str());
        return 0;
    }
    text.append(buffer.data());
    return 1;
}

int SensorConfigFile::readParametersFromFile(std::map<int, int>& values) {
    std::string text;
    if (!readParametersFromFile(text)) return 0;
    return SensorParameterParser::parseSensorParameter(text, values) ? 1 : 0;
}

int SensorConfigFile::readParameterById(int id, int& value) {
    std::map<int, int> values;
    if (!readParametersFromFile(values)) return 0;
    auto it = values.find(id);
    if (it == values.end()) return 0;
    value = it->second;
    return 1;
}

int SensorConfigFile::saveParametersToFile(const std::string& text) {
    KSMutexGuard lock(m_mutex);
    KSFile file;
    if (!file.open(m_strFilePath, KSFile::ModeWrite)) {
        std::printf("________open file(%s) failed\n", m_strFilePath.c_str());
        return 0;
    }
    std::map<int, int> values;
    if (!SensorParameterParser::parseSensorParameter(text, values)) {
        // Nothing is committed: the old file stays as it was.
        file.discard();
        return 0;
    }
    std::string out = text;
    if (!values.count(VersionId) && !values.count(Version2Id)) {
        char item[32];
        if (m_nVersion != VersionUnset) {
            std::snprintf(item, sizeof(item), "(%d,%d)", VersionId, m_nVersion);
            out += item;
        }
        if (m_nVersion2 != VersionUnset) {
            std::snprintf(item, sizeof(item), "(%d,%d)", Version2Id, m_nVersion2);
            out += item;
        }
    }
    if (file.write(out.data(), static_cast<long long>(out.size())) == -1) {
        file.discard();
        std::printf("________write file (%s) failed\n", m_strFilePath.c_str());
        return 0;
    }
    if (!file.close()) {
        std::printf("________write file (%s) failed\n", m_strFilePath.c_str());
        return 0;
    }
    return 1;
}

int SensorConfigFile::saveParametersToFile(const std::map<int, int>& values) {
    return saveParametersToFile(SensorParameterParser::createSensorParameterString(values));
}

int SensorConfigFile::modifyParameter(int id, int value) {
    std::map<int, int> values;
    if (!readParametersFromFile(values)) return 0;
    auto it = values.find(id);
    if (it == values.end()) return 0;
    it->second = value;
    return saveParametersToFile(values);
}

int SensorConfigFile::modifyParameters(const std::map<int, int>& given) {
    std::map<int, int> values;
    if (!readParametersFromFile(values)) return 0;
    for (const auto& kv : given) {
        if (kv.first == VersionId || kv.first == Version2Id) continue;
        auto it = values.find(kv.first);
        if (it != values.end()) it->second = kv.second;
    }
    return saveParametersToFile(values);
}

int SensorConfigFile::modifyParameters(const std::string& text) {
    std::map<int, int> given;
    if (!SensorParameterParser::parseSensorParameter(text, given)) return 0;
    return modifyParameters(given);
}

int SensorConfigFile::modifyIdUnEqualParameters(const std::map<int, int>& given) {
    std::map<int, int> current;
    readParametersFromFile(current);  // a missing file is rebuilt from the given set alone
    std::map<int, int> result;
    for (const auto& kv : given) {
        auto it = current.find(kv.first);
        if (kv.first == VersionId || kv.first == Version2Id || it == current.end())
            result[kv.first] = kv.second;
        else
            result[kv.first] = it->second;
    }
    return saveParametersToFile(result);
}

int SensorConfigFile::modifyIdUnEqualParameters(const std::string& text) {
    std::map<int, int> given;
    if (!SensorParameterParser::parseSensorParameter(text, given)) return 0;
    return modifyIdUnEqualParameters(given);
}

int SensorConfigFile::isStoredEqual(int id, int expected) {
    std::map<int, int> values;
    if (!readParametersFromFile(values)) return 0;
    auto it = values.find(id);
    if (it == values.end()) return 0;
    if (it->second == VersionWildcard) return 1;
    return it->second == expected ? 1 : 0;
}

int SensorConfigFile::isVersionEqual(int version) { return isStoredEqual(VersionId, version); }

int SensorConfigFile::isVersion2Equal(int version) { return isStoredEqual(Version2Id, version); }
