#include "platform/XmlConfigureTool.h"

#include <cstdio>
#include <cstring>

#include "platform/KSFile.h"
#include "platform/KSLogger.h"
#include "platform/XmlConfigureDetail.h"
#include "platform/XmlDocumentCheck.h"

using tinyxml2::XMLElement;

namespace {

const char kDefaultRootName[] = "config";

XMLElement* findDepthFirst(XMLElement* e, const char* name) {
    if (std::strcmp(e->Name(), name) == 0) return e;
    for (XMLElement* c = e->FirstChildElement(); c != nullptr; c = c->NextSiblingElement()) {
        if (xmlconfig::isItem(c)) continue;
        if (XMLElement* found = findDepthFirst(c, name)) return found;
    }
    return nullptr;
}

}  // namespace

XmlConfigureTool::XmlConfigureTool() = default;

XmlConfigureTool::~XmlConfigureTool() { close(); }

bool XmlConfigureTool::open(const std::string& path, int /*flag*/, int mode) {
    if (isOpen()) close();
    if (mode != ModeRead && mode != ModeUpdate && mode != ModeCreate) return false;
    auto doc = std::make_shared<tinyxml2::XMLDocument>();
    if (mode == ModeCreate) {
        doc->InsertEndChild(doc->NewDeclaration());
        const std::string& root = m_strRootName.empty() ? std::string(kDefaultRootName) : m_strRootName;
        doc->InsertEndChild(doc->NewElement(root.c_str()));
    } else {
        std::string text;
        if (!KSFile::readAll(path, text)) return false;
        std::string why;
        if (!XmlDocumentCheck::parse(*doc, text, XmlDocumentCheck::Elements::One, why)) {
            KSLogger::consolePrintf("XmlConfigureTool::open(%s) failed: %s\n", path.c_str(), why.c_str());
            return false;
        }
        if (mode == ModeUpdate) m_strOpenedText = xmlconfig::printDocument(*doc);
    }
    m_doc = std::move(doc);
    m_strPath = path;
    m_nMode = mode;
    return true;
}

bool XmlConfigureTool::close() {
    if (!isOpen()) return true;
    bool ok = true;
    if (m_nMode == ModeUpdate || m_nMode == ModeCreate) {
        std::string text = xmlconfig::printDocument(*m_doc);
        if (m_nMode == ModeCreate || text != m_strOpenedText) ok = KSFile::writeAll(m_strPath, text);
        if (!ok) KSLogger::consolePrintf("XmlConfigureTool::close() cannot write %s\n", m_strPath.c_str());
    }
    m_doc.reset();
    m_strPath.clear();
    m_strOpenedText.clear();
    m_nMode = 0;
    return ok;
}

bool XmlConfigureTool::setRootNodeName(const std::string& name) {
    if (!xmlconfig::isValidName(name) || name == xmlconfig::kItemName) return false;
    m_strRootName = name;
    if (isOpen()) {
        if (XMLElement* root = m_doc->RootElement())
            root->SetName(name.c_str());
        else
            m_doc->InsertEndChild(m_doc->NewElement(name.c_str()));
    }
    return true;
}

std::string XmlConfigureTool::getRootNodeName() const {
    if (isOpen() && m_doc->RootElement() != nullptr) return m_doc->RootElement()->Name();
    return m_strRootName;
}

XmlConfigureNode XmlConfigureTool::getRootNode() const {
    if (!isOpen()) return XmlConfigureNode();
    return XmlConfigureNode(m_doc, m_doc->RootElement());
}

XmlConfigureNode XmlConfigureTool::getConfigNode(const std::string& name) const {
    if (!isOpen() || m_doc->RootElement() == nullptr || name == xmlconfig::kItemName) return XmlConfigureNode();
    return XmlConfigureNode(m_doc, findDepthFirst(m_doc->RootElement(), name.c_str()));
}

std::vector<XmlConfigureNode> XmlConfigureTool::getAllConfigNodeList() const {
    std::vector<XmlConfigureNode> out;
    getAllConfigNodeList(out);
    return out;
}

bool XmlConfigureTool::getAllConfigNodeList(std::vector<XmlConfigureNode>& out) const {
    out.clear();
    XmlConfigureNode root = getRootNode();
    return root.getChildNodeList(out);
}

bool XmlConfigureTool::addConfigNode(const XmlConfigureNode& node, XmlConfigureNode* inserted) {
    XmlConfigureNode root = getRootNode();
    return root.addConfigNode(node, inserted);
}

bool XmlConfigureTool::removeConfigNode(const std::string& name) {
    if (!isOpen() || m_doc->RootElement() == nullptr || name == xmlconfig::kItemName) return false;
    XMLElement* root = m_doc->RootElement();
    for (XMLElement* c = root->FirstChildElement(); c != nullptr; c = c->NextSiblingElement()) {
        if (xmlconfig::isItem(c)) continue;
        if (XMLElement* found = findDepthFirst(c, name.c_str())) {
            xmlconfig::detachElement(found);
            return true;
        }
    }
    return false;
}

std::string XmlConfigureTool::toString() const { return isOpen() ? xmlconfig::printDocument(*m_doc) : std::string(); }
