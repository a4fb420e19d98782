#include "tools/pbxsim/tls_link.h"

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <utility>

#include "tests/support/hand_clock.h"
#include "tests/support/tls_identity.h"
#include "tls/session_cache.h"

namespace velmora::pbxsim {
namespace {

using Lines = std::vector<ByteString>;

const ByteString kCloseNotify("\x15\3\1\0\2\1\0", 7);

// What a session waits until it can be resumed, when it is the only one.
constexpr uint64_t kSessionMs = 1095 * 1000;

ByteString FatalAlert(char description) {
    return {'\x15', 3, 1, 0, 2, 2, description};
}

ByteString Replaced(ByteString text, const ByteString& part, const ByteString& by) {
    const size_t position = text.find(part);
    EXPECT_NE(position, ByteString::npos);
    if (position != ByteString::npos) text.replace(position, part.size(), by);
    return text;
}

// The product's client on one end, the PBX's link on the other.
class TlsLinkTest : public testing::Test {
protected:
    TlsLinkTest() {
        UseTlsIdentity("rsa1024");
        sessionCache.Clear();
        client.verifyCertificates = false;
    }

    // Gives bytes to the link; what it sends goes to the client, and what is plain is kept.
    void ToLink(const ByteString& bytes) {
        plaintext += link.Receive(bytes);
        answered += link.Send({});
        for (const ByteString& line : link.TakeLines()) lines.push_back(line);
    }

    // Carries bytes to and fro until both ends rest.
    void Exchange() {
        for (ByteString bytes = client.Send({}); !bytes.empty(); bytes = client.Send({})) {
            ToLink(bytes);
            client.Feed(std::exchange(answered, {}));
        }
    }

    void Handshake() {
        client.StartClientHandshake();
        Exchange();
    }

    // A second connection of the same client.
    void StartAgain() {
        client.Reset();
        client.verifyCertificates = false;
        link = TlsLink(TlsLink::Answer::kHandshake);
        lines.clear();
    }

    // Takes the handshake up to the client's last flight: key exchange, change of cipher, Finished. Its hello goes
    // through change first.
    ByteString LastFlight(const std::function<ByteString(const ByteString&)>& change = {}) {
        client.StartClientHandshake();
        const ByteString hello = client.Send({});
        ToLink(change ? change(hello) : hello);
        client.Feed(std::exchange(answered, {}));
        return client.Send({});
    }

