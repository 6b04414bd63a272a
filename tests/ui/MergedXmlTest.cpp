#include "ui/MergedXml.h"

#include <gtest/gtest.h>
#include <tinyxml2.h>

#include <unistd.h>

#include <climits>
#include <string>
#include <vector>

#include "TestRoot.h"
#include "platform/KSFile.h"

using testutil::TempRoot;

namespace {

const char kStyle[] = "/hd1/moduleConfig/sensorConfig/style/S2Style.xml";
const char kDiversity[] = "/hd1/moduleConfig/sensorConfig/styleDiversity/S2StyleDiversity.xml";
const char kDetail[] = "RS485=/dev/ttyS1;isInfrared=1;lens=3;board=S2";

std::string tab(int key) { return "<Tab id=\"" + std::to_string(key) + "\" title=\"t" + std::to_string(key) + "\"/>"; }

std::string styleOf(const std::vector<int>& keys) {
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Style>\n";
    for (int k : keys) text += "  " + tab(k) + "\n";
    return text + "</Style>\n";
}

std::vector<int> range(int first, int last) {
    std::vector<int> v;
    for (int k = first; k <= last; ++k) v.push_back(k);
    return v;
}

// The keys of the tabs of a printed style text, in document order.
std::vector<int> tabKeys(const std::string& text) {
    tinyxml2::XMLDocument doc;
    EXPECT_EQ(doc.Parse(text.c_str()), tinyxml2::XML_SUCCESS) << text;
    std::vector<int> keys;
    const tinyxml2::XMLElement* root = doc.RootElement();
    if (root == nullptr) return keys;
    for (const tinyxml2::XMLElement* e = root->FirstChildElement(); e; e = e->NextSiblingElement())
        keys.push_back(MergedXml::keyOf(e));
    return keys;
}

class MergedXmlTest : public ::testing::Test {
protected:
    void writeFiles(const std::string& style, const std::string& diversity) {
        root.write(kStyle, style);
        root.write(kDiversity, diversity);
        merged.setStyleOriginalPath(kStyle);
        merged.setStyleModifyPath(kDiversity);
    }
    // Merges and returns the tab keys; fails the test when the merge fails.
    std::vector<int> mergedKeys(const std::string& detail = kDetail) {
        std::string text;
        EXPECT_TRUE(merged.getStyleMergedString(detail, text));
        return tabKeys(text);
    }

    TempRoot root;
    MergedXml merged;
};

}  // namespace

TEST_F(MergedXmlTest, UnsetPathsFailWithMessage) {
    std::string text = "unchanged";
    testing::internal::CaptureStdout();
    EXPECT_FALSE(merged.getStyleMergedString(kDetail, text));
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("m_strStyleModifyPath or m_strStyleOriginalPath is NULL,Please set path first"),
              std::string::npos);
    EXPECT_NE(out.find("mergeStyleXml failed"), std::string::npos);
    EXPECT_EQ(text, "unchanged");

    // One of the two set is not enough.
    root.write(kStyle, styleOf({1, 2}));
    merged.setStyleOriginalPath(kStyle);
    testing::internal::CaptureStdout();
    EXPECT_FALSE(merged.mergeStyleXml(kDetail));
    EXPECT_NE(testing::internal::GetCapturedStdout().find("Please set path first"), std::string::npos);
}

TEST_F(MergedXmlTest, MissingStyleOrDiversityFileFails) {
    root.write(kDiversity, "<M><Delete><T id=\"1\"/></Delete></M>");
    merged.setStyleOriginalPath(kStyle);
    merged.setStyleModifyPath(kDiversity);
    std::string text;
    testing::internal::CaptureStdout();
    EXPECT_FALSE(merged.getStyleMergedString(kDetail, text));
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("mergeStyleXml file open failed "), std::string::npos);
    EXPECT_NE(out.find("mergeStyleXml failed"), std::string::npos);
    EXPECT_TRUE(text.empty());

    root.write(kStyle, styleOf({1, 2}));
    root.remove(kDiversity);
    testing::internal::CaptureStdout();
    EXPECT_FALSE(merged.mergeStyleXml(kDetail));
    EXPECT_NE(testing::internal::GetCapturedStdout().find("mergeStyleXml file open failed "), std::string::npos);
}

