#pragma once

#include "config/settings.h"

namespace velmora {

// Has every text for the trace log rendered, and none of it written.
inline void RenderLogRecords() {
    settings.loglevel = 9;
    settings.loglength = 0;
}

}  // namespace velmora
