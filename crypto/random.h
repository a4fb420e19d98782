#pragma once

#include <cstddef>

#include "config/byte_string.h"

namespace velmora {

// Bytes that nobody can foretell, from the operating system: the randoms, secrets, padding and session identifiers of
// TLS. Windows answers in random_windows.cpp, Linux in random_linux.cpp. May be called from any thread.
//
// A system that has none to give throws std::runtime_error: a secret made of anything else would be none.
ByteString randomBytes(size_t count);

}  // namespace velmora
