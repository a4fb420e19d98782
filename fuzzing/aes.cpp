// AES streams in any pieces of whole blocks, both ways, beside libcrypto's.
#include "crypto/aes.h"

#include <algorithm>

#include "fuzzing/support/expect.h"
#include "fuzzing/support/fuzz_input.h"
#include "fuzzing/support/fuzz_target.h"
#include "fuzzing/support/libcrypto_judge.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
    using namespace velmora;
    FuzzInput input(data, bytes);
    const unsigned kind = input.U8();
    const size_t keyBytes = 16 + 8 * (kind % 3U);
    const bool cfb = kind >= 128;
    ByteString key = input.Bytes(keyBytes);
    ByteString iv = input.Bytes(16);
    const size_t pieceBytes = 16 * (1U + input.U8());
    ByteString text = input.Rest();

    AesCipher encryptor;
    encryptor.setKeySize(static_cast<int>(8 * keyBytes), cfb ? kAesCfb : kAesCbc);
    AesCipher decryptor = encryptor;
    encryptor.initEncrypt(key, iv);
    decryptor.initDecrypt(key, iv);
    ByteString encrypted;
    ByteString decrypted;
    for (size_t position = 0; position < text.size(); position += pieceBytes) {
        encrypted += encryptor.encrypt(text.substr(position, pieceBytes));
        decrypted += decryptor.decrypt(text.substr(position, pieceBytes));
    }

    // Missing bytes of key and IV count as zero; CBC drops what is no whole block.
    key.resize(keyBytes, '\0');
    iv.resize(16, '\0');
    if (!cfb) text.resize(text.size() / 16 * 16);
    Expect(encrypted == JudgesAes(true, cfb, key, iv, text), "AES encrypts as libcrypto does");
    Expect(decrypted == JudgesAes(false, cfb, key, iv, text), "AES decrypts as libcrypto does");
    return 0;
}
