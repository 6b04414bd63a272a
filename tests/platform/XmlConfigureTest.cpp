#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>
#include <vector>

#include "TestRoot.h"
#include "platform/XmlConfigureItem.h"
#include "platform/XmlConfigureNode.h"
#include "platform/XmlConfigureTool.h"

namespace {

const char kSensorXml[] = "/mnt/mtd/code/config_file/sensor.xml";

struct FileId {
    ino_t inode = 0;
    long long mtimeNs = 0;
    bool operator==(const FileId& o) const { return inode == o.inode && mtimeNs == o.mtimeNs; }
};

FileId fileId(const std::string& realPath) {
    struct stat st {};
    FileId id;
    if (::stat(realPath.c_str(), &st) == 0) {
        id.inode = st.st_ino;
        id.mtimeNs = static_cast<long long>(st.st_mtim.tv_sec) * 1000000000LL + st.st_mtim.tv_nsec;
    }
    return id;
}

XmlConfigureItem makeItem(const std::string& name, const std::string& value) {
    XmlConfigureItem item;
    item.setProperty("name", name);
    item.setProperty("value", value);
    return item;
}

// Builds the scheme state file as the controller does.
bool createSensorXml(int index, int mode) {
    XmlConfigureTool tool;
    if (!tool.setRootNodeName("sensor")) return false;
    if (!tool.open(kSensorXml, 1, XmlConfigureTool::ModeCreate)) return false;
    XmlConfigureNode node(1, "paramScheme");
    node.addConfigItem(makeItem("SchemeIndex", std::to_string(index)));
    node.addConfigItem(makeItem("SchemeMode", std::to_string(mode)));
    if (!tool.addConfigNode(node)) return false;
    return tool.close();
}

bool readSchemeValue(const std::string& name, std::string& value) {
    XmlConfigureTool tool;
    if (!tool.open(kSensorXml, 1, XmlConfigureTool::ModeRead)) return false;
    XmlConfigureNode node = tool.getConfigNode("paramScheme");
    std::vector<XmlConfigureItem> items;
    if (!node.getItemList(items)) return false;
    for (const XmlConfigureItem& item : items) {
        std::string n;
        if (item.getProperty("name", n) && n == name) return item.getProperty("value", value);
    }
    return false;
}

class XmlConfigureTest : public ::testing::Test {
protected:
    testutil::TempRoot m_root;
};

}  // namespace

TEST_F(XmlConfigureTest, CreateThenReadBack) {
    ASSERT_TRUE(createSensorXml(2, 1));
    ASSERT_TRUE(m_root.exists(kSensorXml));
    std::string text = m_root.read(kSensorXml);
    EXPECT_NE(text.find("<?xml"), std::string::npos);
    EXPECT_NE(text.find("<sensor>"), std::string::npos);
    EXPECT_NE(text.find("<item name=\"SchemeIndex\" value=\"2\"/>"), std::string::npos);

    std::string v;
    ASSERT_TRUE(readSchemeValue("SchemeIndex", v));
    EXPECT_EQ(v, "2");
    ASSERT_TRUE(readSchemeValue("SchemeMode", v));
    EXPECT_EQ(v, "1");

    XmlConfigureTool tool;
    ASSERT_TRUE(tool.open(kSensorXml, 0, XmlConfigureTool::ModeRead));
    EXPECT_EQ(tool.getRootNodeName(), "sensor");
    EXPECT_EQ(tool.getConfigNode("sensor").getName(), "sensor");  // the root itself is searched
    std::vector<XmlConfigureNode> nodes = tool.getAllConfigNodeList();
    ASSERT_EQ(nodes.size(), 1u);
    EXPECT_EQ(nodes[0].getName(), "paramScheme");
    std::vector<XmlConfigureItem> items;
    ASSERT_TRUE(nodes[0].getItemList(items));
    ASSERT_EQ(items.size(), 2u);
    int index = -1;
    EXPECT_TRUE(items[0].getProperty("value", index));
    EXPECT_EQ(index, 2);
}

