#include "tests/support/stored_values.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <vector>

namespace velmora {
namespace {

// The text of a value as it is stored: without its NUL.
std::string TextOf(const std::string& name, DWORD type, const std::string& bytes) {
    EXPECT_EQ(type, DWORD{REG_SZ}) << name;
    EXPECT_EQ(bytes.find('\0'), bytes.size() - 1) << name << " does not end in one NUL";
    return bytes.substr(0, bytes.find('\0'));
}

}  // namespace

std::optional<StoredTexts> StoredValues() {
    HKEY key = nullptr;
    if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, R"(SOFTWARE\velmora\tapi)", 0, KEY_QUERY_VALUE, &key) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    StoredTexts texts;
    std::vector<char> bytes(65536);
    for (DWORD index = 0;; ++index) {
        char name[256] = "";
        DWORD nameLength = sizeof(name);
        DWORD type = REG_NONE;
        DWORD length = static_cast<DWORD>(bytes.size());
        const LSTATUS status = RegEnumValueA(key, index, name, &nameLength, nullptr, &type,
                                             reinterpret_cast<BYTE*>(bytes.data()), &length);
        if (status == ERROR_NO_MORE_ITEMS) break;
        EXPECT_EQ(status, ERROR_SUCCESS);
        if (status != ERROR_SUCCESS) break;
        texts[name] = TextOf(name, type, std::string(bytes.data(), length));
    }
    RegCloseKey(key);
    return texts;
}

}  // namespace velmora
