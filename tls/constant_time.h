#pragma once

#include <cstddef>
#include <string_view>

namespace velmora {

// Whether two byte strings are the same. How long it takes depends on their length alone, so that a peer cannot find
// out a MAC byte by byte.
inline bool EqualInConstantTime(std::string_view left, std::string_view right) {
    if (left.size() != right.size()) return false;
    unsigned int difference = 0;
    for (size_t index = 0; index < left.size(); ++index) {
        difference |= static_cast<unsigned char>(left[index]) ^
                      static_cast<unsigned int>(static_cast<unsigned char>(right[index]));
    }
    return difference == 0;
}

}  // namespace velmora