TEST_F(XmlConfigureTest, RootNameCanBeSetAfterCreateAndDefaultsToConfig) {
    {
        XmlConfigureTool tool;
        ASSERT_TRUE(tool.open("/a.xml", 0, XmlConfigureTool::ModeCreate));
        EXPECT_EQ(tool.getRootNodeName(), "config");
        ASSERT_TRUE(tool.setRootNodeName("IRConfig"));
        EXPECT_EQ(tool.getRootNodeName(), "IRConfig");
        EXPECT_FALSE(tool.setRootNodeName(""));
        EXPECT_FALSE(tool.setRootNodeName("bad name"));
        EXPECT_FALSE(tool.setRootNodeName("item"));
        EXPECT_TRUE(tool.close());
    }
    EXPECT_NE(m_root.read("/a.xml").find("<IRConfig/>"), std::string::npos);
    {
        XmlConfigureTool tool;
        ASSERT_TRUE(tool.open("/b.xml", 0, XmlConfigureTool::ModeCreate));
        EXPECT_TRUE(tool.close());
    }
    EXPECT_NE(m_root.read("/b.xml").find("<config/>"), std::string::npos);
}

TEST_F(XmlConfigureTest, UpdateSavesChanges) {
    ASSERT_TRUE(createSensorXml(0, 0));
    {
        XmlConfigureTool tool;
        ASSERT_TRUE(tool.open(kSensorXml, 1, XmlConfigureTool::ModeUpdate));
        std::vector<XmlConfigureItem> items;
        ASSERT_TRUE(tool.getConfigNode("paramScheme").getItemList(items));
        ASSERT_EQ(items.size(), 2u);
        EXPECT_TRUE(items[0].setProperty("value", 5));
        EXPECT_TRUE(tool.close());
        EXPECT_FALSE(tool.isOpen());
    }
    std::string v;
    ASSERT_TRUE(readSchemeValue("SchemeIndex", v));
    EXPECT_EQ(v, "5");
}

TEST_F(XmlConfigureTest, ReadModeNeverWrites) {
    ASSERT_TRUE(createSensorXml(0, 0));
    FileId before = fileId(m_root.real(kSensorXml));
    {
        XmlConfigureTool tool;
        ASSERT_TRUE(tool.open(kSensorXml, 1, XmlConfigureTool::ModeRead));
        tool.getConfigNode("paramScheme").setProperty("changed", "in memory only");
        EXPECT_TRUE(tool.close());
    }
    EXPECT_TRUE(fileId(m_root.real(kSensorXml)) == before);
    std::string v;
    XmlConfigureTool tool;
    ASSERT_TRUE(tool.open(kSensorXml, 1, XmlConfigureTool::ModeRead));
    EXPECT_FALSE(tool.getConfigNode("paramScheme").getProperty("changed", v));
}

TEST_F(XmlConfigureTest, UnchangedUpdateDoesNotRewrite) {
    // Hand-written formatting that the printer would not reproduce byte for byte.
    const std::string text =
        "<?xml version=\"1.0\"?>\n<sensor>\n  <paramScheme>\n    <item name=\"SchemeIndex\"  value=\"3\" />\n"
        "  </paramScheme>\n</sensor>\n";
    m_root.write(kSensorXml, text);
    FileId before = fileId(m_root.real(kSensorXml));
    {
        XmlConfigureTool tool;
        ASSERT_TRUE(tool.open(kSensorXml, 1, XmlConfigureTool::ModeUpdate));
        std::vector<XmlConfigureItem> items;
        ASSERT_TRUE(tool.getConfigNode("paramScheme").getItemList(items));
        std::string v;
        ASSERT_TRUE(items[0].getProperty("value", v));
        items[0].setProperty("value", v);  // same value: the document does not change
        EXPECT_TRUE(tool.close());
    }
    EXPECT_TRUE(fileId(m_root.real(kSensorXml)) == before);
    EXPECT_EQ(m_root.read(kSensorXml), text);

    // Creating the same content again leaves the file alone too.
    ASSERT_TRUE(createSensorXml(1, 0));
    FileId created = fileId(m_root.real(kSensorXml));
    ASSERT_TRUE(createSensorXml(1, 0));
    EXPECT_TRUE(fileId(m_root.real(kSensorXml)) == created);
    // A real change replaces the file.
    ASSERT_TRUE(createSensorXml(1, 1));
    EXPECT_FALSE(fileId(m_root.real(kSensorXml)) == created);
}

TEST_F(XmlConfigureTest, MissingFilesFailReadAndUpdate) {
    XmlConfigureTool tool;
    EXPECT_FALSE(tool.open("/no/such/file.xml", 1, XmlConfigureTool::ModeRead));
    EXPECT_FALSE(tool.isOpen());
    EXPECT_FALSE(tool.open("/no/such/file.xml", 1, XmlConfigureTool::ModeUpdate));
    EXPECT_FALSE(tool.isOpen());
    EXPECT_FALSE(m_root.exists("/no/such/file.xml"));
    EXPECT_TRUE(tool.getConfigNode("x").isNull());
    EXPECT_TRUE(tool.getAllConfigNodeList().empty());
    EXPECT_FALSE(tool.addConfigNode(XmlConfigureNode("x")));
    EXPECT_TRUE(tool.close());
    EXPECT_FALSE(tool.open("/x.xml", 1, 0));
    EXPECT_FALSE(tool.open("/x.xml", 1, 4));
}

