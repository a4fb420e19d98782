#include "xml/entities.h"

#include <cstddef>
#include <cstdint>

namespace velmora {
namespace {

struct Escape {
    std::string_view token;
    char character;
};

constexpr Escape kEscapes[] = {
    {"&apos;", '\''}, {"&quot;", '"'}, {"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'},
};

constexpr std::string_view kDecimalStart = "&#";
constexpr std::string_view kHexStart = "&#x";

// "a" to "f" count 10 to 15 in a decimal number too, and any byte that is no digit counts 0: "&#5f;" is 65, and the "X"
// of "&#X65;" is a leading zero of the decimal 65. Keep.
uint32_t digitValue(char digit) {
    if (digit >= '0' && digit <= '9') return static_cast<uint32_t>(digit - '0');
    if (digit >= 'a' && digit <= 'f') return static_cast<uint32_t>(digit - 'a' + 10);
    if (digit >= 'A' && digit <= 'F') return static_cast<uint32_t>(digit - 'A' + 10);
    return 0;
}

// A number of more than 32 bits loses the upper ones: "&#4294967361;" is "A". Keep.
uint32_t readNumber(std::string_view digits, uint32_t base) {
    uint32_t value = 0;
    for (const char digit : digits) value = value * base + digitValue(digit);
    return value;
}

// UTF-8 as RFC 2279 had it, up to four bytes: surrogates (U+D800 to U+DFFF) and the numbers from 0x110000 to 0x1FFFFF
// are written like any other; larger ones give nothing. Keep.
void appendUtf8(ByteString& text, uint32_t codePoint) {
    const auto lead = [&](uint32_t mark, int shift) { text += static_cast<char>(mark | (codePoint >> shift)); };
    const auto follow = [&](int shift) { text += static_cast<char>(0x80 | ((codePoint >> shift) & 0x3F)); };
    if (codePoint < 0x80) {
        lead(0, 0);
    } else if (codePoint < 0x800) {
        lead(0xC0, 6);
        follow(0);
    } else if (codePoint < 0x10000) {
        lead(0xE0, 12);
        follow(6);
        follow(0);
    } else if (codePoint < 0x200000) {
        lead(0xF0, 18);
        follow(12);
        follow(6);
        follow(0);
    }
}

// Appends what reference, "&" to ";", stands for. False when its name is unknown; nothing is appended then.
bool appendReplacement(ByteString& text, std::string_view reference) {
    if (reference.starts_with(kDecimalStart)) {
        const bool hex = reference.starts_with(kHexStart);
        reference.remove_prefix(hex ? kHexStart.size() : kDecimalStart.size());
        reference.remove_suffix(1);
        appendUtf8(text, readNumber(reference, hex ? 16 : 10));
        return true;
    }
    for (const Escape& escape : kEscapes) {
        if (reference == escape.token) {
            text += escape.character;
            return true;
        }
    }
    return false;
}

}  // namespace

void appendDecoded(ByteString& text, std::string_view raw) {
    size_t appended = 0;   // how many bytes of raw are done with
    size_t semicolon = 0;  // looked for again only once it has been passed, or a row of "&" would be quadratic
    size_t ampersand = raw.find('&');
    while (ampersand != std::string_view::npos) {
        if (semicolon <= ampersand) semicolon = raw.find(';', ampersand);
        if (semicolon == std::string_view::npos) break;

        text.append(raw, appended, ampersand - appended);
        appended = ampersand;
        size_t resume = ampersand + 1;
        const size_t lengthBefore = text.size();
        if (appendReplacement(text, raw.substr(ampersand, semicolon + 1 - ampersand))) {
            appended = semicolon + 1;
            // The scan resumes behind the first byte of the replacement. Where that is empty, the byte after the
            // reference counts as it: in "&#x200000;&lt;" the second "&" is passed over and stays. Keep.
            resume = text.size() > lengthBefore ? appended : appended + 1;
        }
        ampersand = raw.find('&', resume);
    }
    text.append(raw, appended);
}

}  // namespace velmora
