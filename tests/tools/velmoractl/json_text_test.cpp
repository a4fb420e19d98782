#include "tools/velmoractl/json_text.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace velmora::ctl {
namespace {

using Json = nlohmann::json;

// What a reader of JSON makes of a text; it throws for anything that is no JSON.
ByteString Read(const ByteString& text) {
    return Json::parse(JsonString(text)).get<std::string>();
}

TEST(JsonString, CarriesEveryCharacterOfAscii) {
    ByteString text;
    for (char character = 0; character < 0x7F; ++character) text += character;
    EXPECT_EQ(Read(text), text);
    EXPECT_EQ(Read("\x7F"), "\x7F");
}

TEST(JsonString, HoldsNoControlCharacter) {
    for (char character = 0; character < 0x20; ++character) {
        EXPECT_EQ(JsonString(ByteString(1, character)).find(character), ByteString::npos) << int{character};
    }
    EXPECT_EQ(JsonString("\x7F"), R"("\u007f")");
}

TEST(JsonString, LeavesUtf8AsItIs) {
    // One of each length, and the first and the last of each (RFC 3629, section 4).
    for (const char* text : {"\xC2\x80", "\xC3\xBC", "\xDF\xBF", "\xE0\xA0\x80", "\xE2\x82\xAC", "\xED\x9F\xBF",
                             "\xEE\x80\x80", "\xEF\xBF\xBF", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"}) {
        EXPECT_EQ(Read(text), text);
    }
}

TEST(JsonString, TakesWhatIsNoUtf8ForLatin1) {
    EXPECT_EQ(Read("M\xFCller"), "M\xC3\xBCller");
    EXPECT_EQ(Read("\xC3\xBC\xFF"), "\xC3\x83\xC2\xBC\xC3\xBF");
}

TEST(JsonString, IsUtf8WhateverTheBytes) {
    const ByteString starts[] = {"",     "\xC3",         "\xE0", "\xE2\x82", "\xED",
                                 "\xF0", "\xF0\x90\x80", "\xF4", "\xF5",     "\xC1"};
    for (const ByteString& start : starts) {
        for (int byte = 0; byte < 256; ++byte) {
            const ByteString text = start + static_cast<char>(byte);
            EXPECT_NO_THROW(Read(text)) << start << byte;
            EXPECT_NO_THROW(Read(text + "\x80")) << start << byte;
            EXPECT_NO_THROW(Read(text + "\x80\x80")) << start << byte;
        }
    }
}

TEST(JsonNumber, IsDecimal) {
    EXPECT_EQ(Json::parse(JsonNumber(-12)).get<int>(), -12);
}

TEST(JsonArray, HoldsItsValuesInOrder) {
    EXPECT_EQ(Json::parse(JsonArray({})), Json::array());
    EXPECT_EQ(Json::parse(JsonStrings({"a", "\"", ""})), (Json{"a", "\"", ""}));
    EXPECT_EQ(Json::parse(JsonArray({JsonNumber(1), JsonFlag(true), JsonFlag(false)})), (Json{1, true, false}));
}

TEST(JsonObject, HoldsItsMembers) {
    EXPECT_EQ(Json::parse(JsonObject().Text()), Json::object());
    const ByteString inner = JsonObject().AddText("text", "x").Text();
    EXPECT_EQ(Json::parse(JsonObject().Add("object", inner).Add("number", "1").Text()),
              (Json{{"object", {{"text", "x"}}}, {"number", 1}}));
}

}  // namespace
}  // namespace velmora::ctl
