#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "TestRoot.h"
#include "isp/ISPParamParse.h"

namespace {

const char* const kPath = "/hd1/program/config/ISPParam.xml";

class ISPParamParseTest : public ::testing::Test {
protected:
    void writeFile(const std::string& strContent) { m_objRoot.write(kPath, strContent); }

    // Parses and returns the result; the console output lands in m_strOutput.
    bool parse(ISPParamParse& objParse) {
        ::testing::internal::CaptureStdout();
        bool bRet = objParse.parse();
        m_strOutput = ::testing::internal::GetCapturedStdout();
        return bRet;
    }

    // Parses the file and copies its tables out.
    bool parseInto(ISPParam& objOut) {
        ISPParamParse objParse;
        if (!parse(objParse)) return false;
        return objParse.getISPParam(objOut);
    }

    static int lookup(const ISPParam& objParam, const char* szTable, const char* szName, int nKey,
                      bool& bFound) {
        int nValue = -100;
        bFound = objParam.getParam(szTable, szName, nKey, nValue);
        return nValue;
    }

    testutil::TempRoot m_objRoot;
    std::string m_strOutput;
};

}  // namespace

TEST_F(ISPParamParseTest, DefaultsBeforeParse) {
    ISPParamParse objParse;
    EXPECT_FALSE(objParse.getRealTimeUpdate());
    EXPECT_EQ(1, objParse.getDelayTime());
    ISPParam objOut;
    objOut.setEnableFlag("X", true);
    EXPECT_TRUE(objParse.getISPParam(objOut));
    EXPECT_TRUE(objOut.empty());
}

TEST_F(ISPParamParseTest, MissingFileFailsWithMessage) {
    ISPParamParse objParse;
    EXPECT_FALSE(parse(objParse));
    EXPECT_EQ("open ISPParam.xml failed\n", m_strOutput);
    EXPECT_FALSE(objParse.getRealTimeUpdate());
    EXPECT_EQ(1, objParse.getDelayTime());
}

TEST_F(ISPParamParseTest, MalformedXmlFails) {
    writeFile(
        "<config realTimeUpdate=\"1\" time=\"5\"><GAIN enable=\"1\"><g0 min=\"0\" max=\"16\">"
        "<item name=\"EE\" value=\"3\"/></GAIN></config>");
    ISPParamParse objParse;
    EXPECT_FALSE(parse(objParse));
    EXPECT_NE(std::string::npos, m_strOutput.find("open ISPParam.xml failed\n"));
    ISPParam objOut;
    objParse.getISPParam(objOut);
    EXPECT_TRUE(objOut.empty());
    EXPECT_FALSE(objParse.getRealTimeUpdate());
    EXPECT_EQ(1, objParse.getDelayTime());
}

TEST_F(ISPParamParseTest, EmptyFileFails) {
    writeFile("");
    ISPParamParse objParse;
    EXPECT_FALSE(parse(objParse));
    EXPECT_NE(std::string::npos, m_strOutput.find("open ISPParam.xml failed\n"));
}

TEST_F(ISPParamParseTest, RootWithoutChildrenIsAnEmptyTableSet) {
    writeFile("<?xml version=\"1.0\"?>\n<config realTimeUpdate=\"1\" time=\"3\"/>\n");
    ISPParamParse objParse;
    EXPECT_TRUE(parse(objParse));
    EXPECT_EQ("", m_strOutput);
    EXPECT_TRUE(objParse.getRealTimeUpdate());
    EXPECT_EQ(3, objParse.getDelayTime());
    ISPParam objOut;
    objOut.setParam("GAIN", "old", 0, 10, "EE", 1);
    EXPECT_TRUE(objParse.getISPParam(objOut));
    EXPECT_TRUE(objOut.empty());
}

