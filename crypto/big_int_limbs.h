#pragma once

#include "config/byte_string.h"
#include "crypto/limbs.h"

namespace velmora {

// The way between a BigInt's magnitude, which is stored in limbs of 32 bits, and the 64-bit limbs that are computed
// with.

// No limbs of zero at the top here either.
Limbs limbsOf(const ByteString& magnitude);

// Normalised, so limbs of zero at the top are left out.
ByteString magnitudeOf(LimbView limbs);

}  // namespace velmora
