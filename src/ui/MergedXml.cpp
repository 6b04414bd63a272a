#include "ui/MergedXml.h"

#include <tinyxml2.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "platform/KSFile.h"
#include "platform/KSLogger.h"
#include "platform/ModuleParameterParser.h"
#include "platform/XmlDocumentCheck.h"

using tinyxml2::XMLAttribute;
using tinyxml2::XMLDocument;
using tinyxml2::XMLElement;
using tinyxml2::XMLNode;

namespace {

// True when `value` is one of the comma-separated entries of `list`
// (compared exactly, blanks included).
bool isAccepted(const char* list, const std::string& value) {
    const std::string text = list != nullptr ? list : "";
    size_t pos = 0;
    for (;;) {
        size_t end = text.find(',', pos);
        if (end == std::string::npos) end = text.size();
        if (text.compare(pos, end - pos, value) == 0) return true;
        if (end == text.size()) return false;
        pos = end + 1;
    }
}

// Inserts p_pNew as the sibling just before p_pAnchor (a child of p_pParent).
void insertBeforeChild(XMLNode* p_pParent, XMLNode* p_pAnchor, XMLNode* p_pNew) {
    XMLNode* pPrevious = p_pAnchor->PreviousSibling();
    if (pPrevious != nullptr)
        p_pParent->InsertAfterChild(pPrevious, p_pNew);
    else
        p_pParent->InsertFirstChild(p_pNew);
}

}  // namespace

MergedXml::MergedXml()
    : m_pStyleBaseDoc(new XMLDocument),
      m_pStyleModifyDoc(new XMLDocument),
      m_pLangBaseDoc(new XMLDocument),
      m_pLangModifyDoc(new XMLDocument) {}

MergedXml::~MergedXml() = default;

int MergedXml::keyOf(const XMLElement* p_pElement) {
    if (p_pElement == nullptr) return 0;
    const XMLAttribute* pFirst = p_pElement->FirstAttribute();
    if (pFirst == nullptr) return 0;
    const char* text = pFirst->Value();
    const long long value = std::strtol(text != nullptr ? text : "", nullptr, 10);
    // long is 32 bits on the camera and 64 bits on a build host: clamp to the
    // int range so that every build reads a key the same way.
    if (value > INT_MAX) return INT_MAX;
    if (value < INT_MIN) return INT_MIN;
    return static_cast<int>(value);
}

bool MergedXml::readWholeFile(const std::string& p_strPath, std::string& p_strText) {
    KSFile file;
    if (!file.open(p_strPath, KSFile::ModeRead)) {
        KSLogger::consolePuts("mergeStyleXml file open failed ");
        return false;
    }
    long long length = file.getLength();
    if (length < 0) return false;
    // One byte more than the file, zeroed, so that the text always ends in a NUL.
    std::vector<char> buffer(static_cast<size_t>(length) + 1, '\0');
    long long readLength = file.read(buffer.data(), length);
    if (readLength < length) return false;
    p_strText.assign(buffer.data());
    return true;
}

bool MergedXml::findNodeByKey(int p_nKey, XMLNode* p_pParent, XMLElement*& p_pNode) {
    if (p_pParent == nullptr) return true;
    for (XMLElement* pChild = p_pParent->FirstChildElement(); pChild != nullptr;
         pChild = pChild->NextSiblingElement()) {
        if (keyOf(pChild) == p_nKey) {
            p_pNode = pChild;
            return true;
        }
    }
    return true;
}

bool MergedXml::deleteTabNode(int p_nKey) {
    XMLElement* pRoot = m_pStyleBaseDoc->RootElement();
    if (pRoot == nullptr) return true;
    XMLElement* pTab = pRoot->FirstChildElement();
    while (pTab != nullptr) {
        XMLElement* pNext = pTab->NextSiblingElement();
        if (keyOf(pTab) == p_nKey) {
            pTab->DeleteChildren();
            pRoot->DeleteChild(pTab);
        }
        pTab = pNext;
    }
    return true;
}

bool MergedXml::blockApplies(const XMLElement* p_pBlock, const std::string& p_strDetail) {
    // A block without attributes has no condition that could fail: it applies
    // to every module.
    for (const XMLAttribute* pCondition = p_pBlock->FirstAttribute(); pCondition != nullptr;
         pCondition = pCondition->Next()) {
        ModuleParameterParser detail;
        if (!detail.parse(p_strDetail)) {
            // The module's keys are unknown, so no condition can hold.
            KSLogger::consolePuts("parse detail failed");
            return false;
        }
        std::string value;
        if (!detail.getValue(pCondition->Name(), value)) return false;
        if (!isAccepted(pCondition->Value(), value)) return false;
    }
    return true;
}

bool MergedXml::addAfter(const XMLElement* p_pOperation) {
    XMLElement* pRoot = m_pStyleBaseDoc->RootElement();
    for (const XMLElement* pAnchor = p_pOperation->FirstChildElement(); pAnchor != nullptr;
         pAnchor = pAnchor->NextSiblingElement()) {
        int nKey = keyOf(pAnchor);
        for (const XMLElement* pNew = pAnchor->FirstChildElement(); pNew != nullptr;
             pNew = pNew->NextSiblingElement()) {
            XMLElement* pTab = nullptr;
            if (!findNodeByKey(nKey, pRoot, pTab)) {
                KSLogger::consolePrintf("can't find tab by key(%d)\n", nKey);
                return false;
            }
            // With no tab to stand next to, the new element is dropped.
            if (pTab != nullptr) pRoot->InsertAfterChild(pTab, pNew->DeepClone(m_pStyleBaseDoc.get()));
            // The next element of the run goes after this one.
            nKey = keyOf(pNew);
        }
    }
    return true;
}

