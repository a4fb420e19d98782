#pragma once

#include <array>
#include <string>
#include <vector>

#include "config/byte_string.h"

namespace velmora {

// Messages as PBXs send them: ECMA-354's answer to a login, ECMA-323's answers and events of calls and its lists of
// devices, on one line or on many, with prefixes and without.

struct CstaMessage {
    ByteString xml;
    std::array<ByteString, 2> paths;  // from the root, to elements whose text is one run or empty
};

// A named set of messages of one kind.
struct CstaBundle {
    std::string name;
    std::vector<CstaMessage> messages;
};

std::vector<CstaBundle> CstaBundles();

}  // namespace velmora
