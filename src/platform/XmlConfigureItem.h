#pragma once
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tinyxml2 {
class XMLDocument;
class XMLElement;
}  // namespace tinyxml2

// One item of a configuration node: an XML element named "item" whose
// properties are its attributes, e.g. <item name="SchemeIndex" value="0"/>.
// See XmlConfigureTool.h for the whole model.
//
// An XmlConfigureItem is a handle. Items obtained from a node
// (XmlConfigureNode::getItemList) refer to the element inside that document:
// changing them changes the document. A default-constructed item is a new
// detached item with its own small document; fill it with setProperty and hand
// it to XmlConfigureNode::addConfigItem, which inserts a copy. Copying a handle
// gives a second handle to the same element (clone() makes an independent copy).
// A handle keeps its document alive, so it stays usable after the tool closed.
class XmlConfigureItem {
public:
    // A new, empty, detached item.
    XmlConfigureItem();
    // The same; `flag` is accepted for the platform's call form and ignored.
    explicit XmlConfigureItem(int flag);

    // Missing property (or, for int and bool, a text that is not one) => false, value untouched.
    bool getProperty(const std::string& name, std::string& value) const;
    bool getProperty(const std::string& name, int& value) const;
    // Accepts "1", "0", "true", "false" (any case).
    bool getProperty(const std::string& name, bool& value) const;

    // Sets (adds or replaces) a property. False for a name that is not an XML name, or a
    // value holding a NUL byte (a file cannot represent one). Every other byte reads back
    // unchanged after a save and a re-open (a CR is saved as "&#13;").
    bool setProperty(const std::string& name, const std::string& value);
    bool setProperty(const std::string& name, const char* value);
    bool setProperty(const std::string& name, int value);
    bool setProperty(const std::string& name, bool value);  // written "1" / "0"
    bool removeProperty(const std::string& name);
    bool hasProperty(const std::string& name) const;
    // All properties in document order.
    std::vector<std::pair<std::string, std::string>> getPropertyList() const;

    // An independent detached copy.
    XmlConfigureItem clone() const;
    // The XML text of the item.
    std::string toString() const;

    // True when both handles refer to the same element.
    bool sameAs(const XmlConfigureItem& other) const { return m_pElement == other.m_pElement; }

private:
    friend class XmlConfigureNode;
    XmlConfigureItem(std::shared_ptr<tinyxml2::XMLDocument> doc, tinyxml2::XMLElement* element);

    std::shared_ptr<tinyxml2::XMLDocument> m_doc;
    tinyxml2::XMLElement* m_pElement = nullptr;
};