TEST_F(XmlConfigureTest, MalformedXmlFailsWithAMessage) {
    const char* bad[] = {
        "",
        "   \n",
        "not xml at all",
        "<a><b></a>",
        "<a attr=noquotes/>",
        "<a",
        "<config><item name=\"x\" value=\"1\"></config>",
        "<?xml version=\"1.0\"?>",
        "<!-- only a comment -->",
        "<a b='1' b='2'/>",
        "<a><b/>",
        "</a>",
        "\x01\x02\xff\xfe<<<>>>",
        "<a/>\n></b>",  // found by fuzzing: text and a stray end tag after the root
        "<a/>x",
        "x<a/>",
        "<a/><b/>",
        "<a/></b><c/>",
        "<a/></b>",
        "<config><item name=\"x\" value=\"1\"/></config></config>",
    };
    std::vector<std::string> texts(std::begin(bad), std::end(bad));
    texts.push_back(std::string("<a/>\0<b/>", 9));
    texts.push_back(std::string("<a>\0</a>", 8));
    for (const std::string& text : texts) {
        m_root.write("/bad.xml", text);
        XmlConfigureTool tool;
        ::testing::internal::CaptureStdout();
        bool ok = tool.open("/bad.xml", 1, XmlConfigureTool::ModeRead);
        std::string printed = ::testing::internal::GetCapturedStdout();
        EXPECT_FALSE(ok) << text;
        EXPECT_FALSE(tool.isOpen()) << text;
        EXPECT_NE(printed.find("/bad.xml"), std::string::npos) << text;
        EXPECT_FALSE(tool.open("/bad.xml", 1, XmlConfigureTool::ModeUpdate)) << text;
        EXPECT_EQ(m_root.read("/bad.xml"), text);
    }
}

TEST_F(XmlConfigureTest, GetConfigNodeSearchesDepthFirstAndSkipsItems) {
    m_root.write("/t.xml",
                 "<root><a><deep id=\"1\"/></a><b><deep id=\"2\"/></b>"
                 "<item name=\"x\"><deep id=\"3\"/></item><deep id=\"4\"/></root>");
    XmlConfigureTool tool;
    ASSERT_TRUE(tool.open("/t.xml", 0, XmlConfigureTool::ModeRead));
    int id = 0;
    ASSERT_TRUE(tool.getConfigNode("deep").getProperty("id", id));
    EXPECT_EQ(id, 1);
    EXPECT_TRUE(tool.getConfigNode("item").isNull());
    EXPECT_TRUE(tool.getConfigNode("missing").isNull());
    std::vector<XmlConfigureNode> nodes;
    ASSERT_TRUE(tool.getAllConfigNodeList(nodes));
    ASSERT_EQ(nodes.size(), 3u);
    EXPECT_EQ(nodes[0].getName(), "a");
    EXPECT_EQ(nodes[1].getName(), "b");
    EXPECT_EQ(nodes[2].getName(), "deep");
    // A node's getConfigNode looks at its direct children only.
    EXPECT_FALSE(tool.getRootNode().getConfigNode("b").isNull());
    EXPECT_TRUE(tool.getRootNode().getConfigNode("a").getConfigNode("missing").isNull());
    ASSERT_TRUE(tool.getRootNode().getConfigNode("deep").getProperty("id", id));
    EXPECT_EQ(id, 4);
}

