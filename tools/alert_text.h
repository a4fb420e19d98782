#pragma once

#include <cstdint>

#include "config/byte_string.h"

namespace velmora {

// A TLS alert as people look it up: "handshake_failure (40)"; "number 200" when it has no name here.
ByteString AlertText(uint32_t description);

}  // namespace velmora
