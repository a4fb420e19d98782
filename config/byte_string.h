#pragma once

#include <cstddef>
#include <string>

namespace velmora {

// The one buffer type of the system: owned, growable, with its length in bytes. It holds texts and binary values
// alike (frames, keys, digests), so any byte may be zero, and a text's encoding is whatever its source used.
using ByteString = std::string;

// The bytes of text from position on, at most count of them. A position at the very end gives an empty string; one
// beyond it throws std::out_of_range("invalid string position").
ByteString Substring(const ByteString& text, size_t position, size_t count);

}  // namespace velmora
