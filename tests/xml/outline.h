#pragma once

#include "config/byte_string.h"

namespace velmora {

// A tree on one line, to compare and to read in a failure: of each element prefix|name, then attributes, text and
// children, in this order and only if there are any:
//
//   <p:a k="1">x<b/><c>y</c></p:a>   is   p|a[k=1]"x"(b c"y")
//
// The tree is of XmlNode or of PlainNode. Recurses, so it is for trees of usual depth.
template <typename Node>
ByteString outline(const Node& element) {
    const auto qualified = [](const auto& named) {
        return named.prefix.empty() ? named.localName : named.prefix + "|" + named.localName;
    };
    ByteString line = qualified(element);
    ByteString separator = "[";
    for (const auto& attribute : element.attributes) {
        line += separator + qualified(attribute) + "=" + attribute.value;
        separator = " ";
    }
    if (!element.attributes.empty()) line += "]";
    if (!element.text.empty()) line += "\"" + element.text + "\"";
    separator = "(";
    for (const Node& child : element.children) {
        line += separator + outline(child);
        separator = " ";
    }
    if (!element.children.empty()) line += ")";
    return line;
}

}  // namespace velmora
