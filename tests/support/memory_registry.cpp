#include "tests/support/memory_registry.h"

#include <algorithm>

namespace velmora {

MemoryRegistry memoryRegistry;

RegistryValue StoredText(const ByteString& text) {
    return {RegistryStatus::kDone, false, text + '\0'};
}

RegistryValue ReadRegistryValue(const ByteString& name) {
    memoryRegistry.read.push_back(name);
    if (!memoryRegistry.keyReadable) return {RegistryStatus::kNoKey, false, {}};
    const auto found = memoryRegistry.values.find(name);
    if (found == memoryRegistry.values.end()) return {RegistryStatus::kNoValue, false, {}};
    return found->second;
}

RegistryStatus WriteRegistryValue(const ByteString& name, const ByteString& value) {
    if (!memoryRegistry.keyWritable) return RegistryStatus::kNoKey;
    const std::vector<ByteString>& unwritable = memoryRegistry.unwritable;
    if (std::find(unwritable.begin(), unwritable.end(), name) != unwritable.end()) return RegistryStatus::kNoValue;
    memoryRegistry.written.emplace_back(name, value);
    memoryRegistry.values[name] = StoredText(value);
    return RegistryStatus::kDone;
}

}  // namespace velmora
