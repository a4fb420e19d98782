#pragma once

#include "config/byte_string.h"

namespace velmora {

// The trace log's file, kept in a temporary file without a name. How often it was opened, under which path, and what
// has been flushed to it since; a path of "unwritable" cannot be opened.
extern int logFileOpenings;
extern ByteString logFilePath;
ByteString WrittenLog();

}  // namespace velmora
