#pragma once

#include <cstddef>
#include <random>

#include "config/byte_string.h"

namespace velmora {

// Bytes and numbers without a pattern, the same in every run.
class SeededBytes {
public:
    explicit SeededBytes(unsigned seed) : engine(seed) {}

    // A number from 0 to greatest.
    size_t upTo(size_t greatest) { return engine() % (greatest + 1); }

    ByteString take(size_t count) {
        ByteString bytes;
        while (bytes.size() < count) bytes += static_cast<char>(engine() & 0xFF);
        return bytes;
    }

private:
    std::mt19937 engine;
};

}  // namespace velmora
