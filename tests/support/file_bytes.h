#pragma once

#include "config/byte_string.h"

namespace velmora {

// The bytes of a file that the tests bring with them. A missing file ends the program.
ByteString FileBytes(const ByteString& path);

}  // namespace velmora
