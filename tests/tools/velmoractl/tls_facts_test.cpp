#include "tools/velmoractl/tls_facts.h"

#include <gtest/gtest.h>

#include "tests/support/tls_identity.h"
#include "tests/support/tls_pair.h"

namespace velmora::ctl {
namespace {

TEST(DescribeTls, TellsWhatTheHandshakeHasAgreedOn) {
    const struct {
        const char* identity;
        uint32_t bits;
    } kIdentities[] = {{"rsa1024", 1024}, {"rsa2048", 2048}, {"rsa4096", 4096}};
    for (const auto& [identity, bits] : kIdentities) {
        UseTlsIdentity(identity);
        TlsPair pair;
        pair.Handshake();
        ASSERT_TRUE(IsEncrypted(pair.client));
        const TlsFacts facts = DescribeTls(pair.client);
        EXPECT_EQ(facts.version, "TLS 1.0");
        EXPECT_EQ(facts.suite, "TLS_RSA_WITH_AES_128_CBC_SHA");
        EXPECT_EQ(facts.keyBits, bits);
        EXPECT_EQ(facts.certificateName, "pbx.velmora.example");
        EXPECT_EQ(HandshakeFault(pair.client), "");
    }
}

TEST(IsEncrypted, IsFalseBeforeTheHandshakeIsComplete) {
    TlsPair pair;
    EXPECT_FALSE(IsEncrypted(pair.client));
    pair.client.StartClientHandshake();
    EXPECT_FALSE(IsEncrypted(pair.client));
    EXPECT_EQ(HandshakeFault(pair.client), "");
}

// A handshake record with a ServerHello (RFC 2246, 7.4.1.3).
ByteString ServerHello(char minorVersion, char suite) {
    const ByteString body = ByteString{3, minorVersion} + ByteString(32, 'r') + ByteString{0, 0, suite, 0};
    const ByteString message = ByteString{2, 0, 0, static_cast<char>(body.size())} + body;
    return ByteString{22, 3, 1, 0, static_cast<char>(message.size())} + message;
}

TEST(HandshakeFault, NamesAVersionThatIsTooOld) {
    TlsConnection client;
    client.StartClientHandshake();
    client.Feed(ServerHello(0, 0x2F));
    EXPECT_EQ(HandshakeFault(client), "named a version before TLS 1.0");
}

TEST(HandshakeFault, NamesACertificateThatCannotBeUsed) {
    TlsConnection client;
    client.verifyCertificates = false;
    client.StartClientHandshake();
    client.Feed(ServerHello(1, 0x2F) + ByteString("\x16\x03\x01\0\x0B\x0B\0\0\x07\0\0\x04\0\0\x01\x30", 16));
    EXPECT_EQ(HandshakeFault(client), "showed no certificate with an RSA key fit for use");
}

// A client that has everything but the server's last two records, with those.
ByteString LastFlight(TlsPair& pair) {
    UseTlsIdentity("rsa1024");
    pair.client.StartClientHandshake();
    pair.server.Feed(pair.client.Send({}));
    pair.client.Feed(pair.server.Send({}));
    pair.server.Feed(pair.client.Send({}));
    return pair.server.Send({});
}

TEST(HandshakeFault, NamesARecordThatWasChanged) {
    TlsPair pair;
    ByteString flight = LastFlight(pair);
    flight.back() = static_cast<char>(flight.back() ^ 1);
    pair.client.Feed(flight);
    EXPECT_FALSE(IsEncrypted(pair.client));
    EXPECT_EQ(HandshakeFault(pair.client), "sent a message that was changed on its way");
}

TEST(HandshakeFault, NamesAFinishedMessageThatIsWrong) {
    TlsPair pair;
    LastFlight(pair);
    pair.client.Feed(ByteString("\x16\x03\x01\0\x10\x14\0\0\x0C", 9) + ByteString(12, 'x'));
    EXPECT_FALSE(IsEncrypted(pair.client));
    EXPECT_EQ(HandshakeFault(pair.client), "proved to have seen another handshake than the provider");
}

TEST(HandshakeFault, NamesACipherThatTheProviderDoesNotHave) {
    TlsConnection client;
    client.StartClientHandshake();
    client.Feed(ServerHello(1, 0x0A) + ByteString("\x16\x03\x01\0\x10\x14\0\0\x0C", 9) + ByteString(12, 'x'));
    EXPECT_FALSE(IsEncrypted(client));
    EXPECT_EQ(HandshakeFault(client), "chose a cipher that the provider does not have, suite number 10");
}

TEST(LooksLikeTls, KnowsTheHeadOfARecord) {
    EXPECT_TRUE(LooksLikeTls(ByteString("\x15\x03\x01\0\x02", 5)));
    EXPECT_TRUE(LooksLikeTls("\x16\x03"));
    EXPECT_FALSE(LooksLikeTls("\x16"));
    EXPECT_FALSE(LooksLikeTls(""));
    EXPECT_FALSE(LooksLikeTls("HTTP/1.1"));
    EXPECT_FALSE(LooksLikeTls(ByteString("\0\0\0\x20", 4)));
    EXPECT_FALSE(LooksLikeTls("\x16\x02"));
}

}  // namespace
}  // namespace velmora::ctl
