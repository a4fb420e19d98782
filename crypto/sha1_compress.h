#pragma once

#include <cstddef>
#include <cstdint>

namespace velmora {

// Works count blocks of 64 bytes into the chaining words of SHA-1. Both give the same.
void sha1CompressPortable(uint32_t (&chain)[5], const uint8_t* blocks, size_t count);
void sha1CompressShaExtensions(uint32_t (&chain)[5], const uint8_t* blocks, size_t count);  // CpuFeatures::sha

}  // namespace velmora
