#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "config/byte_string.h"

namespace velmora {

// An alert of TLS on its way (RFC 2246, section 7.2).
struct SeenAlert {
    bool readable = false;  // false: it was encrypted, and its two values are not known
    uint8_t level = 0;
    uint8_t description = 0;

    bool operator==(const SeenAlert&) const = default;
};

// Follows the records that one end of a TLS connection sends, to be able to say which alerts are among them:
// TlsConnection tells that there was one, but not which.
class AlertWatch {
public:
    // Takes the next bytes, however they were cut. Gives the alerts that they complete.
    std::vector<SeenAlert> Follow(const ByteString& bytes);

private:
    ByteString header;           // of the present record
    size_t fragmentBytes = 0;    // of it that are still to come
    ByteString alert;            // what has come of the fragment, when it is an alert
    bool cipherChanged = false;  // what this end sends is encrypted from here on
};

}  // namespace velmora
