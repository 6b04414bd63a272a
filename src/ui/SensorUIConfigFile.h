#pragma once
#include <map>
#include <string>

// The XML texts that describe the web interface's image-settings pages: one
// style text, tailored to the camera module by MergedXml, and per display
// language a common text and a language text.
//
// Layout of the configuration tree (P = prefix, F = a language's folder):
//     SensorLanguageConfig.xml             list of languages (id, folder)
//     style/PStyle.xml                     style text as shipped
//     styleDiversity/PStyleDiversity.xml   optional per-module style changes
//     common/F/SensorCommon.xml            common text of language F
//     language/F/PLang.xml                 language text of language F
// The languageDiversity directory is kept as a path; nothing is read from it.
class SensorUIConfigFile {
public:
    SensorUIConfigFile();

    // Points the style, common, language, styleDiversity and languageDiversity
    // directories and the language list at p_strDir (configDir keeps its value).
    void setUIConfigPath(const std::string& p_strDir);
    // The file-name prefix that selects the module's files.
    void setUIConfigPrefix(const std::string& p_strPrefix);

    // Loads the language list, the style text (merged for the module whose
    // detail text is p_strDetail) and the texts of every listed language.
    // Fails only when the language list or the style text cannot be had; a
    // language whose files are missing is skipped.
    bool init(const std::string& p_strDetail);

    const std::string& getUIStyleConfigString() const { return m_strStyleText; }
    // The text of the language, else that of language 1, else "".
    std::string getUICommonConfigString(int p_nLanguageId) const;
    std::string getUILanguageConfigString(int p_nLanguageId) const;

    // Reads the whole file; true only when as many bytes arrive as the file is long.
    static bool getFileText(const std::string& p_strPath, std::string& p_strText);

    const std::string& configDir() const { return m_strConfigDir; }
    const std::string& styleDir() const { return m_strStyleDir; }
    const std::string& commonDir() const { return m_strCommonDir; }
    const std::string& languageDir() const { return m_strLanguageDir; }
    const std::string& styleDiversityDir() const { return m_strStyleDiversityDir; }
    const std::string& languageDiversityDir() const { return m_strLanguageDiversityDir; }
    const std::string& languageConfigPath() const { return m_strLanguageConfigPath; }
    const std::string& prefix() const { return m_strPrefix; }
    const std::map<int, std::string>& commonTexts() const { return m_commonTexts; }
    const std::map<int, std::string>& languageTexts() const { return m_languageTexts; }

private:
    static std::string textOf(const std::map<int, std::string>& p_texts, int p_nLanguageId);

    std::string m_strConfigDir;
    std::string m_strStyleDir;
    std::string m_strCommonDir;
    std::string m_strLanguageDir;
    std::string m_strStyleDiversityDir;
    std::string m_strLanguageDiversityDir;
    std::string m_strLanguageConfigPath;
    std::string m_strPrefix;
    std::string m_strStyleText;
    std::map<int, std::string> m_commonTexts;
    std::map<int, std::string> m_languageTexts;
};
