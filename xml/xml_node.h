#pragma once

#include <string_view>

#include "config/byte_string.h"
#include "xml/xml_list.h"
#include "xml/xml_memory.h"

namespace velmora {

// A received CSTA message as a tree of elements. Elements are told apart by their local names alone, so it does not
// matter which namespace prefixes a PBX uses; a namespace declaration is an attribute like any other.
//
// Nothing here reports an error: a malformed document gives the tree of what was recognised in it (xml_parser.h tells
// the rules). A document may nest as deep as it is long: no operation recurses.

// A name in its parts.
struct QualifiedName {
    std::string_view prefix;     // before its first ":"; empty when there is none
    std::string_view localName;  // after its first ":"; the whole name when there is none
};

struct XmlAttribute {
    // An attribute of that name, its value yet to come.
    explicit XmlAttribute(const QualifiedName& name) : prefix(name.prefix), localName(name.localName) {}

    ByteString prefix;
    ByteString localName;
    ByteString value;              // without its quotes, entities decoded
    XmlAttribute* next = nullptr;  // in the attributes of its element
};

// One element, with everything in it. A root owns the memory of all that is below it: it can be moved into a new node,
// which copies nothing, and whatever else is of the tree ends with it.
struct XmlNode {
    // An element without a name and with nothing in it.
    XmlNode() = default;

    // Parses a whole document; the node becomes its root element. An empty document leaves every field empty.
    // With matchCase false, names are lower-cased as they are read, and the path of textAt as well ("A" to "Z" only).
    XmlNode(std::string_view document, bool matchCase);

    // An element of that name with nothing in it, for a parser to fill.
    XmlNode(const QualifiedName& name, bool matchCase)
        : prefix(name.prefix), localName(name.localName), caseSensitive(matchCase) {}

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

    ByteString prefix;
    ByteString localName;
    XmlList<XmlAttribute> attributes;  // in document order
    XmlList<XmlNode> children;         // in document order
    ByteString text;                   // its own text, not that of its children; always empty in a root
    bool caseSensitive = true;         // fixed at construction, the same in the whole tree
    XmlNode* next = nullptr;           // in the children of its parent; nullptr in a root
    XmlMemory memory;                  // of all that is below a root; empty in any other element
};

}  // namespace velmora
