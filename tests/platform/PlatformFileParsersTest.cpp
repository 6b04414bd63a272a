#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "TestRoot.h"
#include "platform/ConfigFileNameConst.h"
#include "platform/MachineInfo.h"
#include "platform/ModuleConfigureParser.h"
#include "platform/SensorLanguageConfigParser.h"
#include "platform/SystemInfoParser.h"

namespace {

const char kModuleConfig[] = "/hd1/moduleConfig/moduleConfig.xml";
const char kLanguageConfig[] = "/hd1/moduleConfig/sensorConfig/SensorLanguageConfig.xml";

class PlatformFileParsersTest : public ::testing::Test {
protected:
    testutil::TempRoot m_root;
};

}  // namespace

TEST(ConfigFileNameConstTest, FixedPaths) {
    EXPECT_EQ(ConfigFileNameConst::getMachineInfoFileName(), "/hd1/moduleConfig/machineInfo.xml");
    EXPECT_EQ(ConfigFileNameConst::getModuleConfigFileName(), kModuleConfig);
    EXPECT_EQ(ConfigFileNameConst::getSensorAbilityFileName(), "/hd1/moduleConfig/sensorAbility.xml");
    EXPECT_EQ(ConfigFileNameConst::getSensorLanguageConfigFileName(), kLanguageConfig);
}

// ---- ModuleConfigureParser ----

TEST_F(PlatformFileParsersTest, ModuleConfigReadsModulesInOrder) {
    m_root.write(kModuleConfig,
                 "<?xml version=\"1.0\"?>\n<moduleConfig>\n"
                 "  <module id=\"88\" type=\"sensor\" detail=\"RS485=/dev/ttyS1;isInfrared=1;GPIO=1,5,0\"\n"
                 "          parameters=\"RS485=9600,8,1,0\"/>\n"
                 "  <comment text=\"ignored\"/>\n"
                 "  <module id=\"3\" type=\"lens\"/>\n"
                 "  <module id=\"0\" type=\"sensor\" detail=\"a=1\"/>\n"
                 "</moduleConfig>\n");
    std::vector<ModuleConfigure> all{ModuleConfigure(1, "x", "y")};
    ASSERT_TRUE(ModuleConfigureParser::parse(kModuleConfig, "", all));
    ASSERT_EQ(all.size(), 3u);
    EXPECT_EQ(all[0].getModuleId(), 88);
    EXPECT_EQ(all[0].getDetail(), "RS485=/dev/ttyS1;isInfrared=1;GPIO=1,5,0");
    EXPECT_EQ(all[0].getParameters(), "RS485=9600,8,1,0");
    EXPECT_EQ(all[0].getType(), "sensor");
    EXPECT_EQ(all[1].getModuleId(), 3);
    EXPECT_EQ(all[1].getDetail(), "");
    EXPECT_EQ(all[1].getParameters(), "");

    std::vector<ModuleConfigure> sensors;
    ASSERT_TRUE(ModuleConfigureParser::parse(kModuleConfig, "sensor", sensors));
    ASSERT_EQ(sensors.size(), 2u);
    EXPECT_EQ(sensors[0].getModuleId(), 88);
    EXPECT_EQ(sensors[1].getModuleId(), 0);

    std::vector<ModuleConfigure> none{ModuleConfigure()};
    EXPECT_TRUE(ModuleConfigureParser::parse(kModuleConfig, "camera", none));
    EXPECT_TRUE(none.empty());
}

TEST_F(PlatformFileParsersTest, ModuleConfigFailures) {
    std::vector<ModuleConfigure> out{ModuleConfigure(5, "", "")};
    EXPECT_FALSE(ModuleConfigureParser::parse(kModuleConfig, "", out));  // missing
    EXPECT_TRUE(out.empty());
    const char* bad[] = {
        "<moduleConfig><module id=\"88\"></moduleConfig>",        // malformed
        "<modules><module id=\"88\"/></modules>",                  // wrong root
        "<moduleConfig><module type=\"sensor\"/></moduleConfig>",  // no id
        "<moduleConfig><module id=\"x88\"/></moduleConfig>",       // bad id
        "<moduleConfig><module id=\"99999999999\"/></moduleConfig>",
    };
    for (const char* text : bad) {
        m_root.write(kModuleConfig, text);
        out.assign(1, ModuleConfigure(5, "", ""));
        ::testing::internal::CaptureStdout();
        EXPECT_FALSE(ModuleConfigureParser::parse(kModuleConfig, "", out)) << text;
        ::testing::internal::GetCapturedStdout();
        EXPECT_TRUE(out.empty()) << text;
    }
    m_root.write(kModuleConfig, "<moduleConfig/>");
    EXPECT_TRUE(ModuleConfigureParser::parse(kModuleConfig, "", out));
    EXPECT_TRUE(out.empty());
}

// ---- SensorLanguageConfigParser ----

