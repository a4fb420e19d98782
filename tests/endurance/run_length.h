#pragma once

#include <cstddef>

namespace velmora {

// How many rounds a long run makes: the number in this environment variable, and as many as usual without one.
size_t RunLength(const char* variable, size_t usual);

}  // namespace velmora
