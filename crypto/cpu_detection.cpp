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

// Whether the operating system saves the 256-bit registers of a thread: bits 1 and 2 of XCR0.
[[gnu::target("xsave")]] bool savesWideRegisters() {
    const auto xcr0 = static_cast<uint64_t>(_xgetbv(0));
    return hasBit(xcr0, 1) && hasBit(xcr0, 2);
}

}  // namespace

CpuFeatures detectCpuFeatures() {
    const Leaf basic = readLeaf(1);
    const Leaf extended = readLeaf(7);
    const bool ssse3 = hasBit(basic.ecx, 9);
    const bool sse41 = hasBit(basic.ecx, 19);
    const bool osxsave = hasBit(basic.ecx, 27);
    const bool avx2 = hasBit(basic.ecx, 28) && hasBit(extended.ebx, 5) && osxsave && savesWideRegisters();

    CpuFeatures features;
    features.aes = hasBit(basic.ecx, 25);
    features.vaes = features.aes && avx2 && hasBit(extended.ecx, 9);
    features.sha = ssse3 && sse41 && hasBit(extended.ebx, 29);
    return features;
}

}  // namespace velmora
