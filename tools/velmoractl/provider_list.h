#pragma once

#include <cstdint>
#include <map>
#include <string_view>
#include <vector>

#include "config/byte_string.h"

namespace velmora::ctl {

// The telephony service's list of its providers, as the values of one registry key: NumProviders, and for each
// provider, counted from 0, ProviderFilename0 and ProviderID0.

// The values of that key by their names in lower case (the registry's names have no case): those of the type REG_DWORD
// and those of the type REG_SZ.
struct ProviderKey {
    std::map<ByteString, uint32_t> numbers;
    std::map<ByteString, ByteString> texts;
};

// The permanent IDs under which the list holds a file, whatever the case of its name and with or without a folder, in
// the list's order; one file can be in it several times. An entry without an ID, and one at or above NumProviders, does
// not count.
std::vector<uint32_t> ProviderIds(const ProviderKey& key, std::string_view fileName);

}  // namespace velmora::ctl