TEST_F(XmlConfigureTest, RemoveAndReAddANode) {
    // The IR power file's version update: remove the node, add a new one.
    {
        XmlConfigureTool tool;
        tool.setRootNodeName("IRConfig");
        ASSERT_TRUE(tool.open("/ir.xml", 7, XmlConfigureTool::ModeCreate));
        XmlConfigureNode version(7, "version");
        XmlConfigureItem item(7);
        item.setProperty("version", 1);
        version.addConfigItem(item);
        ASSERT_TRUE(tool.addConfigNode(version));
        XmlConfigureNode power(7, "IRPower");
        for (int i = 0; i < 3; ++i) {
            XmlConfigureItem row(7);
            row.setProperty("zoomup", i * 100);
            row.setProperty("far", 10 + i);
            row.setProperty("mid", 20 + i);
            row.setProperty("near", 30 + i);
            power.addConfigItem(row);
        }
        ASSERT_TRUE(tool.addConfigNode(power));
        ASSERT_TRUE(tool.close());
    }
    {
        XmlConfigureTool tool;
        ASSERT_TRUE(tool.open("/ir.xml", 7, XmlConfigureTool::ModeUpdate));
        XmlConfigureNode old = tool.getConfigNode("version");
        ASSERT_FALSE(old.isNull());
        EXPECT_TRUE(tool.removeConfigNode("version"));
        EXPECT_FALSE(tool.removeConfigNode("version"));
        EXPECT_FALSE(tool.removeConfigNode("IRConfig"));  // the root stays
        // The handle to the removed node is still usable; it is just not in the document.
        EXPECT_EQ(old.getName(), "version");
        std::vector<XmlConfigureItem> oldItems;
        ASSERT_TRUE(old.getItemList(oldItems));
        ASSERT_EQ(oldItems.size(), 1u);
        XmlConfigureNode version(7, "version");
        XmlConfigureItem item(7);
        item.setProperty("version", 2);
        version.addConfigItem(item);
        XmlConfigureNode inserted;
        ASSERT_TRUE(tool.addConfigNode(version, &inserted));
        EXPECT_EQ(inserted.getName(), "version");
        ASSERT_TRUE(tool.close());
    }
    XmlConfigureTool tool;
    ASSERT_TRUE(tool.open("/ir.xml", 7, XmlConfigureTool::ModeRead));
    std::vector<XmlConfigureNode> nodes = tool.getAllConfigNodeList();
    ASSERT_EQ(nodes.size(), 2u);
    EXPECT_EQ(nodes[0].getName(), "IRPower");
    EXPECT_EQ(nodes[1].getName(), "version");
    std::vector<XmlConfigureItem> items;
    ASSERT_TRUE(nodes[1].getItemList(items));
    ASSERT_EQ(items.size(), 1u);
    int v = 0;
    EXPECT_TRUE(items[0].getProperty("version", v));
    EXPECT_EQ(v, 2);
    ASSERT_TRUE(nodes[0].getItemList(items));
    ASSERT_EQ(items.size(), 3u);
    int zoomup = 0, far = 0, mid = 0, nearP = 0;
    EXPECT_TRUE(items[2].getProperty("zoomup", zoomup));
    EXPECT_TRUE(items[2].getProperty("far", far));
    EXPECT_TRUE(items[2].getProperty("mid", mid));
    EXPECT_TRUE(items[2].getProperty("near", nearP));
    EXPECT_EQ(zoomup, 200);
    EXPECT_EQ(far, 12);
    EXPECT_EQ(mid, 22);
    EXPECT_EQ(nearP, 32);
}

TEST_F(XmlConfigureTest, ReadsAnIspParamLikeFile) {
    m_root.write("/hd1/program/config/ISPParam.xml",
                 "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                 "<config realTimeUpdate=\"true\" time=\"5\">\n"
                 "  <GAIN enable=\"1\">\n"
                 "    <low min=\"0\" max=\"16\"><item name=\"EE\" value=\"3\"/><item name=\"A0\" value=\"-1\"/></low>\n"
                 "    <high min=\"16\" max=\"64\"><item name=\"EE\" value=\"1\"/></high>\n"
                 "  </GAIN>\n"
                 "  <DN enable=\"false\"><day min=\"1\" max=\"2\"/></DN>\n"
                 "</config>\n");
    XmlConfigureTool tool;
    ASSERT_TRUE(tool.open("/hd1/program/config/ISPParam.xml", 1, XmlConfigureTool::ModeRead));
    XmlConfigureNode root = tool.getConfigNode("config");
    ASSERT_FALSE(root.isNull());
    bool realTime = false;
    int time = 0;
    EXPECT_TRUE(root.getProperty("realTimeUpdate", realTime));
    EXPECT_TRUE(realTime);
    EXPECT_TRUE(root.getProperty("time", time));
    EXPECT_EQ(time, 5);
    std::vector<XmlConfigureNode> tables;
    ASSERT_TRUE(root.getChildNodeList(tables));
    ASSERT_EQ(tables.size(), 2u);
    bool enable = false;
    EXPECT_TRUE(tables[0].getProperty("enable", enable));
    EXPECT_TRUE(enable);
    EXPECT_TRUE(tables[1].getProperty("enable", enable));
    EXPECT_FALSE(enable);
    std::vector<XmlConfigureNode> bands;
    ASSERT_TRUE(tables[0].getChildNodeList(bands));
    ASSERT_EQ(bands.size(), 2u);
    EXPECT_EQ(bands[0].getName(), "low");
    int min = -1, max = -1;
    EXPECT_TRUE(bands[1].getProperty("min", min));
    EXPECT_TRUE(bands[1].getProperty("max", max));
    EXPECT_EQ(min, 16);
    EXPECT_EQ(max, 64);
    std::vector<XmlConfigureItem> items;
    ASSERT_TRUE(bands[0].getItemList(items));
    ASSERT_EQ(items.size(), 2u);
    std::string name;
    int value = 0;
    EXPECT_TRUE(items[1].getProperty("name", name));
    EXPECT_TRUE(items[1].getProperty("value", value));
    EXPECT_EQ(name, "A0");
    EXPECT_EQ(value, -1);
    // Bands have no child nodes; a band without items has an empty item list.
    std::vector<XmlConfigureNode> none;
    EXPECT_TRUE(bands[0].getChildNodeList(none));
    EXPECT_TRUE(none.empty());
    std::vector<XmlConfigureNode> dnBands;
    ASSERT_TRUE(tables[1].getChildNodeList(dnBands));
    ASSERT_EQ(dnBands.size(), 1u);
    EXPECT_TRUE(dnBands[0].getItemList(items));
    EXPECT_TRUE(items.empty());
}

