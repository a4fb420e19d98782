#include "tests/xml/outline.h"

namespace velmora {
namespace {

ByteString qualified(const ByteString& prefix, const ByteString& localName) {
    return prefix.empty() ? localName : prefix + "|" + localName;
}

}  // namespace

ByteString outline(const XmlNode& element) {
    ByteString line = qualified(element.prefix, element.localName);
    ByteString separator = "[";
    for (const XmlAttribute& attribute : element.attributes) {
        line += separator + qualified(attribute.prefix, attribute.localName) + "=" + attribute.value;
        separator = " ";
    }
    if (!element.attributes.empty()) line += "]";
    if (!element.text.empty()) line += "\"" + element.text + "\"";
    separator = "(";
    for (const XmlNode& child : element.children) {
        line += separator + outline(child);
        separator = " ";
    }
    if (!element.children.empty()) line += ")";
    return line;
}

}  // namespace velmora
