#pragma once

#include <optional>
#include <string_view>

#include "config/byte_string.h"

namespace velmora::ctl {

// A CSTA message as the provider's trace log holds it: "CSTA Tx: " or "CSTA Rx: " and the XML.
struct CstaRecord {
    bool sent = false;  // by the provider; else received by it
    ByteString xml;     // with its password masked: nothing that is made of it can give the password away
};

// The CSTA message in a log record's text; none in any other record.
std::optional<CstaRecord> CstaRecordIn(std::string_view recordText);

// Whether the XML's root element is closed, so that nothing more can belong to it. True also for a text without any
// element: there is nothing to wait for.
bool IsWholeMessage(std::string_view xml);

}  // namespace velmora::ctl
