#pragma once

#include <string_view>

#include "config/byte_string.h"

namespace velmora {

inline ByteString lowerCase(std::string_view text) {
    ByteString lowered(text);
    for (char& character : lowered) {
        if (character >= 'A' && character <= 'Z') character = static_cast<char>(character - 'A' + 'a');
    }
    return lowered;
}

}  // namespace velmora