TEST_F(PlatformFileParsersTest, LanguagesInFileOrder) {
    m_root.write(kLanguageConfig,
                 "<sensorLanguageConfig>\n"
                 "  <language id=\"1\" folder=\"english\"/>\n"
                 "  <language id=\"0\" folder=\"chinese\"/>\n"
                 "  <note/>\n"
                 "  <language id=\"7\" folder=\"deutsch\"/>\n"
                 "</sensorLanguageConfig>\n");
    std::vector<SensorLanguageConfig> out;
    ASSERT_TRUE(SensorLanguageConfigParser::parse(kLanguageConfig, out));
    ASSERT_EQ(out.size(), 3u);
    EXPECT_EQ(out[0].getLanguageId(), 1);
    EXPECT_EQ(out[0].getFolderName(), "english");
    EXPECT_EQ(out[1].getLanguageId(), 0);
    EXPECT_EQ(out[1].getFolderName(), "chinese");
    EXPECT_EQ(out[2].getLanguageId(), 7);
    EXPECT_EQ(out[2].getFolderName(), "deutsch");
}

TEST_F(PlatformFileParsersTest, LanguageConfigFailures) {
    std::vector<SensorLanguageConfig> out{SensorLanguageConfig(1, "x")};
    EXPECT_FALSE(SensorLanguageConfigParser::parse(kLanguageConfig, out));
    EXPECT_TRUE(out.empty());
    const char* bad[] = {
        "<sensorLanguageConfig><language id=\"1\" folder=\"en\"></sensorLanguageConfig>",
        "<languages><language id=\"1\" folder=\"en\"/></languages>",
        "<sensorLanguageConfig><language folder=\"en\"/></sensorLanguageConfig>",
        "<sensorLanguageConfig><language id=\"one\" folder=\"en\"/></sensorLanguageConfig>",
        "<sensorLanguageConfig><language id=\"1\"/></sensorLanguageConfig>",
        "<sensorLanguageConfig><language id=\"1\" folder=\"\"/></sensorLanguageConfig>",
    };
    for (const char* text : bad) {
        m_root.write(kLanguageConfig, text);
        out.assign(1, SensorLanguageConfig(1, "x"));
        ::testing::internal::CaptureStdout();
        EXPECT_FALSE(SensorLanguageConfigParser::parse(kLanguageConfig, out)) << text;
        ::testing::internal::GetCapturedStdout();
        EXPECT_TRUE(out.empty()) << text;
    }
    m_root.write(kLanguageConfig, "<sensorLanguageConfig></sensorLanguageConfig>");
    EXPECT_TRUE(SensorLanguageConfigParser::parse(kLanguageConfig, out));
    EXPECT_TRUE(out.empty());
}

// ---- SystemInfoParser ----

TEST_F(PlatformFileParsersTest, MachineInfo) {
    m_root.write(ConfigFileNameConst::getMachineInfoFileName(),
                 "<?xml version=\"1.0\"?>\n"
                 "<machineInfo hardwareModel=\"KS-S2-FE\" hardwareCode=\"0x5a17\"\n"
                 "             hardwareDescription=\"S2 fisheye board\" productModel=\"IPC-FE12\"\n"
                 "             barCode=\"6901234567892\" productionTime=\"2024-05-01 08:30:00\"/>\n");
    MachineInfo info;
    ASSERT_TRUE(SystemInfoParser::parseMachineInfo(info));
    EXPECT_EQ(info.getHardwareModel(), "KS-S2-FE");
    EXPECT_EQ(info.getHardwareCode(), "0x5a17");
    EXPECT_EQ(info.getHardwareDescription(), "S2 fisheye board");
    EXPECT_EQ(info.getProductModel(), "IPC-FE12");
    EXPECT_EQ(info.getBarCode(), "6901234567892");
    EXPECT_EQ(info.getProductionTime(), "2024-05-01 08:30:00");
}

TEST_F(PlatformFileParsersTest, MachineInfoMissingAttributesReadEmpty) {
    m_root.write("/m.xml", "<machineInfo hardwareModel=\"X\"/>");
    MachineInfo info;
    info.setBarCode("old");
    ASSERT_TRUE(SystemInfoParser::parseMachineInfo("/m.xml", info));
    EXPECT_EQ(info.getHardwareModel(), "X");
    EXPECT_EQ(info.getBarCode(), "");
    EXPECT_EQ(info.getProductionTime(), "");
}

TEST_F(PlatformFileParsersTest, MachineInfoFailuresLeaveTheRecordUntouched) {
    MachineInfo info;
    info.setHardwareModel("keep");
    EXPECT_FALSE(SystemInfoParser::parseMachineInfo(info));  // missing file
    m_root.write(ConfigFileNameConst::getMachineInfoFileName(), "<machineInfo hardwareModel=\"X\">");
    ::testing::internal::CaptureStdout();
    EXPECT_FALSE(SystemInfoParser::parseMachineInfo(info));  // malformed
    ::testing::internal::GetCapturedStdout();
    m_root.write(ConfigFileNameConst::getMachineInfoFileName(), "<info hardwareModel=\"X\"/>");
    EXPECT_FALSE(SystemInfoParser::parseMachineInfo(info));  // wrong root
    EXPECT_EQ(info.getHardwareModel(), "keep");
}
