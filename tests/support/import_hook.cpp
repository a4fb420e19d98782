#include "tests/support/import_hook.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

namespace velmora {
namespace {

// What lies at an address relative to the start of a loaded module.
template <typename Structure>
Structure* At(HMODULE module, uint64_t relativeAddress) {
    return reinterpret_cast<Structure*>(reinterpret_cast<char*>(module) + relativeAddress);
}

// Null when the module does not import anything from the library.
const IMAGE_IMPORT_DESCRIPTOR* FindLibrary(HMODULE module, const char* library) {
    const auto* header =
        At<IMAGE_NT_HEADERS64>(module, static_cast<uint64_t>(At<IMAGE_DOS_HEADER>(module, 0)->e_lfanew));
    const IMAGE_DATA_DIRECTORY& directory = header->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    const auto* import = At<IMAGE_IMPORT_DESCRIPTOR>(module, directory.VirtualAddress);
    for (; import->Name != 0; ++import) {
        if (lstrcmpiA(At<char>(module, import->Name), library) == 0) return import;
    }
    return nullptr;
}

}  // namespace

void HookImport(HMODULE module, const char* library, const char* name, FARPROC replacement) {
    const IMAGE_IMPORT_DESCRIPTOR* import = FindLibrary(module, library);
    const auto* entry = import == nullptr ? nullptr : At<IMAGE_THUNK_DATA64>(module, import->OriginalFirstThunk);
    for (size_t index = 0; entry != nullptr && entry[index].u1.AddressOfData != 0; ++index) {
        if (IMAGE_SNAP_BY_ORDINAL64(entry[index].u1.Ordinal)) continue;
        const auto* byName = At<IMAGE_IMPORT_BY_NAME>(module, entry[index].u1.AddressOfData);
        if (std::strcmp(reinterpret_cast<const char*>(byName->Name), name) != 0) continue;
        ULONGLONG* slot = &At<IMAGE_THUNK_DATA64>(module, import->FirstThunk)[index].u1.Function;
        DWORD protection = 0;
        EXPECT_NE(VirtualProtect(slot, sizeof *slot, PAGE_READWRITE, &protection), 0);
        *slot = reinterpret_cast<ULONGLONG>(replacement);
        EXPECT_NE(VirtualProtect(slot, sizeof *slot, protection, &protection), 0);
        return;
    }
    ADD_FAILURE() << "no import of " << name << " from " << library;
}

}  // namespace velmora