TEST_F(XmlConfigureTest, SensorAbilityFirstNodeFirstItem) {
    m_root.write("/hd1/moduleConfig/sensorAbility.xml",
                 "<sensorAbility><paramScheme><item name=\"num\" value=\"4\"/><item value=\"9\"/></paramScheme>"
                 "<other/></sensorAbility>");
    XmlConfigureTool tool;
    ASSERT_TRUE(tool.open("/hd1/moduleConfig/sensorAbility.xml", 1, XmlConfigureTool::ModeRead));
    std::vector<XmlConfigureNode> nodes = tool.getAllConfigNodeList();
    ASSERT_FALSE(nodes.empty());
    std::vector<XmlConfigureItem> items;
    ASSERT_TRUE(nodes.front().getItemList(items));
    ASSERT_FALSE(items.empty());
    int n = 0;
    EXPECT_TRUE(items.front().getProperty("value", n));
    EXPECT_EQ(n, 4);
}

TEST_F(XmlConfigureTest, PropertyConversions) {
    XmlConfigureNode node("n");
    ASSERT_FALSE(node.isNull());
    node.setProperty("s", "text");  // const char* must not turn into a bool
    node.setProperty("i", -42);
    node.setProperty("t", true);
    node.setProperty("f", false);
    node.setProperty("T", std::string(" TRUE "));
    node.setProperty("F", "False");
    node.setProperty("big", "2147483648");
    node.setProperty("spaced", " 17 ");
    node.setProperty("mixed", "12abc");
    node.setProperty("two", "2");
    node.setProperty("empty", "");
    std::string s;
    EXPECT_TRUE(node.getProperty("s", s));
    EXPECT_EQ(s, "text");
    int i = 0;
    EXPECT_TRUE(node.getProperty("i", i));
    EXPECT_EQ(i, -42);
    EXPECT_TRUE(node.getProperty("i", s));
    EXPECT_EQ(s, "-42");
    bool b = false;
    EXPECT_TRUE(node.getProperty("t", b));
    EXPECT_TRUE(b);
    EXPECT_TRUE(node.getProperty("t", s));
    EXPECT_EQ(s, "1");
    EXPECT_TRUE(node.getProperty("f", b));
    EXPECT_FALSE(b);
    EXPECT_TRUE(node.getProperty("T", b));
    EXPECT_TRUE(b);
    EXPECT_TRUE(node.getProperty("F", b));
    EXPECT_FALSE(b);
    EXPECT_TRUE(node.getProperty("spaced", i));
    EXPECT_EQ(i, 17);

    // Missing or malformed: false, value untouched.
    i = 5;
    b = true;
    s = "keep";
    EXPECT_FALSE(node.getProperty("missing", s));
    EXPECT_FALSE(node.getProperty("missing", i));
    EXPECT_FALSE(node.getProperty("missing", b));
    EXPECT_FALSE(node.getProperty("big", i));
    EXPECT_FALSE(node.getProperty("mixed", i));
    EXPECT_FALSE(node.getProperty("s", i));
    EXPECT_FALSE(node.getProperty("empty", i));
    EXPECT_FALSE(node.getProperty("two", b));
    EXPECT_FALSE(node.getProperty("s", b));
    EXPECT_EQ(i, 5);
    EXPECT_TRUE(b);
    EXPECT_EQ(s, "keep");

    EXPECT_FALSE(node.setProperty("bad name", "x"));
    EXPECT_FALSE(node.setProperty("", "x"));
    EXPECT_FALSE(node.setProperty("1abc", "x"));
    EXPECT_FALSE(node.setProperty("x", static_cast<const char*>(nullptr)));
    EXPECT_TRUE(node.hasProperty("s"));
    EXPECT_TRUE(node.removeProperty("s"));
    EXPECT_FALSE(node.removeProperty("s"));
    EXPECT_FALSE(node.hasProperty("s"));
    auto props = node.getPropertyList();
    ASSERT_FALSE(props.empty());
    EXPECT_EQ(props.front().first, "i");

    XmlConfigureItem item;
    EXPECT_TRUE(item.setProperty("v", 3));
    EXPECT_TRUE(item.setProperty("on", true));
    EXPECT_TRUE(item.setProperty("name", "x"));
    EXPECT_TRUE(item.getProperty("v", i));
    EXPECT_EQ(i, 3);
    EXPECT_TRUE(item.getProperty("on", b));
    EXPECT_TRUE(b);
    EXPECT_FALSE(item.getProperty("name", i));
    EXPECT_FALSE(item.setProperty("a b", "x"));
    EXPECT_TRUE(item.removeProperty("on"));
    EXPECT_FALSE(item.hasProperty("on"));
}

