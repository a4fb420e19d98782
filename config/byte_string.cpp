#include "config/byte_string.h"

#include <stdexcept>

namespace velmora {

ByteString Substring(const ByteString& text, size_t position, size_t count) {
    // The check of the library itself words its error differently from one compiler to the next.
    if (position > text.size()) throw std::out_of_range("invalid string position");
    return text.substr(position, count);
}

}  // namespace velmora
