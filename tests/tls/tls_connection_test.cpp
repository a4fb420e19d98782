#include "tls/tls_connection.h"

#include <gtest/gtest.h>

#include "tests/support/tls_identity.h"
#include "tests/support/tls_pair.h"

namespace velmora {
namespace {

TEST(TlsConnection, CarriesDataBothWaysOnceTheHandshakeIsComplete) {
    UseTlsIdentity("rsa2048");
    TlsPair pair;
    pair.Handshake();
    ASSERT_TRUE(pair.client.HandshakeComplete());
    ASSERT_TRUE(pair.server.HandshakeComplete());
    EXPECT_EQ(pair.server.Feed(pair.client.Send("to the PBX")), "to the PBX");
    EXPECT_EQ(pair.client.Feed(pair.server.Send("to the provider")), "to the provider");
}

}  // namespace
}  // namespace velmora
