#include "tests/endurance/stress_ledger.h"

#include <gtest/gtest.h>

#include <limits>

namespace velmora {

size_t StressLedger::TakeDialled(const std::string& number) {
    const CriticalSectionGuard guard(lock);
    for (size_t index = 0; index < kStressCalls; ++index) {
        if (plan.calls[index].number != number) continue;
        EXPECT_FALSE(calls[index].dialled) << "call " << index << " is placed twice";
        calls[index].dialled = true;
        return index;
    }
    ADD_FAILURE() << "a number that nobody has dialled: " << number;
    return 0;
}

void StressLedger::Answer(size_t index, size_t monitorStarts) {
    const CriticalSectionGuard guard(lock);
    calls[index].answered = true;
    calls[index].confirmingMonitorStarts = monitorStarts;
}

void StressLedger::Confirm(size_t monitorStarts) {
    const CriticalSectionGuard guard(lock);
    for (Call& call : calls) {
        if (call.answered && call.confirmingMonitorStarts <= monitorStarts) call.confirmed = true;
    }
}

void StressLedger::EndSession() {
    const CriticalSectionGuard guard(lock);
    for (Call& call : calls) call.confirmingMonitorStarts = std::numeric_limits<size_t>::max();
}

bool StressLedger::IsConfirmed(size_t index) {
    const CriticalSectionGuard guard(lock);
    return calls[index].confirmed;
}

bool StressLedger::BeginClosing(size_t index) {
    const CriticalSectionGuard guard(lock);
    calls[index].closing = true;
    ++closed;
    if (!calls[index].confirmed) ++closedUnconfirmed;
    return calls[index].confirmed;
}

bool StressLedger::IsClosing(size_t index) {
    const CriticalSectionGuard guard(lock);
    return calls[index].closing;
}

void StressLedger::TakeCleared(const std::string& callId, const std::string& deviceId) {
    const CriticalSectionGuard guard(lock);
    ++cleared;
    if (callId.empty()) {
        EXPECT_EQ(deviceId, plan.Device()) << "a call with half of the names that the PBX gave it";
        EXPECT_LE(++clearedWithoutName, closedUnconfirmed) << "a call that the PBX has answered was not bound";
        return;
    }
    const size_t index = IndexOfCallId(callId);
    if (index == kStressCalls) {
        ADD_FAILURE() << "a name that the PBX has not given: " << callId;
        return;
    }
    EXPECT_TRUE(calls[index].answered) << "call " << index << " has a name before its answer";
    EXPECT_TRUE(calls[index].closing) << "call " << index << " is ended in the place of another";
    EXPECT_EQ(++calls[index].cleared, 1U) << "call " << index << " is ended again, or in the place of another";
    EXPECT_EQ(deviceId, plan.calls[index].deviceId) << "call " << index << " has another's device";
}

size_t StressLedger::Closed() {
    const CriticalSectionGuard guard(lock);
    return closed;
}

size_t StressLedger::Cleared() {
    const CriticalSectionGuard guard(lock);
    return cleared;
}

size_t StressLedger::ClearedByName(size_t index) {
    const CriticalSectionGuard guard(lock);
    return calls[index].cleared;
}

size_t StressLedger::IndexOfCallId(const std::string& callId) const {
    size_t index = 0;
    while (index < kStressCalls && plan.calls[index].callId != callId) ++index;
    return index;
}

}  // namespace velmora
