#include "tests/support/registry_scope.h"

#include <gtest/gtest.h>
#include <windows.h>

namespace velmora {
namespace {

constexpr char kParentPath[] = R"(SOFTWARE\velmora)";
constexpr char kKeyPath[] = R"(SOFTWARE\velmora\tapi)";

bool IsDone(LSTATUS status) {
    return status == ERROR_SUCCESS;
}

// The key, open for writing for the length of one operation.
class OpenKey {
public:
    OpenKey() {
        const bool done = IsDone(RegCreateKeyExA(HKEY_LOCAL_MACHINE, kKeyPath, 0, nullptr, REG_OPTION_NON_VOLATILE,
                                                 KEY_ALL_ACCESS, nullptr, &key, nullptr));
        EXPECT_TRUE(done);
    }
    ~OpenKey() { RegCloseKey(key); }
    OpenKey(const OpenKey&) = delete;
    OpenKey& operator=(const OpenKey&) = delete;

    HKEY key = nullptr;
};

}  // namespace

// NOLINTBEGIN(readability-convert-member-functions-to-static): what they change lasts as long as their object.
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
    EXPECT_FALSE(IsDone(RegOpenKeyExA(HKEY_LOCAL_MACHINE, kKeyPath, 0, KEY_QUERY_VALUE, &key)));
}

void RegistryScope::Set(const std::string& name, const std::string& text) {
    SetRaw(name, REG_SZ, text + '\0');
}

void RegistryScope::SetRaw(const std::string& name, uint32_t type, const std::string& bytes) {
    const OpenKey open;
    EXPECT_TRUE(IsDone(RegSetValueExA(open.key, name.c_str(), 0, type, reinterpret_cast<const BYTE*>(bytes.data()),
                                      static_cast<DWORD>(bytes.size()))));
}

void RegistryScope::SetUnterminated(const std::string& name, const std::string& text) {
    // A unit that is not zero behind the last one: otherwise the system counts it in as the forgotten terminator.
    const std::wstring units = std::wstring(text.begin(), text.end()) + L'?';
    const std::wstring wideName(name.begin(), name.end());
    const OpenKey open;
    EXPECT_TRUE(
        IsDone(RegSetValueExW(open.key, wideName.c_str(), 0, REG_SZ, reinterpret_cast<const BYTE*>(units.data()),
                              static_cast<DWORD>(text.size() * sizeof(wchar_t)))));
}

void RegistryScope::RemoveValue(const std::string& name) {
    const OpenKey open;
    EXPECT_TRUE(IsDone(RegDeleteValueA(open.key, name.c_str())));
}

bool RegistryScope::HasValue(const std::string& name) const {
    return IsDone(RegGetValueA(HKEY_LOCAL_MACHINE, kKeyPath, name.c_str(), RRF_RT_ANY, nullptr, nullptr, nullptr));
}
// NOLINTEND(readability-convert-member-functions-to-static)

}  // namespace velmora
