// The XML configuration model (XmlConfigureTool and its nodes and items).
// A document that reads prints to a text that reads to the same nodes, items
// and properties and prints the same again; a refused document is left as it
// was, also when opened for update. The input is also used as a property
// value: any value without a NUL byte reads back byte for byte after a save
// and a re-open, one with a NUL is refused.
#include <string>
#include <vector>

#include "FuzzSupport.h"
#include "platform/XmlConfigureItem.h"
#include "platform/XmlConfigureNode.h"
#include "platform/XmlConfigureTool.h"

namespace {

const char kPath[] = "/mnt/mtd/code/config_file/fuzz.xml";
const char kPrinted[] = "/mnt/mtd/code/config_file/printed.xml";
const char kValue[] = "/mnt/mtd/code/config_file/value.xml";

// The model's view of a node, flattened into one text.
void describe(const XmlConfigureNode& node, std::string& out) {
    out += "<" + node.getName();
    for (const auto& p : node.getPropertyList()) out += " [" + p.first + "=" + p.second + "]";
    std::vector<XmlConfigureItem> items;
    FUZZ_CHECK(node.getItemList(items));
    for (const XmlConfigureItem& item : items) {
        out += " item";
        for (const auto& p : item.getPropertyList()) out += " [" + p.first + "=" + p.second + "]";
    }
    std::vector<XmlConfigureNode> children;
    FUZZ_CHECK(node.getChildNodeList(children));
    for (const XmlConfigureNode& child : children) describe(child, out);
    out += ">";
}

void checkValueRoundTrip(const std::string& value) {
    XmlConfigureNode node("n");
    XmlConfigureItem item;
    const bool representable = value.find('\0') == std::string::npos;
    FUZZ_CHECK(node.setProperty("v", value) == representable);
    FUZZ_CHECK(item.setProperty("value", value) == representable);
    if (!representable) return;
    FUZZ_CHECK(node.addConfigItem(item));
    {
        XmlConfigureTool tool;
        FUZZ_CHECK(tool.open(kValue, 0, XmlConfigureTool::ModeCreate));
        FUZZ_CHECK(tool.addConfigNode(node));
        FUZZ_CHECK(tool.close());
    }
    XmlConfigureTool tool;
    FUZZ_CHECK(tool.open(kValue, 0, XmlConfigureTool::ModeRead));
    XmlConfigureNode read = tool.getConfigNode("n");
    std::string got;
    FUZZ_CHECK(read.getProperty("v", got) && got == value);
    std::vector<XmlConfigureItem> items;
    FUZZ_CHECK(read.getItemList(items) && items.size() == 1);
    FUZZ_CHECK(items[0].getProperty("value", got) && got == value);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    fuzzsupport::writeFile(kPath, bytes);
    {
        XmlConfigureTool tool;
        if (!tool.open(kPath, 0, XmlConfigureTool::ModeRead)) {
            XmlConfigureTool update;
            FUZZ_CHECK(!update.open(kPath, 0, XmlConfigureTool::ModeUpdate));
            FUZZ_CHECK(update.close());
            FUZZ_CHECK(fuzzsupport::readFile(kPath) == bytes);
        } else {
            std::string model;
            describe(tool.getRootNode(), model);
            const std::string printed = tool.toString();
            fuzzsupport::writeFile(kPrinted, printed);
            XmlConfigureTool again;
            FUZZ_CHECK(again.open(kPrinted, 0, XmlConfigureTool::ModeRead));
            std::string modelAgain;
            describe(again.getRootNode(), modelAgain);
            FUZZ_CHECK(modelAgain == model);
            FUZZ_CHECK(again.toString() == printed);
            // An update that changes nothing writes nothing.
            XmlConfigureTool update;
            FUZZ_CHECK(update.open(kPath, 0, XmlConfigureTool::ModeUpdate));
            FUZZ_CHECK(update.close());
            FUZZ_CHECK(fuzzsupport::readFile(kPath) == bytes);
        }
    }
    checkValueRoundTrip(bytes);
    return 0;
}
