#include "tools/velmoractl/log_note.h"

#include <gtest/gtest.h>

namespace velmora::ctl {
namespace {

ByteString Note(const ByteString& text) {
    return NoteText({0, 5, text});
}

TEST(NoteText, LeavesOutTheTraceOfTheEntryPoints) {
    for (const char* text : {"TSPI_lineOpen", "TUISPI_providerConfig", "SetStatusMessages: LINEDEVSTATE_CLOSE",
                             "Provider Init", "Loaded TAPI DLL"}) {
        EXPECT_EQ(Note(text), "") << text;
    }
}

TEST(NoteText, PutsATlsAlertIntoWords) {
    EXPECT_EQ(Note("CSTA: Alert(2, 40)"), "The PBX ended the TLS connection with the alert handshake_failure (40)");
    EXPECT_EQ(Note("CSTA: Alert(1, 112)"), "TLS alert from the PBX: unrecognized_name (112)");
    EXPECT_EQ(Note("CSTA: Alert(2, 200)"), "The PBX ended the TLS connection with the alert number 200");
}

TEST(NoteText, NamesASettingThatIsNotStored) {
    EXPECT_EQ(Note("Cannot read registry key guid"), "The setting guid is not stored");
}

TEST(NoteText, GivesAnyOtherRecordAsItIs) {
    EXPECT_EQ(Note("CSTA: Received unknown type 99"), "CSTA: Received unknown type 99");
    EXPECT_EQ(Note("CSTA: Alert(2"), "CSTA: Alert(2");
}

TEST(IsConnectionFailure, KnowsBothRecords) {
    EXPECT_TRUE(IsConnectionFailure({0, 1, "Connection establishment to \"pbx\" failed"}));
    EXPECT_TRUE(IsConnectionFailure({0, 1, "Could not find a usable WinSock DLL"}));
    EXPECT_FALSE(IsConnectionFailure({0, 1, "Provider Init"}));
}

}  // namespace
}  // namespace velmora::ctl
