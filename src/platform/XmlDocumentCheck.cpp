#include "platform/XmlDocumentCheck.h"

#include <tinyxml2.h>

namespace XmlDocumentCheck {

namespace {

bool isBlankText(const char* text) {
    for (const char* p = text; *p != '\0'; ++p)
        if (*p != ' ' && *p != '\t' && *p != '\n' && *p != '\r') return false;
    return true;
}

}  // namespace

bool parse(tinyxml2::XMLDocument& doc, const std::string& text, Elements elements, std::string& why) {
    if (text.find('\0') != std::string::npos) {
        doc.Clear();
        why = "the text holds a NUL byte";
        return false;
    }
    const tinyxml2::XMLError result = doc.Parse(text.data(), text.size());
    const bool empty = result == tinyxml2::XML_ERROR_EMPTY_DOCUMENT;
    if (result != tinyxml2::XML_SUCCESS && !(empty && elements == Elements::Any)) {
        why = doc.ErrorStr();
        return false;
    }
    int count = 0;
    for (const tinyxml2::XMLNode* n = doc.FirstChild(); n != nullptr; n = n->NextSibling()) {
        if (n->ToElement() != nullptr) {
            ++count;
        } else if (const tinyxml2::XMLText* t = n->ToText()) {
            if (!isBlankText(t->Value())) {
                why = "text outside the elements";
                return false;
            }
        }
    }
    if (elements == Elements::One && count != 1) {
        why = count == 0 ? "no root element" : "more than one top-level element";
        return false;
    }
    // A parse that stopped early never sees what follows. An element opened
    // after the end of a text that was read whole leaves it unfinished, which
    // tinyxml2 reports; after an early stop it goes unnoticed.
    if (!empty) {
        tinyxml2::XMLDocument probe;
        const std::string extended = text + "<a";
        if (probe.Parse(extended.data(), extended.size()) == tinyxml2::XML_SUCCESS) {
            why = "the text goes on after an end tag outside every element";
            return false;
        }
    }
    return true;
}

}  // namespace XmlDocumentCheck
