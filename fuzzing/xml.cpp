// Any bytes as a document: parsed in both ways of reading names, compared with the rules written down once more, looked
// up, moved and destroyed.
#include <utility>

#include "fuzzing/support/expect.h"
#include "fuzzing/support/fuzz_input.h"
#include "fuzzing/support/fuzz_target.h"
#include "tests/xml/outline.h"
#include "tests/xml/plain_parser.h"
#include "xml/xml_node.h"

namespace {

constexpr size_t kPlainMaxBytes = 500;  // the judge recurses and copies

// Down the first children, however deep, without recursion; what is counted is bounded by the document.
size_t FirstChildren(const velmora::XmlNode& root) {
    size_t count = 0;
    for (const velmora::XmlNode* node = &root; !node->children.empty(); node = &node->children.front()) ++count;
    return count;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
    using namespace velmora;
    FuzzInput input(data, bytes);
    const bool matchCase = input.U8() % 2 == 0;
    const ByteString path = input.Piece();
    const ByteString document = input.Rest();

    XmlNode root(document, matchCase);
    Expect(root.text.empty(), "a root has no text");
    if (document.size() <= kPlainMaxBytes) {
        Expect(outline(root) == outline(plainParse(document, matchCase)), "a document is read by the plain rules");
    }
    Expect(FirstChildren(root) <= document.size(), "no element comes from nothing");
    const ByteString found = root.textAt(path);
    const XmlNode moved(std::move(root));
    Expect(moved.textAt(path) == found, "a moved tree is the same tree");
    if (!moved.children.empty()) {
        const XmlNode& child = moved.children.front();
        moved.textAt(child.localName + "/" + path);
        child.textAt(path);
    }
    return 0;
}
