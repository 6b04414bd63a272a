#pragma once
#include <string>

namespace tinyxml2 {
class XMLDocument;
}  // namespace tinyxml2

// Strict reading of a whole XML text with tinyxml2.
//
// tinyxml2 alone accepts texts that it does not read to the end: it stops
// without an error at an end tag outside every element ("<a/></b><c/>" reads
// as "<a/>") and at a NUL byte, and it keeps text outside the elements
// ("<a/>x"), which prints back as something else. A reader that is to refuse
// what it cannot represent parses with this instead.
namespace XmlDocumentCheck {

enum class Elements {
    One,  // exactly one element at the top: the root
    Any,  // any number of top-level elements, none included (an empty text is fine)
};

// Parses `text` into `doc`. True when tinyxml2 reads the whole text without an
// error, the text holds no NUL byte, the top level holds besides the elements
// only the XML declaration, comments, <!...> declarations and blanks, and the
// number of top-level elements fits `elements`. False with the reason in `why`
// otherwise (`doc` then holds whatever tinyxml2 made of the text).
bool parse(tinyxml2::XMLDocument& doc, const std::string& text, Elements elements, std::string& why);

}  // namespace XmlDocumentCheck