TEST_F(ISPParamParseTest, RootPropertiesDefaultWhenAbsent) {
    writeFile(
        "<config><GAIN enable=\"1\"><all min=\"0\" max=\"10\"><item name=\"EE\" value=\"4\"/></all></GAIN>"
        "</config>");
    ISPParamParse objParse;
    ASSERT_TRUE(parse(objParse));
    EXPECT_FALSE(objParse.getRealTimeUpdate());
    EXPECT_EQ(1, objParse.getDelayTime());
}

TEST_F(ISPParamParseTest, RootPropertiesAreRead) {
    writeFile("<config realTimeUpdate=\"true\" time=\"7\"/>");
    ISPParamParse objParse;
    ASSERT_TRUE(parse(objParse));
    EXPECT_TRUE(objParse.getRealTimeUpdate());
    EXPECT_EQ(7, objParse.getDelayTime());

    writeFile("<config realTimeUpdate=\"0\" time=\"-2\"/>");
    ISPParamParse objSecond;
    ASSERT_TRUE(parse(objSecond));
    EXPECT_FALSE(objSecond.getRealTimeUpdate());
    EXPECT_EQ(-2, objSecond.getDelayTime());
}

TEST_F(ISPParamParseTest, UnreadablePropertyTextsKeepDefaults) {
    writeFile("<config realTimeUpdate=\"maybe\" time=\"soon\"/>");
    ISPParamParse objParse;
    ASSERT_TRUE(parse(objParse));
    EXPECT_FALSE(objParse.getRealTimeUpdate());
    EXPECT_EQ(1, objParse.getDelayTime());
}

TEST_F(ISPParamParseTest, AdjacentGainBands) {
    writeFile(
        "<config>\n"
        " <GAIN enable=\"1\">\n"
        "  <low min=\"0\" max=\"16\"><item name=\"EE\" value=\"40\"/><item name=\"A0\" value=\"2\"/></low>\n"
        "  <high min=\"16\" max=\"32\"><item name=\"EE\" value=\"20\"/><item name=\"A0\" "
        "value=\"8\"/></high>\n"
        " </GAIN>\n"
        "</config>\n");
    ISPParamParse objParse;
    ASSERT_TRUE(parse(objParse));
    ISPParam objOut;
    ASSERT_TRUE(objParse.getISPParam(objOut));
    bool bFound = false;
    EXPECT_EQ(40, lookup(objOut, "GAIN", "EE", 15, bFound));
    EXPECT_TRUE(bFound);
    EXPECT_EQ(20, lookup(objOut, "GAIN", "EE", 16, bFound));
    EXPECT_TRUE(bFound);
    EXPECT_EQ(8, lookup(objOut, "GAIN", "A0", 16, bFound));
    EXPECT_TRUE(bFound);
    EXPECT_EQ(-100, lookup(objOut, "GAIN", "EE", 32, bFound));
    EXPECT_FALSE(bFound);
    bool bEnable = false;
    ASSERT_TRUE(objOut.getEnableFlag("GAIN", bEnable));
    EXPECT_TRUE(bEnable);
}

TEST_F(ISPParamParseTest, OverlappingBandsFirstInFileWins) {
    writeFile(
        "<config><GAIN enable=\"1\">"
        "<b min=\"10\" max=\"20\"><item name=\"DC\" value=\"2\"/></b>"
        "<a min=\"0\" max=\"100\"><item name=\"DC\" value=\"1\"/></a>"
        "</GAIN></config>");
    ISPParam objOut;
    ASSERT_TRUE(parseInto(objOut));
    bool bFound = false;
    EXPECT_EQ(2, lookup(objOut, "GAIN", "DC", 10, bFound));
    EXPECT_EQ(2, lookup(objOut, "GAIN", "DC", 19, bFound));
    EXPECT_EQ(1, lookup(objOut, "GAIN", "DC", 20, bFound));
    EXPECT_EQ(1, lookup(objOut, "GAIN", "DC", 9, bFound));
    EXPECT_TRUE(bFound);
}

