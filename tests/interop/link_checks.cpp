#include "tests/interop/link_checks.h"

#include <gtest/gtest.h>

#include "tests/interop/interop_case.h"
#include "tests/interop/record_editing.h"

namespace velmora::interop {
namespace {

constexpr int kBadRecordMac = 20;  // RFC 2246, 7.2

ByteString Tampered(const ByteString& bytes) {
    return WithLastByteChanged(bytes, RecordType::kApplicationData);
}

}  // namespace

void ExpectDataOfEveryLengthCarried(TlsDialogue& dialogue) {
    for (const size_t length : kDataLengths) EXPECT_TRUE(dialogue.Carries(SampleData(length))) << length;
    EXPECT_TRUE(dialogue.IsUp());
}

void ExpectCloseNotifyAnswered(TlsDialogue& dialogue) {
    dialogue.peer->Write("last words");
    dialogue.peer->Close();
    dialogue.Exchange();
    EXPECT_EQ(dialogue.received, "last words");
    EXPECT_TRUE(dialogue.peer->State().closeReceived);
    EXPECT_TRUE(dialogue.IsUp());
}

void ExpectTamperedRecordRefused(TlsDialogue& dialogue) {
    dialogue.onWayToUs = Tampered;
    dialogue.peer->Write("tampered with");
    dialogue.Exchange();
    EXPECT_EQ(dialogue.received, "");
    EXPECT_TRUE(dialogue.ours.Failed());
    EXPECT_EQ(dialogue.peer->State().alertReceived, kBadRecordMac);
}

void ExpectAlertForTamperedRecordNoticed(TlsDialogue& dialogue) {
    dialogue.onWayToPeer = Tampered;
    dialogue.Send("tampered with");
    EXPECT_TRUE(dialogue.peer->State().failed);
    EXPECT_EQ(dialogue.peer->Read(), "");
    EXPECT_TRUE(dialogue.ours.PeerAlertReceived());
    EXPECT_FALSE(dialogue.ours.Failed());
}

}  // namespace velmora::interop
