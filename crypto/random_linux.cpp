#include <sys/random.h>

#include <cerrno>
#include <stdexcept>

#include "crypto/random.h"

namespace velmora {

ByteString randomBytes(size_t count) {
    ByteString bytes(count, '\0');
    for (size_t position = 0; position < count;) {
        const ssize_t taken = getrandom(bytes.data() + position, count - position, 0);
        if (taken < 0 && errno != EINTR) throw std::runtime_error("no random bytes");
        if (taken > 0) position += static_cast<size_t>(taken);
    }
    return bytes;
}

}  // namespace velmora
