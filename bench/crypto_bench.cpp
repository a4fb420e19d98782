// The old low-level calls, which MD5 and RC4 are reached by with the least detour.
#define OPENSSL_SUPPRESS_DEPRECATED
#include <openssl/md5.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "bench/ratio_table.h"
#include "crypto/md5.h"

namespace velmora {
namespace {

const std::string kLibcrypto = "libcrypto";

// Bytes without a pattern that anything could profit from.
ByteString someBytes(size_t count) {
    ByteString bytes;
    uint32_t state = 1;
    while (bytes.size() < count) bytes += static_cast<char>((state = state * 1664525 + 1013904223) >> 24);
    return bytes;
}

const unsigned char* unsignedBytes(const ByteString& bytes) {
    return reinterpret_cast<const unsigned char*>(bytes.data());
}

void addMd5(size_t byteCount) {
    const ByteString data = someBytes(byteCount);
    const std::string caseName = std::to_string(byteCount);
    AddContender("md5", caseName, kOurs, [data] { benchmark::DoNotOptimize(md5Digest(data)); });
    AddContender("md5", caseName, kLibcrypto, [data] {
        unsigned char digest[MD5_DIGEST_LENGTH];
        benchmark::DoNotOptimize(MD5(unsignedBytes(data), data.size(), digest));
    });
}

}  // namespace
}  // namespace velmora

int main(int argc, char** argv) {
    for (const size_t byteCount : {64U, 1024U, 16384U, 1048576U}) velmora::addMd5(byteCount);
    return velmora::RunRatioTable(argc, argv);
}
