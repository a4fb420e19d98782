#include "tools/pbxsim/messages.h"

#include <gtest/gtest.h>

namespace velmora::pbxsim {
namespace {

TEST(EscapeXml, ReplacesTheFiveCharactersThatXmlPredefines) {
    EXPECT_EQ(EscapeXml("&<>\"'"), "&amp;&lt;&gt;&quot;&apos;");
    EXPECT_EQ(EscapeXml("&amp;"), "&amp;amp;");
}

TEST(EscapeXml, LeavesAllElseAsItIs) {
    const ByteString text = "40@example.com *1# \xC3\xBC;/";
    EXPECT_EQ(EscapeXml(text), text);
    EXPECT_EQ(EscapeXml(""), "");
}

// Written out once in full from the standards' schemas; the other messages are built from the same pieces.
TEST(Messages, AreWholeDocuments) {
    EXPECT_EQ(MakeCallResponse(CstaNamespace(5), {"7", "40@example.com", "100"}),
              R"(<?xml version="1.0" encoding="UTF-8"?>)"
              R"(<MakeCallResponse xmlns="http://www.ecma-international.org/standards/ecma-323/csta/ed5">)"
              "<callingDevice><callID>7</callID><deviceID>40@example.com</deviceID></callingDevice>"
              "</MakeCallResponse>");
    EXPECT_EQ(StartApplicationSessionNegResponse("invalidApplicationInfo"),
              R"(<?xml version="1.0" encoding="UTF-8"?>)"
              R"(<StartApplicationSessionNegResponse )"
              R"(xmlns="http://www.ecma-international.org/standards/ecma-354/appl_session">)"
              "<errorCode><definedError>invalidApplicationInfo</definedError></errorCode>"
              "</StartApplicationSessionNegResponse>");
}

TEST(Messages, EscapeTheirValues) {
    const ByteString xml = DeliveredEvent(CstaNamespace(6), "<1>", {"2&3", "a'b", "c\"d"});
    EXPECT_NE(xml.find("<monitorCrossRefID>&lt;1&gt;</monitorCrossRefID>"), ByteString::npos);
    EXPECT_NE(xml.find("<callID>2&amp;3</callID>"), ByteString::npos);
    EXPECT_NE(xml.find("<callingDevice><deviceIdentifier>a&apos;b</deviceIdentifier>"), ByteString::npos);
    EXPECT_NE(xml.find("<calledDevice><deviceIdentifier>c&quot;d</deviceIdentifier>"), ByteString::npos);
}

}  // namespace
}  // namespace velmora::pbxsim
