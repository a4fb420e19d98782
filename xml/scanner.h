#pragma once

#include <array>
#include <cstddef>
#include <cstring>
#include <optional>
#include <string_view>

namespace velmora {

// The characters that XML tells apart, in ASCII. XML 1.0 has letters of every script in names; here a name ends at the
// first byte of 0x80 or above. Keep.
constexpr bool isWhitespace(char byte) {
    return byte == ' ' || byte == '\t' || byte == '\r' || byte == '\n';
}

constexpr bool isNameStart(char byte) {
    return (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') || byte == ':' || byte == '_';
}

constexpr bool isNameByte(char byte) {
    return isNameStart(byte) || (byte >= '0' && byte <= '9') || byte == '-' || byte == '.';
}

// As a table, for about half of a CSTA message is names.
constexpr std::array<bool, 256> nameByteTable() {
    std::array<bool, 256> table{};
    for (size_t byte = 0; byte < table.size(); ++byte) table[byte] = isNameByte(static_cast<char>(byte));
    return table;
}

// A document that is read from front to back. What is taken is a view into the document, not a copy.
class Scanner {
public:
    explicit Scanner(std::string_view document) : position(document.data()), end(position + document.size()) {}

    bool atEnd() const { return position == end; }
    bool at(std::string_view token) const {
        return left() >= token.size() && std::memcmp(position, token.data(), token.size()) == 0;
    }

    // Passes over token if it comes next, and tells whether it did.
    bool take(std::string_view token) {
        if (!at(token)) return false;
        position += token.size();
        return true;
    }

    // The bytes before the next token; without one, all the rest.
    std::string_view takeUpTo(std::string_view token) {
        const std::string_view before = rest().substr(0, rest().find(token));
        position += before.size();
        return before;
    }

    // Likewise, and passes over the token.
    std::string_view takeThrough(std::string_view token) {
        const std::string_view before = takeUpTo(token);
        take(token);
        return before;
    }

    // The name that comes next; empty when none does.
    std::string_view takeName() {
        const char* const start = position;
        if (!atEnd() && isNameStart(*start)) skipNameBytes();
        return {start, static_cast<size_t>(position - start)};
    }

    // Passes over the name that comes next. When it begins with likely, a name taken before, those bytes need not be
    // looked at one by one.
    void skipName(std::string_view likely) {
        if (!likely.empty() && take(likely)) {
            skipNameBytes();
        } else {
            takeName();
        }
    }

    // The value that comes next: between two equal quotes, single or double, or else up to a whitespace byte. Passes
    // over what ended it. None when nothing does, or when the document is at its end.
    std::optional<std::string_view> takeValue() {
        if (atEnd()) return {};
        const char quote = *position;
        const bool quoted = quote == '"' || quote == '\'';
        const std::string_view value = rest().substr(quoted ? 1 : 0);
        const size_t bytes = quoted ? value.find(quote) : value.find_first_of(" \t\r\n");
        if (bytes == std::string_view::npos) return {};
        position = value.data() + bytes + 1;
        return value.substr(0, bytes);
    }

    void skipWhitespace() {
        while (!atEnd() && isWhitespace(*position)) ++position;
    }

    void skipRest() { position = end; }

private:
    static constexpr std::array<bool, 256> kNameBytes = nameByteTable();

    size_t left() const { return static_cast<size_t>(end - position); }
    std::string_view rest() const { return {position, left()}; }

    void skipNameBytes() {
        while (!atEnd() && kNameBytes[static_cast<unsigned char>(*position)]) ++position;
    }

    const char* position;  // of the next byte
    const char* end;
};

}  // namespace velmora
