#include "storage/SensorFile.h"

#include <gtest/gtest.h>
#include <tinyxml2.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "TestRoot.h"
#include "platform/KSFile.h"
#include "ui/MergedXml.h"

using testutil::TempRoot;

namespace {

const std::string kModuleConfig = "/hd1/moduleConfig/moduleConfig.xml";
const std::string kDir = "/hd1/moduleConfig/sensorConfig";
const std::string kSample = std::string(SENSORCTL_SOURCE_DIR) + "/sim/camroot/hd1/moduleConfig/sensorConfig";

std::string sampleFile(const std::string& relative) {
    std::ifstream in(kSample + "/" + relative, std::ios::binary);
    EXPECT_TRUE(in.good()) << relative;
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

std::string moduleEntry(int id, const std::string& detail, const std::string& parameters,
                        const std::string& type = "sensor") {
    return "<module id=\"" + std::to_string(id) + "\" type=\"" + type + "\" detail=\"" + detail +
           "\" parameters=\"" + parameters + "\"/>\n";
}

std::string moduleConfig(const std::string& entries) { return "<moduleConfig>\n" + entries + "</moduleConfig>\n"; }

const char kS2Parameters[] = "GUIConfig=S2GUIConfig.xml;Prefix=S2";

std::vector<int> tabKeys(const std::string& text) {
    tinyxml2::XMLDocument doc;
    EXPECT_EQ(doc.Parse(text.c_str()), tinyxml2::XML_SUCCESS) << text;
    std::vector<int> keys;
    if (doc.RootElement() == nullptr) return keys;
    for (const tinyxml2::XMLElement* e = doc.RootElement()->FirstChildElement(); e; e = e->NextSiblingElement())
        keys.push_back(MergedXml::keyOf(e));
    return keys;
}

std::string g_shrinkTarget;
void shrinkTarget(const std::string& resolvedPath) {
    if (resolvedPath != g_shrinkTarget) return;
    std::error_code ec;
    std::filesystem::resize_file(resolvedPath, 10, ec);
}

class SensorFileTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::filesystem::create_directories(root.real("/hd1/moduleConfig"));
        std::filesystem::copy(kSample, root.real(kDir), std::filesystem::copy_options::recursive);
    }
    // Runs init and returns what it printed.
    std::string initPrinting(int& result, const std::string& fileName = "", const std::string& type = "") {
        testing::internal::CaptureStdout();
        result = file.init(fileName, type);
        return testing::internal::GetCapturedStdout();
    }
    TempRoot root;
    SensorFile file;
};

}  // namespace

TEST(SensorFileDefaultsTest, DefaultPathsAndSetters) {
    SensorFile f;
    EXPECT_EQ(f.getModuleConfigFileName(), "/hd1/moduleConfig/moduleConfig.xml");
    EXPECT_EQ(f.getSensorConfigFilePath(), "/hd1/moduleConfig/sensorConfig");
    EXPECT_EQ(f.getModuleConfigure().getModuleId(), 0);
    EXPECT_EQ(f.getUISensorConfig_V1(), "");
    EXPECT_EQ(f.getUIStyleConfig(), "");
    EXPECT_EQ(f.getUICommonConfig(1), "");
    EXPECT_EQ(f.getUILanguageConfig(1), "");
    f.setModuleConfigFileName("/tmp/m.xml");
    f.setSensorConfigFilePath("/tmp/s");
    f.setModuleConfigFileName(f.getModuleConfigFileName());
    f.setSensorConfigFilePath(f.getSensorConfigFilePath());
    EXPECT_EQ(f.getModuleConfigFileName(), "/tmp/m.xml");
    EXPECT_EQ(f.getSensorConfigFilePath(), "/tmp/s");
}

