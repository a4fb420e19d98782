#include "xml/xml_node.h"

#include <algorithm>
#include <utility>

#include "xml/ascii_case.h"
#include "xml/xml_parser.h"

namespace velmora {
namespace {

constexpr char kSeparator = '/';

const ByteString kNoText;

// Takes the next name off the front of path, and the separator behind it. The search begins at the second byte, so a
// separator right at the start is part of the name: "/a" asks for an element of just that name, and there is none. Keep.
std::string_view takeName(std::string_view& path) {
    const std::string_view name = path.substr(0, path.find(kSeparator, 1));
    path.remove_prefix(std::min(name.size() + 1, path.size()));
    return name;
}

// The first child of node that bears name; nullptr when there is none.
const XmlNode* findChild(const XmlNode& node, std::string_view name) {
    for (const XmlNode& child : node.children) {
        if (child.localName == name) return &child;
    }
    return nullptr;
}

}  // namespace

XmlNode::XmlNode(const ByteString& document, bool casesensitive) : caseSensitive(casesensitive) {
    parseDocument(document, *this);
}

// Left to themselves, the children would destroy theirs in a recursion as deep as the tree. Their lists are unhooked
// here instead, so that every element goes without children.
XmlNode::~XmlNode() {
    std::vector<std::vector<XmlNode>> unhooked;
    std::vector<XmlNode> siblings = std::move(children);
    for (;;) {
        for (XmlNode& element : siblings) {
            if (!element.children.empty()) unhooked.push_back(std::move(element.children));
        }
        if (unhooked.empty()) return;
        siblings = std::move(unhooked.back());
        unhooked.pop_back();
    }
}

const ByteString& XmlNode::textAt(std::string_view path) const {
    ByteString lowered;
    if (!caseSensitive) {
        lowered = lowerCase(path);
        path = lowered;
    }
    const XmlNode* element = this;
    do {
        element = findChild(*element, takeName(path));
        if (element == nullptr) return kNoText;
    } while (!path.empty());
    return element->text;
}

}  // namespace velmora
