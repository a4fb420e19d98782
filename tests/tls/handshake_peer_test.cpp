// What a handshake puts on the wire, judged by OpenSSL: RSA, PRF, digests and the proofs of both ends.

#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <openssl/kdf.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

#include <memory>
#include <utility>
#include <vector>

#include "crypto/trust_store.h"
#include "tests/crypto/hand_made_certificate.h"
#include "tests/support/handshake_messages.h"
#include "tests/support/hex.h"
#include "tests/support/logged.h"
#include "tests/support/tls_identity.h"
#include "tests/support/tls_pair.h"

namespace velmora {
namespace {

using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
using KeyContext = std::unique_ptr<EVP_PKEY_CTX, decltype(&EVP_PKEY_CTX_free)>;

const unsigned char* Unsigned(const ByteString& bytes) {
    return reinterpret_cast<const unsigned char*>(bytes.data());
}
unsigned char* Unsigned(ByteString& bytes) {
    return reinterpret_cast<unsigned char*>(bytes.data());
}

Key PrivateKey(const TlsIdentity& identity) {
    const unsigned char* der = Unsigned(identity.privateKey);
    return {d2i_PrivateKey(EVP_PKEY_RSA, nullptr, &der, static_cast<long>(identity.privateKey.size())), EVP_PKEY_free};
}

Key PublicKey(const TlsIdentity& identity) {
    const unsigned char* der = Unsigned(identity.certificate);
    X509* certificate = d2i_X509(nullptr, &der, static_cast<long>(identity.certificate.size()));
    Key key(X509_get_pubkey(certificate), EVP_PKEY_free);
    X509_free(certificate);
    return key;
}

// The secret in a block of type 2; empty when the padding is wrong.
ByteString Decrypted(const TlsIdentity& identity, const ByteString& encrypted) {
    const Key key = PrivateKey(identity);
    const KeyContext context(EVP_PKEY_CTX_new(key.get(), nullptr), EVP_PKEY_CTX_free);
    ByteString secret(encrypted.size(), '\0');
    size_t bytes = secret.size();
    EXPECT_EQ(EVP_PKEY_decrypt_init(context.get()), 1);
    EXPECT_EQ(EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_PADDING), 1);
    if (EVP_PKEY_decrypt(context.get(), Unsigned(secret), &bytes, Unsigned(encrypted), encrypted.size()) != 1)
        return {};
    return secret.substr(0, bytes);
}

ByteString Digest(const EVP_MD* kind, const ByteString& data) {
    ByteString digest(static_cast<size_t>(EVP_MD_get_size(kind)), '\0');
    EXPECT_EQ(EVP_Digest(data.data(), data.size(), Unsigned(digest), nullptr, kind, nullptr), 1);
    return digest;
}

ByteString BothDigests(const ByteString& data) {
    return Digest(EVP_md5(), data) + Digest(EVP_sha1(), data);
}

ByteString Prf(const ByteString& secret, const ByteString& label, const ByteString& seed, size_t length) {
    const KeyContext context(EVP_PKEY_CTX_new_id(EVP_PKEY_TLS1_PRF, nullptr), EVP_PKEY_CTX_free);
    ByteString bytes(length, '\0');
    EXPECT_EQ(EVP_PKEY_derive_init(context.get()), 1);
    EXPECT_EQ(EVP_PKEY_CTX_set_tls1_prf_md(context.get(), EVP_md5_sha1()), 1);
    EXPECT_EQ(EVP_PKEY_CTX_set1_tls1_prf_secret(context.get(), Unsigned(secret), static_cast<int>(secret.size())), 1);
    EXPECT_EQ(EVP_PKEY_CTX_add1_tls1_prf_seed(context.get(), Unsigned(label), static_cast<int>(label.size())), 1);
    EXPECT_EQ(EVP_PKEY_CTX_add1_tls1_prf_seed(context.get(), Unsigned(seed), static_cast<int>(seed.size())), 1);
    EXPECT_EQ(EVP_PKEY_derive(context.get(), Unsigned(bytes), &length), 1);
    return bytes;
}

// The value that a step has in a log.
ByteString LoggedValue(const std::vector<ByteString>& log, const ByteString& step) {
    for (const ByteString& record : log) {
        const size_t start = record.find("CSTA: " + step + "(");
        if (start == ByteString::npos) continue;
        const size_t value = record.find('(') + 1;
        return fromHex(record.substr(value, record.size() - 1 - value));
    }
    return "no " + step;
}

class HandshakePeerTest : public testing::TestWithParam<const char*> {
protected:
    ~HandshakePeerTest() override { setOwnCertificate({}, {}); }
};

// Both ends are ours; OpenSSL recomputes everything from the private key and the bytes that passed.
TEST_P(HandshakePeerTest, HasTheSecretsAndProofsThatOpenSslComputes) {
    const TlsIdentity pbx = LoadTlsIdentity(GetParam());
    UseTlsIdentity(GetParam());
    TlsPair pair;
    pair.client.SetLogPrefix("CSTA: ");
    ByteString hello;
    ByteString serverFlight;
    ByteString clientFlight;
    const std::vector<ByteString> log = Logged(9, [&] {
        pair.client.StartClientHandshake();
        hello = pair.client.Send({});
        pair.server.Feed(hello);
        serverFlight = pair.server.Send({});
        pair.client.Feed(serverFlight);
        clientFlight = pair.client.Send({});
        pair.server.Feed(clientFlight);
        pair.client.Feed(pair.server.Send({}));
    });
    ASSERT_TRUE(pair.client.HandshakeComplete() && !pair.client.Failed());

    ByteString transcript;
    for (const SeenRecord& record : RecordsIn(hello + serverFlight)) transcript += record.fragment;
    const SeenRecord exchange = RecordsIn(clientFlight)[0];
    transcript += exchange.fragment;
    const ByteString clientRandom = RecordsIn(hello)[0].fragment.substr(6, 32);
    const ByteString serverRandom = RecordsIn(serverFlight)[0].fragment.substr(6, 32);

    const ByteString preMaster = Decrypted(pbx, MessagesIn(exchange.fragment)[0].body.substr(2));
    ASSERT_EQ(preMaster.size(), 48U);
    EXPECT_EQ(preMaster.substr(0, 2), Octets({3, 1}));
    const ByteString master = Prf(preMaster, "master secret", clientRandom + serverRandom, 48);
    EXPECT_EQ(toHex(LoggedValue(log, "Master Secret")), toHex(master));
    // Suite 0x002F: two MAC secrets of 20 bytes, two keys and two IVs of 16.
    EXPECT_EQ(toHex(LoggedValue(log, "Key Block")),
              toHex(Prf(master, "key expansion", serverRandom + clientRandom, 104)));
    const ByteString clientProof = Prf(master, "client finished", BothDigests(transcript), 12);
    EXPECT_EQ(toHex(LoggedValue(log, "SendFinished")), toHex(clientProof));
    transcript += MessageOf(20, clientProof);
    EXPECT_EQ(toHex(LoggedValue(log, "ProcessFinished")),
              toHex(Prf(master, "server finished", BothDigests(transcript), 12)));
}

INSTANTIATE_TEST_SUITE_P(Keys, HandshakePeerTest, testing::Values("rsa1024", "rsa2048", "rsa4096"));

TEST_F(HandshakePeerTest, SignsWhatOpenSslVerifies) {
    UseTlsIdentity("client");
    const TlsIdentity pbx = LoadTlsIdentity("rsa1024");
    TlsConnection client;
    client.verifyCertificates = false;
    client.StartClientHandshake();
    const ByteString hello = client.Send({});
    const ByteString authority = derElement(0x30, nameContent("Velmora Client Authority"));
    const ByteString flight = MessageOf(2, ServerHelloFields().Body()) +
                              MessageOf(11, CertificateBody({pbx.certificate})) +
                              MessageOf(13, CertificateRequestBody(Octets({1}), {authority})) + MessageOf(14, "");
    client.Feed(HandshakeRecord(flight));
    const std::vector<SeenRecord> records = RecordsIn(client.Send({}));
    ASSERT_EQ(records.size(), 5U);
    const ByteString digests =
        BothDigests(RecordsIn(hello)[0].fragment + flight + records[0].fragment + records[1].fragment);
    const ByteString signature = MessagesIn(records[2].fragment)[0].body.substr(2);

    const Key key = PublicKey(LoadTlsIdentity("client"));
    const KeyContext context(EVP_PKEY_CTX_new(key.get(), nullptr), EVP_PKEY_CTX_free);
    ASSERT_EQ(EVP_PKEY_verify_init(context.get()), 1);
    ASSERT_EQ(EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_PADDING), 1);
    ASSERT_EQ(EVP_PKEY_CTX_set_signature_md(context.get(), EVP_md5_sha1()), 1);
    EXPECT_EQ(EVP_PKEY_verify(context.get(), Unsigned(signature), signature.size(), Unsigned(digests), digests.size()),
              1);
}

