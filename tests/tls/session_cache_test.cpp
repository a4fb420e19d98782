#include "tls/session_cache.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/support/hand_clock.h"

namespace velmora {
namespace {

class SessionCacheTest : public testing::Test {
protected:
    SessionCacheTest() { handClockMs = 3600000; }
    ~SessionCacheTest() override { handClockMs = 3600000; }
    SessionCacheTest(const SessionCacheTest&) = delete;
    SessionCacheTest& operator=(const SessionCacheTest&) = delete;

    static void PassSeconds(int64_t seconds) { handClockMs += static_cast<uint64_t>(seconds) * 1000; }

    static ByteString Id(size_t number) { return "session " + std::to_string(number); }

    void StoreSessions(size_t count) {
        for (size_t number = 0; number < count; ++number) cache.Store(Id(number), 0x002F, "secret");
    }

    // Whether a session can be resumed after so many seconds, but not one before. Takes the cache as it is then.
    bool ComesAfterSeconds(const ByteString& id, int64_t seconds) const {
        const uint64_t now = handClockMs;
        PassSeconds(seconds - 1);
        const bool early = SessionCache(cache).Resume(id).has_value();
        PassSeconds(1);
        const bool inTime = SessionCache(cache).Resume(id).has_value();
        handClockMs = now;
        return inTime && !early;
    }

