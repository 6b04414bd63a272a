#pragma once
// Internal helpers shared by XmlConfigureTool, XmlConfigureNode and XmlConfigureItem.
#include <tinyxml2.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace xmlconfig {

// The element name that marks an item; every other child element is a node.
extern const char* const kItemName;

using DocPtr = std::shared_ptr<tinyxml2::XMLDocument>;

// A new document holding one element `name` as its root (a detached node or item).
DocPtr newDetachedDocument(const std::string& name, tinyxml2::XMLElement*& element);

// A new document holding a deep copy of `source` as its root.
DocPtr cloneToDetachedDocument(const tinyxml2::XMLElement* source, tinyxml2::XMLElement*& element);

// An XML name: a letter, '_' or ':' (or any non-ASCII byte) first, then also digits, '-' and '.'.
bool isValidName(const std::string& name);
bool isItem(const tinyxml2::XMLElement* e);

// Integer text: optional blanks, an optional sign, decimal digits, optional blanks; 32 bits.
bool parseInt(const char* text, int& value);
// Bool text: "1", "0", "true", "false" (any case), blanks around allowed.
bool parseBool(const char* text, bool& value);

bool getString(const tinyxml2::XMLElement* e, const std::string& name, std::string& value);
bool getInt(const tinyxml2::XMLElement* e, const std::string& name, int& value);
bool getBool(const tinyxml2::XMLElement* e, const std::string& name, bool& value);
// False for a null element, a name that is not an XML name, or a value holding a NUL byte.
bool setString(tinyxml2::XMLElement* e, const std::string& name, const std::string& value);
bool removeAttribute(tinyxml2::XMLElement* e, const std::string& name);
void listAttributes(const tinyxml2::XMLElement* e, std::vector<std::pair<std::string, std::string>>& out);

// Copies `source` (with everything under it) to the end of `parent`'s children.
tinyxml2::XMLElement* appendCopy(tinyxml2::XMLElement* parent, const tinyxml2::XMLElement* source);
// Takes `e` out of its document tree. The element stays allocated (held by an
// unlinked holder element of the same document) until the document goes, so
// handles to it stay usable; it is simply no longer part of the document.
void detachElement(tinyxml2::XMLElement* e);

// The printed text of an element and everything under it, and of a whole
// document. A CR is written as the character reference "&#13;" so that it
// reads back as a CR (a reader turns a literal one into LF).
std::string printElement(const tinyxml2::XMLElement* e);
std::string printDocument(const tinyxml2::XMLDocument& doc);

}  // namespace xmlconfig
