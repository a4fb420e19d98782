#include "tools/velmoractl/json_text.h"

#include <algorithm>

#include "config/text_numbers.h"

namespace velmora::ctl {
namespace {

unsigned char ByteAt(std::string_view text, size_t position) {
    return position < text.size() ? static_cast<unsigned char>(text[position]) : 0;
}

// The length of the character of UTF-8 (RFC 3629, section 4) at position; 0 when there is none.
size_t CharacterBytes(std::string_view text, size_t position) {
    const unsigned char first = ByteAt(text, position);
    if (first < 0x80) return 1;
    if (first < 0xC2 || first > 0xF4) return 0;
    const size_t length = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    for (size_t index = 1; index < length; ++index) {
        if ((ByteAt(text, position + index) & 0xC0) != 0x80) return 0;
    }
    // What could be said in fewer bytes, half a UTF-16 pair, and what is above U+10FFFF.
    const unsigned char second = ByteAt(text, position + 1);
    const bool outside = (first == 0xE0 && second < 0xA0) || (first == 0xED && second > 0x9F) ||
                         (first == 0xF0 && second < 0x90) || (first == 0xF4 && second > 0x8F);
    return outside ? 0 : length;
}

bool IsUtf8(std::string_view text) {
    size_t position = 0;
    while (position < text.size()) {
        const size_t length = CharacterBytes(text, position);
        if (length == 0) return false;
        position += length;
    }
    return true;
}

ByteString FromLatin1(std::string_view text) {
    ByteString utf8;
    for (const char character : text) {
        const auto code = static_cast<unsigned char>(character);
        if (code < 0x80) {
            utf8 += character;
        } else {
            utf8 += static_cast<char>(0xC0 | (code >> 6));
            utf8 += static_cast<char>(0x80 | (code & 0x3F));
        }
    }
    return utf8;
}

void AppendEscaped(ByteString& json, char character) {
    switch (character) {
        case '"':
        case '\\':
            json += '\\';
            json += character;
            return;
        case '\n':
            json += "\\n";
            return;
        default:
            break;
    }
    // A terminal may take DEL for an order.
    if (static_cast<unsigned char>(character) < 0x20 || character == 0x7F) {
        json += "\\u00" + HexText(std::string_view(&character, 1));
    } else {
        json += character;
    }
}

}  // namespace

ByteString JsonString(std::string_view text) {
    ByteString json = "\"";
    for (const char character : IsUtf8(text) ? ByteString(text) : FromLatin1(text)) AppendEscaped(json, character);
    return json + "\"";
}

ByteString JsonNumber(int64_t number) {
    return DecimalText(number);
}

ByteString JsonFlag(bool flag) {
    return flag ? "true" : "false";
}

ByteString JsonArray(const std::vector<ByteString>& values) {
    ByteString json = "[";
    for (const ByteString& value : values) json += (json.size() > 1 ? ", " : "") + value;
    return json + "]";
}

ByteString JsonStrings(const std::vector<ByteString>& texts) {
    std::vector<ByteString> values(texts.size());
    std::ranges::transform(texts, values.begin(), JsonString);
    return JsonArray(values);
}

JsonObject& JsonObject::Add(std::string_view name, std::string_view value) {
    if (!members.empty()) members += ", ";
    members += JsonString(name) + ": ";
    members += value;
    return *this;
}

}  // namespace velmora::ctl
