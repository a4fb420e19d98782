#pragma once

#include "config/byte_string.h"
#include "xml/xml_node.h"

namespace velmora {

// A tree on one line, to compare and to read in a failure: of each element prefix|name, then attributes, text and
// children, in this order and only if there are any:
//
//   <p:a k="1">x<b/><c>y</c></p:a>   is   p|a[k=1]"x"(b c"y")
//
// Recurses, so it is for trees of usual depth.
ByteString outline(const XmlNode& element);

}  // namespace velmora
