#pragma once

#include <cstdint>

#include "config/byte_string.h"

namespace velmora {

// What the PBX of the benchmark says, a frame each; no two kinds have the same length.

ByteString SessionAcceptedFrame();  // the provider answers it with a MonitorStart
ByteString CallMadeFrame(uint32_t invokeId);
ByteString EventFrame();  // of some 900 bytes, as PBXs send them for each step of a call

}  // namespace velmora
