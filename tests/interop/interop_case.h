#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "config/byte_string.h"
#include "tests/interop/tls_peer.h"

namespace velmora::interop {

// A library and a suite of it. Each test of the same name runs over all of them.
struct InteropCase {
    TlsLibrary implementation;
    const char* suite;
    uint16_t suiteNumber;  // RFC 2246, A.5, and RFC 3268
};

inline constexpr InteropCase kInteropCases[] = {
    {TlsLibrary::kOpenSsl, "AES128-SHA", 0x002F}, {TlsLibrary::kOpenSsl, "AES256-SHA", 0x0035},
    {TlsLibrary::kGnuTls, "AES128-SHA", 0x002F},  {TlsLibrary::kGnuTls, "AES256-SHA", 0x0035},
    {TlsLibrary::kGnuTls, "RC4-SHA", 0x0005},     {TlsLibrary::kGnuTls, "RC4-MD5", 0x0004},
};

// A suite's name as GoogleTest allows it: "AES128_SHA".
inline ByteString SuiteName(ByteString suite) {
    std::ranges::replace(suite, '-', '_');
    return suite;
}

// "OpenSsl_AES128_SHA"
inline ByteString CaseName(const testing::TestParamInfo<InteropCase>& info) {
    return (info.param.implementation == TlsLibrary::kOpenSsl ? "OpenSsl_" : "GnuTls_") + SuiteName(info.param.suite);
}

// Around and beyond what fits into one record.
inline constexpr size_t kDataLengths[] = {0, 1, 16384, 16385, 1000000};

// Data of a length that shows any byte that is lost, doubled or out of place.
inline ByteString SampleData(size_t length) {
    ByteString data(length, '\0');
    for (size_t index = 0; index < length; ++index) data[index] = static_cast<char>(index * 31 + index / 251);
    return data;
}

}  // namespace velmora::interop
