#include "tests/endurance/run_length.h"

#include <cstdlib>

namespace velmora {

size_t RunLength(const char* variable, size_t usual) {
    const char* number = std::getenv(variable);
    return number == nullptr ? usual : std::strtoul(number, nullptr, 10);
}

}  // namespace velmora
