#pragma once

#include "config/byte_string.h"

namespace velmora {

// The bytes of NAME.der in tests/crypto/certificates, which OpenSSL has made. A missing file ends the program.
ByteString certificateFile(const ByteString& name);

}  // namespace velmora
