#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "config/byte_string.h"

namespace velmora {

// The modes of AesCipher. In any other, encrypt and decrypt give an empty string.
inline constexpr uint32_t kAesCbc = 0;
inline constexpr uint32_t kAesCfb = 1;  // with a feedback of 128 bits

// AES (FIPS 197) with keys of 128, 192 and 256 bits over a stream of whole blocks of 16 bytes; nothing is padded. One
// object serves one direction: setKeySize, then initEncrypt or initDecrypt, then any number of calls, which together
// make one stream. Used by one thread at a time.
//
// Until a key is set, and under a key size that does not exist, every operation gives an empty string.
struct AesCipher {
    // Sets the mode, and the numbers for a key of 128, 192 or 256 bits. Any other size leaves them at zero, without a
    // word: the cipher then gives empty strings until a size that exists is set.
    void setKeySize(int keyBits, uint32_t newMode);

    // Start a stream under key, from iv on: of the one the first keyWords * 4 bytes count, of the other 16. Missing
    // bytes count as zero.
    void initEncrypt(const ByteString& key, const ByteString& iv);
    void initDecrypt(const ByteString& key, const ByteString& iv);

    // The next bytes of the stream.
    // CBC works off the whole blocks and drops what is behind the last of them.
    // CFB works off everything. After a piece of data that ends within a block, encrypt keeps the short block as its
    // chain, decrypt keeps the chain of before; keep. Such a piece is meant to be the stream's last.
    ByteString encrypt(const ByteString& data);
    ByteString decrypt(const ByteString& data);

    // The next count blocks of a CBC stream, encrypted where they lie. A key must be set.
    void encryptBlocks(char* blocks, size_t count);

    // One block of 16 bytes by itself, without the chain: the first 16 bytes of block, missing ones counting as zero.
    // decryptBlock wants the schedule of initDecrypt in a mode other than CFB.
    ByteString encryptBlock(const ByteString& block) const;
    ByteString decryptBlock(const ByteString& block) const;

    uint32_t mode = kAesCbc;
    int32_t blockWords = 4;                 // Nb of FIPS 197: 32-bit words a block; 0 without a key size
    int32_t keyWords = 4;                   // Nk: words a key, 4, 6 or 8
    int32_t rounds = 10;                    // Nr: 10, 12 or 14
    std::array<uint32_t, 120> roundKeys{};  // (rounds + 1) * blockWords are used; byte 0 of a column is the lowest
    ByteString chain;                       // the IV, then the feedback block; empty until a key is set
};

}  // namespace velmora
