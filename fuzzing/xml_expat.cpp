// Any document that Expat calls well-formed: we read the same names, attributes, texts and structure. Left out is what
// we read otherwise on purpose: letters outside ASCII in names, spaces around "=", document types, and the line ends
// and tabs that XML normalizes.
#include <string_view>

#include "fuzzing/support/expect.h"
#include "fuzzing/support/fuzz_input.h"
#include "fuzzing/support/fuzz_target.h"
#include "tests/support/expat_tree.h"
#include "tests/xml/outline.h"

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
bool Normalize(XmlNode& element) {
    if (!IsAscii(element.prefix + element.localName)) return false;
    for (XmlAttribute& attribute : element.attributes) {
        if (!IsAscii(attribute.prefix + attribute.localName)) return false;
        for (char& byte : attribute.value) {
            if (byte == '\t' || byte == '\n') byte = ' ';
        }
    }
    for (XmlNode& child : element.children) {
        if (!Normalize(child)) return false;
    }
    return true;
}

}  // namespace
}  // namespace velmora

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
    using namespace velmora;
    const ByteString document = FuzzInput(data, bytes).Rest();
    if (document.find('\r') != ByteString::npos || HasSpaceAroundEquals(document)) return 0;
    ExpatTree expat(document);
    if (!expat.wellFormed || expat.hasDocumentType || !Normalize(expat.root)) return 0;
    XmlNode ours(document, true);
    Normalize(ours);
    Expect(outline(ours) == outline(expat.root), "a well-formed document is read as Expat reads it");
    return 0;
}
