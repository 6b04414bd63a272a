#pragma once
#include <string>

// One language of the web interface's sensor pages: its language id and the
// folder (under the language directories) that holds its texts.
class SensorLanguageConfig {
public:
    SensorLanguageConfig() = default;
    SensorLanguageConfig(int languageId, const std::string& folderName)
        : m_nLanguageId(languageId), m_strFolderName(folderName) {}

    int getLanguageId() const { return m_nLanguageId; }
    const std::string& getFolderName() const { return m_strFolderName; }
    void setLanguageId(int id) { m_nLanguageId = id; }
    void setFolderName(const std::string& name) { m_strFolderName = name; }

private:
    int m_nLanguageId = 0;
    std::string m_strFolderName;
};
