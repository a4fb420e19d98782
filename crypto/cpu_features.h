#pragma once

namespace velmora {

// The special instructions that a processor has, and that the operating system lets programs use.
struct CpuFeatures {
    bool aes = false;   // AES-NI: a round of AES on one block
    bool vaes = false;  // the same on two blocks in a 256-bit register, with AVX2 around it
    bool sha = false;   // the SHA extensions, with SSSE3 and SSE4.1 around them
    bool ifma = false;  // AVX-512 with products of 52-bit numbers
};

// Asks this processor. In a virtual machine that takes long.
CpuFeatures detectCpuFeatures();

// What may be used: asked on the first call, then remembered. May be called from any thread. A test answers for itself,
// to run the portable code too.
const CpuFeatures& cpuFeatures();

}  // namespace velmora
