#pragma once

#include <gmp.h>

#include "config/byte_string.h"

namespace velmora {

// A number of GMP's that frees itself.
struct GmpNumber {
    GmpNumber() { mpz_init(value); }
    explicit GmpNumber(const ByteString& bytes) : GmpNumber() { Set(bytes); }
    GmpNumber(const GmpNumber& other) { mpz_init_set(value, other.value); }
    GmpNumber& operator=(const GmpNumber&) = delete;
    ~GmpNumber() { mpz_clear(value); }

    void Set(const ByteString& bytes) { mpz_import(value, bytes.size(), 1, 1, 1, 0, bytes.data()); }

    // The number's bytes at the start of target, big-endian; how many there are is returned.
    size_t Write(ByteString& target) const {
        size_t count = 0;
        mpz_export(target.data(), &count, 1, 1, 1, 0, value);
        return count;
    }

    mpz_t value;
};

}  // namespace velmora
