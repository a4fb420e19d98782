#include "crypto/big_int_limbs.h"

#include <bit>
#include <cstring>

namespace velmora {

static_assert(std::endian::native == std::endian::little, "Both kinds of limbs are copied as they lie in memory.");

Limbs limbsOf(const ByteString& magnitude) {
    Limbs limbs((magnitude.size() + sizeof(Limb) - 1) / sizeof(Limb));
    if (!magnitude.empty()) std::memcpy(limbs.data(), magnitude.data(), magnitude.size());
    limbs.resize(significant(limbs).size());
    return limbs;
}

ByteString magnitudeOf(LimbView limbs) {
    const size_t words = (bitLength(limbs) + 31) / 32;
    ByteString magnitude(4 * words, '\0');
    if (words != 0) std::memcpy(magnitude.data(), limbs.data(), magnitude.size());
    return magnitude;
}

}  // namespace velmora
