#include "tests/support/fixed_random.h"

#include "crypto/random.h"

namespace velmora {

ByteString fixedRandomSequence(1, '\x5A');
size_t fixedRandomTaken = 0;

ByteString randomBytes(size_t count) {
    ByteString bytes;
    for (; count > 0; --count) bytes += fixedRandomSequence[fixedRandomTaken++ % fixedRandomSequence.size()];
    return bytes;
}

}  // namespace velmora
