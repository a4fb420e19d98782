// Documents made well-formed by the input, and any others that Expat calls so: we read the same names, attributes,
// texts and structure. Left out is what we read otherwise on purpose: letters outside ASCII in names, spaces around
// "=", document types, and the line ends and tabs that XML normalizes.
#include <cstdio>
#include <string_view>

#include "fuzzing/support/expect.h"
#include "fuzzing/support/fuzz_input.h"
#include "fuzzing/support/fuzz_target.h"
#include "tests/support/expat_tree.h"
#include "tests/xml/document_maker.h"
#include "tests/xml/outline.h"
#include "xml/xml_node.h"

namespace velmora {
namespace {

bool HasSpaceAroundEquals(std::string_view document) {
    constexpr std::string_view kSpaces = " \t\n";
    for (size_t at = document.find('='); at != std::string_view::npos; at = document.find('=', at + 1)) {
        if (at > 0 && kSpaces.find(document[at - 1]) != std::string_view::npos) return true;
        if (at + 1 < document.size() && kSpaces.find(document[at + 1]) != std::string_view::npos) return true;
    }
    return false;
}

bool IsAscii(const ByteString& text) {
    for (const char byte : text) {
        if (static_cast<unsigned char>(byte) >= 0x80) return false;
    }
    return true;
}

// Takes the white space in attribute values for spaces; false when a name has letters outside ASCII. It recurses, so it
// is for trees of usual depth.
template <typename Node>
bool Normalize(Node& element) {
    if (!IsAscii(element.prefix + element.localName)) return false;
    for (auto& attribute : element.attributes) {
        if (!IsAscii(attribute.prefix + attribute.localName)) return false;
        for (char& byte : attribute.value) {
            if (byte == '\t' || byte == '\n') byte = ' ';
        }
    }
    for (Node& child : element.children) {
        if (!Normalize(child)) return false;
    }
    return true;
}

// Says at the end of the process how many documents were compared, in the form of libFuzzer's other figures.
struct ComparedDocuments {
    ComparedDocuments() = default;
    ComparedDocuments(const ComparedDocuments&) = delete;
    ComparedDocuments& operator=(const ComparedDocuments&) = delete;
    ~ComparedDocuments() { std::fprintf(stderr, "stat::documents_compared: %zu\n", count); }

    size_t count = 0;
} compared;

void Compare(const XmlNode& ours, const PlainNode& expats) {
    ++compared.count;
    Expect(outline(ours) == outline(expats), "a well-formed document is read as Expat reads it");
}

void CompareMade(FuzzInput& input) {
    const ByteString document = DocumentMaker([&] { return input.U8(); }).Document();
    const ExpatTree expat(document);
    Expect(expat.wellFormed, "a made document is well-formed");
    Compare(XmlNode(document, true), expat.root);
}

void CompareAny(const ByteString& document) {
    if (document.find('\r') != ByteString::npos || HasSpaceAroundEquals(document)) return;
    ExpatTree expat(document);
    if (!expat.wellFormed || expat.hasDocumentType || !Normalize(expat.root)) return;
    XmlNode ours(document, true);
    Normalize(ours);
    Compare(ours, expat.root);
}

}  // namespace
}  // namespace velmora

// Of eight inputs one is a document as it stands.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
    velmora::FuzzInput input(data, bytes);
    if (input.U8() % 8 == 0) {
        velmora::CompareAny(input.Rest());
    } else {
        velmora::CompareMade(input);
    }
    return 0;
}
