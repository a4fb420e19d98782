#pragma once

#include "config/byte_string.h"

namespace velmora {

// The system's one registry key, HKEY_LOCAL_MACHINE\SOFTWARE\velmora\tapi, and its values. Windows answers in
// registry.cpp.

inline constexpr char kRegistryPath[] = R"(SOFTWARE\velmora\tapi)";

enum class RegistryStatus {
    kDone,
    kNoKey,    // the key could not be opened (to read) or created (to write)
    kNoValue,  // the value could not be read or written
};

struct RegistryValue {
    RegistryStatus status = RegistryStatus::kNoKey;
    bool multiString = false;  // its type is REG_MULTI_SZ
    ByteString bytes;          // all that is stored, terminating NULs included; empty unless status is kDone
};

// Reads one value of at most 16,384 bytes, of any type.
RegistryValue ReadRegistryValue(const ByteString& name);

// Writes one value as REG_SZ, with its terminating NUL; creates the key when it is missing.
RegistryStatus WriteRegistryValue(const ByteString& name, const ByteString& value);

}  // namespace velmora
