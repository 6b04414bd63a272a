#include "ui/SensorUIConfigFile.h"

#include <cstdio>
#include <vector>

#include "platform/KSFile.h"
#include "platform/KSLogger.h"
#include "platform/SensorLanguageConfig.h"
#include "platform/SensorLanguageConfigParser.h"
#include "ui/MergedXml.h"

namespace {
const char kDefaultConfigDir[] = "/hd1/moduleConfig/sensorConfig";
}  // namespace

SensorUIConfigFile::SensorUIConfigFile() : m_strConfigDir(kDefaultConfigDir) { setUIConfigPath(kDefaultConfigDir); }

void SensorUIConfigFile::setUIConfigPath(const std::string& p_strDir) {
    // Copy first: p_strDir may be one of the members assigned below.
    const std::string dir = p_strDir;
    m_strStyleDir = dir + "/style";
    m_strCommonDir = dir + "/common";
    m_strLanguageDir = dir + "/language";
    m_strStyleDiversityDir = dir + "/styleDiversity";
    m_strLanguageDiversityDir = dir + "/languageDiversity";
    m_strLanguageConfigPath = dir + "/SensorLanguageConfig.xml";
}

void SensorUIConfigFile::setUIConfigPrefix(const std::string& p_strPrefix) {
    if (&p_strPrefix != &m_strPrefix) m_strPrefix = p_strPrefix;
}

bool SensorUIConfigFile::getFileText(const std::string& p_strPath, std::string& p_strText) {
    KSFile file;
    if (!file.open(p_strPath, KSFile::ModeRead)) return false;
    long long length = file.getLength();
    if (length < 0) return false;
    std::string text(static_cast<size_t>(length), '\0');
    long long readLength = length > 0 ? file.read(&text[0], length) : 0;
    if (readLength != length) return false;
    p_strText.swap(text);
    return true;
}

bool SensorUIConfigFile::init(const std::string& p_strDetail) {
    std::vector<SensorLanguageConfig> languages;
    if (!SensorLanguageConfigParser::parse(m_strLanguageConfigPath, languages)) {
        KSLogger::consolePuts("parse SensorLanguageConfig.xml failed ");
        return false;
    }

    const std::string stylePath = m_strStyleDir + "/" + m_strPrefix + "Style.xml";
    const std::string styleModifyPath = m_strStyleDiversityDir + "/" + m_strPrefix + "StyleDiversity.xml";
    KSFile modifyFile;
    if (!modifyFile.open(styleModifyPath, KSFile::ModeRead)) {
        // No changes for this module: the style text is served as shipped.
        if (!getFileText(stylePath, m_strStyleText)) {
            KSLogger::consolePrintf("getStyleFileText failed , path=%s \n", stylePath.c_str());
            return false;
        }
    } else {
        modifyFile.close();
        MergedXml objMergedXml;
        objMergedXml.setStyleOriginalPath(stylePath);
        objMergedXml.setStyleModifyPath(styleModifyPath);
        if (!objMergedXml.getStyleMergedString(p_strDetail, m_strStyleText)) {
            KSLogger::consolePrintf("objMergedXml.getStyleMergedString(%s) failed\n", p_strDetail.c_str());
            return false;
        }
    }

    // A language listed twice: each text read for the later entry replaces
    // the one of the earlier entry.
    for (const SensorLanguageConfig& language : languages) {
        const int nLanguageId = language.getLanguageId();
        const std::string& folder = language.getFolderName();

        const std::string commonPath = m_strCommonDir + "/" + folder + "/" + "SensorCommon.xml";
        std::string commonText;
        if (!getFileText(commonPath, commonText)) {
            KSLogger::consolePrintf("getCommonFile failed , path=%s\n", commonPath.c_str());
            continue;
        }
        m_commonTexts[nLanguageId].swap(commonText);

        const std::string languagePath = m_strLanguageDir + "/" + folder + "/" + m_strPrefix + "Lang.xml";
        std::string languageText;
        if (!getFileText(languagePath, languageText)) {
            KSLogger::consolePrintf("getLanguageFile failed , path=%s\n", languagePath.c_str());
            continue;
        }
        m_languageTexts[nLanguageId].swap(languageText);
    }
    return true;
}

std::string SensorUIConfigFile::textOf(const std::map<int, std::string>& p_texts, int p_nLanguageId) {
    auto it = p_texts.find(p_nLanguageId);
    if (it == p_texts.end()) it = p_texts.find(1);
    return it != p_texts.end() ? it->second : std::string();
}

std::string SensorUIConfigFile::getUICommonConfigString(int p_nLanguageId) const {
    return textOf(m_commonTexts, p_nLanguageId);
}

std::string SensorUIConfigFile::getUILanguageConfigString(int p_nLanguageId) const {
    return textOf(m_languageTexts, p_nLanguageId);
}
