#pragma once

#include "config/byte_string.h"
#include "tests/support/plain_tree.h"

namespace velmora {

// The rules of the XML reader a second time, to compare with: byte by byte, with recursion and copies, and nothing in
// common with the product. Slow, and only for short documents.
PlainNode plainParse(const ByteString& document, bool matchCase);

}  // namespace velmora