TEST_F(ISPParamParseTest, RepeatedBandNameMergesIntoFirstOccurrence) {
    writeFile(
        "<config><GAIN enable=\"1\">"
        "<g1 min=\"0\" max=\"10\"><item name=\"EE\" value=\"5\"/></g1>"
        "<g2 min=\"10\" max=\"20\"><item name=\"EE\" value=\"6\"/></g2>"
        "<g1 min=\"50\" max=\"60\"><item name=\"TM\" value=\"3\"/><item name=\"EE\" value=\"9\"/></g1>"
        "</GAIN></config>");
    ISPParam objOut;
    ASSERT_TRUE(parseInto(objOut));
    const std::vector<ISPParamUnit>& vecBands = objOut.tables().at("GAIN");
    ASSERT_EQ(2u, vecBands.size());
    EXPECT_EQ("g1", vecBands[0].name());
    EXPECT_EQ("g2", vecBands[1].name());
    bool bFound = false;
    EXPECT_EQ(3, lookup(objOut, "GAIN", "TM", 0, bFound));
    EXPECT_TRUE(bFound);
    EXPECT_EQ(9, lookup(objOut, "GAIN", "EE", 9, bFound));
    lookup(objOut, "GAIN", "TM", 55, bFound);
    EXPECT_FALSE(bFound);
}

TEST_F(ISPParamParseTest, MatchedBandWithoutEEFailsEvenIfLaterBandHasIt) {
    writeFile(
        "<config><GAIN enable=\"1\">"
        "<first min=\"0\" max=\"16\"><item name=\"DC\" value=\"1\"/></first>"
        "<second min=\"0\" max=\"32\"><item name=\"EE\" value=\"25\"/></second>"
        "</GAIN></config>");
    ISPParam objOut;
    ASSERT_TRUE(parseInto(objOut));
    bool bFound = true;
    lookup(objOut, "GAIN", "EE", 4, bFound);
    EXPECT_FALSE(bFound);
    EXPECT_EQ(25, lookup(objOut, "GAIN", "EE", 16, bFound));
    EXPECT_TRUE(bFound);
}

TEST_F(ISPParamParseTest, DisabledTableIsStillStored) {
    writeFile(
        "<config><DN enable=\"0\">"
        "<night min=\"0\" max=\"1\"><item name=\"EE\" value=\"10\"/></night>"
        "<day min=\"1\" max=\"2\"><item name=\"EE\" value=\"30\"/></day>"
        "</DN><GAIN enable=\"false\"/></config>");
    ISPParam objOut;
    ASSERT_TRUE(parseInto(objOut));
    bool bEnable = true;
    ASSERT_TRUE(objOut.getEnableFlag("DN", bEnable));
    EXPECT_FALSE(bEnable);
    bEnable = true;
    ASSERT_TRUE(objOut.getEnableFlag("GAIN", bEnable));
    EXPECT_FALSE(bEnable);
    bool bFound = false;
    EXPECT_EQ(10, lookup(objOut, "DN", "EE", 0, bFound));
    EXPECT_TRUE(bFound);
    EXPECT_EQ(30, lookup(objOut, "DN", "EE", 1, bFound));
    EXPECT_TRUE(bFound);
    // A table without bands has a flag but no rows.
    EXPECT_EQ(0u, objOut.tables().count("GAIN"));
}

TEST_F(ISPParamParseTest, MissingEnableReadsAsFalse) {
    writeFile("<config><DN><day min=\"1\" max=\"2\"><item name=\"EE\" value=\"30\"/></day></DN></config>");
    ISPParam objOut;
    ASSERT_TRUE(parseInto(objOut));
    bool bEnable = true;
    ASSERT_TRUE(objOut.getEnableFlag("DN", bEnable));
    EXPECT_FALSE(bEnable);
    bool bFound = false;
    EXPECT_EQ(30, lookup(objOut, "DN", "EE", 1, bFound));
}

