#pragma once

#include "tests/provider/provider_test.h"
// and what builds on it
#include "tests/support/tls_pbx.h"
#include "tests/support/traced_records.h"

#include <string>

namespace velmora {

// The provider with encryption on, before a PBX that speaks TLS and shows a certificate with a key of 2048 bits. The
// log is at level 9.
class EncryptedTest : public ProviderTest {
protected:
    EncryptedTest();

    // No end of the PBX's has met anything but proper TLS, unless the test says so.
    ~EncryptedTest() override;

    TlsPbx tls;
    bool mayFail = false;

    // A call is placed, its answer is taken in, and it is closed under the ID that the answer gave it.
    void ExpectWorkingSession();

    // What the provider has logged last behind its prefix and this name, in parentheses, as bytes; empty when there
    // is no such record. A name is that of a handshake message or of a secret.
    std::string LoggedValue(const std::string& name);

    // All that the provider has sent on its only connection, decrypted.
    std::vector<WireRecord> ReceivedRecords();

    // Sends a record of any type, encrypted like the PBX's own. The only connection; the PBX's own end cannot send
    // any more afterwards.
    void SendProtected(const WireRecord& record);

private:
    std::string sentBehindTls;
};

// Whether a text of this start has been recorded.
bool AnyStartsWith(const LogTexts& texts, const std::string& start);

}  // namespace velmora