TEST_F(XmlConfigureTest, SpecialCharactersRoundTrip) {
    const std::string tricky = "a<b>&c\"d'e =;,\t";
    {
        XmlConfigureTool tool;
        ASSERT_TRUE(tool.open("/s.xml", 0, XmlConfigureTool::ModeCreate));
        XmlConfigureNode node("n");
        node.setProperty("p", tricky);
        ASSERT_TRUE(tool.addConfigNode(node));
        ASSERT_TRUE(tool.close());
    }
    XmlConfigureTool tool;
    ASSERT_TRUE(tool.open("/s.xml", 0, XmlConfigureTool::ModeRead));
    std::string v;
    ASSERT_TRUE(tool.getConfigNode("n").getProperty("p", v));
    EXPECT_EQ(v, tricky);
}

TEST_F(XmlConfigureTest, NullAndDetachedHandles) {
    XmlConfigureNode null;
    EXPECT_TRUE(null.isNull());
    EXPECT_FALSE(null);
    EXPECT_EQ(null.getName(), "");
    std::string s = "keep";
    EXPECT_FALSE(null.getProperty("x", s));
    EXPECT_FALSE(null.setProperty("x", "1"));
    std::vector<XmlConfigureItem> items(2);
    EXPECT_FALSE(null.getItemList(items));
    EXPECT_TRUE(items.empty());
    std::vector<XmlConfigureNode> nodes(1);
    EXPECT_FALSE(null.getChildNodeList(nodes));
    EXPECT_FALSE(null.addConfigItem(XmlConfigureItem()));
    EXPECT_FALSE(null.addConfigNode(XmlConfigureNode("x")));
    EXPECT_TRUE(null.getConfigNode("x").isNull());
    EXPECT_EQ(null.toString(), "");
    EXPECT_TRUE(null.clone().isNull());

    EXPECT_TRUE(XmlConfigureNode("").isNull());
    EXPECT_TRUE(XmlConfigureNode("bad name").isNull());
    EXPECT_TRUE(XmlConfigureNode("<x>").isNull());
    EXPECT_TRUE(XmlConfigureNode("item").isNull());
    EXPECT_FALSE(XmlConfigureNode("good-name.1").isNull());
    XmlConfigureNode parent("p");
    EXPECT_FALSE(parent.addConfigNode(null));
}

