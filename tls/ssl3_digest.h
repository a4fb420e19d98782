#pragma once

#include <array>
#include <cstddef>
#include <initializer_list>
#include <string_view>

#include "config/byte_string.h"
#include "crypto/md5.h"
#include "crypto/sha1.h"

namespace velmora {

// Digests under a secret as SSL 3.0 takes them (RFC 6101, 5.2.3.1), where TLS has HMAC: the secret is digested together
// with a pad, as many bytes as nearly fill a block behind it, first around the data and then around the result.

inline constexpr size_t kLongestPadBytes = 48;

constexpr std::array<char, kLongestPadBytes> FilledPad(char byte) {
    std::array<char, kLongestPadBytes> pad{};
    for (char& padByte : pad) padByte = byte;
    return pad;
}

inline constexpr auto kPad1 = FilledPad('\x36');
inline constexpr auto kPad2 = FilledPad('\x5C');

// The pad's bytes for Hash, which is Md5State or Sha1State.
template <typename Hash>
constexpr std::string_view PadFor(const std::array<char, kLongestPadBytes>& pad) {
    constexpr size_t padBytes = Hash::kDigestBytes == kMd5Bytes ? 48 : 40;
    return {pad.data(), padBytes};
}

// The digest of what state has taken so far and of all pieces behind it.
template <typename Hash>
ByteString DigestBehind(Hash state, std::initializer_list<std::string_view> pieces) {
    for (const std::string_view piece : pieces) state.update(piece);
    return state.digest();
}

// The outer digest around an inner one.
template <typename Hash>
ByteString Ssl3Digest(std::string_view secret, std::string_view inner) {
    return DigestBehind(Hash(), {secret, PadFor<Hash>(kPad2), inner});
}

}  // namespace velmora