    TlsConnection client;
    TlsLink link{TlsLink::Answer::kHandshake};
    ByteString plaintext;  // that the link has given
    ByteString answered;   // by the link, and not yet given to the client
    Lines lines;
};

TEST_F(TlsLinkTest, CarriesPlaintextBothWays) {
    Handshake();
    ASSERT_TRUE(client.HandshakeComplete());
    ToLink(client.Send("to the PBX"));
    EXPECT_EQ(plaintext, "to the PBX");
    const ByteString bytes = link.Send("to the client");
    EXPECT_EQ(bytes.find("client"), ByteString::npos);
    EXPECT_EQ(client.Feed(bytes), "to the client");
    EXPECT_EQ(link.EndReason(), "");
}

TEST_F(TlsLinkTest, ShowsTheCertificateOfTheProcess) {
    Handshake();
    EXPECT_EQ(client.KeyExchangeCertificate().certificates,
              (std::vector<ByteString>{LoadTlsIdentity("rsa1024").certificate}));
}

TEST_F(TlsLinkTest, SaysOnceThatTheLinkIsEncryptedAndWithWhat) {
    Handshake();
    EXPECT_EQ(lines, (Lines{"-- encrypted: TLS 1.0, AES128-SHA, new session"}));
    ToLink(client.Send("more"));
    EXPECT_EQ(lines.size(), 1U);
}

// A server decides the cipher of a session that it resumes, so the cache can bring about each.
TEST_F(TlsLinkTest, NamesEachCipher) {
    constexpr size_t kIdPlace = 44;  // of the session ID in a ClientHello with its headers
    const struct {
        CipherSuite suite;
        const char* name;
    } kSuites[] = {{kRsaWithAes128Sha, "AES128-SHA"},
                   {kRsaWithAes256Sha, "AES256-SHA"},
                   {kRsaWithRc4Md5, "RC4-MD5"},
                   {kRsaWithRc4Sha, "RC4-SHA"}};
    Handshake();
    for (const auto& [suite, name] : kSuites) {
        StartAgain();
        handClockMs += kSessionMs;
        client.StartClientHandshake();
        const ByteString hello = client.Send({});
        const ByteString id = hello.substr(kIdPlace, kSessionIdBytes);
        const std::optional<CachedSession> session = sessionCache.Resume(id);
        ASSERT_TRUE(session);
        sessionCache.Store(id, suite.number, session->masterSecret);
        handClockMs += kSessionMs;
        ToLink(hello);
        client.Feed(std::exchange(answered, {}));
        Exchange();
        EXPECT_EQ(lines, (Lines{ByteString("-- encrypted: TLS 1.0, ") + name + ", resumed session"}));
    }
}

TEST_F(TlsLinkTest, ResumesASessionOnceItsTimeHasCome) {
    Handshake();
    handClockMs += kSessionMs;
    StartAgain();
    Handshake();
    EXPECT_EQ(lines, (Lines{"-- encrypted: TLS 1.0, AES128-SHA, resumed session"}));
    EXPECT_TRUE(client.HandshakeComplete());
}

TEST_F(TlsLinkTest, MakesANewSessionWhenTheOldOneIsAskedForTooEarly) {
    Handshake();
    StartAgain();
    Handshake();
    EXPECT_EQ(lines, (Lines{"-- encrypted: TLS 1.0, AES128-SHA, new session"}));
}

TEST_F(TlsLinkTest, TakesAHandshakeByteByByte) {
    client.StartClientHandshake();
    for (ByteString bytes = client.Send({}); !bytes.empty(); bytes = client.Send({})) {
        for (const char byte : bytes) ToLink(ByteString(1, byte));
        client.Feed(std::exchange(answered, {}));
    }
    EXPECT_EQ(lines, (Lines{"-- encrypted: TLS 1.0, AES128-SHA, new session"}));
    for (const char byte : client.Send("slow")) ToLink(ByteString(1, byte));
    EXPECT_EQ(plaintext, "slow");
}

TEST_F(TlsLinkTest, EndsAClientThatSpeaksPlainCsta) {
    ToLink(ByteString("\0", 1));
    EXPECT_EQ(link.EndReason(),
              "it speaks plain CSTA, but this PBX speaks TLS: set the provider's encrypt to 1, or start this PBX "
              "without --tls");
    EXPECT_EQ(answered, "");
}

TEST_F(TlsLinkTest, EndsAClientThatSpeaksSomethingElse) {
    ToLink("GET / HTTP/1.0\r\n\r\n");
    EXPECT_EQ(link.EndReason(), "it does not speak TLS: its first byte is 71, but that of a handshake is 22");
}

TEST_F(TlsLinkTest, EndsAHandshakeWithoutACommonCipher) {
    LastFlight([](const ByteString& hello) {
        return Replaced(hello, ByteString("\0\x2F\0\x35\0\4\0\5", 8), ByteString("\0\1\0\2\0\x3C\0\x9C", 8));
    });
    EXPECT_EQ(link.EndReason(),
              "the TLS handshake failed: it offers none of the ciphers AES128-SHA, AES256-SHA, RC4-MD5 and RC4-SHA; "
              "sent the alert handshake_failure (40)");
    EXPECT_TRUE(client.PeerAlertReceived());
    EXPECT_TRUE(lines.empty());
}

TEST_F(TlsLinkTest, EndsAHandshakeOfAVersionBelowSsl3) {
    LastFlight([](ByteString hello) {
        hello[9] = 2;  // the major version in the ClientHello, behind the headers of record and message
        return hello;
    });
    EXPECT_EQ(link.EndReason(),
              "the TLS handshake failed: its version is neither SSL 3.0 nor one of TLS; sent the alert "
              "protocol_version (70)");
}

TEST_F(TlsLinkTest, EndsAHandshakeWhoseKeysDiffer) {
    ByteString flight = LastFlight();
    flight.back() = static_cast<char>(flight.back() ^ 1);
    ToLink(flight);
    EXPECT_EQ(link.EndReason(),
              "the TLS handshake failed: its first encrypted record fails the check of its MAC; sent an alert");
    EXPECT_TRUE(lines.empty());
}

TEST_F(TlsLinkTest, EndsAHandshakeThatSomebodyHasChanged) {
    const ByteString flight = LastFlight([](ByteString hello) {
        hello.back() = 1;  // the compression method, which decides nothing
        return hello;
    });
    ToLink(flight);
    EXPECT_EQ(link.EndReason(), "the TLS handshake failed: its Finished message is wrong; sent an alert");
    EXPECT_TRUE(lines.empty());
}

TEST_F(TlsLinkTest, EndsWhenARecordIsChangedOnItsWay) {
    Handshake();
    ByteString bytes = client.Send("call");
    bytes.back() = static_cast<char>(bytes.back() ^ 1);
    ToLink(bytes);
    EXPECT_EQ(plaintext, "");
    EXPECT_EQ(link.EndReason(), "what it sent last fails the check of its MAC; sent an alert");
    client.Feed(answered);
    EXPECT_TRUE(client.PeerAlertReceived());
}

TEST_F(TlsLinkTest, EndsOnAnAlertThatRefusesTheCertificate) {
    LastFlight();
    ToLink(FatalAlert(48));
    EXPECT_EQ(link.EndReason(), "it sent the alert unknown_ca (48) during the TLS handshake");
}

TEST_F(TlsLinkTest, EndsOnAnEncryptedAlert) {
    Handshake();
    client.Feed(ByteString("\x17\3\1\0\x20", 5) + ByteString(32, 'x'));
    ToLink(client.Send({}));
    EXPECT_EQ(link.EndReason(), "it sent an alert, which is encrypted itself");
}

TEST_F(TlsLinkTest, PrintsAWarningAndGoesOn) {
    const ByteString flight = LastFlight();
    ToLink(ByteString("\x15\3\1\0\2\1\x29", 7));
    EXPECT_EQ(link.EndReason(), "");
    ToLink(flight);
    EXPECT_EQ(lines, (Lines{"-- TLS warning: it sent the alert no_certificate (41)",
                            "-- encrypted: TLS 1.0, AES128-SHA, new session"}));
}

TEST_F(TlsLinkTest, AnswersTheClosingOfTlsAndEnds) {
    client.StartClientHandshake();
    ToLink(client.Send({}));
    answered.clear();
    ToLink(kCloseNotify);
    EXPECT_EQ(answered, kCloseNotify);
    EXPECT_EQ(link.EndReason(), "it closed TLS during the TLS handshake (close_notify)");
}

TEST_F(TlsLinkTest, AnswersTheEncryptedClosingOfTlsAndEnds) {
    // A client that has changed its cipher, but the PBX not yet, answers a closing in clear with an encrypted one.
    ByteString flight = LastFlight();
    client.Feed(kCloseNotify);
    flight += client.Send({});
    ToLink(flight);
    EXPECT_EQ(link.EndReason(), "it closed TLS (close_notify)");
    EXPECT_EQ(lines, (Lines{"-- encrypted: TLS 1.0, AES128-SHA, new session"}));
}

TEST_F(TlsLinkTest, DropsWhatComesBehindTheEnd) {
    ByteString flight = LastFlight();
    client.Feed(kCloseNotify);
    flight += client.Send({});
    ToLink(flight);
    client.Feed(answered);
    ASSERT_TRUE(client.HandshakeComplete());
    ToLink(client.Send("too late"));
    EXPECT_EQ(plaintext, "");
    EXPECT_EQ(link.EndReason(), "it closed TLS (close_notify)");
}

TEST_F(TlsLinkTest, KeepsTheFirstReason) {
    Handshake();
    client.Feed(ByteString("\x17\3\1\0\x20", 5) + ByteString(32, 'x'));
    ByteString alert = client.Send({});
    alert.back() = static_cast<char>(alert.back() ^ 1);
    ToLink(alert);
    EXPECT_EQ(link.EndReason(), "what it sent last fails the check of its MAC; sent an alert");
}

TEST(RefusingTlsLink, AnswersTheWholeClientHelloWithAnAlert) {
    TlsConnection client;
    client.StartClientHandshake();
    const ByteString hello = client.Send({});
    for (size_t split = 0; split < hello.size(); ++split) {
        SCOPED_TRACE(split);
        TlsLink link(TlsLink::Answer::kRefusal);
        EXPECT_EQ(link.Receive(hello.substr(0, split)), "");
        EXPECT_EQ(link.Send({}), "");
        EXPECT_EQ(link.EndReason(), "");
        EXPECT_EQ(link.Receive(hello.substr(split)), "");
        EXPECT_EQ(link.Send("never sent"), FatalAlert(40));
        EXPECT_EQ(link.EndReason(), "every TLS handshake is refused; sent the alert handshake_failure (40)");
    }
}

}  // namespace
}  // namespace velmora::pbxsim
