#pragma once

#include <cstdint>

#include "config/byte_string.h"
#include "tools/velmoractl/trace_log_reader.h"

namespace velmora::ctl {

// What a record of the trace log that holds no CSTA message means to somebody who watches a call: a sentence when
// something is amiss or worth knowing, empty for the mere trace of the entry points. What TLS says is put into words.
ByteString NoteText(const LogRecord& record);

// Whether the record says that the link to the PBX could not be set up.
bool IsConnectionFailure(const LogRecord& record);

// Why the encryption of the link has failed, when the record says so; empty when it does not.
struct TlsFailure {
    ByteString reason;  // half a sentence: "the PBX refused ..."
    ByteString advice;  // a sentence or two
};
TlsFailure TlsFailureIn(const LogRecord& record);

// The failure that a fatal alert from the PBX means.
TlsFailure FailureByAlert(uint32_t description);

}  // namespace velmora::ctl
