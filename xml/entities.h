#pragma once

#include <string_view>

#include "config/byte_string.h"

namespace velmora {
void appendDecoded(ByteString& text, std::string_view raw);
}  // namespace velmora
