#define _CRT_RAND_S  // NOLINT(clang-diagnostic-reserved-macro-identifier): rand_s is declared only for who asks
#include <cstdlib>

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "crypto/random.h"

namespace velmora {

ByteString randomBytes(size_t count) {
    ByteString bytes(count, '\0');
    for (size_t position = 0; position < count; position += sizeof(unsigned int)) {
        unsigned int word = 0;
        if (rand_s(&word) != 0) throw std::runtime_error("no random bytes");
        std::memcpy(bytes.data() + position, &word, std::min(sizeof word, count - position));
    }
    return bytes;
}

}  // namespace velmora