TEST_F(XmlConfigureTest, AddCopiesAndHandlesShareElements) {
    XmlConfigureNode parent("parent");
    XmlConfigureNode child("child");
    child.setProperty("k", 1);
    XmlConfigureNode insertedChild;
    ASSERT_TRUE(parent.addConfigNode(child, &insertedChild));
    // The parent holds a copy: changing the original does not reach it...
    child.setProperty("k", 2);
    int k = 0;
    ASSERT_TRUE(parent.getConfigNode("child").getProperty("k", k));
    EXPECT_EQ(k, 1);
    // ...but the handle to the inserted copy does.
    insertedChild.setProperty("k", 3);
    ASSERT_TRUE(parent.getConfigNode("child").getProperty("k", k));
    EXPECT_EQ(k, 3);
    EXPECT_TRUE(insertedChild.sameAs(parent.getConfigNode("child")));
    // A copied handle is the same element.
    XmlConfigureNode alias = insertedChild;
    alias.setProperty("k", 4);
    ASSERT_TRUE(insertedChild.getProperty("k", k));
    EXPECT_EQ(k, 4);
    // clone() is independent.
    XmlConfigureNode cloned = parent.clone();
    cloned.getConfigNode("child").setProperty("k", 5);
    ASSERT_TRUE(parent.getConfigNode("child").getProperty("k", k));
    EXPECT_EQ(k, 4);

    XmlConfigureItem item;
    item.setProperty("name", "a");
    XmlConfigureItem insertedItem;
    ASSERT_TRUE(insertedChild.addConfigItem(item, &insertedItem));
    insertedItem.setProperty("value", 9);
    std::vector<XmlConfigureItem> items;
    ASSERT_TRUE(insertedChild.getItemList(items));
    ASSERT_EQ(items.size(), 1u);
    EXPECT_TRUE(items[0].sameAs(insertedItem));
    EXPECT_TRUE(items[0].getProperty("value", k));
    EXPECT_EQ(k, 9);
    XmlConfigureItem itemCopy = items[0].clone();
    itemCopy.setProperty("value", 10);
    EXPECT_TRUE(items[0].getProperty("value", k));
    EXPECT_EQ(k, 9);

    // Adding a node below itself copies, so no cycle can form.
    ASSERT_TRUE(parent.addConfigNode(parent));
    std::vector<XmlConfigureNode> children;
    ASSERT_TRUE(parent.getChildNodeList(children));
    ASSERT_EQ(children.size(), 2u);
    EXPECT_EQ(children[1].getName(), "parent");
    EXPECT_NE(parent.toString().find("<parent>"), std::string::npos);

    EXPECT_EQ(insertedChild.removeAllItems(), 1);
    ASSERT_TRUE(insertedChild.getItemList(items));
    EXPECT_TRUE(items.empty());
    EXPECT_TRUE(items.empty());
    EXPECT_TRUE(parent.removeConfigNode("child"));
    EXPECT_FALSE(parent.removeConfigNode("child"));
}

TEST_F(XmlConfigureTest, HandlesOutliveTheTool) {
    ASSERT_TRUE(createSensorXml(3, 0));
    XmlConfigureNode node;
    {
        XmlConfigureTool tool;
        ASSERT_TRUE(tool.open(kSensorXml, 0, XmlConfigureTool::ModeRead));
        node = tool.getConfigNode("paramScheme");
    }
    std::vector<XmlConfigureItem> items;
    ASSERT_TRUE(node.getItemList(items));
    ASSERT_EQ(items.size(), 2u);
    std::string v;
    EXPECT_TRUE(items[0].getProperty("value", v));
    EXPECT_EQ(v, "3");
    // A handle kept across a close is not saved with the file any more.
    XmlConfigureTool tool;
    ASSERT_TRUE(tool.open(kSensorXml, 0, XmlConfigureTool::ModeUpdate));
    XmlConfigureNode live = tool.getConfigNode("paramScheme");
    ASSERT_TRUE(tool.close());
    live.setProperty("late", 1);
    ASSERT_TRUE(tool.open(kSensorXml, 0, XmlConfigureTool::ModeRead));
    EXPECT_FALSE(tool.getConfigNode("paramScheme").hasProperty("late"));
}

TEST_F(XmlConfigureTest, DestructorAndReopenSave) {
    {
        XmlConfigureTool tool;
        ASSERT_TRUE(tool.open("/d1.xml", 0, XmlConfigureTool::ModeCreate));
        tool.addConfigNode(XmlConfigureNode("first"));
        // A second open closes (and saves) the first document.
        ASSERT_TRUE(tool.open("/d2.xml", 0, XmlConfigureTool::ModeCreate));
        tool.addConfigNode(XmlConfigureNode("second"));
    }  // the destructor saves
    EXPECT_NE(m_root.read("/d1.xml").find("<first/>"), std::string::npos);
    EXPECT_NE(m_root.read("/d2.xml").find("<second/>"), std::string::npos);
}

TEST_F(XmlConfigureTest, FailedSaveIsReported) {
    m_root.write("/file", "a plain file");
    XmlConfigureTool tool;
    ASSERT_TRUE(tool.open("/file/below.xml", 0, XmlConfigureTool::ModeCreate));
    ::testing::internal::CaptureStdout();
    EXPECT_FALSE(tool.close());
    ::testing::internal::GetCapturedStdout();
    EXPECT_FALSE(tool.isOpen());
}

