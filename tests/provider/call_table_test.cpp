#include "provider/call_table.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

TEST(CallTable, HandsOutTenRecordsOnceEachEvenWhenCallsHaveEnded) {
    CallTable table;
    const CallRecord* previous = nullptr;
    for (size_t call = 0; call < 10; ++call) {
        SCOPED_TRACE(call);
        CallRecord* record = table.Take();
        ASSERT_NE(record, nullptr);
        EXPECT_TRUE(previous == nullptr || record == previous + 1);
        EXPECT_EQ(record->invokeId, 0U);
        record->inUse = false;
        previous = record;
    }
    EXPECT_EQ(table.Take(), nullptr);
    EXPECT_EQ(table.Take(), nullptr);
}

TEST(CallTable, BindsTheCallPlacedUnderTheInvokeIdAndNoOther) {
    CallTable table;
    CallRecord* first = table.Take();
    CallRecord* second = table.Take();
    first->invokeId = 3;
    first->deviceId = "40@example.com";
    second->invokeId = 4;
    second->deviceId = "40@example.com";
    table.BindCall(4, "7", "41");
    EXPECT_EQ(first->callId, "");
    EXPECT_EQ(first->deviceId, "40@example.com");
    EXPECT_EQ(second->callId, "7");
    EXPECT_EQ(second->deviceId, "41");
    EXPECT_EQ(second->invokeId, 4U);
}

TEST(CallTable, BindsEveryRecordWithTheInvokeIdInUseOrNot) {
    CallTable table;
    CallRecord* ended = table.Take();
    CallRecord* running = table.Take();
    ended->invokeId = running->invokeId = 5;
    running->inUse = true;
    table.BindCall(5, "7", "d");
    EXPECT_EQ(ended->callId, "7");
    EXPECT_EQ(running->callId, "7");
}

TEST(CallTable, BindsRecordsNeverUsedUnderInvokeIdZero) {
    CallTable table;
    CallRecord* placed = table.Take();
    placed->invokeId = 1;
    table.BindCall(0, "stray", "d");
    EXPECT_EQ(placed->callId, "");
    EXPECT_EQ(table.Take()->callId, "stray");
}

}  // namespace
}  // namespace velmora