TEST_F(ISPParamParseTest, OtherTableAndSettingNamesAreKept) {
    writeFile(
        "<config><LUX enable=\"1\"><dark min=\"0\" max=\"5\"><item name=\"Gamma\" value=\"22\"/></dark></LUX>"
        "</config>");
    ISPParam objOut;
    ASSERT_TRUE(parseInto(objOut));
    bool bFound = false;
    EXPECT_EQ(22, lookup(objOut, "LUX", "Gamma", 4, bFound));
    EXPECT_TRUE(bFound);
}

TEST_F(ISPParamParseTest, AbsentBoundsAndValuesReadAsZero) {
    writeFile(
        "<config><GAIN enable=\"1\">"
        "<nobounds><item name=\"EE\" value=\"7\"/></nobounds>"
        "<onlymax max=\"10\"><item name=\"EE\"/><item value=\"5\"/></onlymax>"
        "</GAIN></config>");
    ISPParam objOut;
    ASSERT_TRUE(parseInto(objOut));
    const std::vector<ISPParamUnit>& vecBands = objOut.tables().at("GAIN");
    ASSERT_EQ(2u, vecBands.size());
    int nMin = -1, nMax = -1;
    vecBands[0].getMin(nMin);
    vecBands[0].getMax(nMax);
    EXPECT_EQ(0, nMin);
    EXPECT_EQ(0, nMax);
    // [0,0) holds nothing, so key 0 falls to the second band: EE without value is 0.
    bool bFound = false;
    EXPECT_EQ(0, lookup(objOut, "GAIN", "EE", 0, bFound));
    EXPECT_TRUE(bFound);
    EXPECT_EQ(5, lookup(objOut, "GAIN", "", 9, bFound));
    EXPECT_TRUE(bFound);
}

TEST_F(ISPParamParseTest, SettingListedTwiceInBandKeepsLaterValue) {
    writeFile(
        "<config><GAIN enable=\"1\"><g min=\"0\" max=\"10\">"
        "<item name=\"EE\" value=\"1\"/><item name=\"EE\" value=\"2\"/>"
        "</g></GAIN></config>");
    ISPParam objOut;
    ASSERT_TRUE(parseInto(objOut));
    bool bFound = false;
    EXPECT_EQ(2, lookup(objOut, "GAIN", "EE", 5, bFound));
    EXPECT_TRUE(bFound);
}

TEST_F(ISPParamParseTest, NegativeBoundsAndValues) {
    writeFile(
        "<config><T enable=\"1\">"
        "<neg min=\"-50\" max=\"-10\"><item name=\"A0\" value=\"-1\"/></neg>"
        "<mid min=\"-10\" max=\"10\"><item name=\"A0\" value=\"3\"/></mid>"
        "</T></config>");
    ISPParam objOut;
    ASSERT_TRUE(parseInto(objOut));
    bool bFound = false;
    EXPECT_EQ(-1, lookup(objOut, "T", "A0", -50, bFound));
    EXPECT_TRUE(bFound);
    EXPECT_EQ(-1, lookup(objOut, "T", "A0", -11, bFound));
    EXPECT_EQ(3, lookup(objOut, "T", "A0", -10, bFound));
    lookup(objOut, "T", "A0", -51, bFound);
    EXPECT_FALSE(bFound);
}

TEST_F(ISPParamParseTest, BandsKeepFileOrder) {
    writeFile(
        "<config><GAIN enable=\"1\">"
        "<z min=\"20\" max=\"30\"><item name=\"EE\" value=\"1\"/></z>"
        "<a min=\"0\" max=\"10\"><item name=\"EE\" value=\"2\"/></a>"
        "<m min=\"10\" max=\"20\"><item name=\"EE\" value=\"3\"/></m>"
        "</GAIN></config>");
    ISPParam objOut;
    ASSERT_TRUE(parseInto(objOut));
    const std::vector<ISPParamUnit>& vecBands = objOut.tables().at("GAIN");
    ASSERT_EQ(3u, vecBands.size());
    EXPECT_EQ("z", vecBands[0].name());
    EXPECT_EQ("a", vecBands[1].name());
    EXPECT_EQ("m", vecBands[2].name());
}

