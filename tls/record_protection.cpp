#include "tls/record_protection.h"

#include "tls/constant_time.h"

namespace velmora {
namespace {

// Block ciphers get n bytes of value n and one more: as few as fill the last block.
void AppendPadding(ByteString& plaintext, size_t blockBytes) {
    const size_t over = (plaintext.size() + 1) % blockBytes;
    const size_t padding = over == 0 ? 0 : blockBytes - over;
    plaintext.append(padding + 1, static_cast<char>(padding));
}

// The last byte tells how many stand before it; what they hold is not looked at. A count of more than there is leaves
// everything as it is. Keep both: the MAC behind the content settles what it was.
void RemovePadding(ByteString& plaintext) {
    if (plaintext.empty()) return;
    const size_t padding = static_cast<unsigned char>(plaintext.back());
    if (padding < plaintext.size()) plaintext.resize(plaintext.size() - padding - 1);
}

}  // namespace

RecordProtection::RecordProtection(const CipherSuite& cipherSuite, const DirectionKeys& keys)
    : suite(cipherSuite), mac(cipherSuite.macKind, keys.macSecret) {
    if (suite.cipherKind == CipherKind::kRc4) rc4SetKey(rc4, keys.key);
    if (suite.BlockMode()) aes.setKeySize(static_cast<int>(suite.keyBytes) * 8, kAesCbc);
}

RecordProtection RecordProtection::ForSending(const CipherSuite& suite, const DirectionKeys& keys) {
    RecordProtection protection(suite, keys);
    if (suite.BlockMode()) protection.aes.initEncrypt(keys.key, keys.iv);
    return protection;
}

RecordProtection RecordProtection::ForReceiving(const CipherSuite& suite, const DirectionKeys& keys) {
    RecordProtection protection(suite, keys);
    if (suite.BlockMode()) protection.aes.initDecrypt(keys.key, keys.iv);
    return protection;
}

ByteString RecordProtection::Protect(RecordType type, uint16_t version, std::string_view content) {
    ByteString plaintext;
    plaintext.reserve(content.size() + suite.macBytes + suite.blockBytes);
    plaintext += content;
    plaintext.resize(content.size() + suite.macBytes);
    mac.Write({sequence++, type, version, content}, plaintext.data() + content.size());
    if (suite.BlockMode()) AppendPadding(plaintext, suite.blockBytes);
    return Encrypt(plaintext);
}

std::optional<ByteString> RecordProtection::Unprotect(RecordType type, uint16_t version, const ByteString& fragment) {
    ByteString plaintext = Decrypt(fragment);
    if (suite.BlockMode()) RemovePadding(plaintext);
    if (plaintext.size() < suite.macBytes) return {};
    const size_t contentBytes = plaintext.size() - suite.macBytes;
    ByteString expected(suite.macBytes, '\0');
    mac.Write({sequence++, type, version, std::string_view(plaintext).substr(0, contentBytes)}, expected.data());
    if (!EqualInConstantTime(expected, std::string_view(plaintext).substr(contentBytes))) return {};
    plaintext.resize(contentBytes);
    return plaintext;
}

ByteString RecordProtection::Encrypt(const ByteString& plaintext) {
    if (suite.cipherKind == CipherKind::kRc4) return rc4Process(rc4, plaintext);
    return suite.BlockMode() ? aes.encrypt(plaintext) : plaintext;
}

ByteString RecordProtection::Decrypt(const ByteString& ciphertext) {
    if (suite.cipherKind == CipherKind::kRc4) return rc4Process(rc4, ciphertext);
    return suite.BlockMode() ? aes.decrypt(ciphertext) : ciphertext;
}

}  // namespace velmora
