#pragma once

#include <vector>

#include "config/byte_string.h"
#include "tests/support/plain_tree.h"

namespace velmora {

// The tree that Expat finds in a document, with the text of its root left out, as CSTA has none there. Expat knows
// nothing of prefixes here: splitting a name at its first colon is done by hand.
class ExpatTree {
public:
    explicit ExpatTree(const ByteString& document);

    PlainNode root;
    bool wellFormed = false;
    bool hasDocumentType = false;

private:
    struct Handlers;

    std::vector<PlainNode*> open;
};

}  // namespace velmora
