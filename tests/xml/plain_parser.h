#pragma once

#include "config/byte_string.h"
#include "xml/xml_node.h"

namespace velmora {

// The rules of the XML reader a second time, to compare with: byte by byte, with recursion and copies, and nothing in
// common with the product but the tree. Slow, and only for short documents.
XmlNode plainParse(const ByteString& document, bool matchCase);

}  // namespace velmora
