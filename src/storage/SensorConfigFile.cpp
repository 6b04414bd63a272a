#include "storage/SensorConfigFile.h"

#include <cstdio>

#include "platform/IntFormat.h"
#include "platform/KSFile.h"
#include "platform/KSLogger.h"
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

int SensorConfigFile::readBytesLocked(std::string& bytes) {
    KSFile file;
    if (!file.open(m_strFilePath, KSFile::ModeRead)) return 0;
    long long length = file.getLength();
    if (length < 0) return 0;
    bytes.assign(static_cast<size_t>(length), '\0');
    long long got = file.read(&bytes[0], length);
    if (got != length) {
        KSLogger::consolePrintf("________read file(%s) failed\n", m_strFilePath.c_str());
        return 0;
    }
    return 1;
}

bool SensorConfigFile::parseBytesLocked(const std::string& bytes) {
    m_pairs.clear();
    // The text ends at the first zero byte.
    if (bytes.find('\0') != std::string::npos)
        return SensorParameterParser::parseSensorParameter(std::string(bytes.c_str()), m_pairs);
    return SensorParameterParser::parseSensorParameter(bytes, m_pairs);
}

int SensorConfigFile::readParametersFromFile(std::string& text) {
    KSMutexGuard lock(m_mutex);
    std::string bytes;
    if (!readBytesLocked(bytes)) return 0;
    if (text.empty() && bytes.find('\0') == std::string::npos)
        text.swap(bytes);
    else
        text.append(bytes.c_str());
    return 1;
}

int SensorConfigFile::readParametersByIds(const int* ids, int* values, int count) {
    KSMutexGuard lock(m_mutex);
    std::string bytes;
    if (!readBytesLocked(bytes)) return 0;
    if (!parseBytesLocked(bytes)) return 0;
    for (int k = 0; k < count; ++k)
        if (const std::pair<int, int>* p = SensorParameterParser::findPair(m_pairs, ids[k])) values[k] = p->second;
    return 1;
}

void SensorConfigFile::compareVersions(int version, int version2, int& equal, int& equal2) {
    const int ids[2] = {VersionId, Version2Id};
    const int expected[2] = {version, version2};
    int stored[2] = {0, 0};
    int* results[2] = {&equal, &equal2};
    equal = equal2 = 0;
    KSMutexGuard lock(m_mutex);
    std::string bytes;
    if (!readBytesLocked(bytes)) return;
    if (!parseBytesLocked(bytes)) return;
    for (int k = 0; k < 2; ++k) {
        const std::pair<int, int>* p = SensorParameterParser::findPair(m_pairs, ids[k]);
        if (p == nullptr) continue;
        stored[k] = p->second;
        *results[k] = (stored[k] == VersionWildcard || stored[k] == expected[k]) ? 1 : 0;
    }
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

bool SensorConfigFile::openForWrite(KSFile& file) {
    if (file.open(m_strFilePath, KSFile::ModeWrite)) return true;
    KSLogger::consolePrintf("________open file(%s) failed\n", m_strFilePath.c_str());
    return false;
}

void SensorConfigFile::appendVersions(std::string& out) const {
    if (m_nVersion != VersionUnset) IntFormat::appendPair(out, VersionId, m_nVersion);
    if (m_nVersion2 != VersionUnset) IntFormat::appendPair(out, Version2Id, m_nVersion2);
}

int SensorConfigFile::writeContent(KSFile& file, const std::string& content, bool withVersions) {
    // The version pairs follow the content in the file's buffer: the content is
    // not copied into a string of its own first.
    char versions[2 * IntFormat::kMaxPairLength];
    char* end = versions;
    if (withVersions) {
        if (m_nVersion != VersionUnset) end = IntFormat::writePair(end, VersionId, m_nVersion);
        if (m_nVersion2 != VersionUnset) end = IntFormat::writePair(end, Version2Id, m_nVersion2);
    }
    const long long tail = static_cast<long long>(end - versions);
    file.reserveWrite(static_cast<long long>(content.size()) + tail);
    if (file.write(content.data(), static_cast<long long>(content.size())) == -1 ||
        file.write(versions, tail) == -1) {
        file.discard();
        KSLogger::consolePrintf("________write file (%s) failed\n", m_strFilePath.c_str());
        return 0;
    }
    if (!file.close()) {
        KSLogger::consolePrintf("________write file (%s) failed\n", m_strFilePath.c_str());
        return 0;
    }
    return 1;
}

int SensorConfigFile::saveParametersToFile(const std::string& text) {
    KSMutexGuard lock(m_mutex);
    KSFile file;
    if (!openForWrite(file)) return 0;
    m_pairs.clear();
    if (!SensorParameterParser::parseSensorParameter(text, m_pairs)) {
        // Nothing is committed: the old file stays as it was.
        file.discard();
        return 0;
    }
    const bool holdsVersion =
        SensorParameterParser::findPair(m_pairs, VersionId) || SensorParameterParser::findPair(m_pairs, Version2Id);
    return writeContent(file, text, !holdsVersion);
}

int SensorConfigFile::saveParameterList(const std::string& text, bool holdsVersion) {
    KSMutexGuard lock(m_mutex);
    KSFile file;
    if (!openForWrite(file)) return 0;
    return writeContent(file, text, !holdsVersion);
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

int SensorConfigFile::modifyParameters(const Pairs& given) {
    KSMutexGuard lock(m_mutex);
    std::string bytes;
    if (!readBytesLocked(bytes)) return 0;
    if (!parseBytesLocked(bytes)) return 0;
    // Both lists ascend: one walk applies the given values to the ids the file has.
    auto at = m_pairs.begin();
    for (const std::pair<int, int>& kv : given) {
        if (kv.first == VersionId || kv.first == Version2Id) continue;
        while (at != m_pairs.end() && at->first < kv.first) ++at;
        if (at == m_pairs.end()) break;
        if (at->first == kv.first) at->second = kv.second;
    }
    std::string out;
    SensorParameterParser::createSensorParameterString(m_pairs, out);
    if (!SensorParameterParser::findPair(m_pairs, VersionId) && !SensorParameterParser::findPair(m_pairs, Version2Id))
        appendVersions(out);
    KSFile file;
    if (!openForWrite(file)) return 0;
    if (out == bytes) {
        // The file holds these bytes already: nothing to replace.
        file.discard();
        return 1;
    }
    return writeContent(file, out);
}

int SensorConfigFile::modifyParameters(const std::string& text) {
    std::map<int, int> given;
    if (!SensorParameterParser::parseSensorParameter(text, given)) return 0;
    return modifyParameters(given);
}

int SensorConfigFile::modifyIdUnEqualParameters(const std::map<int, int>& given) {
    std::map<int, int> current;
    readParametersFromFile(current);  // a missing file is rebuilt from the given set alone
    return saveIdUnEqualParameters(current, given);
}

int SensorConfigFile::modifyIdUnEqualParametersFrom(SensorConfigFile& source, const std::map<int, int>& given) {
    std::map<int, int> current;
    source.readParametersFromFile(current);
    return saveIdUnEqualParameters(current, given);
}

int SensorConfigFile::saveIdUnEqualParameters(const std::map<int, int>& current, const std::map<int, int>& given) {
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