TEST_F(MergedXmlTest, PrintsTheDocumentInThePrinterDefaultForm) {
    writeFiles("<?xml version=\"1.0\"?>\n<Style><Tab id=\"1\" name=\"a\"><Item id=\"7\"/></Tab><Tab id=\"2\"/></Style>",
               "<M isInfrared=\"1\"><Delete><T id=\"2\"/></Delete></M>");
    std::string text;
    ASSERT_TRUE(merged.getStyleMergedString(kDetail, text));
    EXPECT_EQ(text,
              "<?xml version=\"1.0\"?>\n"
              "<Style>\n"
              "    <Tab id=\"1\" name=\"a\">\n"
              "        <Item id=\"7\"/>\n"
              "    </Tab>\n"
              "</Style>\n");
}

TEST_F(MergedXmlTest, BlockWhoseConditionsAllHoldApplies) {
    // lens accepts 2 or 3; the module has 3. board must be S2.
    writeFiles(styleOf({1, 2, 3, 4}), "<M lens=\"2,3\" board=\"S2\"><Delete><T id=\"2\"/></Delete></M>");
    EXPECT_EQ(mergedKeys(), (std::vector<int>{1, 3, 4}));
}

TEST_F(MergedXmlTest, OneConditionFailingDisablesTheWholeBlock) {
    writeFiles(styleOf({1, 2, 3, 4}),
               "<M lens=\"2,3\" board=\"S3\">"
               "<Delete><T id=\"2\"/></Delete>"
               "<AddAfter><A id=\"1\"><Tab id=\"9\"/></A></AddAfter>"
               "</M>");
    EXPECT_EQ(mergedKeys(), (std::vector<int>{1, 2, 3, 4}));
}

TEST_F(MergedXmlTest, ConditionOnAKeyTheModuleLacksFails) {
    writeFiles(styleOf({1, 2, 3}), "<M isInfrared=\"1\" DNDefault=\"0\"><Delete><T id=\"2\"/></Delete></M>");
    EXPECT_EQ(mergedKeys(), (std::vector<int>{1, 2, 3}));
}

TEST_F(MergedXmlTest, AcceptedValuesCompareExactly) {
    // "33" and "3 " are not "3"; an empty entry is not "3" either.
    writeFiles(styleOf({1, 2, 3}), "<M lens=\"33,3 ,,30\"><Delete><T id=\"2\"/></Delete></M>");
    EXPECT_EQ(mergedKeys(), (std::vector<int>{1, 2, 3}));
    writeFiles(styleOf({1, 2, 3}), "<M lens=\"33,,3\"><Delete><T id=\"2\"/></Delete></M>");
    EXPECT_EQ(mergedKeys(), (std::vector<int>{1, 3}));
}

TEST_F(MergedXmlTest, BlockWithoutConditionsAppliesToEveryModule) {
    writeFiles(styleOf({1, 2, 3}), "<Always><Delete><T id=\"1\"/></Delete></Always>");
    EXPECT_EQ(mergedKeys(), (std::vector<int>{2, 3}));
    EXPECT_EQ(mergedKeys("other=1"), (std::vector<int>{2, 3}));
}

TEST_F(MergedXmlTest, TwoApplyingBlocksRunInFileOrderOnEachOthersResult) {
    // The second block anchors on the tab that the first one added, and
    // deletes a tab that the first moved next to it.
    writeFiles(styleOf({1, 2, 3, 4}),
               "<First isInfrared=\"1\"><AddAfter><A id=\"2\"><Tab id=\"20\"/></A></AddAfter></First>\n"
               "<Second board=\"S2\">"
               "<AddAfter><A id=\"20\"><Tab id=\"21\"/></A></AddAfter>"
               "<Delete><T id=\"3\"/></Delete>"
               "</Second>\n");
    EXPECT_EQ(mergedKeys(), (std::vector<int>{1, 2, 20, 21, 4}));
}

TEST_F(MergedXmlTest, DeleteRemovesEveryTabWithTheKey) {
    // Two adjacent tabs and a third further down share key 5.
    writeFiles(styleOf({1, 5, 5, 2, 5, 3}), "<M isInfrared=\"1\"><Delete><T id=\"5\"/><T id=\"3\"/></Delete></M>");
    EXPECT_EQ(mergedKeys(), (std::vector<int>{1, 2}));
}

