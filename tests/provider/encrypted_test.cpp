#include "tests/provider/encrypted_test.h"

#include <algorithm>

#include "tests/support/csta_answers.h"
#include "tests/support/hex.h"
#include "tests/support/tls_identity.h"

namespace velmora {

EncryptedTest::EncryptedTest() : tls(pbx) {
    UseTlsIdentity("rsa2048");
    registry.Set("encrypt", "1");
    registry.Set("loglevel", "9");
}

EncryptedTest::~EncryptedTest() {
    if (running) Stop();
    EXPECT_EQ(tls.Failed(), mayFail) << "whether the provider has sent what is not TLS";
}

void EncryptedTest::ExpectWorkingSession() {
    const HDRVCALL call = MakeCall(L"4711");
    SendAndWait(WaitForMakeCall("4711"), CallMade("C-4711", "D-4711"));
    const std::string cleared = CloseCall(call);
    EXPECT_EQ(ElementText(cleared, "callID"), "C-4711");
    EXPECT_EQ(ElementText(cleared, "deviceID"), "D-4711");
}

std::string EncryptedTest::LoggedValue(const std::string& name) {
    const std::string start = "CSTA: " + name + "(";
    LogTexts texts = log.Texts();
    std::reverse(texts.begin(), texts.end());
    for (const std::string& text : texts) {
        if (text.starts_with(start)) return fromHex(text.substr(start.size(), text.size() - start.size() - 1));
    }
    return {};
}

std::vector<WireRecord> EncryptedTest::ReceivedRecords() {
    return DecryptedRecords(LoggedValue("Key Block"), Endpoint::kClient, pbx.Bytes());
}

void EncryptedTest::SendProtected(const WireRecord& record) {
    const std::string bytes =
        NextRecordBytes(LoggedValue("Key Block"), Endpoint::kServer, tls.SentBytes() + sentBehindTls, record);
    sentBehindTls += bytes;
    EXPECT_TRUE(pbx.Send(bytes));
}

bool AnyStartsWith(const LogTexts& texts, const std::string& start) {
    return std::any_of(texts.begin(), texts.end(), [&](const std::string& text) { return text.starts_with(start); });
}

}  // namespace velmora
