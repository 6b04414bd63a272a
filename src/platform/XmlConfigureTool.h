#pragma once
#include <memory>
#include <string>
#include <vector>

#include "platform/XmlConfigureItem.h"
#include "platform/XmlConfigureNode.h"

// The platform's XML configuration model, on tinyxml2.
//
// A configuration file is one XML document whose root element is the root
// node. A node is an XML element: its name, its properties (the attributes),
// its child nodes (the child elements not named "item") and its item list (the
// child elements named "item"). An item has properties (attributes) only.
// Example:
//     <?xml version="1.0" encoding="UTF-8"?>
//     <sensor>
//         <paramScheme>
//             <item name="SchemeIndex" value="0"/>
//             <item name="SchemeMode" value="1"/>
//         </paramScheme>
//     </sensor>
//
// Ownership: the tool owns the document through a shared pointer, and every
// XmlConfigureNode / XmlConfigureItem is a small handle that shares it, so no
// handle can dangle: handles stay usable after close() or a second open()
// (they then refer to the old document, which is no longer saved). New nodes and
// items are built detached (each with its own small document) and copied in by
// addConfigNode / addConfigItem. Removed nodes leave the document but stay
// allocated until the last handle to their document goes. One document (the
// tool and its handles) must be used by one thread at a time.
//
// Files are read with KSFile::readAll and written with KSFile::writeAll (paths
// resolve under the platform root; the replace is atomic and identical bytes are
// not rewritten).
class XmlConfigureTool {
public:
    enum { ModeRead = 1, ModeUpdate = 2, ModeCreate = 3 };

    XmlConfigureTool();
    // Closes the document (saving it in modes 2 and 3).
    ~XmlConfigureTool();
    XmlConfigureTool(const XmlConfigureTool&) = delete;
    XmlConfigureTool& operator=(const XmlConfigureTool&) = delete;

    // Opens `path`. Mode 1 reads, 2 updates (the file must exist; close() saves),
    // 3 creates an empty document with the root node set by setRootNodeName
    // ("config" when none was set; the file need not exist; close() saves).
    // `flag` is accepted for the platform's call form and ignored. A missing or
    // unreadable file fails, and so does (with a message) a text the model cannot
    // represent: malformed XML, no root element or more than one top-level
    // element, text outside the root, anything after an end tag outside every
    // element, a NUL byte (see XmlDocumentCheck). A document that is still open is closed
    // (and saved) first.
    bool open(const std::string& path, int flag, int mode);
    // Ends the access. In modes 2 and 3 the document is written back; in mode 2
    // a document that prints as it did when opened is not written at all. True
    // when nothing needed writing or the write succeeded, and when not open.
    bool close();
    bool isOpen() const { return m_doc != nullptr; }
    int getMode() const { return m_nMode; }

    // Names the root node: renames the root element of an open document, and
    // is the root name a later create (mode 3) uses. False for a name that is
    // not an XML name or is "item".
    bool setRootNodeName(const std::string& name);
    std::string getRootNodeName() const;
    XmlConfigureNode getRootNode() const;

    // The first node named `name`, searching depth-first from the root node
    // itself (items are not searched); a null handle if none.
    XmlConfigureNode getConfigNode(const std::string& name) const;
    // The root node's child nodes in document order.
    std::vector<XmlConfigureNode> getAllConfigNodeList() const;
    bool getAllConfigNodeList(std::vector<XmlConfigureNode>& out) const;
    // Appends a copy of `node` to the root node; `inserted` (optional) receives
    // a handle to the copy. False when not open or `node` is null.
    bool addConfigNode(const XmlConfigureNode& node, XmlConfigureNode* inserted = nullptr);
    // Removes the first node named `name` below the root (depth-first, as
    // getConfigNode); the root itself cannot be removed. False if none.
    bool removeConfigNode(const std::string& name);

    // The document as it would be saved ("" when not open).
    std::string toString() const;

private:
    std::shared_ptr<tinyxml2::XMLDocument> m_doc;
    std::string m_strPath;
    int m_nMode = 0;
    std::string m_strRootName;
    std::string m_strOpenedText;  // the document as printed right after opening (mode 2)
};