// Moduli of every length modulo the bytes of a limb.
TEST_F(HandshakePeerTest, EncryptsForKeysOfOddLengths) {
    for (const unsigned bits : {512U, 520U, 528U, 536U, 1000U, 1027U, 1048U, 2056U}) {
        SCOPED_TRACE(bits);
        const Key key(EVP_RSA_gen(bits), EVP_PKEY_free);
        unsigned char* encoded = nullptr;
        const int encodedBytes = i2d_PrivateKey(key.get(), &encoded);
        TlsIdentity identity;
        identity.privateKey.assign(reinterpret_cast<char*>(encoded), static_cast<size_t>(encodedBytes));
        OPENSSL_free(encoded);
        BIGNUM* modulus = nullptr;
        ASSERT_EQ(EVP_PKEY_get_bn_param(key.get(), "n", &modulus), 1);
        HandMadeCertificate certificate;
        certificate.modulus.assign(static_cast<size_t>(BN_num_bytes(modulus)), '\0');
        BN_bn2bin(modulus, Unsigned(certificate.modulus));
        BN_free(modulus);
        certificate.exponent = Octets({1, 0, 1});

        for (int round = 0; round < 300; ++round) {
            TlsConnection client;
            client.verifyCertificates = false;
            client.StartClientHandshake();
            client.Send({});
            client.Feed(HandshakeRecord(MessageOf(2, ServerHelloFields().Body()) +
                                        MessageOf(11, CertificateBody({certificate.der()})) + MessageOf(14, "")));
            const ByteString body = MessagesIn(RecordsIn(client.Send({}))[0].fragment)[0].body;
            ASSERT_EQ(body.size(), 2 + certificate.modulus.size());
            ASSERT_EQ(Decrypted(identity, body.substr(2)).size(), 48U);
        }
    }
}

}  // namespace
}  // namespace velmora
