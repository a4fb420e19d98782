#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <string>

#include "tests/support/pe_image.h"
#include "tests/support/provider_host.h"

namespace velmora {
namespace {

// Calls out of the code to each relative address: E8 and the distance from the instruction behind it (Intel 64 manual,
// volume 2, CALL). A byte that only looks like one counts too; such are few and scattered.
std::map<uint32_t, size_t> CallsByAim(const PeImage::Section& code) {
    std::map<uint32_t, size_t> calls;
    for (size_t place = code.bytes.find('\xE8'); place != std::string::npos && place + 5 <= code.bytes.size();
         place = code.bytes.find('\xE8', place + 1)) {
        int32_t distance = 0;
        std::memcpy(&distance, code.bytes.data() + place + 1, sizeof distance);
        ++calls[code.relativeAddress + static_cast<uint32_t>(place + 5) + static_cast<uint32_t>(distance)];
    }
    return calls;
}

// The start of the function that ends the process: "mov ecx, 2" and "int 0x29", the system's __fastfail for a guard
// that was overwritten.
const std::string kFail("\xB9\x02\x00\x00\x00\xCD\x29", 7);

class BuiltFile : public testing::TestWithParam<const char*> {
protected:
    PeImage image{PathBesideProgram(GetParam())};
};

TEST_P(BuiltFile, LiesAtARandomAddressAndRunsNoData) {
    constexpr uint16_t kHardening = IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE | IMAGE_DLLCHARACTERISTICS_HIGH_ENTROPY_VA |
                                    IMAGE_DLLCHARACTERISTICS_NX_COMPAT;
    EXPECT_EQ(image.DllCharacteristics() & kHardening, kHardening);
    EXPECT_TRUE(image.HasRelocations());
}

TEST_P(BuiltFile, HasNoSectionThatIsBothWritableAndExecutable) {
    constexpr uint32_t kBoth = IMAGE_SCN_MEM_WRITE | IMAGE_SCN_MEM_EXECUTE;
    size_t executable = 0;
    for (const PeImage::Section& section : image.Sections()) {
        EXPECT_NE(section.characteristics & kBoth, kBoth) << section.name;
        if ((section.characteristics & IMAGE_SCN_MEM_EXECUTE) != 0) ++executable;
    }
    EXPECT_EQ(executable, 1U);
}

TEST_P(BuiltFile, GuardsTheStackOfEachFunctionWithABuffer) {
    size_t guarded = 0;
    for (const PeImage::Section& section : image.Sections()) {
        const size_t fail = section.bytes.find(kFail);
        if (section.name != ".text" || fail == std::string::npos) continue;
        guarded = CallsByAim(section)[section.relativeAddress + static_cast<uint32_t>(fail)];
    }
    EXPECT_GT(guarded, 10U);
}

TEST_P(BuiltFile, NeedsNoLibraryOfTheCompiler) {
    for (const std::string& name : image.Imports()) {
        EXPECT_FALSE(name.starts_with("LIB")) << name;
    }
}

TEST_P(BuiltFile, DoesNotSayWhenItWasBuilt) {
    EXPECT_EQ(image.TimeStamp(), 0U);
}

// "velmora_tsp" for velmora.tsp.
std::string FileOf(const testing::TestParamInfo<const char*>& tested) {
    std::string name = tested.param;
    std::replace(name.begin(), name.end(), '.', '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Product, BuiltFile,
                         testing::Values("velmora.tsp", "velmoractl.exe", "pbxsim.exe", "velmora_setup.dll"), FileOf);

}  // namespace
}  // namespace velmora
