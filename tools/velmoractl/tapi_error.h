#pragma once

#include <cstdint>

#include "config/byte_string.h"

namespace velmora::ctl {

// What one of TAPI's functions that add and remove providers returned, from Microsoft's TAPI pages, in words:
// "LINEERR_NOMEM (0x80000044): there is not enough memory". A code without words is its number alone.
ByteString TapiErrorText(uint32_t code);

}  // namespace velmora::ctl
