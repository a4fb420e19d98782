#pragma once

namespace velmora {

// The special instructions that this processor has, and that the operating system lets programs use.
struct CpuFeatures {
    bool aes = false;   // AES-NI: a round of AES on one block
    bool vaes = false;  // the same on two blocks in a 256-bit register, with AVX2 around it
    bool sha = false;   // the SHA extensions, with SSSE3 and SSE4.1 around them
};

// Asks the processor on the first call and remembers the answer. May be called from any thread.
const CpuFeatures& cpuFeatures();

}  // namespace velmora
