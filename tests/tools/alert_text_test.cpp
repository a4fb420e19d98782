#include "tools/alert_text.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

TEST(AlertText, NamesTheAlertsOfTls) {
    EXPECT_EQ(AlertText(0), "close_notify (0)");
    EXPECT_EQ(AlertText(20), "bad_record_mac (20)");
    EXPECT_EQ(AlertText(40), "handshake_failure (40)");
    EXPECT_EQ(AlertText(112), "unrecognized_name (112)");
}

TEST(AlertText, GivesTheNumberAloneOfAnUnknownOne) {
    EXPECT_EQ(AlertText(1), "number 1");
    EXPECT_EQ(AlertText(255), "number 255");
}

}  // namespace
}  // namespace velmora
