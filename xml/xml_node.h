#pragma once

#include <string_view>
#include <vector>

#include "config/byte_string.h"

namespace velmora {

// A received CSTA message as a tree of elements. Names are compared by their local part alone, so it does not matter
// which namespace prefixes a PBX uses, and a namespace declaration is an attribute like any other.
//
// Nothing here reports an error: a malformed document gives the tree of whatever was recognised in it (xml_parser.h
// tells how). A document may nest as deep as it is long; no operation needs more stack for that.

struct XmlAttribute {
    ByteString prefix;     // of the name, before its first ":"; empty when there is none
    ByteString localName;  // of the name, after its first ":"
    ByteString value;      // without its quotes, entities decoded
};

// One element. It can be moved into a new node, and nothing is copied then.
struct XmlNode {
    // An empty element: no name, nothing in it.
    XmlNode() = default;

    // Parses a whole document; the node becomes its root element. An empty document gives a node with all its fields
    // empty. With casesensitive false, names are lower-cased as they are read, and so are the paths of textAt ("A" to
    // "Z" alone).
    XmlNode(const ByteString& document, bool casesensitive);

    XmlNode(XmlNode&& other) noexcept = default;
    XmlNode(const XmlNode&) = delete;
    XmlNode& operator=(const XmlNode&) = delete;
    ~XmlNode();

    // The text of the element that path leads to from here: local names joined by "/", the first of them that of a
    // child, such as "callingDevice/deviceID". Each name takes the first child that bears it. Empty when a name is not
    // found. The reference is good for as long as this node is.
    //
    // A "/" at the very end is harmless. One at the start of a name, as in "/a" or "a//b", belongs to that name, which
    // no element bears: the result is empty.
    const ByteString& textAt(std::string_view path) const;

    ByteString prefix;                     // of the name, before its first ":"; empty when there is none
    ByteString localName;                  // of the name, after its first ":"; the whole name when there is none
    std::vector<XmlAttribute> attributes;  // in document order
    std::vector<XmlNode> children;         // in document order
    ByteString text;                       // the element's own text and CDATA in one; always empty in the root element
    bool caseSensitive = true;             // the same in the whole tree, from its construction on
};

}  // namespace velmora
