#pragma once

#include <cstdint>
#include <string>

namespace velmora {

// The provider's registry key, HKEY_LOCAL_MACHINE\SOFTWARE\velmora\tapi, for the time of one test: gone at the start,
// whatever an earlier test left, and gone again at the end.
class RegistryScope {
public:
    RegistryScope();
    ~RegistryScope();

    RegistryScope(const RegistryScope&) = delete;
    RegistryScope& operator=(const RegistryScope&) = delete;

    // The key without values.
    void CreateKey();
    void RemoveKey();

    // Stores a text as REG_SZ with its terminating NUL.
    void Set(const std::string& name, const std::string& text);

    // Stores bytes as they are under a type of winnt.h. For the text types they are characters of the ANSI code page,
    // which the registry keeps in UTF-16.
    void SetRaw(const std::string& name, uint32_t type, const std::string& bytes);

    // Stores a text as REG_SZ without a terminating NUL, as some programs do.
    void SetUnterminated(const std::string& name, const std::string& text);

    void RemoveValue(const std::string& name);
    bool HasValue(const std::string& name) const;
};

}  // namespace velmora
