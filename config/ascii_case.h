#pragma once

#include <string_view>

#include "config/byte_string.h"

namespace velmora {

// text with "A" to "Z" in lower case. Any other byte stays, those of a letter outside ASCII included.
ByteString LowerCase(std::string_view text);

}  // namespace velmora
