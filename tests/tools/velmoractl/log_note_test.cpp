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

TEST(NoteText, PutsWhatTlsSaysIntoWords) {
    EXPECT_EQ(Note("CSTA: Alert(2, 40)"), "The PBX ended TLS with the alert handshake_failure (40)");
    EXPECT_EQ(Note("CSTA: Alert(1, 112)"), "TLS warning from the PBX: unrecognized_name (112)");
    EXPECT_EQ(Note("CSTA: Alert(2, 200)"), "The PBX ended TLS with the alert number 200");
    EXPECT_EQ(Note("CSTA: Bad Record Mac"), "What came from the PBX fails the check of its MAC");
    EXPECT_EQ(Note("CSTA: Finished failed"), "The PBX's proof of the TLS handshake is wrong");
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

TEST(TlsFailureIn, FindsWhatEndsTheEncryption) {
    EXPECT_EQ(TlsFailureIn({0, 5, "CSTA: Alert(2, 48)"}).reason, "the PBX ended TLS with the alert unknown_ca (48)");
    EXPECT_EQ(TlsFailureIn({0, 3, "CSTA: Bad Record Mac"}).reason, "what came from the PBX fails the check of its MAC");
    EXPECT_EQ(TlsFailureIn({0, 3, "CSTA: Finished failed"}).reason, "the PBX's proof of the TLS handshake is wrong");
    for (const char* text : {"CSTA: Alert(1, 112)", "CSTA: Alert(2", "CSTA: Alert(20, 1)", "Provider Init",
                             "CSTA Rx: <a>Bad Record Mac</a>"}) {
        EXPECT_EQ(TlsFailureIn({0, 3, text}).reason, "") << text;
    }
}

TEST(TlsFailureIn, SaysWhatToAllowWhenThePbxTakesNothingThatIsOffered) {
    for (const char* text : {"CSTA: Alert(2, 40)", "CSTA: Alert(2, 70)", "CSTA: Alert(2, 71)"}) {
        EXPECT_NE(TlsFailureIn({0, 5, text}).advice.find("TLS 1.0"), ByteString::npos) << text;
    }
    const ByteString other = TlsFailureIn({0, 5, "CSTA: Alert(2, 80)"}).advice;
    EXPECT_EQ(other.find("TLS 1.0"), ByteString::npos) << other;
    EXPECT_NE(other.find("encrypt off"), ByteString::npos) << other;
}

}  // namespace
}  // namespace velmora::ctl
