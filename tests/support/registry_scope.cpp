#include "tests/support/registry_scope.h"

#include <gtest/gtest.h>
#include <windows.h>

namespace velmora {
namespace {

constexpr char kParentPath[] = R"(SOFTWARE\velmora)";
constexpr char kKeyPath[] = R"(SOFTWARE\velmora\tapi)";

// The key, open for writing for the length of one operation.
class OpenKey {
public:
    OpenKey() {
        EXPECT_EQ(RegCreateKeyExA(HKEY_LOCAL_MACHINE, kKeyPath, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS,
                                  nullptr, &key, nullptr),
                  ERROR_SUCCESS);
    }
    ~OpenKey() { RegCloseKey(key); }
    OpenKey(const OpenKey&) = delete;
    OpenKey& operator=(const OpenKey&) = delete;

    HKEY key = nullptr;
};

}  // namespace

RegistryScope::RegistryScope() {
    RemoveKey();
}

RegistryScope::~RegistryScope() {
    RemoveKey();
}

void RegistryScope::CreateKey() {
    const OpenKey open;
}

void RegistryScope::RemoveKey() {
    RegDeleteKeyA(HKEY_LOCAL_MACHINE, kKeyPath);
    RegDeleteKeyA(HKEY_LOCAL_MACHINE, kParentPath);
    HKEY key = nullptr;
    EXPECT_NE(RegOpenKeyExA(HKEY_LOCAL_MACHINE, kKeyPath, 0, KEY_QUERY_VALUE, &key), ERROR_SUCCESS);
}

void RegistryScope::Set(const std::string& name, const std::string& text) {
    SetRaw(name, REG_SZ, text + '\0');
}

void RegistryScope::SetRaw(const std::string& name, uint32_t type, const std::string& bytes) {
    const OpenKey open;
    EXPECT_EQ(RegSetValueExA(open.key, name.c_str(), 0, type, reinterpret_cast<const BYTE*>(bytes.data()),
                             static_cast<DWORD>(bytes.size())),
              ERROR_SUCCESS);
}

void RegistryScope::SetUnterminated(const std::string& name, const std::string& text) {
    // A unit that is not zero behind the last one: otherwise the system counts it in as the forgotten terminator.
    const std::wstring units = std::wstring(text.begin(), text.end()) + L'?';
    const std::wstring wideName(name.begin(), name.end());
    const OpenKey open;
    EXPECT_EQ(RegSetValueExW(open.key, wideName.c_str(), 0, REG_SZ, reinterpret_cast<const BYTE*>(units.data()),
                             static_cast<DWORD>(text.size() * sizeof(wchar_t))),
              ERROR_SUCCESS);
}

void RegistryScope::RemoveValue(const std::string& name) {
    const OpenKey open;
    EXPECT_EQ(RegDeleteValueA(open.key, name.c_str()), ERROR_SUCCESS);
}

}  // namespace velmora
