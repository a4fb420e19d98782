// OpenSSL as the judge of what is in a certificate and of who has signed it.

#include <gtest/gtest.h>
#include <openssl/bn.h>
#include <openssl/evp.h>
#include <openssl/objects.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <random>
#include <string_view>
#include <vector>

#include "crypto/built_in_certificates.h"
#include "crypto/certificate.h"
#include "crypto/certificate_chain.h"
#include "crypto/trust_store.h"
#include "tests/crypto/certificate_files.h"
#include "tests/crypto/hand_made_certificate.h"
#include "tests/crypto/pem.h"

namespace velmora {
namespace {

using X509Pointer = std::unique_ptr<X509, decltype(&X509_free)>;
using KeyPointer = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;

const unsigned char* unsignedBytes(const ByteString& bytes) {
    return reinterpret_cast<const unsigned char*>(bytes.data());
}

// What one of OpenSSL's i2d functions writes.
template <typename Encode, typename Object>
ByteString encoded(Encode encode, Object* object) {
    unsigned char* start = nullptr;
    const int length = encode(object, &start);
    ByteString bytes(reinterpret_cast<char*>(start), static_cast<size_t>(length));
    OPENSSL_free(start);
    return bytes;
}

ByteString numberBytes(const BIGNUM* number) {
    ByteString bytes(static_cast<size_t>(BN_num_bytes(number)), '\0');
    BN_bn2bin(number, reinterpret_cast<unsigned char*>(bytes.data()));
    return bytes;
}

// A number of an RSA key, OSSL_PKEY_PARAM_RSA_...; empty for a key of another kind.
ByteString keyNumber(const X509& certificate, const char* parameter) {
    BIGNUM* number = nullptr;
    if (EVP_PKEY_get_bn_param(X509_get0_pubkey(&certificate), parameter, &number) != 1) return {};
    ByteString bytes = numberBytes(number);
    BN_free(number);
    return bytes;
}

// The last common name of a type that counts, if it is the first attribute of its set.
ByteString commonNameByOpenSsl(const X509_NAME* name) {
    ByteString text;
    int set = -1;
    for (int index = 0; index < X509_NAME_entry_count(name); ++index) {
        const X509_NAME_ENTRY* entry = X509_NAME_get_entry(name, index);
        const bool first = X509_NAME_ENTRY_set(entry) != set;
        set = X509_NAME_ENTRY_set(entry);
        if (!first || OBJ_obj2nid(X509_NAME_ENTRY_get_object(entry)) != NID_commonName) continue;
        const ASN1_STRING* value = X509_NAME_ENTRY_get_data(entry);
        const int type = ASN1_STRING_type(value);
        if (type != V_ASN1_UTF8STRING && type != V_ASN1_PRINTABLESTRING && type != V_ASN1_T61STRING) continue;
        text.assign(reinterpret_cast<const char*>(ASN1_STRING_get0_data(value)),
                    static_cast<size_t>(ASN1_STRING_length(value)));
    }
    return text;
}

ByteString signatureByOpenSsl(const X509& certificate) {
    const ASN1_BIT_STRING* signature = nullptr;
    const X509_ALGOR* algorithm = nullptr;
    X509_get0_signature(&signature, &algorithm, &certificate);
    ByteString bytes(reinterpret_cast<const char*>(ASN1_STRING_get0_data(signature)),
                     static_cast<size_t>(ASN1_STRING_length(signature)));
    return bytes.erase(0, std::min(bytes.find_first_not_of('\0'), bytes.size()));
}

X509Pointer read(const ByteString& der) {
    const unsigned char* start = unsignedBytes(der);
    return {d2i_X509(nullptr, &start, static_cast<long>(der.size())), X509_free};
}

void ExpectReadAsByOpenSsl(const ByteString& der) {
    const Certificate ours = parseCertificate(der);
    const X509Pointer theirs = read(der);
    ASSERT_NE(theirs, nullptr);
    EXPECT_EQ(ours.signedBytes, encoded(i2d_re_X509_tbs, theirs.get()));
    EXPECT_EQ(derElement(0x30, ours.issuer), encoded(i2d_X509_NAME, X509_get_issuer_name(theirs.get())));
    EXPECT_EQ(derElement(0x30, ours.subject), encoded(i2d_X509_NAME, X509_get_subject_name(theirs.get())));
    EXPECT_EQ(ours.commonName, commonNameByOpenSsl(X509_get_subject_name(theirs.get())));
    EXPECT_EQ(commonName(ours.issuer), commonNameByOpenSsl(X509_get_issuer_name(theirs.get())));
    EXPECT_EQ(ours.modulus, keyNumber(*theirs, "n"));
    EXPECT_EQ(ours.exponent, keyNumber(*theirs, "e"));
    EXPECT_EQ(derElement(0x06, ours.signatureAlgorithm),
              encoded(i2d_ASN1_OBJECT, OBJ_nid2obj(X509_get_signature_nid(theirs.get()))));
    EXPECT_EQ(ours.signature, signatureByOpenSsl(*theirs));
}

const char* const kFiles[] = {"root",          "upper",      "lower",         "leaf",    "other_root", "loud_root",
                              "large_root",    "large_leaf", "md5",           "sha256",  "utf8_name",  "printable_name",
                              "t61_name",      "bmp_name",   "two_names",     "no_name", "version1",   "first_in_set",
                              "second_in_set", "exponent3",  "long_exponent", "elliptic"};

TEST(CertificateByOpenSsl, IsReadAlike) {
    for (const char* file : kFiles) {
        SCOPED_TRACE(file);
        ExpectReadAsByOpenSsl(certificateFile(file));
    }
}

// With the authority's key alone, as OpenSSL is asked: it is trusted under the issuer's name, whatever its own is.
bool isVerifiedByUs(const ByteString& der, const ByteString& authority) {
    trustStore.assign(1, CertificateChain({authority}, kSkipVerification));
    trustStore[0].subjectName = parseCertificate(der).issuer;
    const CertificateChain chain({der}, "");
    trustStore.clear();
    return !chain.modulus.empty();
}

bool isVerifiedByOpenSsl(const ByteString& der, const ByteString& authority) {
    return X509_verify(read(der).get(), X509_get0_pubkey(read(authority).get())) == 1;
}

TEST(CertificateByOpenSsl, IsVerifiedAlikeWithEveryKey) {
    int verified = 0;
    for (const ByteString file : kFiles) {
        // We do not know SHA-256, and have no other key than RSA's.
        if (file == "sha256" || file == "elliptic") continue;
        for (const ByteString authorityFile : kFiles) {
            SCOPED_TRACE(file);
            SCOPED_TRACE(authorityFile);
            const ByteString der = certificateFile(file);
            const ByteString authority = certificateFile(authorityFile);
            EXPECT_EQ(isVerifiedByUs(der, authority), isVerifiedByOpenSsl(der, authority));
            if (isVerifiedByOpenSsl(der, authority)) ++verified;
        }
    }
    EXPECT_GT(verified, 20);
}

KeyPointer deviceKey() {
    const ByteString der = certificateFile("device_key");
    const unsigned char* start = unsignedBytes(der);
    return {d2i_AutoPrivateKey(nullptr, &start, static_cast<long>(der.size())), EVP_PKEY_free};
}

void AddRandomName(X509_NAME* name, std::mt19937& random) {
    constexpr int kAttributes[] = {NID_commonName, NID_commonName, NID_organizationName, NID_countryName, NID_title};
    constexpr int kTypes[] = {V_ASN1_UTF8STRING, V_ASN1_PRINTABLESTRING, V_ASN1_T61STRING, V_ASN1_IA5STRING,
                              V_ASN1_BMPSTRING};
    for (size_t count = random() % 6; count > 0; --count) {
        ByteString text(random() % 3 == 0 ? random() % 300 : random() % 20, '\0');
        for (char& character : text) character = static_cast<char>('0' + random() % 64);
        ASN1_STRING* value = ASN1_STRING_type_new(kTypes[random() % std::size(kTypes)]);
        ASN1_STRING_set(value, text.data(), static_cast<int>(text.size()));
        X509_NAME_ENTRY* entry =
            X509_NAME_ENTRY_create_by_NID(nullptr, kAttributes[random() % std::size(kAttributes)],
                                          ASN1_STRING_type(value), unsignedBytes(text), static_cast<int>(text.size()));
        // 0 opens a set of its own, -1 joins the one before.
        X509_NAME_add_entry(name, entry, -1, random() % 4 == 0 && X509_NAME_entry_count(name) > 0 ? -1 : 0);
        X509_NAME_ENTRY_free(entry);
        ASN1_STRING_free(value);
    }
}

// A certificate with random names, version, serial number and length, for the device's key, signed with it.
ByteString randomCertificate(std::mt19937& random, EVP_PKEY& key, const EVP_MD* digest) {
    const X509Pointer certificate(X509_new(), X509_free);
    const bool version3 = random() % 3 != 0;
    X509_set_version(certificate.get(), version3 ? X509_VERSION_3 : X509_VERSION_1);
    BIGNUM* serial = BN_new();
    BN_set_word(serial, random());
    BN_lshift(serial, serial, static_cast<int>(random() % 120));
    BN_to_ASN1_INTEGER(serial, X509_get_serialNumber(certificate.get()));
    BN_free(serial);
    AddRandomName(X509_get_subject_name(certificate.get()), random);
    AddRandomName(X509_get_issuer_name(certificate.get()), random);
    ASN1_TIME_set_string(X509_getm_notBefore(certificate.get()), "20200101000000Z");
    ASN1_TIME_set_string(X509_getm_notAfter(certificate.get()), "20991231235959Z");
    X509_set_pubkey(certificate.get(), &key);
    if (version3) {
        X509_EXTENSION* extension = X509V3_EXT_conf_nid(nullptr, nullptr, NID_basic_constraints, "CA:TRUE");
        X509_add_ext(certificate.get(), extension, -1);
        X509_EXTENSION_free(extension);
    }
    X509_sign(certificate.get(), &key, digest);
    return encoded(i2d_X509, certificate.get());
}

TEST(CertificateByOpenSsl, IsReadAndVerifiedAlikeWhateverItsNamesAre) {
    std::mt19937 random(509);
    const KeyPointer key = deviceKey();
    ASSERT_NE(key, nullptr);
    for (int round = 0; round < 500; ++round) {
        SCOPED_TRACE(round);
        const EVP_MD* digest = round % 2 == 0 ? EVP_sha1() : EVP_md5();
        ByteString der = randomCertificate(random, *key, digest);
        ExpectReadAsByOpenSsl(der);
        ASSERT_FALSE(HasFailure());

        // Its own key has signed it.
        EXPECT_TRUE(isVerifiedByUs(der, der));
        EXPECT_TRUE(isVerifiedByOpenSsl(der, der));
        der.back() = static_cast<char>(der.back() ^ 1);
        EXPECT_FALSE(isVerifiedByUs(der, der));
        EXPECT_FALSE(isVerifiedByOpenSsl(der, der));
    }
}

TEST(BuiltInCertificatesByOpenSsl, AreAnAuthorityAndADeviceThatItSigned) {
    const auto readPem = [](std::string_view pem) {
        const std::unique_ptr<BIO, decltype(&BIO_free)> text(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())),
                                                             BIO_free);
        return X509Pointer(PEM_read_bio_X509(text.get(), nullptr, nullptr, nullptr), X509_free);
    };
    const X509Pointer authority = readPem(kBuiltInCaPem);
    const X509Pointer device = readPem(kBuiltInDevicePem);
    ASSERT_NE(authority, nullptr);
    ASSERT_NE(device, nullptr);
    for (X509* certificate : {authority.get(), device.get()}) {
        EXPECT_EQ(EVP_PKEY_get_base_id(X509_get0_pubkey(certificate)), EVP_PKEY_RSA);
        EXPECT_EQ(EVP_PKEY_get_bits(X509_get0_pubkey(certificate)), 1024);
        EXPECT_EQ(X509_get_signature_nid(certificate), NID_sha1WithRSAEncryption);
        EXPECT_EQ(X509_verify(certificate, X509_get0_pubkey(authority.get())), 1);
        EXPECT_EQ(X509_check_issued(authority.get(), certificate), X509_V_OK);
    }
    EXPECT_EQ(X509_check_ca(authority.get()), 1);  // by basicConstraints
    EXPECT_EQ(X509_check_ca(device.get()), 0);
    ExpectReadAsByOpenSsl(certificateOfPem(kBuiltInCaPem));
    ExpectReadAsByOpenSsl(certificateOfPem(kBuiltInDevicePem));
}

TEST(BuiltInCertificatesByOpenSsl, NameNobodyButThisSystem) {
    for (const std::string_view pem : {kBuiltInCaPem, kBuiltInDevicePem}) {
        const X509Pointer certificate = read(certificateOfPem(pem));
        for (const X509_NAME* name :
             {X509_get_issuer_name(certificate.get()), X509_get_subject_name(certificate.get())}) {
            ASSERT_EQ(X509_NAME_entry_count(name), 3);
            for (int index = 0; index < 3; ++index) {
                const ASN1_STRING* value = X509_NAME_ENTRY_get_data(X509_NAME_get_entry(name, index));
                const std::string_view text(reinterpret_cast<const char*>(ASN1_STRING_get0_data(value)),
                                            static_cast<size_t>(ASN1_STRING_length(value)));
                EXPECT_TRUE(text.starts_with("Velmora")) << text;
            }
        }
    }
}

}  // namespace
}  // namespace velmora
