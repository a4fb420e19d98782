#pragma once

#include <map>
#include <utility>
#include <vector>

#include "config/registry.h"

namespace velmora {

// A registry in memory. The test fills it and reads back what was written.
struct MemoryRegistry {
    bool keyReadable = true;                                 // false: the key cannot be opened
    bool keyWritable = true;                                 // false: the key cannot be created
    std::map<ByteString, RegistryValue> values;              // what a read finds
    std::vector<std::pair<ByteString, ByteString>> written;  // every write that went through, in order
    std::vector<ByteString> unwritable;                      // values that cannot be written
    std::vector<ByteString> read;                            // every name asked for, in order
};
extern MemoryRegistry memoryRegistry;

// A stored REG_SZ value, with its terminating NUL.
RegistryValue StoredText(const ByteString& text);

}  // namespace velmora