bool MergedXml::addBefore(const XMLElement* p_pOperation) {
    XMLElement* pRoot = m_pStyleBaseDoc->RootElement();
    for (const XMLElement* pAnchor = p_pOperation->FirstChildElement(); pAnchor != nullptr;
         pAnchor = pAnchor->NextSiblingElement()) {
        const int nKey = keyOf(pAnchor);
        for (const XMLElement* pNew = pAnchor->FirstChildElement(); pNew != nullptr;
             pNew = pNew->NextSiblingElement()) {
            XMLElement* pTab = nullptr;
            if (!findNodeByKey(nKey, pRoot, pTab)) {
                KSLogger::consolePrintf("can't find tab by key(%d)\n", nKey);
                return false;
            }
            // The anchor stays in place, so each element lands after the
            // previous one of the run and before the anchor.
            if (pTab != nullptr) insertBeforeChild(pRoot, pTab, pNew->DeepClone(m_pStyleBaseDoc.get()));
        }
    }
    return true;
}

bool MergedXml::applyBlock(const XMLElement* p_pBlock) {
    for (const XMLElement* pOperation = p_pBlock->FirstChildElement(); pOperation != nullptr;
         pOperation = pOperation->NextSiblingElement()) {
        const char* name = pOperation->Name();
        if (std::strcmp(name, "Delete") == 0) {
            for (const XMLElement* pTarget = pOperation->FirstChildElement(); pTarget != nullptr;
                 pTarget = pTarget->NextSiblingElement()) {
                const int nKey = keyOf(pTarget);
                if (!deleteTabNode(nKey)) {
                    KSLogger::consolePrintf("delete key(%d) failed\n", nKey);
                    return false;
                }
            }
        } else if (std::strcmp(name, "AddAfter") == 0) {
            if (!addAfter(pOperation)) return false;
        } else if (std::strcmp(name, "AddBefore") == 0) {
            if (!addBefore(pOperation)) return false;
        }
        // Elements with other names are not operations.
    }
    return true;
}

bool MergedXml::mergeStyleXml(const std::string& p_strDetail) {
    if (m_strStyleOriginalPath.empty() || m_strStyleModifyPath.empty()) {
        KSLogger::consolePuts("m_strStyleModifyPath or m_strStyleOriginalPath is NULL,Please set path first");
        return false;
    }
    std::string baseText;
    if (!readWholeFile(m_strStyleOriginalPath, baseText)) return false;
    std::string modifyText;
    if (!readWholeFile(m_strStyleModifyPath, modifyText)) return false;

    // A style text that is not well-formed XML cannot be served; a broken
    // diversity file is not silently ignored either. An empty diversity file
    // just holds no changes.
    // Both are read whole and strictly: the style text has one root element,
    // whose children are the tabs; the diversity text any number of blocks.
    // Anything tinyxml2 would skip or keep beside them (text outside the
    // elements, what follows a stray end tag) fails the merge, so that what
    // is printed is exactly the merged document.
    std::string why;
    if (!XmlDocumentCheck::parse(*m_pStyleBaseDoc, baseText, XmlDocumentCheck::Elements::One, why)) {
        KSLogger::consolePrintf("style file %s: %s\n", m_strStyleOriginalPath.c_str(), why.c_str());
        return false;
    }
    if (!XmlDocumentCheck::parse(*m_pStyleModifyDoc, modifyText, XmlDocumentCheck::Elements::Any, why)) {
        KSLogger::consolePrintf("style diversity file %s: %s\n", m_strStyleModifyPath.c_str(), why.c_str());
        return false;
    }

    for (const XMLElement* pBlock = m_pStyleModifyDoc->FirstChildElement(); pBlock != nullptr;
         pBlock = pBlock->NextSiblingElement()) {
        if (!blockApplies(pBlock, p_strDetail)) continue;
        if (!applyBlock(pBlock)) return false;
    }
    return true;
}

bool MergedXml::mergeLangXml(const std::string& /*p_strDetail*/) { return true; }

bool MergedXml::getStyleMergedString(const std::string& p_strDetail, std::string& p_strText) {
    if (!mergeStyleXml(p_strDetail)) {
        KSLogger::consolePuts("mergeStyleXml failed");
        return false;
    }
    tinyxml2::XMLPrinter printer;
    m_pStyleBaseDoc->Print(&printer);
    p_strText = printer.CStr();
    return true;
}

bool MergedXml::getLangMergedString(const std::string& p_strDetail, std::string& p_strText) {
    if (!mergeLangXml(p_strDetail)) {
        KSLogger::consolePuts("mergeLangXml failed");
        return false;
    }
    tinyxml2::XMLPrinter printer;
    m_pLangBaseDoc->Print(&printer);
    p_strText = printer.CStr();
    return true;
}
