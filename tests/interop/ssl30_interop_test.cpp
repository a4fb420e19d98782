// Our server over SSL 3.0, with NSS as the client: the last library here that speaks it.

#include <gtest/gtest.h>

#include <memory>

#include "tests/interop/interop_case.h"
#include "tests/interop/link_checks.h"
#include "tests/interop/nss_peer.h"
#include "tests/interop/tls_dialogue.h"
#include "tests/support/hand_clock.h"
#include "tls/session_cache.h"

namespace velmora::interop {
namespace {

// Longer than any session waits until it can be resumed.
constexpr uint64_t kSessionWaitMs = 1200 * 1000;

struct Ssl30Case {
    const char* suite;
    uint16_t suiteNumber;
};

class Ssl30Interop : public testing::TestWithParam<Ssl30Case> {
protected:
    Ssl30Interop() {
        UseTlsIdentity("rsa2048");
        sessionCache.Clear();
    }

    TlsDialogue WithNss(bool resumption = false) const {
        const TlsPeerOptions options = {.role = PeerRole::kClient, .suite = GetParam().suite, .resumption = resumption};
        return {std::make_unique<NssPeer>(options), PeerRole::kClient};
    }
};

constexpr Ssl30Case kCases[] = {
    {"RC4-MD5", 0x0004}, {"RC4-SHA", 0x0005}, {"AES128-SHA", 0x002F}, {"AES256-SHA", 0x0035}};

ByteString Ssl30CaseName(const testing::TestParamInfo<Ssl30Case>& info) {
    return SuiteName(info.param.suite);
}

INSTANTIATE_TEST_SUITE_P(WithNss, Ssl30Interop, testing::ValuesIn(kCases), Ssl30CaseName);

TEST_P(Ssl30Interop, CompletesTheHandshakeWithKeysOfEverySize) {
    for (const char* identity : {"rsa1024", "rsa2048", "rsa4096"}) {
        SCOPED_TRACE(identity);
        UseTlsIdentity(identity);
        TlsDialogue dialogue = WithNss();
        dialogue.Handshake();
        EXPECT_TRUE(dialogue.IsUp()) << dialogue.peer->State().failure;
        EXPECT_EQ(dialogue.ours.ProtocolVersion(), 0x0300);
        EXPECT_EQ(dialogue.ours.Suite().number, GetParam().suiteNumber);
        EXPECT_EQ(dialogue.peer->State().version, 0x0300);
        EXPECT_EQ(dialogue.peer->State().suite, GetParam().suite);
        EXPECT_EQ(dialogue.peer->State().peerCertificate, LoadTlsIdentity(identity).certificate);
        EXPECT_TRUE(dialogue.Carries("data"));
    }
}

TEST_P(Ssl30Interop, CarriesDataOfEveryLengthBothWays) {
    TlsDialogue dialogue = WithNss();
    dialogue.Handshake();
    ExpectDataOfEveryLengthCarried(dialogue);
}

TEST_P(Ssl30Interop, AnswersTheClientsCloseNotify) {
    TlsDialogue dialogue = WithNss();
    dialogue.Handshake();
    ExpectCloseNotifyAnswered(dialogue);
}

TEST_P(Ssl30Interop, EndsTheConnectionOverATamperedRecord) {
    TlsDialogue dialogue = WithNss();
    dialogue.Handshake();
    ExpectTamperedRecordRefused(dialogue);
}

TEST_P(Ssl30Interop, NoticesTheClientsAlertForATamperedRecord) {
    TlsDialogue dialogue = WithNss();
    dialogue.Handshake();
    ExpectAlertForTamperedRecordNoticed(dialogue);
}

TEST_P(Ssl30Interop, ResumesASessionOnceItsTimeHasPassed) {
    TlsDialogue dialogue = WithNss(true);
    dialogue.ours.resumeSessions = true;
    dialogue.Handshake();
    EXPECT_TRUE(dialogue.IsUp()) << dialogue.peer->State().failure;
    handClockMs += kSessionWaitMs;
    dialogue.Reconnect();
    EXPECT_TRUE(dialogue.IsUp()) << dialogue.peer->State().failure;
    EXPECT_TRUE(dialogue.peer->State().resumed);
    EXPECT_TRUE(dialogue.Carries(SampleData(20000)));
}

}  // namespace
}  // namespace velmora::interop
