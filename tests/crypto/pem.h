#pragma once

#include <string_view>

#include "config/byte_string.h"

namespace velmora {

// The DER of the one certificate in a PEM text (RFC 7468), decoded from its base 64.
ByteString certificateOfPem(std::string_view pem);

}  // namespace velmora
