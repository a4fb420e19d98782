#pragma once

#include <string_view>

#include "config/byte_string.h"

namespace velmora {

// The characters of a dialable address that are dialled: the digits 0 to 9, "*" and "#", in order, a byte each. All
// others go, the separators of TAPI's dialable addresses and what they introduce alike; no country code is applied:
// "+49 (30) 1234" gives "49301234".
ByteString DialledDigits(std::u16string_view address);

}  // namespace velmora
