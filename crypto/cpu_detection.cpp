#include <cpuid.h>
#include <immintrin.h>

#include <cstdint>

#include "crypto/cpu_features.h"

namespace velmora {
namespace {

// One answer of CPUID; all zero when the processor does not know the leaf. The bits are those of Intel's "Software
// Developer's Manual", volume 2, CPUID.
struct Leaf {
    uint32_t eax = 0;
    uint32_t ebx = 0;
    uint32_t ecx = 0;
    uint32_t edx = 0;
};

Leaf readLeaf(uint32_t number) {
    Leaf leaf;
    __get_cpuid_count(number, 0, &leaf.eax, &leaf.ebx, &leaf.ecx, &leaf.edx);
    return leaf;
}

constexpr bool hasBit(uint64_t word, int bit) {
    return (word >> bit & 1) != 0;
}

// The registers of a thread that the operating system saves, as bits of XCR0: those of 256 bits, and with them the mask
// registers and both parts of those of 512 bits.
constexpr uint64_t kSaves256Bits = 0x06;
constexpr uint64_t kSaves512Bits = 0xE6;

[[gnu::target("xsave")]] bool savesRegisters(uint64_t bits) {
    return (static_cast<uint64_t>(_xgetbv(0)) & bits) == bits;
}

}  // namespace

CpuFeatures detectCpuFeatures() {
    const Leaf basic = readLeaf(1);
    const Leaf extended = readLeaf(7);
    const bool ssse3 = hasBit(basic.ecx, 9);
    const bool sse41 = hasBit(basic.ecx, 19);
    const bool osxsave = hasBit(basic.ecx, 27);
    const bool avx2 = hasBit(basic.ecx, 28) && hasBit(extended.ebx, 5) && osxsave && savesRegisters(kSaves256Bits);
    const bool avx512f = hasBit(extended.ebx, 16) && osxsave && savesRegisters(kSaves512Bits);

    CpuFeatures features;
    features.aes = hasBit(basic.ecx, 25);
    features.vaes = features.aes && avx2 && hasBit(extended.ecx, 9);
    features.sha = ssse3 && sse41 && hasBit(extended.ebx, 29);
    features.ifma = avx512f && hasBit(extended.ebx, 21);
    return features;
}

}  // namespace velmora
