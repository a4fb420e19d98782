#include "tests/support/expat_tree.h"

#include <expat.h>

#include <cstddef>
#include <memory>

namespace velmora {
namespace {

void SplitName(const ByteString& name, ByteString& prefix, ByteString& localName) {
    const size_t colon = name.find(':');
    if (colon != ByteString::npos) prefix = name.substr(0, colon);
    localName = colon != ByteString::npos ? name.substr(colon + 1) : name;
}

}  // namespace

// What Expat calls; each is given the tree.
struct ExpatTree::Handlers {
    static ExpatTree& Self(void* tree) { return *static_cast<ExpatTree*>(tree); }

    static void XMLCALL Start(void* tree, const XML_Char* name, const XML_Char** attributes) {
        std::vector<PlainNode*>& open = Self(tree).open;
        PlainNode& element = open.empty() ? Self(tree).root : open.back()->children.emplace_back();
        SplitName(name, element.prefix, element.localName);
        for (; *attributes != nullptr; attributes += 2) {
            PlainAttribute& attribute = element.attributes.emplace_back();
            SplitName(attributes[0], attribute.prefix, attribute.localName);
            attribute.value = attributes[1];
        }
        open.push_back(&element);
    }

    static void XMLCALL End(void* tree, const XML_Char* /*name*/) { Self(tree).open.pop_back(); }

    static void XMLCALL Text(void* tree, const XML_Char* text, int length) {
        std::vector<PlainNode*>& open = Self(tree).open;
        if (open.size() > 1) open.back()->text.append(text, static_cast<size_t>(length));
    }

    static void XMLCALL DocumentType(void* tree, const XML_Char* /*name*/, const XML_Char* /*system*/,
                                     const XML_Char* /*public*/, int /*hasSubset*/) {
        Self(tree).hasDocumentType = true;
    }
};

// Whatever encoding the document names, it is read as UTF-8.
ExpatTree::ExpatTree(const ByteString& document) {
    const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(XML_ParserCreate("UTF-8"),
                                                                              XML_ParserFree);
    XML_SetUserData(parser.get(), this);
    XML_SetElementHandler(parser.get(), Handlers::Start, Handlers::End);
    XML_SetCharacterDataHandler(parser.get(), Handlers::Text);
    XML_SetStartDoctypeDeclHandler(parser.get(), Handlers::DocumentType);
    wellFormed = XML_Parse(parser.get(), document.data(), static_cast<int>(document.size()), 1) == XML_STATUS_OK;
}

}  // namespace velmora