TEST_F(ISPParamParseTest, BandWithoutItemsAddsNoRow) {
    writeFile(
        "<config><GAIN enable=\"1\"><empty min=\"0\" max=\"100\"/>"
        "<g min=\"0\" max=\"10\"><item name=\"EE\" value=\"2\"/></g></GAIN></config>");
    ISPParam objOut;
    ASSERT_TRUE(parseInto(objOut));
    bool bFound = false;
    EXPECT_EQ(2, lookup(objOut, "GAIN", "EE", 5, bFound));
    EXPECT_TRUE(bFound);
}

TEST_F(ISPParamParseTest, GetISPParamReplacesTargetAndIsRepeatable) {
    writeFile(
        "<config><GAIN enable=\"1\"><g min=\"0\" max=\"10\"><item name=\"EE\" value=\"2\"/></g></GAIN>"
        "</config>");
    ISPParamParse objParse;
    ASSERT_TRUE(parse(objParse));
    ISPParam objOut;
    objOut.setEnableFlag("DN", true);
    objOut.setParam("DN", "day", 1, 2, "EE", 9);
    objOut.setParam("GAIN", "old", 0, 100, "DC", 1);
    ASSERT_TRUE(objParse.getISPParam(objOut));
    bool bEnable = false;
    int nValue = 0;
    EXPECT_FALSE(objOut.getEnableFlag("DN", bEnable));
    EXPECT_FALSE(objOut.getParam("DN", "EE", 1, nValue));
    EXPECT_FALSE(objOut.getParam("GAIN", "DC", 5, nValue));
    ASSERT_TRUE(objOut.getParam("GAIN", "EE", 5, nValue));
    EXPECT_EQ(2, nValue);
    ASSERT_EQ(1u, objOut.tables().at("GAIN").size());

    // A second copy gives the same content; the reader's own tables are untouched by the first.
    ASSERT_TRUE(objParse.getISPParam(objOut));
    ASSERT_EQ(1u, objOut.tables().at("GAIN").size());
    ASSERT_TRUE(objOut.getParam("GAIN", "EE", 5, nValue));
    EXPECT_EQ(2, nValue);

    // Changing the copy leaves the reader's tables alone.
    objOut.clear();
    ISPParam objAgain;
    objParse.getISPParam(objAgain);
    EXPECT_TRUE(objAgain.getParam("GAIN", "EE", 5, nValue));
}

TEST_F(ISPParamParseTest, SelfAssignmentKeepsTables) {
    ISPParam objParam;
    objParam.setEnableFlag("GAIN", true);
    objParam.setParam("GAIN", "g", 0, 10, "EE", 2);
    ISPParam& objAlias = objParam;
    objParam = objAlias;
    int nValue = 0;
    bool bEnable = false;
    ASSERT_TRUE(objParam.getParam("GAIN", "EE", 5, nValue));
    EXPECT_EQ(2, nValue);
    ASSERT_TRUE(objParam.getEnableFlag("GAIN", bEnable));
    EXPECT_TRUE(bEnable);
}

TEST_F(ISPParamParseTest, ItemsOutsideBandsAreIgnored) {
    writeFile(
        "<config><item name=\"EE\" value=\"1\"/><GAIN enable=\"1\"><item name=\"EE\" value=\"2\"/>"
        "<g min=\"0\" max=\"10\"><item name=\"EE\" value=\"3\"/></g></GAIN></config>");
    ISPParam objOut;
    ASSERT_TRUE(parseInto(objOut));
    EXPECT_EQ(1u, objOut.tables().size());
    ASSERT_EQ(1u, objOut.tables().at("GAIN").size());
    int nValue = 0;
    ASSERT_TRUE(objOut.getParam("GAIN", "EE", 0, nValue));
    EXPECT_EQ(3, nValue);
}

