#include "fuzzing/support/expect.h"

#include <cstdio>
#include <cstdlib>

namespace velmora {

void Expect(bool held, const char* rule) {
    if (held) return;
    std::fprintf(stderr, "does not hold: %s\n", rule);
    std::abort();
}

}  // namespace velmora
