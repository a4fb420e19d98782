#pragma once

#include <list>
#include <string_view>
#include <vector>

#include "config/byte_string.h"

namespace velmora {

// A received CSTA message as a tree of elements. Elements are told apart by their local names alone, so it does not
// matter which namespace prefixes a PBX uses; a namespace declaration is an attribute like any other.
//
// Nothing here reports an error: a malformed document gives the tree of what was recognised in it (xml_parser.h tells
// the rules). A document may nest as deep as it is long: no operation recurses.

struct XmlAttribute {
    ByteString prefix;     // of the name, before its first ":"; empty when there is none
    ByteString localName;  // of the name, after its first ":"; the whole name when there is none
    ByteString value;      // without its quotes, entities decoded
};

// One element, with everything in it. It can be moved into a new node, which copies nothing.
struct XmlNode {
    // An element without a name and with nothing in it.
    XmlNode() = default;

    // Parses a whole document; the node becomes its root element. An empty document leaves every field empty.
    // With matchCase false, names are lower-cased as they are read, and the path of textAt as well ("A" to "Z" only).
    XmlNode(const ByteString& document, bool matchCase);

    XmlNode(XmlNode&& other) noexcept = default;
    XmlNode(const XmlNode&) = delete;
    XmlNode& operator=(const XmlNode&) = delete;
    ~XmlNode();

    // The text of the element that path leads to: local names joined by "/", the first of them a child's, such as
    // "callingDevice/deviceID". Each name takes the first child that bears it. Empty when there is none.
    // The reference holds as long as the node does.
    //
    // A "/" at the end is harmless. One at the start of a name ("/a", "a//b") is part of that name, and as no element
    // can bear it, the result is empty.
    const ByteString& textAt(std::string_view path) const;

    ByteString prefix;                     // of the name, before its first ":"; empty when there is none
    ByteString localName;                  // of the name, after its first ":"; the whole name when there is none
    std::vector<XmlAttribute> attributes;  // in document order
    std::list<XmlNode> children;           // in document order; a list, as an element stays in place while it is read
    ByteString text;                       // its own text, not that of its children; always empty in a root
    bool caseSensitive = true;             // fixed at construction, the same in the whole tree
};

}  // namespace velmora
