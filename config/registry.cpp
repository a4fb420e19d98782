#include "config/registry.h"

#include <windows.h>

namespace velmora {
namespace {

constexpr DWORD kValueBytes = 16384;

// An open registry key, closed at the end of its scope.
class Key {
public:
    Key() = default;
    ~Key() {
        if (key != nullptr) RegCloseKey(key);
    }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;

    HKEY key = nullptr;
};

}  // namespace

RegistryValue ReadRegistryValue(const ByteString& name) {
    Key tapi;
    if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, kRegistryPath, 0, KEY_QUERY_VALUE, &tapi.key) != ERROR_SUCCESS) {
        return {RegistryStatus::kNoKey, false, {}};
    }
    BYTE bytes[kValueBytes];
    DWORD length = kValueBytes;
    DWORD type = REG_NONE;
    if (RegQueryValueExA(tapi.key, name.c_str(), nullptr, &type, bytes, &length) != ERROR_SUCCESS) {
        return {RegistryStatus::kNoValue, false, {}};
    }
    return {RegistryStatus::kDone, type == REG_MULTI_SZ, ByteString(bytes, bytes + length)};
}

RegistryStatus WriteRegistryValue(const ByteString& name, const ByteString& value) {
    Key tapi;
    char keyClass[] = "velmora";
    if (RegCreateKeyExA(HKEY_LOCAL_MACHINE, kRegistryPath, 0, keyClass, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS,
                        nullptr, &tapi.key, nullptr) != ERROR_SUCCESS) {
        return RegistryStatus::kNoKey;
    }
    const BYTE* text = reinterpret_cast<const BYTE*>(value.c_str());
    const DWORD length = static_cast<DWORD>(value.size() + 1);
    const LSTATUS result = RegSetValueExA(tapi.key, name.c_str(), 0, REG_SZ, text, length);
    return result == ERROR_SUCCESS ? RegistryStatus::kDone : RegistryStatus::kNoValue;
}

}  // namespace velmora
