#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace velmora::ctl {

// What the head of a program file tells (Microsoft's "PE Format" page).
struct PeHeader {
    uint16_t machine = 0;  // the kind of processor: 0x8664 for x64
    bool library = false;  // a DLL, which a .tsp file is too

    bool IsLibraryFor64Bit() const { return machine == 0x8664 && library; }
};

// Reads it from the first bytes of a file; none when they are not those of a program. 4096 bytes are enough for every
// common file.
std::optional<PeHeader> ReadPeHeader(std::string_view firstBytes);

}  // namespace velmora::ctl
