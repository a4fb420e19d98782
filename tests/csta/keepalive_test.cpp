#include "csta/keepalive.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

TEST(Keepalive, WaitsForeverUntilItIsArmed) {
    const Keepalive keepalive;
    EXPECT_EQ(keepalive.RemainingMs(0), Keepalive::kForever);
    EXPECT_EQ(keepalive.SessionId(), "");
}

TEST(Keepalive, IsDueAfterNinetyPercentOfTheDuration) {
    Keepalive keepalive;
    keepalive.Arm("s", 1800, 1000);
    EXPECT_EQ(keepalive.RemainingMs(1000), 1620000U);
    EXPECT_EQ(keepalive.RemainingMs(1000 + 1619999), 1U);
    EXPECT_EQ(keepalive.RemainingMs(1000 + 1620000), 0U);
}

TEST(Keepalive, WaitsForeverWhenTheDeadlineIsOneMillisecondOver) {
    Keepalive keepalive;
    keepalive.Arm("s", 1, 0);
    EXPECT_EQ(keepalive.RemainingMs(901), Keepalive::kForever);
    EXPECT_EQ(static_cast<int32_t>(keepalive.RemainingMs(902)), -2);
}

TEST(Keepalive, CountsAcrossTheWrapOfTheTickCounter) {
    Keepalive keepalive;
    keepalive.Arm("s", 10, 0xFFFFF000);
    EXPECT_EQ(keepalive.RemainingMs(0xFFFFF000), 9000U);
    EXPECT_EQ(keepalive.RemainingMs(0x00000100), 9000U - 0x1100U);
}

TEST(Keepalive, WrapsADurationTooLongForTheTickCounter) {
    Keepalive keepalive;
    keepalive.Arm("s", 0x7FFFFFFF, 0);
    EXPECT_EQ(keepalive.RemainingMs(0), static_cast<uint32_t>(uint64_t{0x7FFFFFFF} * 900));
}

TEST(Keepalive, KeepsTheSessionIdWhenArmedWithoutOne) {
    Keepalive keepalive;
    keepalive.Arm("first", 1, 0);
    keepalive.Arm("", 2, 0);
    EXPECT_EQ(keepalive.SessionId(), "first");
    EXPECT_EQ(keepalive.RemainingMs(0), 1800U);
    keepalive.Arm("second", 1, 0);
    EXPECT_EQ(keepalive.SessionId(), "second");
}

TEST(Keepalive, KeepsTheSessionIdWhenDisarmed) {
    Keepalive keepalive;
    keepalive.Arm("s", 1, 0);
    keepalive.Disarm();
    EXPECT_EQ(keepalive.RemainingMs(5000), Keepalive::kForever);
    EXPECT_EQ(keepalive.SessionId(), "s");
}

}  // namespace
}  // namespace velmora
