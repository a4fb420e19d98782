#pragma once

#include <string_view>

namespace velmora {

struct XmlNode;

// A small, forgiving reader of XML in UTF-8. It takes what it recognises and passes over the rest:
//
//   - Comments and processing instructions (the XML declaration among them) are dropped. There is no DOCTYPE: its "<!"
//     is taken for a tag with a malformed attribute.
//   - Whitespace is part of the text, exactly as received.
//   - Any end tag closes the innermost open element, whatever its name.
//   - An element that is still open at the end of the document has no text. Its children stay.
//   - A comment, instruction, CDATA section or attribute value without its end reaches to the end of the document, and
//     so does an attribute that is malformed.
//
// The time grows with the length of the document, whatever is in it.

// Parses document into root, which keeps the element found at the top level. Its own text is dropped: no CSTA message
// has any there. A further element at the top level is read into root as well, under its own name, with its attributes
// and children added to those already there; an end tag there ends the document.
void parseDocument(std::string_view document, XmlNode& root);

}  // namespace velmora
