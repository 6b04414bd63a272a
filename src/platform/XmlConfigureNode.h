#pragma once
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/XmlConfigureItem.h"

// One configuration node: an XML element (other than one named "item").
// Its properties are the element's attributes, its child nodes the child
// elements not named "item", its items the child elements named "item".
// See XmlConfigureTool.h for the whole model.
//
// An XmlConfigureNode is a handle. Nodes obtained from a tool or from another
// node refer to the element inside that document: changing them changes the
// document. A node constructed with a name is a new detached node with its own
// small document; build it (properties, items, child nodes) and hand it to
// XmlConfigureTool::addConfigNode or XmlConfigureNode::addConfigNode, which
// insert a copy. Copying a handle gives a second handle to the same element
// (clone() makes an independent copy). A handle keeps its document alive, so it
// stays usable after the tool closed or the node was removed from the document
// (a removed node is simply no longer part of the document).
// A default-constructed node is a null handle: every query on it fails.
// Handles of one document must be used by one thread at a time.
class XmlConfigureNode {
public:
    XmlConfigureNode() = default;
    // A new detached node. A name that is not an XML name, or the name "item"
    // (reserved for items), gives a null handle.
    explicit XmlConfigureNode(const std::string& name);
    // The same; `flag` is accepted for the platform's call form and ignored.
    XmlConfigureNode(int flag, const std::string& name);

    bool isNull() const { return m_pElement == nullptr; }
    explicit operator bool() const { return m_pElement != nullptr; }

    // The element name ("" for a null handle).
    std::string getName() const;

    // Missing property (or, for int and bool, a text that is not one) => false, value untouched.
    bool getProperty(const std::string& name, std::string& value) const;
    bool getProperty(const std::string& name, int& value) const;
    // Accepts "1", "0", "true", "false" (any case).
    bool getProperty(const std::string& name, bool& value) const;

    // Sets (adds or replaces) a property. False for a null handle, a name that is not an XML
    // name, or a value holding a NUL byte (a file cannot represent one). Every other byte
    // reads back unchanged after a save and a re-open (a CR is saved as "&#13;").
    bool setProperty(const std::string& name, const std::string& value);
    bool setProperty(const std::string& name, const char* value);
    bool setProperty(const std::string& name, int value);
    bool setProperty(const std::string& name, bool value);  // written "1" / "0"
    bool removeProperty(const std::string& name);
    bool hasProperty(const std::string& name) const;
    // All properties in document order.
    std::vector<std::pair<std::string, std::string>> getPropertyList() const;

    // The child nodes, in document order; `out` is replaced. False for a null handle.
    bool getChildNodeList(std::vector<XmlConfigureNode>& out) const;
    // The items, in document order; `out` is replaced (empty when the node has
    // none). False for a null handle.
    bool getItemList(std::vector<XmlConfigureItem>& out) const;

    // Appends a copy of `item` as the last child; `inserted` (optional) receives
    // a handle to the copy. False for a null handle.
    bool addConfigItem(const XmlConfigureItem& item, XmlConfigureItem* inserted = nullptr);
    // Appends a copy of `child` (with everything under it) as the last child;
    // `inserted` (optional) receives a handle to the copy. False when either is null.
    bool addConfigNode(const XmlConfigureNode& child, XmlConfigureNode* inserted = nullptr);

    // The first direct child node named `childName`; a null handle if none.
    XmlConfigureNode getConfigNode(const std::string& childName) const;
    // Removes the first direct child node named `childName`; false if none.
    bool removeConfigNode(const std::string& childName);
    // Removes every item; returns the number removed.
    int removeAllItems();

    // An independent detached copy (with everything under it).
    XmlConfigureNode clone() const;
    // The XML text of the node and everything under it.
    std::string toString() const;

    // True when both handles refer to the same element (two null handles are the same).
    bool sameAs(const XmlConfigureNode& other) const { return m_pElement == other.m_pElement; }

private:
    friend class XmlConfigureTool;
    XmlConfigureNode(std::shared_ptr<tinyxml2::XMLDocument> doc, tinyxml2::XMLElement* element);

    std::shared_ptr<tinyxml2::XMLDocument> m_doc;
    tinyxml2::XMLElement* m_pElement = nullptr;
};
