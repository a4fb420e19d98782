#include "tools/alert_watch.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

using Alerts = std::vector<SeenAlert>;

ByteString Record(char type, const ByteString& fragment) {
    return ByteString{type, 3, 1, static_cast<char>(fragment.size() >> 8), static_cast<char>(fragment.size() & 0xFF)} +
           fragment;
}

ByteString Alert(char level, char description) {
    return Record(21, {level, description});
}

// The alerts in a stream that comes in two parts.
Alerts AlertsIn(const ByteString& stream, size_t split) {
    AlertWatch watch;
    Alerts alerts = watch.Follow(stream.substr(0, split));
    const Alerts more = watch.Follow(stream.substr(split));
    alerts.insert(alerts.end(), more.begin(), more.end());
    return alerts;
}

TEST(AlertWatch, FindsAlertsAmongOtherRecordsWhereverTheStreamIsSplit) {
    const ByteString stream = Record(22, ByteString(300, '\x15')) + Alert(2, 40) + Record(22, "") + Alert(1, 0) +
                              Record(99, ByteString("\x15\3\1\0\2\2\50", 7));
    for (size_t split = 0; split <= stream.size(); ++split) {
        SCOPED_TRACE(split);
        EXPECT_EQ(AlertsIn(stream, split), (Alerts{{true, 2, 40}, {true, 1, 0}}));
    }
}

TEST(AlertWatch, CannotReadAlertsBehindTheChangeOfCipher) {
    const ByteString stream = Alert(1, 41) + Record(20, "\1") + Record(21, ByteString(32, '\2')) + Record(23, "x");
    for (size_t split = 0; split <= stream.size(); ++split) {
        SCOPED_TRACE(split);
        EXPECT_EQ(AlertsIn(stream, split), (Alerts{{true, 1, 41}, {false, 0, 0}}));
    }
}

TEST(AlertWatch, TakesTheFirstTwoBytesOfALongerAlertAndNothingOfAShorterOne) {
    EXPECT_EQ(AlertsIn(Record(21, "\2\50\1\1"), 0), (Alerts{{true, 2, 40}}));
    EXPECT_EQ(AlertsIn(Record(21, "\2") + Record(21, "") + Alert(2, 10), 0), (Alerts{{true, 2, 10}}));
}

}  // namespace
}  // namespace velmora