TEST_F(SensorFileTest, LoadsTheSensorModuleAndItsTexts) {
    root.write(kModuleConfig, moduleConfig(moduleEntry(88, "RS485=/dev/ttyS1;isInfrared=1;lens=fisheye", kS2Parameters)));
    int result = 0;
    std::string out = initPrinting(result);
    EXPECT_EQ(result, 1);
    EXPECT_NE(out.find("SensorFile::init  successs !!!!"), std::string::npos) << out;
    EXPECT_EQ(file.getModuleConfigure().getModuleId(), 88);
    EXPECT_EQ(file.getModuleConfigure().getDetail(), "RS485=/dev/ttyS1;isInfrared=1;lens=fisheye");
    EXPECT_EQ(file.getModuleConfigure().getParameters(), kS2Parameters);
    EXPECT_EQ(file.getUISensorConfig_V1(), sampleFile("S2GUIConfig.xml"));
    EXPECT_EQ(tabKeys(file.getUIStyleConfig()), (std::vector<int>{1, 2, 3, 4, 9, 5, 6, 10, 8}));
    EXPECT_EQ(file.getUICommonConfig(2), sampleFile("common/chinese/SensorCommon.xml"));
    EXPECT_EQ(file.getUILanguageConfig(1), sampleFile("language/english/S2Lang.xml"));
    EXPECT_EQ(file.getUILanguageConfig(2), sampleFile("language/chinese/S2Lang.xml"));
    EXPECT_EQ(file.getUILanguageConfig(5), sampleFile("language/english/S2Lang.xml"));
}

