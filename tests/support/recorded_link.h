#pragma once

#include <cstdint>
#include <vector>

#include "config/byte_string.h"

namespace velmora {

// The link to the PBX of a test: it records what it is asked.
struct RecordedLink {
    struct Armed {
        ByteString sessionId;
        int32_t durationSeconds;
        bool operator==(const Armed&) const = default;
    };

    uint32_t nextInvokeId = 1;
    std::vector<ByteString> sent;  // the XML of every request
    std::vector<Armed> armed;      // every call of ArmKeepalive
};
extern RecordedLink recordedLink;

}  // namespace velmora
