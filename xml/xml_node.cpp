#include "xml/xml_node.h"

#include <algorithm>

#include "config/ascii_case.h"
#include "xml/xml_parser.h"

namespace velmora {
namespace {

const ByteString kNoText;

// Takes the first name off path, and the "/" behind it. A "/" as the very first byte does not end the name but is part
// of it: "/a" asks for an element of just that name, and there is none. Keep.
std::string_view takeStep(std::string_view& path) {
    const std::string_view name = path.substr(0, path.find('/', 1));
    path.remove_prefix(std::min(name.size() + 1, path.size()));
    return name;
}

// The first child of element that bears the name; nullptr when there is none.
const XmlNode* findChild(const XmlNode& element, std::string_view name) {
    for (const XmlNode& child : element.children) {
        if (child.localName == name) return &child;
    }
    return nullptr;
}

}  // namespace

XmlNode::XmlNode(std::string_view document, bool matchCase) : XmlNode(QualifiedName(), matchCase) {
    parseDocument(document, *this);
}

// Left to itself, each child would destroy its own children, in a recursion as deep as the tree. Here every child first
// hands its children up, so that it goes without any.
XmlNode::~XmlNode() {
    while (!children.empty()) {
        XmlNode& child = children.takeFront();
        children.appendAll(child.children);
        child.~XmlNode();
    }
    while (!attributes.empty()) attributes.takeFront().~XmlAttribute();
}

const ByteString& XmlNode::textAt(std::string_view path) const {
    ByteString lowered;
    if (!caseSensitive) {
        lowered = LowerCase(path);
        path = lowered;
    }
    const XmlNode* element = this;
    do {
        element = findChild(*element, takeStep(path));
        if (element == nullptr) return kNoText;
    } while (!path.empty());
    return element->text;
}

}  // namespace velmora
