#pragma once

#include "config/byte_string.h"
#include "tools/velmoractl/trace_log_reader.h"

namespace velmora::ctl {

// What a record of the trace log that holds no CSTA message means to somebody who watches a call: a sentence when
// something is amiss or worth knowing, empty for the mere trace of the entry points. A TLS alert is put into words.
ByteString NoteText(const LogRecord& record);

// Whether the record says that the link to the PBX could not be set up.
bool IsConnectionFailure(const LogRecord& record);

}  // namespace velmora::ctl
