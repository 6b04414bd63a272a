#include "platform/XmlConfigureDetail.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

namespace xmlconfig {

const char* const kItemName = "item";

DocPtr newDetachedDocument(const std::string& name, tinyxml2::XMLElement*& element) {
    DocPtr doc = std::make_shared<tinyxml2::XMLDocument>();
    element = doc->NewElement(name.c_str());
    doc->InsertEndChild(element);
    return doc;
}

DocPtr cloneToDetachedDocument(const tinyxml2::XMLElement* source, tinyxml2::XMLElement*& element) {
    DocPtr doc = std::make_shared<tinyxml2::XMLDocument>();
    tinyxml2::XMLNode* copy = source->DeepClone(doc.get());
    doc->InsertEndChild(copy);
    element = copy->ToElement();
    return doc;
}

bool isValidName(const std::string& name) {
    if (name.empty()) return false;
    for (size_t i = 0; i < name.size(); ++i) {
        unsigned char c = static_cast<unsigned char>(name[i]);
        bool ok = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == ':' || c >= 0x80;
        if (i > 0) ok = ok || (c >= '0' && c <= '9') || c == '-' || c == '.';
        if (!ok) return false;
    }
    return true;
}

bool isItem(const tinyxml2::XMLElement* e) { return e != nullptr && std::strcmp(e->Name(), kItemName) == 0; }

namespace {
bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }
}  // namespace

bool parseInt(const char* text, int& value) {
    if (text == nullptr) return false;
    while (isBlank(*text)) ++text;
    if (*text == '\0') return false;
    // strtoll would also skip other leading white space; the blanks are gone already.
    const char* digits = (*text == '-' || *text == '+') ? text + 1 : text;
    if (*digits < '0' || *digits > '9') return false;
    char* end = nullptr;
    errno = 0;
    long long v = std::strtoll(text, &end, 10);
    if (errno != 0 || v < INT_MIN || v > INT_MAX) return false;
    while (isBlank(*end)) ++end;
    if (*end != '\0') return false;
    value = static_cast<int>(v);
    return true;
}

bool parseBool(const char* text, bool& value) {
    if (text == nullptr) return false;
    while (isBlank(*text)) ++text;
    size_t n = std::strlen(text);
    while (n > 0 && isBlank(text[n - 1])) --n;
    std::string s(text, n);
    for (char& c : s)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    if (s == "1" || s == "true") {
        value = true;
        return true;
    }
    if (s == "0" || s == "false") {
        value = false;
        return true;
    }
    return false;
}

bool getString(const tinyxml2::XMLElement* e, const std::string& name, std::string& value) {
    if (e == nullptr) return false;
    const char* v = e->Attribute(name.c_str());
    if (v == nullptr) return false;
    value = v;
    return true;
}

bool getInt(const tinyxml2::XMLElement* e, const std::string& name, int& value) {
    return e != nullptr && parseInt(e->Attribute(name.c_str()), value);
}

bool getBool(const tinyxml2::XMLElement* e, const std::string& name, bool& value) {
    return e != nullptr && parseBool(e->Attribute(name.c_str()), value);
}

bool setString(tinyxml2::XMLElement* e, const std::string& name, const std::string& value) {
    if (e == nullptr || !isValidName(name)) return false;
    // An XML file cannot hold a NUL byte, not even as a character reference.
    if (value.find('\0') != std::string::npos) return false;
    e->SetAttribute(name.c_str(), value.c_str());
    return true;
}

bool removeAttribute(tinyxml2::XMLElement* e, const std::string& name) {
    if (e == nullptr || e->FindAttribute(name.c_str()) == nullptr) return false;
    e->DeleteAttribute(name.c_str());
    return true;
}

void listAttributes(const tinyxml2::XMLElement* e, std::vector<std::pair<std::string, std::string>>& out) {
    out.clear();
    if (e == nullptr) return;
    for (const tinyxml2::XMLAttribute* a = e->FirstAttribute(); a != nullptr; a = a->Next())
        out.emplace_back(a->Name(), a->Value());
}

tinyxml2::XMLElement* appendCopy(tinyxml2::XMLElement* parent, const tinyxml2::XMLElement* source) {
    if (parent == nullptr || source == nullptr) return nullptr;
    // Cloned first, so adding an element below itself cannot form a cycle.
    tinyxml2::XMLNode* copy = source->DeepClone(parent->GetDocument());
    if (copy == nullptr) return nullptr;
    parent->InsertEndChild(copy);
    return copy->ToElement();
}

void detachElement(tinyxml2::XMLElement* e) {
    if (e == nullptr || e->Parent() == nullptr) return;
    tinyxml2::XMLDocument* doc = e->GetDocument();
    // An element created and never inserted is owned by the document until it is destroyed.
    tinyxml2::XMLElement* holder = doc->NewElement("removed");
    holder->InsertEndChild(e);
}

namespace {

// tinyxml2's printer escapes the markup characters but writes a CR as it is,
// and every reader turns a CR (and CR LF) into LF. A character reference is not
// line-end normalised, so this printer writes each CR as "&#13;" and a value
// holding one reads back byte for byte. Everything the printer writes passes
// through Write and Putc.
class CrKeepingPrinter : public tinyxml2::XMLPrinter {
public:
    std::string text() const {
        return std::string(CStr(), static_cast<size_t>(CStrSize() > 0 ? CStrSize() - 1 : 0));
    }

protected:
    void Write(const char* data, size_t size) override {
        size_t start = 0;
        for (size_t i = 0; i < size; ++i) {
            if (data[i] != '\r') continue;
            if (i > start) tinyxml2::XMLPrinter::Write(data + start, i - start);
            tinyxml2::XMLPrinter::Write(kCrReference, sizeof(kCrReference) - 1);
            start = i + 1;
        }
        if (size > start) tinyxml2::XMLPrinter::Write(data + start, size - start);
    }
    void Putc(char ch) override {
        if (ch == '\r')
            tinyxml2::XMLPrinter::Write(kCrReference, sizeof(kCrReference) - 1);
        else
            tinyxml2::XMLPrinter::Putc(ch);
    }

private:
    static constexpr char kCrReference[] = "&#13;";
};

}  // namespace

std::string printElement(const tinyxml2::XMLElement* e) {
    if (e == nullptr) return std::string();
    CrKeepingPrinter printer;
    e->Accept(&printer);
    return printer.text();
}

std::string printDocument(const tinyxml2::XMLDocument& doc) {
    CrKeepingPrinter printer;
    doc.Print(&printer);
    return printer.text();
}

}  // namespace xmlconfig
