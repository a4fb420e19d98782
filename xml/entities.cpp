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

uint32_t digitValue(char digit) {
    if (digit >= '0' && digit <= '9') return static_cast<uint32_t>(digit - '0');
    if (digit >= 'a' && digit <= 'f') return static_cast<uint32_t>(digit - 'a' + 10);
    if (digit >= 'A' && digit <= 'F') return static_cast<uint32_t>(digit - 'A' + 10);
    return 0;
}

uint32_t readNumber(std::string_view digits, uint32_t base) {
    uint32_t value = 0;
    for (const char digit : digits) value = value * base + digitValue(digit);
    return value;
}

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

bool appendReplacement(ByteString& text, std::string_view reference) {
    if (reference.starts_with(kDecimalStart)) {
        const bool hex = reference.starts_with(kHexStart);
        reference.remove_suffix(1);
        reference.remove_prefix(hex ? kHexStart.size() : kDecimalStart.size());
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
    size_t done = 0;
    size_t semicolon = 0;
    size_t ampersand = raw.find('&');
    while (ampersand != std::string_view::npos) {
        if (semicolon <= ampersand) semicolon = raw.find(';', ampersand);
        if (semicolon == std::string_view::npos) break;
        text.append(raw, done, ampersand - done);
        done = ampersand;
        size_t resume = ampersand + 1;
        const size_t length = text.size();
        if (appendReplacement(text, raw.substr(ampersand, semicolon + 1 - ampersand))) {
            done = semicolon + 1;
            resume = text.size() > length ? done : done + 1;
        }
        ampersand = raw.find('&', resume);
    }
    text.append(raw, done);
}

}  // namespace velmora
