#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace velmora {

// A 64-bit program or library as a file in the PE format (Microsoft's "PE Format" page), read byte for byte: what the
// system's loader would make of it, without loading it.
class PeImage {
public:
    // Reads the file. The test fails when it is not one.
    explicit PeImage(const std::string& path);

    bool IsLibraryFor64Bit() const;

    // The flags IMAGE_DLLCHARACTERISTICS_... of the optional header.
    uint16_t DllCharacteristics() const;

    // When it says it was linked, in seconds since 1970; 0 for never.
    uint32_t TimeStamp() const;

    // A part of the file as it lies in memory.
    struct Section {
        std::string name;
        uint32_t characteristics;  // IMAGE_SCN_...
        uint32_t relativeAddress;
        std::string bytes;  // without the zeros that only memory has
    };
    std::vector<Section> Sections() const;

    // It can be loaded at any address.
    bool HasRelocations() const;

    // Symbol table, debug directory or DWARF sections: any of what a release leaves out.
    bool HasDebugSymbols() const;

    // Exported names with the relative address of each.
    std::map<std::string, uint32_t> Exports() const;

    // How many addresses the export table holds; those beyond the names are exported by ordinal alone.
    size_t ExportedAddresses() const;

    // The libraries it is linked to, in upper case.
    std::vector<std::string> Imports() const;

private:
    template <typename Structure>
    Structure Read(size_t fileOffset) const;
    template <typename Structure>
    Structure ReadAt(uint32_t relativeAddress) const;
    std::string TextAt(uint32_t relativeAddress) const;
    size_t FileOffset(uint32_t relativeAddress) const;
    size_t HeaderOffset() const;

    std::string bytes;
};

}  // namespace velmora
