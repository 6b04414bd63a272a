#pragma once
#include <memory>
#include <string>

namespace tinyxml2 {
class XMLDocument;
class XMLElement;
class XMLNode;
}  // namespace tinyxml2

// Tailors the web interface's style XML to one camera module.
//
// The style file lists the tabs of the image-settings pages (the child
// elements of its root element). An optional diversity file holds condition
// blocks, one top-level element each; every attribute of a block is a
// condition "detail key = one of these comma-separated values" on the
// module's detail text. A block whose conditions all hold applies its
// operations in order:
//   <Delete>    each child names, by its key, the tabs to remove;
//   <AddAfter>  each child names an anchor tab by its key, its own children
//               are inserted after the anchor (a run keeps its order);
//   <AddBefore> the same, inserted before the anchor.
// The key of an element is the value of its first attribute, whatever its
// name, read as a decimal integer (text that is not a number reads as 0).
// An element without attributes has key 0.
class MergedXml {
public:
    MergedXml();
    ~MergedXml();
    MergedXml(const MergedXml&) = delete;
    MergedXml& operator=(const MergedXml&) = delete;

    void setStyleOriginalPath(const std::string& p_strPath) { m_strStyleOriginalPath = p_strPath; }
    void setStyleModifyPath(const std::string& p_strPath) { m_strStyleModifyPath = p_strPath; }
    void setLangOriginalPath(const std::string& p_strPath) { m_strLangOriginalPath = p_strPath; }
    void setLangModifyPath(const std::string& p_strPath) { m_strLangModifyPath = p_strPath; }

    // Merges the style for the module described by p_strDetail and prints the
    // result into p_strText. False (p_strText untouched) when the merge fails.
    bool getStyleMergedString(const std::string& p_strDetail, std::string& p_strText);
    // Language texts are served whole and never merged: this prints the
    // language document, which nothing loads, so the text comes out empty.
    bool getLangMergedString(const std::string& p_strDetail, std::string& p_strText);

    // Reads and parses both style files and applies the diversity file to the
    // style document. False when a path is unset, a file cannot be read whole,
    // the style file is not one well-formed XML element or the diversity file
    // is neither well-formed XML elements nor empty (both read strictly, see
    // XmlDocumentCheck: no text beside the elements, nothing after a stray end tag).
    bool mergeStyleXml(const std::string& p_strDetail);
    // Nothing to merge for languages; always true.
    bool mergeLangXml(const std::string& p_strDetail);

    // The first child element of p_pParent whose key is p_nKey, in p_pNode.
    // p_pNode is left as it was when no child has the key. Always true.
    bool findNodeByKey(int p_nKey, tinyxml2::XMLNode* p_pParent, tinyxml2::XMLElement*& p_pNode);
    // Removes every tab of the style document whose key is p_nKey. Always true.
    bool deleteTabNode(int p_nKey);

    // The key of an element (see above).
    static int keyOf(const tinyxml2::XMLElement* p_pElement);

private:
    bool readWholeFile(const std::string& p_strPath, std::string& p_strText);
    bool blockApplies(const tinyxml2::XMLElement* p_pBlock, const std::string& p_strDetail);
    bool applyBlock(const tinyxml2::XMLElement* p_pBlock);
    bool addAfter(const tinyxml2::XMLElement* p_pOperation);
    bool addBefore(const tinyxml2::XMLElement* p_pOperation);

    std::string m_strStyleOriginalPath;
    std::string m_strStyleModifyPath;
    std::string m_strLangOriginalPath;
    std::string m_strLangModifyPath;

    std::unique_ptr<tinyxml2::XMLDocument> m_pStyleBaseDoc;
    std::unique_ptr<tinyxml2::XMLDocument> m_pStyleModifyDoc;
    std::unique_ptr<tinyxml2::XMLDocument> m_pLangBaseDoc;
    std::unique_ptr<tinyxml2::XMLDocument> m_pLangModifyDoc;
};
