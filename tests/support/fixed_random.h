#pragma once

#include <cstddef>

#include "config/byte_string.h"

namespace velmora {

// The random bytes of a test: randomBytes takes them from this sequence, one after another, and starts over at its end.
extern ByteString fixedRandomSequence;
extern size_t fixedRandomTaken;  // bytes taken so far; set to 0 to start over

}  // namespace velmora
