#include "tests/support/pe_image.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>

namespace velmora {
namespace {

// DWARF sections have names longer than a section header can hold, kept in a string table as "/" and an offset.
bool NamesDebugSection(const IMAGE_SECTION_HEADER& section) {
    const auto* name = reinterpret_cast<const char*>(section.Name);
    return name[0] == '/' || std::strncmp(name, ".debug", 6) == 0 || std::strncmp(name, ".stab", 5) == 0;
}

}  // namespace

PeImage::PeImage(const std::string& path) {
    std::FILE* file = std::fopen(path.c_str(), "rb");
    char chunk[4096];
    size_t count = file == nullptr ? 0 : std::fread(chunk, 1, sizeof chunk, file);
    for (; count > 0; count = std::fread(chunk, 1, sizeof chunk, file)) bytes.append(chunk, count);
    EXPECT_TRUE(file != nullptr && std::fclose(file) == 0) << path;
    EXPECT_EQ(Read<IMAGE_DOS_HEADER>(0).e_magic, IMAGE_DOS_SIGNATURE) << path;
    EXPECT_EQ(Read<IMAGE_NT_HEADERS64>(HeaderOffset()).Signature, static_cast<DWORD>(IMAGE_NT_SIGNATURE)) << path;
}

bool PeImage::IsLibraryFor64Bit() const {
    const auto header = Read<IMAGE_NT_HEADERS64>(HeaderOffset());
    return header.FileHeader.Machine == IMAGE_FILE_MACHINE_AMD64 &&
           header.OptionalHeader.Magic == IMAGE_NT_OPTIONAL_HDR64_MAGIC &&
           (header.FileHeader.Characteristics & IMAGE_FILE_DLL) != 0;
}

uint16_t PeImage::DllCharacteristics() const {
    return Read<IMAGE_NT_HEADERS64>(HeaderOffset()).OptionalHeader.DllCharacteristics;
}

uint32_t PeImage::TimeStamp() const {
    return Read<IMAGE_NT_HEADERS64>(HeaderOffset()).FileHeader.TimeDateStamp;
}

std::vector<PeImage::Section> PeImage::Sections() const {
    const auto header = Read<IMAGE_NT_HEADERS64>(HeaderOffset());
    std::vector<Section> sections;
    for (size_t index = 0; index < header.FileHeader.NumberOfSections; ++index) {
        const auto section =
            Read<IMAGE_SECTION_HEADER>(HeaderOffset() + sizeof header + index * sizeof(IMAGE_SECTION_HEADER));
        const auto* name = reinterpret_cast<const char*>(section.Name);
        const size_t start = std::min<size_t>(section.PointerToRawData, bytes.size());
        sections.push_back({std::string(name, strnlen(name, sizeof section.Name)), section.Characteristics,
                            section.VirtualAddress, bytes.substr(start, section.SizeOfRawData)});
    }
    return sections;
}

bool PeImage::HasRelocations() const {
    const auto header = Read<IMAGE_NT_HEADERS64>(HeaderOffset());
    return (header.FileHeader.Characteristics & IMAGE_FILE_RELOCS_STRIPPED) == 0 &&
           header.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_BASERELOC].Size > 0;
}

bool PeImage::HasDebugSymbols() const {
    const auto header = Read<IMAGE_NT_HEADERS64>(HeaderOffset());
    if (header.FileHeader.NumberOfSymbols > 0) return true;
    if (header.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_DEBUG].Size > 0) return true;
    for (size_t index = 0; index < header.FileHeader.NumberOfSections; ++index) {
        const size_t offset = HeaderOffset() + sizeof header + index * sizeof(IMAGE_SECTION_HEADER);
        if (NamesDebugSection(Read<IMAGE_SECTION_HEADER>(offset))) return true;
    }
    return false;
}

std::map<std::string, uint32_t> PeImage::Exports() const {
    const auto header = Read<IMAGE_NT_HEADERS64>(HeaderOffset());
    const auto table = ReadAt<IMAGE_EXPORT_DIRECTORY>(
        header.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT].VirtualAddress);
    std::map<std::string, uint32_t> exports;
    for (uint32_t index = 0; index < table.NumberOfNames; ++index) {
        const auto name = ReadAt<uint32_t>(table.AddressOfNames + index * 4);
        const auto ordinal = ReadAt<uint16_t>(table.AddressOfNameOrdinals + index * 2);
        exports[TextAt(name)] = ReadAt<uint32_t>(table.AddressOfFunctions + uint32_t{ordinal} * 4);
    }
    return exports;
}

size_t PeImage::ExportedAddresses() const {
    const auto header = Read<IMAGE_NT_HEADERS64>(HeaderOffset());
    return ReadAt<IMAGE_EXPORT_DIRECTORY>(
               header.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT].VirtualAddress)
        .NumberOfFunctions;
}

std::vector<std::string> PeImage::Imports() const {
    const auto header = Read<IMAGE_NT_HEADERS64>(HeaderOffset());
    uint32_t address = header.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    std::vector<std::string> imports;
    for (;; address += uint32_t{sizeof(IMAGE_IMPORT_DESCRIPTOR)}) {
        const auto import = ReadAt<IMAGE_IMPORT_DESCRIPTOR>(address);
        if (import.Name == 0) return imports;
        std::string name = TextAt(import.Name);
        for (char& character : name) character = static_cast<char>(std::toupper(character));
        imports.push_back(name);
    }
}

// Zeros when the file ends before.
template <typename Structure>
Structure PeImage::Read(size_t fileOffset) const {
    Structure structure = {};
    if (fileOffset + sizeof structure <= bytes.size()) {
        std::memcpy(&structure, bytes.data() + fileOffset, sizeof structure);
    }
    return structure;
}

template <typename Structure>
Structure PeImage::ReadAt(uint32_t relativeAddress) const {
    return Read<Structure>(FileOffset(relativeAddress));
}

std::string PeImage::TextAt(uint32_t relativeAddress) const {
    const size_t offset = FileOffset(relativeAddress);
    return offset < bytes.size() ? bytes.c_str() + offset : std::string();
}

// Beyond the end of the file when no section holds the address.
size_t PeImage::FileOffset(uint32_t relativeAddress) const {
    const auto header = Read<IMAGE_NT_HEADERS64>(HeaderOffset());
    for (size_t index = 0; index < header.FileHeader.NumberOfSections; ++index) {
        const auto section =
            Read<IMAGE_SECTION_HEADER>(HeaderOffset() + sizeof header + index * sizeof(IMAGE_SECTION_HEADER));
        if (relativeAddress < section.VirtualAddress) continue;
        const size_t inSection = relativeAddress - section.VirtualAddress;
        if (inSection < section.SizeOfRawData) return section.PointerToRawData + inSection;
    }
    return bytes.size();
}

size_t PeImage::HeaderOffset() const {
    return static_cast<size_t>(Read<IMAGE_DOS_HEADER>(0).e_lfanew);
}

}  // namespace velmora