TEST_F(ISPParamParseTest, DocumentWithoutConfigNodeIsEmpty) {
    writeFile(
        "<tuning time=\"9\"><GAIN enable=\"1\"><g min=\"0\" max=\"10\"><item name=\"EE\" value=\"3\"/></g>"
        "</GAIN></tuning>");
    ISPParamParse objParse;
    EXPECT_TRUE(parse(objParse));
    EXPECT_EQ(1, objParse.getDelayTime());
    ISPParam objOut;
    objParse.getISPParam(objOut);
    EXPECT_TRUE(objOut.empty());
}

TEST_F(ISPParamParseTest, SampleCameraFileParses) {
    // The sample lives in the source tree, outside the platform root.
    std::ifstream objSample(std::string(SENSORCTL_SOURCE_DIR) + "/sim/camroot" + kPath);
    ASSERT_TRUE(objSample.good()) << "sample tuning file missing";
    std::stringstream objText;
    objText << objSample.rdbuf();
    writeFile(objText.str());
    ISPParamParse objParse;
    ASSERT_TRUE(parse(objParse));
    EXPECT_EQ("", m_strOutput);
    EXPECT_FALSE(objParse.getRealTimeUpdate());
    EXPECT_EQ(1, objParse.getDelayTime());
    ISPParam objOut;
    objParse.getISPParam(objOut);

    // Both tables are on (the fisheye board reports its gain).
    bool bEnable = false;
    ASSERT_TRUE(objOut.getEnableFlag("DN", bEnable));
    EXPECT_TRUE(bEnable);
    ASSERT_TRUE(objOut.getEnableFlag("GAIN", bEnable));
    EXPECT_TRUE(bEnable);

    // Day and night bands of the day/night table: sharpening only.
    int nDayEE = 0, nNightEE = 0;
    ASSERT_TRUE(objOut.getParam("DN", "EE", 1, nDayEE));
    ASSERT_TRUE(objOut.getParam("DN", "EE", 0, nNightEE));
    EXPECT_GT(nDayEE, nNightEE);

    // Gain bands cover 0..100 without gaps, each with the three noise settings and no
    // sharpening (a setting in both tables would be written twice a pass), and the
    // temporal noise reduction grows as the gain rises (off in the lowest band).
    const std::vector<ISPParamUnit>& vecBands = objOut.tables().at("GAIN");
    ASSERT_GE(vecBands.size(), 3u);
    ASSERT_LE(vecBands.size(), 4u);
    int nExpectedMin = 0;
    int nLastA0 = -2;
    for (const ISPParamUnit& objBand : vecBands) {
        int nMin = 0, nMax = 0, nValue = 0;
        objBand.getMin(nMin);
        objBand.getMax(nMax);
        EXPECT_EQ(nExpectedMin, nMin) << objBand.name();
        EXPECT_LT(nMin, nMax) << objBand.name();
        nExpectedMin = nMax;
        for (const char* szName : {"DC", "A0", "TM"}) {
            EXPECT_TRUE(objBand.getParam(szName, nValue)) << objBand.name() << " " << szName;
        }
        EXPECT_FALSE(objBand.getParam("EE", nValue)) << objBand.name();
        ASSERT_TRUE(objBand.getParam("A0", nValue));
        EXPECT_GT(nValue, nLastA0) << objBand.name();
        nLastA0 = nValue;
    }
    EXPECT_GT(nExpectedMin, 100);
    int nValue = 0;
    EXPECT_TRUE(objOut.getParam("GAIN", "A0", 0, nValue));
    EXPECT_EQ(-1, nValue);
    EXPECT_TRUE(objOut.getParam("GAIN", "A0", 100, nValue));
    EXPECT_FALSE(objOut.getParam("DN", "A0", 1, nValue));
}
