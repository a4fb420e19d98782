#include <iterator>

#include "tests/provider/provider_test.h"

namespace velmora {
namespace {

// The flags in the order of their records, with the bits of Microsoft's LINEDEVSTATE_ and LINEADDRESSSTATE_ constants.
struct Flag {
    DWORD lineStates;
    DWORD addressStates;
    const char* record;
};

const Flag kFlags[] = {
    {0x00008000, 0, "SetStatusMessages: LINEDEVSTATE_BATTERY"},
    {0x00100000, 0, "SetStatusMessages: LINEDEVSTATE_CAPSCHANGE"},
    {0x00000400, 0, "SetStatusMessages: LINEDEVSTATE_CLOSE"},
    {0x00200000, 0, "SetStatusMessages: LINEDEVSTATE_CONFIGCHANGE"},
    {0x00800000, 0, "SetStatusMessages: LINEDEVSTATE_COMPLCANCEL"},
    {0x00000004, 0, "SetStatusMessages: LINEDEVSTATE_CONNECTED"},
    {0x00020000, 0, "SetStatusMessages: LINEDEVSTATE_DEVSPECIFIC"},
    {0x00000008, 0, "SetStatusMessages: LINEDEVSTATE_DISCONNECTED"},
    {0x00000040, 0, "SetStatusMessages: LINEDEVSTATE_INSERVICE"},
    {0x00080000, 0, "SetStatusMessages: LINEDEVSTATE_LOCK"},
    {0x00000100, 0, "SetStatusMessages: LINEDEVSTATE_MAINTENANCE"},
    {0x00000020, 0, "SetStatusMessages: LINEDEVSTATE_MSGWAITOFF"},
    {0x00000010, 0, "SetStatusMessages: LINEDEVSTATE_MSGWAITON"},
    {0x00000800, 0, "SetStatusMessages: LINEDEVSTATE_NUMCALLS"},
    {0x00001000, 0, "SetStatusMessages: LINEDEVSTATE_NUMCOMPLETIONS"},
    {0x00000200, 0, "SetStatusMessages: LINEDEVSTATE_OPEN"},
    {0x00000001, 0, "SetStatusMessages: LINEDEVSTATE_OTHER"},
    {0x00000080, 0, "SetStatusMessages: LINEDEVSTATE_OUTOFSERVICE"},
    {0x00040000, 0, "SetStatusMessages: LINEDEVSTATE_REINIT"},
    {0x01000000, 0, "SetStatusMessages: LINEDEVSTATE_REMOVED"},
    {0x00000002, 0, "SetStatusMessages: LINEDEVSTATE_RINGING"},
    {0x00004000, 0, "SetStatusMessages: LINEDEVSTATE_ROAMMODE"},
    {0x00010000, 0, "SetStatusMessages: LINEDEVSTATE_SIGNAL"},
    {0x00002000, 0, "SetStatusMessages: LINEDEVSTATE_TERMINALS"},
    {0x00400000, 0, "SetStatusMessages: LINEDEVSTATE_TRANSLATECHANGE"},
    {0, 0x00000100, "SetStatusMessages: LINEADDRESSSTATE_CAPSCHANGE"},
    {0, 0x00000002, "SetStatusMessages: LINEADDRESSSTATE_DEVSPECIFIC"},
    {0, 0x00000040, "SetStatusMessages: LINEADDRESSSTATE_FORWARD"},
    {0, 0x00000010, "SetStatusMessages: LINEADDRESSSTATE_INUSEMANY"},
    {0, 0x00000008, "SetStatusMessages: LINEADDRESSSTATE_INUSEONE"},
    {0, 0x00000004, "SetStatusMessages: LINEADDRESSSTATE_INUSEZERO"},
    {0, 0x00000020, "SetStatusMessages: LINEADDRESSSTATE_NUMCALLS"},
    {0, 0x00000001, "SetStatusMessages: LINEADDRESSSTATE_OTHER"},
    {0, 0x00000080, "SetStatusMessages: LINEADDRESSSTATE_TERMINALS"},
};

class StatusMessagesTest : public ProviderTest {
protected:
    LogTexts RecordedFor(DWORD lineStates, DWORD addressStates) {
        return Recorded([&] { EXPECT_EQ(provider.lineSetStatusMessages(nullptr, lineStates, addressStates), 0); });
    }
};

TEST_F(StatusMessagesTest, RecordsEveryFlagInOrder) {
    Init();
    LogTexts expected = {"TSPI_lineSetStatusMessages"};
    for (const Flag& flag : kFlags) expected.push_back(flag.record);
    ASSERT_EQ(std::size(kFlags), 34U);
    EXPECT_EQ(RecordedFor(0x01FFFFFF, 0x000001FF), expected);
    EXPECT_EQ(RecordedFor(0xFFFFFFFF, 0xFFFFFFFF), expected);
    EXPECT_EQ(log.Records().back().level, 5);
}

TEST_F(StatusMessagesTest, RecordsEachFlagByItself) {
    Init();
    for (const Flag& flag : kFlags) {
        EXPECT_EQ(RecordedFor(flag.lineStates, flag.addressStates),
                  (LogTexts{"TSPI_lineSetStatusMessages", flag.record}));
    }
}

TEST_F(StatusMessagesTest, RecordsOnlyItselfWithoutKnownFlagsAndSendsNothing) {
    LogIn();
    EXPECT_EQ(RecordedFor(0, 0), (LogTexts{"TSPI_lineSetStatusMessages"}));
    EXPECT_EQ(RecordedFor(0xFE000000, 0xFFFFFE00), (LogTexts{"TSPI_lineSetStatusMessages"}));
    RecordedFor(0xFFFFFFFF, 0xFFFFFFFF);
    MakeCall(L"123");
    EXPECT_EQ(ElementText(pbx.WaitForFrame(2).xml, "calledDirectoryNumber"), "123");
}

}  // namespace
}  // namespace velmora
