#pragma once

#include <map>
#include <optional>
#include <string>

namespace velmora {

using StoredTexts = std::map<std::string, std::string>;

// What the provider's registry key, HKEY_LOCAL_MACHINE\SOFTWARE\velmora\tapi, holds now, by the names of the values;
// nothing when there is no such key. A value that is not a REG_SZ with one terminating NUL fails the test.
std::optional<StoredTexts> StoredValues();

}  // namespace velmora