TEST_F(XmlConfigureTest, CreateMakesMissingDirectories) {
    ASSERT_FALSE(m_root.exists("/mnt/mtd/code/config_file"));
    ASSERT_TRUE(createSensorXml(0, 0));
    EXPECT_TRUE(m_root.exists(kSensorXml));
    EXPECT_EQ(m_root.read(kSensorXml).find(m_root.dir()), std::string::npos);
}

TEST_F(XmlConfigureTest, EveryByteButNulSurvivesSaveAndReopen) {
    // Each byte alone, between other text, and doubled; CR also before LF.
    std::vector<std::string> values;
    for (int b = 1; b <= 0xFF; ++b) {
        const std::string c(1, static_cast<char>(b));
        values.push_back(c);
        values.push_back("a" + c + "b");
        values.push_back(c + c);
    }
    values.push_back("line1\r\nline2\r");
    values.push_back("\r\r\n\n");
    {
        XmlConfigureTool tool;
        ASSERT_TRUE(tool.open("/bytes.xml", 0, XmlConfigureTool::ModeCreate));
        XmlConfigureNode node("n");
        for (size_t i = 0; i < values.size(); ++i) {
            XmlConfigureItem item;
            ASSERT_TRUE(item.setProperty("value", values[i])) << i;
            ASSERT_TRUE(node.addConfigItem(item));
            ASSERT_TRUE(node.setProperty("p" + std::to_string(i), values[i])) << i;
        }
        ASSERT_TRUE(tool.addConfigNode(node));
        ASSERT_TRUE(tool.close());
    }
    const std::string saved = m_root.read("/bytes.xml");
    EXPECT_EQ(saved.find('\r'), std::string::npos);
    XmlConfigureTool tool;
    ASSERT_TRUE(tool.open("/bytes.xml", 0, XmlConfigureTool::ModeUpdate));
    XmlConfigureNode node = tool.getConfigNode("n");
    std::vector<XmlConfigureItem> items;
    ASSERT_TRUE(node.getItemList(items));
    ASSERT_EQ(items.size(), values.size());
    for (size_t i = 0; i < values.size(); ++i) {
        std::string v;
        ASSERT_TRUE(items[i].getProperty("value", v)) << i;
        EXPECT_EQ(v, values[i]) << "item " << i << " byte " << static_cast<int>(static_cast<unsigned char>(values[i][0]));
        ASSERT_TRUE(node.getProperty("p" + std::to_string(i), v)) << i;
        EXPECT_EQ(v, values[i]) << "property " << i;
    }
    // Read and printed again, the document is the text that was saved.
    EXPECT_EQ(tool.toString(), saved);
}

TEST_F(XmlConfigureTest, ANulByteInAValueIsRefused) {
    XmlConfigureNode node("n");
    ASSERT_TRUE(node.setProperty("p", "kept"));
    EXPECT_FALSE(node.setProperty("p", std::string("a\0b", 3)));
    EXPECT_FALSE(node.setProperty("q", std::string(1, '\0')));
    std::string v;
    ASSERT_TRUE(node.getProperty("p", v));
    EXPECT_EQ(v, "kept");
    EXPECT_FALSE(node.hasProperty("q"));
    XmlConfigureItem item;
    EXPECT_FALSE(item.setProperty("value", std::string("\0", 1)));
    EXPECT_FALSE(item.hasProperty("value"));
}

TEST_F(XmlConfigureTest, WhatReadsPrintsBackToTheSameDocument) {
    const char* good[] = {
        "<a/>",
        "<?xml version=\"1.0\"?>\n<!-- c -->\n<!DOCTYPE a>\n<a x=\"&#13;&amp;\">\n<item value=\"1\"/></a>\n<!-- end -->\n",
        "  <a><b c='&lt;'/><item/></a>  \n",
    };
    for (const char* text : good) {
        m_root.write("/good.xml", text);
        XmlConfigureTool tool;
        ASSERT_TRUE(tool.open("/good.xml", 1, XmlConfigureTool::ModeRead)) << text;
        const std::string printed = tool.toString();
        m_root.write("/again.xml", printed);
        XmlConfigureTool again;
        ASSERT_TRUE(again.open("/again.xml", 1, XmlConfigureTool::ModeRead)) << printed;
        EXPECT_EQ(again.toString(), printed) << text;
    }
}
