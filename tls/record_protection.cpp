#include "tls/record_protection.h"

#include "crypto/hash_blocks.h"
#include "tls/constant_time.h"

namespace velmora {
namespace {

// Digest and cipher go on together in steps of a hash block: the first one is shorter by what stands in front of the
// content.
constexpr size_t kStepBytes = kHashBlockBytes;
constexpr size_t kFirstStepBytes = kStepBytes - kMacHeaderBytes;

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
    const MacInput input = {sequence++, type, version, content};
    ByteString fragment;
    fragment.reserve(content.size() + suite.macBytes + suite.blockBytes);
    fragment += content;
    fragment.resize(content.size() + suite.macBytes);
    if (suite.BlockMode()) {
        AppendPadding(fragment, suite.blockBytes);
        AuthenticateAndEncrypt(input, fragment);
        return fragment;
    }
    mac.Write(input, fragment.data() + content.size());
    return suite.cipherKind == CipherKind::kRc4 ? rc4Process(rc4, fragment) : fragment;
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

// Digest and cipher each wait for their own last result, but not for each other: when they go on in steps, a processor
// does both at once.
void RecordProtection::AuthenticateAndEncrypt(const MacInput& input, ByteString& fragment) {
    auto encrypt = [&, encrypted = size_t{0}](size_t end) mutable {
        const size_t blocks = (end - encrypted) / suite.blockBytes;
        aes.encryptBlocks(fragment.data() + encrypted, blocks);
        encrypted += blocks * suite.blockBytes;
    };
    RecordMac::State state = mac.Start(input);
    size_t digested = 0;
    while (digested < input.content.size()) {
        const std::string_view step = input.content.substr(digested, digested == 0 ? kFirstStepBytes : kStepBytes);
        RecordMac::Update(state, step);
        digested += step.size();
        encrypt(digested);
    }
    mac.Finish(state, input.version, fragment.data() + digested);
    encrypt(fragment.size());
}

ByteString RecordProtection::Decrypt(const ByteString& ciphertext) {
    if (suite.cipherKind == CipherKind::kRc4) return rc4Process(rc4, ciphertext);
    return suite.BlockMode() ? aes.decrypt(ciphertext) : ciphertext;
}

}  // namespace velmora
