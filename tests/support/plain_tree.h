#pragma once

#include <list>
#include <vector>

#include "config/byte_string.h"

namespace velmora {

// A tree of elements in the plainest form, for the judges of the XML reader to build: with the field names of XmlNode,
// and nothing else in common with it.

struct PlainAttribute {
    ByteString prefix;
    ByteString localName;
    ByteString value;
};

struct PlainNode {
    ByteString prefix;
    ByteString localName;
    std::vector<PlainAttribute> attributes;
    std::list<PlainNode> children;
    ByteString text;
};

}  // namespace velmora
