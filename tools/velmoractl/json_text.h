#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "config/byte_string.h"

namespace velmora::ctl {

// JSON (RFC 8259), built from the inside out: each function gives one value as text, on one line.

// A string. Bytes that are not UTF-8 as a whole are taken for Latin-1: settings and certificates may hold either.
ByteString JsonString(std::string_view text);

ByteString JsonNumber(int64_t number);
ByteString JsonFlag(bool flag);

// An array of values.
ByteString JsonArray(const std::vector<ByteString>& values);
ByteString JsonStrings(const std::vector<ByteString>& texts);

// An object, its members in the order in which they are added. Names are plain ASCII without quotes.
class JsonObject {
public:
    JsonObject& Add(std::string_view name, std::string_view value);
    JsonObject& AddText(std::string_view name, std::string_view text) { return Add(name, JsonString(text)); }
    ByteString Text() const { return "{" + members + "}"; }

private:
    ByteString members;
};

}  // namespace velmora::ctl
