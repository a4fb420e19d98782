#pragma once

#include <string>

namespace velmora {

// Where every thread of this process but the calling one stands, for a test that hangs: a line a thread, with the
// addresses of its innermost calls as offsets in their modules ("velmora.tsp+0x1a2b"), the innermost first.
std::string ThreadStacks();

}  // namespace velmora