TEST_F(SensorFileTest, KeepsTheModuleWithAnIdFrom1To99) {
    root.write(kModuleConfig, moduleConfig(moduleEntry(0, "a=0", "GUIConfig=none0") +
                                           moduleEntry(5, "isInfrared=0", kS2Parameters) +
                                           moduleEntry(120, "a=120", "GUIConfig=none120")));
    int result = 0;
    initPrinting(result);
    EXPECT_EQ(result, 1);
    EXPECT_EQ(file.getModuleConfigure().getModuleId(), 5);
    EXPECT_EQ(file.getModuleConfigure().getDetail(), "isInfrared=0");
    EXPECT_EQ(tabKeys(file.getUIStyleConfig()), (std::vector<int>{1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST_F(SensorFileTest, TheLastSensorModuleWins) {
    root.write(kModuleConfig, moduleConfig(moduleEntry(5, "isInfrared=0", "GUIConfig=none5;Prefix=S2") +
                                           moduleEntry(7, "isInfrared=1", kS2Parameters) +
                                           moduleEntry(100, "isInfrared=0", "GUIConfig=none100")));
    int result = 0;
    initPrinting(result);
    EXPECT_EQ(result, 1);
    EXPECT_EQ(file.getModuleConfigure().getModuleId(), 7);
    EXPECT_EQ(file.getModuleConfigure().getParameters(), kS2Parameters);
}

TEST_F(SensorFileTest, TheModuleTypeSelectsTheEntries) {
    root.write(kModuleConfig, moduleConfig(moduleEntry(5, "isInfrared=0", kS2Parameters, "sensor") +
                                           moduleEntry(7, "isInfrared=1", kS2Parameters, "lens")));
    int result = 0;
    initPrinting(result, "", "sensor");
    EXPECT_EQ(result, 1);
    EXPECT_EQ(file.getModuleConfigure().getModuleId(), 5);
}

TEST_F(SensorFileTest, AFirstArgumentNamesTheModuleConfigurationFile) {
    root.write("/tmp/other.xml", moduleConfig(moduleEntry(9, "isInfrared=1", kS2Parameters)));
    int result = 0;
    initPrinting(result, "/tmp/other.xml");
    EXPECT_EQ(result, 1);
    EXPECT_EQ(file.getModuleConfigFileName(), "/tmp/other.xml");
    EXPECT_EQ(file.getModuleConfigure().getModuleId(), 9);
}

TEST_F(SensorFileTest, WithoutGUIConfigTheDirectoryItselfIsTried) {
    root.write(kModuleConfig, moduleConfig(moduleEntry(5, "isInfrared=1", "Prefix=S2")));
    int result = 1;
    std::string out = initPrinting(result);
    EXPECT_EQ(result, 0);
    EXPECT_NE(out.find("get GUIConfigName from senseParameter failed"), std::string::npos) << out;
    EXPECT_NE(out.find("ISensorController::initUIInitConfigString error"), std::string::npos) << out;
    EXPECT_NE(out.find("initUIConfigString from /hd1/moduleConfig/sensorConfig/ failed\n"), std::string::npos) << out;
    // The module was kept before the failing step.
    EXPECT_EQ(file.getModuleConfigure().getModuleId(), 5);
    EXPECT_EQ(file.getUIStyleConfig(), "");
}

TEST_F(SensorFileTest, MissingModuleConfigurationResetsTheModuleId) {
    root.write(kModuleConfig, moduleConfig(moduleEntry(88, "isInfrared=1", kS2Parameters)));
    int result = 0;
    initPrinting(result);
    ASSERT_EQ(result, 1);
    root.remove(kModuleConfig);
    // The kept module loses its id but keeps its texts, so the rest still runs.
    std::string out = initPrinting(result);
    EXPECT_EQ(file.getModuleConfigure().getModuleId(), 0);
    EXPECT_EQ(file.getModuleConfigure().getParameters(), kS2Parameters);
    EXPECT_EQ(result, 1);

    SensorFile fresh;
    testing::internal::CaptureStdout();
    EXPECT_EQ(fresh.init("", ""), 0);
    out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(fresh.getModuleConfigure().getModuleId(), 0);
    EXPECT_NE(out.find("get GUIConfigName from senseParameter failed"), std::string::npos) << out;
}

TEST_F(SensorFileTest, ParametersThatDoNotParse) {
    root.write(kModuleConfig, moduleConfig(moduleEntry(5, "isInfrared=1", "GUIConfig=S2GUIConfig.xml;garbage")));
    int result = 1;
    std::string out = initPrinting(result);
    EXPECT_EQ(result, 0);
    EXPECT_NE(out.find("parse senseParameter failed"), std::string::npos) << out;
    EXPECT_EQ(file.getUISensorConfig_V1(), "");
}

TEST_F(SensorFileTest, MissingUIConfigurationFile) {
    root.write(kModuleConfig, moduleConfig(moduleEntry(5, "isInfrared=1", "GUIConfig=Nope.xml;Prefix=S2")));
    int result = 1;
    std::string out = initPrinting(result);
    EXPECT_EQ(result, 0);
    EXPECT_NE(out.find("initUIConfigString from /hd1/moduleConfig/sensorConfig/Nope.xml failed\n"), std::string::npos)
        << out;
}

TEST_F(SensorFileTest, MissingPrefix) {
    root.write(kModuleConfig, moduleConfig(moduleEntry(5, "isInfrared=1", "GUIConfig=S2GUIConfig.xml")));
    int result = 1;
    std::string out = initPrinting(result);
    EXPECT_EQ(result, 0);
    EXPECT_NE(out.find("getPrefix failed "), std::string::npos) << out;
    EXPECT_EQ(file.getUISensorConfig_V1(), sampleFile("S2GUIConfig.xml"));
    EXPECT_EQ(file.getUIStyleConfig(), "");
}

TEST_F(SensorFileTest, UIConfigurationFailure) {
    root.write(kModuleConfig, moduleConfig(moduleEntry(5, "isInfrared=1", kS2Parameters)));
    root.remove(kDir + "/SensorLanguageConfig.xml");
    int result = 1;
    std::string out = initPrinting(result);
    EXPECT_EQ(result, 0);
    EXPECT_NE(out.find("m_pSensorUIConfigFile  init  failed"), std::string::npos) << out;
    EXPECT_EQ(out.find("successs"), std::string::npos) << out;
}

TEST_F(SensorFileTest, SensorConfigurationDirectoryIsConfigurable) {
    std::filesystem::create_directories(root.real("/opt"));
    std::filesystem::rename(root.real(kDir), root.real("/opt/ui"));
    root.write(kModuleConfig, moduleConfig(moduleEntry(5, "isInfrared=1", kS2Parameters)));
    file.setSensorConfigFilePath("/opt/ui");
    int result = 0;
    initPrinting(result);
    EXPECT_EQ(result, 1);
    EXPECT_EQ(file.getUISensorConfig_V1(), sampleFile("S2GUIConfig.xml"));
    EXPECT_EQ(file.getUILanguageConfig(2), sampleFile("language/chinese/S2Lang.xml"));
}

TEST_F(SensorFileTest, UIConfigurationFileThatShrinks) {
    const std::string path = kDir + "/S2GUIConfig.xml";
    const long long length = static_cast<long long>(sampleFile("S2GUIConfig.xml").size());
    g_shrinkTarget = root.real(path);
    KSFile::setBeforeReadHook(shrinkTarget);
    testing::internal::CaptureStdout();
    int result = file.initUIInitConfigString(path);
    std::string out = testing::internal::GetCapturedStdout();
    KSFile::setBeforeReadHook(nullptr);
    EXPECT_EQ(result, 0);
    EXPECT_NE(out.find("read sensorUIConfig failed,fileLength = " + std::to_string(length) + ",readLength = 10\n"),
              std::string::npos)
        << out;
    EXPECT_EQ(file.getUISensorConfig_V1(), "");

    EXPECT_EQ(file.initUIInitConfigString(path), 1);
    EXPECT_EQ(file.getUISensorConfig_V1().size(), 10u);
}
