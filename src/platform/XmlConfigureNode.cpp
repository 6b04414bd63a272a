#include "platform/XmlConfigureNode.h"

#include "platform/XmlConfigureDetail.h"

using tinyxml2::XMLElement;

XmlConfigureNode::XmlConfigureNode(const std::string& name) {
    if (!xmlconfig::isValidName(name) || name == xmlconfig::kItemName) return;
    m_doc = xmlconfig::newDetachedDocument(name, m_pElement);
}

XmlConfigureNode::XmlConfigureNode(int /*flag*/, const std::string& name) : XmlConfigureNode(name) {}

XmlConfigureNode::XmlConfigureNode(std::shared_ptr<tinyxml2::XMLDocument> doc, XMLElement* element)
    : m_doc(element != nullptr ? std::move(doc) : nullptr), m_pElement(element) {}

std::string XmlConfigureNode::getName() const { return m_pElement != nullptr ? m_pElement->Name() : ""; }

bool XmlConfigureNode::getProperty(const std::string& name, std::string& value) const {
    return xmlconfig::getString(m_pElement, name, value);
}
bool XmlConfigureNode::getProperty(const std::string& name, int& value) const {
    return xmlconfig::getInt(m_pElement, name, value);
}
bool XmlConfigureNode::getProperty(const std::string& name, bool& value) const {
    return xmlconfig::getBool(m_pElement, name, value);
}

bool XmlConfigureNode::setProperty(const std::string& name, const std::string& value) {
    return xmlconfig::setString(m_pElement, name, value);
}
bool XmlConfigureNode::setProperty(const std::string& name, const char* value) {
    return value != nullptr && xmlconfig::setString(m_pElement, name, value);
}
bool XmlConfigureNode::setProperty(const std::string& name, int value) {
    return xmlconfig::setString(m_pElement, name, std::to_string(value));
}
bool XmlConfigureNode::setProperty(const std::string& name, bool value) {
    return xmlconfig::setString(m_pElement, name, value ? "1" : "0");
}

bool XmlConfigureNode::removeProperty(const std::string& name) { return xmlconfig::removeAttribute(m_pElement, name); }

bool XmlConfigureNode::hasProperty(const std::string& name) const {
    return m_pElement != nullptr && m_pElement->Attribute(name.c_str()) != nullptr;
}

std::vector<std::pair<std::string, std::string>> XmlConfigureNode::getPropertyList() const {
    std::vector<std::pair<std::string, std::string>> out;
    xmlconfig::listAttributes(m_pElement, out);
    return out;
}

bool XmlConfigureNode::getChildNodeList(std::vector<XmlConfigureNode>& out) const {
    out.clear();
    if (m_pElement == nullptr) return false;
    for (XMLElement* e = m_pElement->FirstChildElement(); e != nullptr; e = e->NextSiblingElement())
        if (!xmlconfig::isItem(e)) out.push_back(XmlConfigureNode(m_doc, e));
    return true;
}

bool XmlConfigureNode::getItemList(std::vector<XmlConfigureItem>& out) const {
    out.clear();
    if (m_pElement == nullptr) return false;
    for (XMLElement* e = m_pElement->FirstChildElement(xmlconfig::kItemName); e != nullptr;
         e = e->NextSiblingElement(xmlconfig::kItemName))
        out.push_back(XmlConfigureItem(m_doc, e));
    return true;
}

bool XmlConfigureNode::addConfigItem(const XmlConfigureItem& item, XmlConfigureItem* inserted) {
    if (m_pElement == nullptr || item.m_pElement == nullptr) return false;
    XMLElement* copy = xmlconfig::appendCopy(m_pElement, item.m_pElement);
    if (copy == nullptr) return false;
    if (inserted != nullptr) *inserted = XmlConfigureItem(m_doc, copy);
    return true;
}

bool XmlConfigureNode::addConfigNode(const XmlConfigureNode& child, XmlConfigureNode* inserted) {
    if (m_pElement == nullptr || child.m_pElement == nullptr) return false;
    XMLElement* copy = xmlconfig::appendCopy(m_pElement, child.m_pElement);
    if (copy == nullptr) return false;
    if (inserted != nullptr) *inserted = XmlConfigureNode(m_doc, copy);
    return true;
}

XmlConfigureNode XmlConfigureNode::getConfigNode(const std::string& childName) const {
    if (m_pElement == nullptr || childName == xmlconfig::kItemName) return XmlConfigureNode();
    return XmlConfigureNode(m_doc, m_pElement->FirstChildElement(childName.c_str()));
}

bool XmlConfigureNode::removeConfigNode(const std::string& childName) {
    XmlConfigureNode child = getConfigNode(childName);
    if (child.isNull()) return false;
    xmlconfig::detachElement(child.m_pElement);
    return true;
}

int XmlConfigureNode::removeAllItems() {
    if (m_pElement == nullptr) return 0;
    int n = 0;
    while (XMLElement* e = m_pElement->FirstChildElement(xmlconfig::kItemName)) {
        xmlconfig::detachElement(e);
        ++n;
    }
    return n;
}

XmlConfigureNode XmlConfigureNode::clone() const {
    if (m_pElement == nullptr) return XmlConfigureNode();
    XMLElement* element = nullptr;
    xmlconfig::DocPtr doc = xmlconfig::cloneToDetachedDocument(m_pElement, element);
    return XmlConfigureNode(std::move(doc), element);
}

std::string XmlConfigureNode::toString() const { return xmlconfig::printElement(m_pElement); }
