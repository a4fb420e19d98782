#include "tools/velmoractl/pe_header.h"

namespace velmora::ctl {
namespace {

constexpr size_t kPeOffsetAt = 0x3C;  // where the first header says where the second one is
constexpr size_t kMachineAt = 4;      // behind the signature
constexpr size_t kCharacteristicsAt = 22;
constexpr size_t kHeaderBytes = 24;
constexpr uint32_t kLibrary = 0x2000;  // IMAGE_FILE_DLL
constexpr std::string_view kDosSignature = "MZ";
constexpr std::string_view kPeSignature("PE\0\0", 4);

// count bytes, the lowest first.
uint32_t NumberAt(std::string_view bytes, size_t position, size_t count) {
    uint32_t number = 0;
    for (size_t index = count; index > 0; --index) {
        number = (number << 8) | static_cast<unsigned char>(bytes[position + index - 1]);
    }
    return number;
}

}  // namespace

std::optional<PeHeader> ReadPeHeader(std::string_view firstBytes) {
    if (!firstBytes.starts_with(kDosSignature) || firstBytes.size() < kPeOffsetAt + 4) return {};
    const size_t offset = NumberAt(firstBytes, kPeOffsetAt, 4);
    if (offset > firstBytes.size() || firstBytes.size() - offset < kHeaderBytes) return {};
    const std::string_view header = firstBytes.substr(offset);
    if (!header.starts_with(kPeSignature)) return {};
    return PeHeader{static_cast<uint16_t>(NumberAt(header, kMachineAt, 2)),
                    (NumberAt(header, kCharacteristicsAt, 2) & kLibrary) != 0};
}

}  // namespace velmora::ctl
