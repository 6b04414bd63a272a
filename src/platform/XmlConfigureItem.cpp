#include "platform/XmlConfigureItem.h"

#include "platform/XmlConfigureDetail.h"

XmlConfigureItem::XmlConfigureItem() { m_doc = xmlconfig::newDetachedDocument(xmlconfig::kItemName, m_pElement); }

XmlConfigureItem::XmlConfigureItem(int /*flag*/) : XmlConfigureItem() {}

XmlConfigureItem::XmlConfigureItem(std::shared_ptr<tinyxml2::XMLDocument> doc, tinyxml2::XMLElement* element)
    : m_doc(std::move(doc)), m_pElement(element) {}

bool XmlConfigureItem::getProperty(const std::string& name, std::string& value) const {
    return xmlconfig::getString(m_pElement, name, value);
}
bool XmlConfigureItem::getProperty(const std::string& name, int& value) const {
    return xmlconfig::getInt(m_pElement, name, value);
}
bool XmlConfigureItem::getProperty(const std::string& name, bool& value) const {
    return xmlconfig::getBool(m_pElement, name, value);
}

bool XmlConfigureItem::setProperty(const std::string& name, const std::string& value) {
    return xmlconfig::setString(m_pElement, name, value);
}
bool XmlConfigureItem::setProperty(const std::string& name, const char* value) {
    return value != nullptr && xmlconfig::setString(m_pElement, name, value);
}
bool XmlConfigureItem::setProperty(const std::string& name, int value) {
    return xmlconfig::setString(m_pElement, name, std::to_string(value));
}
bool XmlConfigureItem::setProperty(const std::string& name, bool value) {
    return xmlconfig::setString(m_pElement, name, value ? "1" : "0");
}

bool XmlConfigureItem::removeProperty(const std::string& name) { return xmlconfig::removeAttribute(m_pElement, name); }

bool XmlConfigureItem::hasProperty(const std::string& name) const {
    return m_pElement != nullptr && m_pElement->Attribute(name.c_str()) != nullptr;
}

std::vector<std::pair<std::string, std::string>> XmlConfigureItem::getPropertyList() const {
    std::vector<std::pair<std::string, std::string>> out;
    xmlconfig::listAttributes(m_pElement, out);
    return out;
}

XmlConfigureItem XmlConfigureItem::clone() const {
    tinyxml2::XMLElement* element = nullptr;
    xmlconfig::DocPtr doc = xmlconfig::cloneToDetachedDocument(m_pElement, element);
    return XmlConfigureItem(std::move(doc), element);
}

std::string XmlConfigureItem::toString() const { return xmlconfig::printElement(m_pElement); }
