#include "tests/support/resource_file.h"

#include <gtest/gtest.h>

#include <bit>

namespace velmora {
namespace {

BOOL CALLBACK CollectName(HMODULE /*module*/, LPCSTR /*type*/, LPSTR name, LONG_PTR names) {
    const WORD number = IS_INTRESOURCE(name) ? LOWORD(reinterpret_cast<ULONG_PTR>(name)) : WORD{0};
    std::bit_cast<std::vector<WORD>*>(names)->push_back(number);
    return TRUE;
}

}  // namespace

ResourceFile::ResourceFile(const std::string& path)
    : module(LoadLibraryExA(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE)) {
    EXPECT_NE(module, nullptr) << path << ": error " << GetLastError();
}

ResourceFile::~ResourceFile() {
    FreeLibrary(module);
}

std::string ResourceFile::Bytes(WORD type, WORD name) const {
    const HRSRC resource = FindResourceA(module, MAKEINTRESOURCEA(name), MAKEINTRESOURCEA(type));
    EXPECT_NE(resource, nullptr) << "no resource " << name << " of type " << type;
    if (resource == nullptr) return {};
    const auto* bytes = static_cast<const char*>(LockResource(LoadResource(module, resource)));
    return {bytes, SizeofResource(module, resource)};
}

std::vector<WORD> ResourceFile::Names(WORD type) const {
    std::vector<WORD> names;
    EnumResourceNamesA(module, MAKEINTRESOURCEA(type), CollectName, reinterpret_cast<LONG_PTR>(&names));
    return names;
}

}  // namespace velmora