    SessionCache cache;
};

TEST_F(SessionCacheTest, GivesSuiteAndMasterSecretOnceTheTimeHasCome) {
    cache.Store("id", 0x0035, "master secret");
    PassSeconds(1095);
    const std::optional<CachedSession> session = cache.Resume("id");
    ASSERT_TRUE(session);
    EXPECT_EQ(session->cipherSuite, 0x0035);
    EXPECT_EQ(session->masterSecret, "master secret");
}

TEST_F(SessionCacheTest, GivesASessionLongAfterItsTime) {
    cache.Store("id", 0x0035, "master secret");
    PassSeconds(100LL * 365 * 24 * 3600);
    EXPECT_TRUE(cache.Resume("id"));
}

TEST_F(SessionCacheTest, ForgetsASessionThatIsAskedForBeforeItsTime) {
    cache.Store("id", 0x0035, "master secret");
    PassSeconds(1094);
    EXPECT_FALSE(cache.Resume("id"));
    EXPECT_EQ(cache.Count(), 0U);
    PassSeconds(1000000);
    EXPECT_FALSE(cache.Resume("id"));
}

TEST_F(SessionCacheTest, GivesNothingForAnIdThatItDoesNotHoldAndKeepsTheOthers) {
    cache.Store("id", 0x0035, "master secret");
    PassSeconds(2000);
    EXPECT_FALSE(cache.Resume("i"));
    EXPECT_FALSE(cache.Resume("id2"));
    EXPECT_FALSE(cache.Resume(""));
    EXPECT_EQ(cache.Count(), 1U);
    EXPECT_TRUE(cache.Resume("id"));
}

struct WaitRow {
    size_t sessions;
    int64_t seconds;
};

// 5 + 12000 / (sessions + 10), worked out by hand.
const WaitRow kWaits[] = {{1, 1095}, {2, 1005}, {10, 605}, {30, 305}, {110, 105}, {1000, 16}, {1024, 16}};

TEST_F(SessionCacheTest, LetsASessionWaitTheLessTheMoreThereAre) {
    for (const WaitRow& row : kWaits) {
        SCOPED_TRACE(row.sessions);
        cache.Clear();
        StoreSessions(row.sessions);
        EXPECT_TRUE(ComesAfterSeconds(Id(row.sessions - 1), row.seconds));
    }
}

TEST_F(SessionCacheTest, LeavesTheTimeOfASessionAsItIsWhenOthersCome) {
    StoreSessions(30);
    EXPECT_TRUE(ComesAfterSeconds(Id(0), 1095));
    EXPECT_TRUE(ComesAfterSeconds(Id(9), 605));
}

TEST_F(SessionCacheTest, SetsTheTimeOfAResumedSessionAnewFromTheMomentOfItsResumption) {
    StoreSessions(30);
    PassSeconds(5000);
    ASSERT_TRUE(cache.Resume(Id(0)));
    EXPECT_TRUE(ComesAfterSeconds(Id(0), 305));
    PassSeconds(304);
    EXPECT_FALSE(cache.Resume(Id(0)));
    EXPECT_EQ(cache.Count(), 29U);
}

TEST_F(SessionCacheTest, TakesNewSecretSuiteAndTimeForAnIdThatItHolds) {
    cache.Store("id", 0x0035, "old secret");
    PassSeconds(1000);
    cache.Store("id", 0x0004, "new secret");
    EXPECT_EQ(cache.Count(), 1U);
    EXPECT_TRUE(ComesAfterSeconds("id", 1095));
    PassSeconds(1095);
    const std::optional<CachedSession> session = cache.Resume("id");
    ASSERT_TRUE(session);
    EXPECT_EQ(session->cipherSuite, 0x0004);
    EXPECT_EQ(session->masterSecret, "new secret");
}

TEST_F(SessionCacheTest, TellsIdsApartByEveryByte) {
    const std::vector<ByteString> ids = {ByteString("a\0b", 3), ByteString("a\0c", 3), ByteString("a\0", 2), "a",
                                         ByteString(255, '\xFF')};
    for (const ByteString& id : ids) cache.Store(id, 0x002F, "secret of " + id);
    EXPECT_EQ(cache.Count(), ids.size());
    PassSeconds(2000);
    for (const ByteString& id : ids) {
        const std::optional<CachedSession> session = cache.Resume(id);
        ASSERT_TRUE(session);
        EXPECT_EQ(session->masterSecret, "secret of " + id);
    }
}

TEST_F(SessionCacheTest, HoldsAtMost1024Sessions) {
    StoreSessions(1023);
    EXPECT_EQ(cache.Count(), 1023U);
    cache.Store("one more", 0x002F, "secret");
    EXPECT_EQ(cache.Count(), 1024U);
    for (int number = 0; number < 100; ++number) cache.Store("more " + std::to_string(number), 0x002F, "secret");
    EXPECT_EQ(cache.Count(), 1024U);
}

TEST_F(SessionCacheTest, LetsTheOldestSessionGoWhenANewOneFindsNoRoom) {
    StoreSessions(1024);
    PassSeconds(2000);
    cache.Store("new", 0x002F, "secret");
    EXPECT_FALSE(cache.Resume(Id(0)));
    for (size_t number = 1; number < 1024; ++number) ASSERT_TRUE(cache.Resume(Id(number))) << number;
    PassSeconds(2000);
    cache.Store("newer", 0x002F, "secret");
    EXPECT_FALSE(cache.Resume(Id(1)));
    EXPECT_TRUE(cache.Resume(Id(2)));
}

// The later the session, the lower its ID: the order in which they come is not that of their IDs.
TEST_F(SessionCacheTest, HoldsTheLatestSessionsHoweverManyHaveCome) {
    for (size_t number = 9999; number >= 5000; --number) cache.Store(Id(number), 0x002F, "secret");
    PassSeconds(2000);
    EXPECT_FALSE(cache.Resume(Id(5000 + 1024)));
    for (size_t number = 5000; number < 5000 + 1024; ++number) ASSERT_TRUE(cache.Resume(Id(number))) << number;
}

TEST_F(SessionCacheTest, LetsNoSessionGoForNewsOfOneThatItHolds) {
    StoreSessions(1024);
    cache.Store(Id(500), 0x002F, "secret");
    EXPECT_EQ(cache.Count(), 1024U);
    PassSeconds(2000);
    EXPECT_TRUE(cache.Resume(Id(0)));
}

TEST_F(SessionCacheTest, CountsTheAgeOfASessionFromWhenItWasStoredFirst) {
    StoreSessions(1024);
    PassSeconds(2000);
    cache.Store(Id(0), 0x002F, "secret");
    ASSERT_TRUE(cache.Resume(Id(1)));
    cache.Store("new", 0x002F, "secret");
    cache.Store("newer", 0x002F, "secret");
    PassSeconds(2000);
    EXPECT_FALSE(cache.Resume(Id(0)));
    EXPECT_FALSE(cache.Resume(Id(1)));
    EXPECT_TRUE(cache.Resume(Id(2)));
}

TEST_F(SessionCacheTest, CountsASessionThatWasForgottenAndStoredAgainAsNew) {
    StoreSessions(1024);
    ASSERT_FALSE(cache.Resume(Id(0)));
    cache.Store(Id(0), 0x002F, "secret");
    cache.Store("new", 0x002F, "secret");
    PassSeconds(2000);
    EXPECT_FALSE(cache.Resume(Id(1)));
    EXPECT_TRUE(cache.Resume(Id(0)));
}

TEST_F(SessionCacheTest, IsEmptyOnceItHasBeenCleared) {
    StoreSessions(3);
    cache.Clear();
    EXPECT_EQ(cache.Count(), 0U);
    PassSeconds(2000);
    EXPECT_FALSE(cache.Resume(Id(0)));
}

}  // namespace
}  // namespace velmora