TEST_F(MergedXmlTest, DeleteOfAnUnknownKeySucceedsQuietly) {
    writeFiles(styleOf({1, 2}), "<M isInfrared=\"1\"><Delete><T id=\"77\"/></Delete></M>");
    testing::internal::CaptureStdout();
    EXPECT_EQ(mergedKeys(), (std::vector<int>{1, 2}));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(MergedXmlTest, AddAfterKeepsTheRunInOrder) {
    writeFiles(styleOf({1, 2, 3, 4}),
               "<M isInfrared=\"1\"><AddAfter><A id=\"3\"><Tab id=\"10\"/><Tab id=\"11\"/></A></AddAfter></M>");
    EXPECT_EQ(mergedKeys(), (std::vector<int>{1, 2, 3, 10, 11, 4}));
}

TEST_F(MergedXmlTest, AddAfterAnchorOnTheLastTabAppends) {
    writeFiles(styleOf({1, 2}),
               "<M isInfrared=\"1\"><AddAfter><A id=\"2\"><Tab id=\"10\"/><Tab id=\"11\"/></A></AddAfter></M>");
    EXPECT_EQ(mergedKeys(), (std::vector<int>{1, 2, 10, 11}));
}

TEST_F(MergedXmlTest, MissingAnchorDropsTheNewTabsSilently) {
    writeFiles(styleOf({1, 2, 3}),
               "<M isInfrared=\"1\">"
               "<AddAfter><A id=\"99\"><Tab id=\"10\"/><Tab id=\"11\"/></A></AddAfter>"
               "<AddBefore><A id=\"98\"><Tab id=\"12\"/></A></AddBefore>"
               "</M>");
    testing::internal::CaptureStdout();
    EXPECT_EQ(mergedKeys(), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(MergedXmlTest, AddBeforePutsTheRunBeforeTheAnchor) {
    writeFiles(styleOf({1, 2, 3, 4}),
               "<M isInfrared=\"1\"><AddBefore><A id=\"3\"><Tab id=\"10\"/><Tab id=\"11\"/></A></AddBefore></M>");
    EXPECT_EQ(mergedKeys(), (std::vector<int>{1, 2, 10, 11, 3, 4}));
}

TEST_F(MergedXmlTest, AddBeforeTheFirstTab) {
    writeFiles(styleOf({1, 2}),
               "<M isInfrared=\"1\"><AddBefore><A id=\"1\"><Tab id=\"10\"/><Tab id=\"11\"/></A></AddBefore></M>");
    EXPECT_EQ(mergedKeys(), (std::vector<int>{10, 11, 1, 2}));
}

TEST_F(MergedXmlTest, SeveralAnchorsInOneOperation) {
    writeFiles(styleOf({1, 2, 3}),
               "<M isInfrared=\"1\">"
               "<AddAfter><A id=\"1\"><Tab id=\"10\"/></A><A id=\"3\"><Tab id=\"30\"/><Tab id=\"31\"/></A></AddAfter>"
               "<AddBefore><A id=\"2\"><Tab id=\"19\"/></A></AddBefore>"
               "</M>");
    EXPECT_EQ(mergedKeys(), (std::vector<int>{1, 10, 19, 2, 3, 30, 31}));
}

TEST_F(MergedXmlTest, InsertedTabsAreDeepCopies) {
    writeFiles("<Style><Tab id=\"1\"/></Style>",
               "<M isInfrared=\"1\"><AddAfter><A id=\"1\">"
               "<Tab id=\"2\" title=\"Exposure\"><Item id=\"21\" max=\"100\"/><Item id=\"22\">text</Item></Tab>"
               "</A></AddAfter></M>");
    std::string text;
    ASSERT_TRUE(merged.getStyleMergedString(kDetail, text));
    tinyxml2::XMLDocument doc;
    ASSERT_EQ(doc.Parse(text.c_str()), tinyxml2::XML_SUCCESS);
    const tinyxml2::XMLElement* added = doc.RootElement()->FirstChildElement()->NextSiblingElement();
    ASSERT_NE(added, nullptr);
    EXPECT_STREQ(added->Attribute("title"), "Exposure");
    const tinyxml2::XMLElement* item = added->FirstChildElement("Item");
    ASSERT_NE(item, nullptr);
    EXPECT_STREQ(item->Attribute("max"), "100");
    ASSERT_NE(item->NextSiblingElement("Item"), nullptr);
    EXPECT_STREQ(item->NextSiblingElement("Item")->GetText(), "text");
}

TEST_F(MergedXmlTest, KeyIsTheFirstAttributeWhateverItsName) {
    // Keyed 5 by "name"; keyed 0 by a text name; keyed 12 by the leading digits.
    writeFiles("<Style><Tab name=\"5\" id=\"1\"/><Tab name=\"Brightness\" id=\"2\"/><Tab name=\"12abc\"/>"
               "<Tab id=\"1\"/></Style>",
               "<M isInfrared=\"1\"><Delete><X name=\"5\"/><X label=\"Contrast\"/></Delete></M>");
    EXPECT_EQ(mergedKeys(), (std::vector<int>{12, 1}));
}

TEST(MergedXmlKeyTest, KeysReadLikeStrtolBase10) {
    tinyxml2::XMLDocument doc;
    ASSERT_EQ(doc.Parse("<R><a k=\"42\"/><b k=\"-7\"/><c k=\" 13\"/><d k=\"0x10\"/><e k=\"text\"/><f/>"
                        "<g k=\"99999999999\"/><h k=\"-99999999999\"/><i k=\"\"/><j k=\"010\"/></R>"),
              tinyxml2::XML_SUCCESS);
    std::vector<int> keys;
    for (const tinyxml2::XMLElement* e = doc.RootElement()->FirstChildElement(); e; e = e->NextSiblingElement())
        keys.push_back(MergedXml::keyOf(e));
    EXPECT_EQ(keys, (std::vector<int>{42, -7, 13, 0, 0, 0, INT_MAX, INT_MIN, 0, 10}));
}

TEST_F(MergedXmlTest, OtherElementNamesInABlockAreNotOperations) {
    writeFiles(styleOf({1, 2, 3}),
               "<M isInfrared=\"1\"><delete><T id=\"1\"/></delete><Remove><T id=\"2\"/></Remove>"
               "<Delete><T id=\"3\"/></Delete></M>");
    EXPECT_EQ(mergedKeys(), (std::vector<int>{1, 2}));
}

TEST_F(MergedXmlTest, UnparsableDetailSkipsConditionalBlocks) {
    // "garbage" has no '=': the detail text cannot be read. Conditional blocks
    // cannot match; a block without conditions still applies.
    writeFiles(styleOf({1, 2, 3}),
               "<M isInfrared=\"1\"><Delete><T id=\"1\"/></Delete></M>"
               "<N board=\"S2\"><Delete><T id=\"2\"/></Delete></N>"
               "<All><Delete><T id=\"3\"/></Delete></All>");
    std::string text;
    testing::internal::CaptureStdout();
    EXPECT_TRUE(merged.getStyleMergedString("isInfrared=1;garbage", text));
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("parse detail failed"), std::string::npos);
    EXPECT_EQ(tabKeys(text), (std::vector<int>{1, 2}));
}

TEST_F(MergedXmlTest, MalformedStyleFails) {
    writeFiles("<Style><Tab id=\"1\"><Tab id=\"2\"/></Style>", "<M isInfrared=\"1\"><Delete><T id=\"1\"/></Delete></M>");
    std::string text = "before";
    testing::internal::CaptureStdout();
    EXPECT_FALSE(merged.getStyleMergedString(kDetail, text));
    EXPECT_NE(testing::internal::GetCapturedStdout().find("mergeStyleXml failed"), std::string::npos);
    EXPECT_EQ(text, "before");
}

TEST_F(MergedXmlTest, MalformedDiversityFails) {
    writeFiles(styleOf({1, 2}), "<M isInfrared=\"1\"><Delete><T id=\"1\"/></Delete>");
    std::string text = "before";
    testing::internal::CaptureStdout();
    EXPECT_FALSE(merged.getStyleMergedString(kDetail, text));
    EXPECT_NE(testing::internal::GetCapturedStdout().find("mergeStyleXml failed"), std::string::npos);
    EXPECT_EQ(text, "before");

    writeFiles(styleOf({1, 2}), "<M isInfrared=\"1\"><Delete><T id=\"1\"/></Delete></M><N a=\"1>");
    EXPECT_FALSE(merged.mergeStyleXml(kDetail));
}

TEST_F(MergedXmlTest, EmptyStyleFailsButEmptyDiversityMeansNoChange) {
    writeFiles("", "");
    EXPECT_FALSE(merged.mergeStyleXml(kDetail));
    writeFiles(styleOf({1, 2}), " \n");
    EXPECT_EQ(mergedKeys(), (std::vector<int>{1, 2}));
}

TEST_F(MergedXmlTest, EveryMergeStartsFromTheFiles) {
    writeFiles(styleOf({1, 2, 3}),
               "<M isInfrared=\"1\"><AddAfter><A id=\"1\"><Tab id=\"10\"/></A></AddAfter></M>");
    EXPECT_EQ(mergedKeys(), (std::vector<int>{1, 10, 2, 3}));
    EXPECT_EQ(mergedKeys(), (std::vector<int>{1, 10, 2, 3}));
    EXPECT_EQ(mergedKeys("isInfrared=0"), (std::vector<int>{1, 2, 3}));
}

TEST_F(MergedXmlTest, FindNodeByKeyLeavesTheOutputAloneWhenNothingMatches) {
    tinyxml2::XMLDocument doc;
    ASSERT_EQ(doc.Parse("<R><a id=\"1\"/><b id=\"2\"/><c id=\"2\"/></R>"), tinyxml2::XML_SUCCESS);
    tinyxml2::XMLElement* found = nullptr;
    EXPECT_TRUE(merged.findNodeByKey(2, doc.RootElement(), found));
    ASSERT_NE(found, nullptr);
    EXPECT_STREQ(found->Name(), "b");

    tinyxml2::XMLElement* sentinel = doc.RootElement();
    tinyxml2::XMLElement* out = sentinel;
    EXPECT_TRUE(merged.findNodeByKey(3, doc.RootElement(), out));
    EXPECT_EQ(out, sentinel);
}

TEST_F(MergedXmlTest, DeleteTabNodeReportsSuccessEitherWay) {
    MergedXml empty;
    EXPECT_TRUE(empty.deleteTabNode(1));  // nothing loaded at all
    writeFiles(styleOf({4, 4, 5}), "");
    ASSERT_TRUE(merged.mergeStyleXml(kDetail));
    EXPECT_TRUE(merged.deleteTabNode(6));
    EXPECT_TRUE(merged.deleteTabNode(4));
    EXPECT_TRUE(merged.deleteTabNode(4));
}

TEST_F(MergedXmlTest, LanguageTextsAreNotMerged) {
    root.write("/hd1/l/Lang.xml", "<Lang><Text id=\"1\">Brightness</Text></Lang>");
    root.write("/hd1/l/LangDiversity.xml", "<M><Delete><T id=\"1\"/></Delete></M>");
    merged.setLangOriginalPath("/hd1/l/Lang.xml");
    merged.setLangModifyPath("/hd1/l/LangDiversity.xml");
    EXPECT_TRUE(merged.mergeLangXml("garbage"));
    std::string text = "x";
    testing::internal::CaptureStdout();
    EXPECT_TRUE(merged.getLangMergedString(kDetail, text));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(text, "");
}

TEST_F(MergedXmlTest, FiftyTabsWithSeveralBlocks) {
    writeFiles(styleOf(range(1, 50)),
               // Applies (isInfrared=1): drops the day/night tabs 40..42 and adds an IR tab run after 39.
               "<IR isInfrared=\"1\">\n"
               "  <Delete><T id=\"40\"/><T id=\"41\"/><T id=\"42\"/></Delete>\n"
               "  <AddAfter><A id=\"39\"><Tab id=\"100\"/><Tab id=\"101\"/><Tab id=\"102\"/></A></AddAfter>\n"
               "</IR>\n"
               // Does not apply: lens 5 is not fitted.
               "<Lens5 lens=\"5\">\n"
               "  <Delete><T id=\"1\"/><T id=\"2\"/></Delete>\n"
               "</Lens5>\n"
               // Applies (lens 3 and board S2): moves tab 50 to the front and anchors on the IR run.
               "<Lens3 lens=\"1,3\" board=\"S2\">\n"
               "  <Delete><T id=\"50\"/></Delete>\n"
               "  <AddBefore><A id=\"1\"><Tab id=\"50\"/></A><A id=\"101\"><Tab id=\"200\"/></A></AddBefore>\n"
               "  <AddAfter><A id=\"102\"><Tab id=\"103\"/></A><A id=\"25\"><Tab id=\"250\"/><Tab id=\"251\"/></A></AddAfter>\n"
               "  <Ignored><T id=\"3\"/></Ignored>\n"
               "</Lens3>\n"
               // Does not apply: one of two conditions fails.
               "<Mixed isInfrared=\"1\" board=\"S3\">\n"
               "  <Delete><T id=\"10\"/></Delete>\n"
               "</Mixed>\n"
               // Applies: deletes a tab that an earlier block inserted and one that is duplicated nowhere.
               "<Late RS485=\"/dev/ttyS0,/dev/ttyS1\">\n"
               "  <Delete><T id=\"200\"/><T id=\"7\"/></Delete>\n"
               "  <AddBefore><A id=\"8\"><Tab id=\"70\"/><Tab id=\"71\"/></A></AddBefore>\n"
               "</Late>\n");
    std::vector<int> expected = {50, 1, 2, 3, 4, 5, 6, 70, 71, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20,
                                 21, 22, 23, 24, 25, 250, 251, 26, 27, 28, 29, 30, 31, 32, 33, 34, 35, 36, 37, 38,
                                 39, 100, 101, 102, 103, 43, 44, 45, 46, 47, 48, 49};
    EXPECT_EQ(mergedKeys(), expected);
}

namespace {
void shrinkToFive(const std::string& resolvedPath) { (void)::truncate(resolvedPath.c_str(), 5); }
}  // namespace

TEST_F(MergedXmlTest, FileThatShrinksBeforeTheReadFails) {
    writeFiles(styleOf({1, 2}), "<M/>");
    KSFile::setBeforeReadHook(shrinkToFive);
    bool ok = merged.mergeStyleXml(kDetail);
    KSFile::setBeforeReadHook(nullptr);
    EXPECT_FALSE(ok);
}

// Texts tinyxml2 reads without an error although it skips or keeps something
// beside the elements: each fails the merge, and the output is left alone.
TEST_F(MergedXmlTest, StyleOrDiversityWithStrayTextOrEndTagsFails) {
    const std::pair<std::string, std::string> cases[] = {
        {"<Style/>", "></b>"},                     // found by fuzzing: text and a stray end tag
        {"<Style/>", "<M><Delete/></M>x"},         // text after a block
        {"<Style/>", "<M/></b><N><Delete><T id=\"1\"/></Delete></N>"},  // a block after a stray end tag
        {"></b>", ""},                              // a style without a root element
        {"<Style/>\n></b>", ""},                   // text after the root
        {"<Style/><Style/>", ""},                  // two roots
        {"<Style><Tab id=\"1\"/></Style></b><Tab id=\"2\"/>", ""},
    };
    for (const auto& c : cases) {
        writeFiles(c.first, c.second);
        std::string text = "before";
        testing::internal::CaptureStdout();
        EXPECT_FALSE(merged.getStyleMergedString("x=1", text)) << c.first << " | " << c.second;
        EXPECT_NE(testing::internal::GetCapturedStdout().find("mergeStyleXml failed"), std::string::npos);
        EXPECT_EQ(text, "before");
    }
    // Blanks, comments and the declarations around the elements are fine.
    writeFiles("<?xml version=\"1.0\"?>\n<!-- tabs -->\n<Style><Tab id=\"1\"/></Style>\n\n",
               "\n<!-- blocks -->\n<M><Delete><T id=\"1\"/></Delete></M>\n<N/>\n");
    std::string text;
    ASSERT_TRUE(merged.getStyleMergedString("x=1", text));
    EXPECT_EQ(tabKeys(text), std::vector<int>{});
}
