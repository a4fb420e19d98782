#pragma once

#include <cstdio>

#include "config/byte_string.h"

namespace velmora {

// Opens the trace log's file for writing in text mode and empties it; null when that fails. Windows answers in
// log_file_windows.cpp.
std::FILE* OpenLogFile(const ByteString& path);

}  // namespace velmora
