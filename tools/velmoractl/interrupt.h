#pragma once

namespace velmora::ctl {

// Ctrl+C and its like. The first Ctrl+C only asks: whoever waits looks at Interrupted and comes to an orderly end, so
// that a call is closed and the registry restored. A second one, and the closing of the window, end the process at
// once; the registry is restored even then.
void CatchInterrupts();

bool Interrupted();

}  // namespace velmora::ctl
