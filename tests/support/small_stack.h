#pragma once

#include <functional>

namespace velmora {

// Runs work on a thread whose stack has 256 KB, and waits for its end. work makes no assertions: it leaves its results
// where the caller can check them.
void RunOnSmallStack(const std::function<void()>& work);

}  // namespace velmora
