#pragma once

#include "benchmarks/job/floor_script.h"

namespace velmora {

// The floor's trace log: each record is one write of bytes that are ready.

// The file is opened with the first record, as the provider's is.
void SetLog(const char* path, bool isWritten);

// Writes a piece of the script; nothing when the piece has no bytes or the log is not written.
void WriteRecord(const char* script, const FloorPiece& record);

}  // namespace velmora
