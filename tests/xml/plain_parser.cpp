#include "tests/xml/plain_parser.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <map>

namespace velmora {
namespace {

bool isOneOf(char byte, const char* characters) {
    for (; *characters != 0; ++characters) {
        if (byte == *characters) return true;
    }
    return false;
}

constexpr char kLetters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
constexpr char kSpaces[] = " \t\r\n";

ByteString utf8(uint32_t code) {
    const auto byte = [](uint32_t value) { return ByteString(1, static_cast<char>(value)); };
    if (code <= 0x7F) return byte(code);
    if (code <= 0x7FF) return byte(0xC0 + code / 64) + byte(0x80 + code % 64);
    if (code <= 0xFFFF) return byte(0xE0 + code / 4096) + byte(0x80 + code / 64 % 64) + byte(0x80 + code % 64);
    if (code > 0x1FFFFF) return "";
    return byte(0xF0 + code / 262144) + byte(0x80 + code / 4096 % 64) + byte(0x80 + code / 64 % 64) +
           byte(0x80 + code % 64);
}

ByteString character(const ByteString& digits, uint32_t base) {
    const ByteString upper = "0123456789ABCDEF";
    const ByteString lower = "0123456789abcdef";
    uint32_t value = 0;
    for (const char digit : digits) {
        size_t worth = upper.find(digit);
        if (worth == ByteString::npos) worth = lower.find(digit);
        if (worth == ByteString::npos) worth = 0;
        value = value * base + static_cast<uint32_t>(worth);
    }
    return utf8(value);
}

ByteString decoded(ByteString text) {
    const std::map<ByteString, ByteString> named = {
        {"apos", "'"}, {"quot", "\""}, {"amp", "&"}, {"lt", "<"}, {"gt", ">"}};
    for (size_t position = 0; position < text.size(); ++position) {
        if (text[position] != '&') continue;
        const size_t end = text.find(';', position);
        if (end == ByteString::npos) continue;
        const ByteString name = text.substr(position + 1, end - position - 1);
        ByteString replacement;
        if (name.substr(0, 2) == "#x") {
            replacement = character(name.substr(2), 16);
        } else if (name.substr(0, 1) == "#") {
            replacement = character(name.substr(1), 10);
        } else if (named.count(name) == 1) {
            replacement = named.at(name);
        } else {
            continue;
        }
        text.replace(position, end + 1 - position, replacement);
    }
    return text;
}

struct PlainParser {
    ByteString input;
    bool matchCase;
    size_t position = 0;

    bool sees(const ByteString& token) const { return input.compare(position, token.size(), token) == 0; }

    void moveBehind(const ByteString& start, const ByteString& end) {
        const size_t found = input.find(end, position + start.size());
        position = found == ByteString::npos ? input.size() : found + end.size();
    }

    ByteString name() {
        ByteString result;
        while (position < input.size()) {
            const char byte = input[position];
            const bool starts = isOneOf(byte, kLetters) || isOneOf(byte, ":_");
            const bool follows = !result.empty() && isOneOf(byte, "0123456789-.");
            if (!starts && !follows) break;
            result += byte;
            ++position;
        }
        return result;
    }

    void split(ByteString name, ByteString& prefix, ByteString& localName) const {
        for (char& byte : name) {
            if (!matchCase && byte >= 'A' && byte <= 'Z') byte = static_cast<char>(byte + 32);
        }
        const size_t colon = name.find(':');
        prefix = colon == ByteString::npos ? "" : name.substr(0, colon);
        localName = colon == ByteString::npos ? name : name.substr(colon + 1);
    }

    void attribute(PlainNode& element) {
        const ByteString attributeName = name();
        const bool malformed = attributeName.empty() || !sees("=") || position + 1 == input.size();
        if (malformed) {
            position = input.size();
            return;
        }
        ++position;
        ByteString ends = kSpaces;
        if (sees("\"") || sees("'")) {
            ends = input[position];
            ++position;
        }
        ByteString value;
        while (position < input.size() && !isOneOf(input[position], ends.c_str())) value += input[position++];
        if (position == input.size()) return;
        ++position;
        PlainAttribute result;
        split(attributeName, result.prefix, result.localName);
        result.value = decoded(value);
        element.attributes.push_back(result);
    }

    // From behind "<" or "</"; true when content follows.
    bool tag(PlainNode& element) {
        split(name(), element.prefix, element.localName);
        for (;;) {
            while (position < input.size() && isOneOf(input[position], kSpaces)) ++position;
            if (position == input.size()) return true;
            if (sees("/>")) {
                position += 2;
                return false;
            }
            if (sees(">")) {
                position += 1;
                return true;
            }
            attribute(element);
        }
    }

    void content(PlainNode& element, ByteString& text) {
        ByteString pending;
        while (position < input.size()) {
            if (input[position] != '<') {
                pending += input[position++];
                continue;
            }
            text += decoded(pending);
            pending.clear();
            if (sees("<![CDATA[")) {
                const size_t start = position + 9;
                const size_t end = input.find("]]>", start);
                text += input.substr(start, end == ByteString::npos ? end : end - start);
                moveBehind("<![CDATA[", "]]>");
            } else if (sees("<!--")) {
                moveBehind("<!--", "-->");
            } else if (sees("<?")) {
                moveBehind("<?", "?>");
            } else if (sees("</")) {
                position += 2;
                PlainNode ignored;
                tag(ignored);
                return;
            } else {
                position += 1;
                PlainNode child;
                if (tag(child)) content(child, child.text);
                element.children.push_back(std::move(child));
            }
        }
        text.clear();
    }

    void document(PlainNode& root) {
        while (position < input.size()) {
            if (sees("<!--")) {
                moveBehind("<!--", "-->");
            } else if (sees("<?")) {
                moveBehind("<?", "?>");
            } else if (sees("</")) {
                return;
            } else if (sees("<")) {
                position += 1;
                ByteString dropped;
                if (tag(root)) content(root, dropped);
            } else {
                position += 1;
            }
        }
    }
};

}  // namespace

PlainNode plainParse(const ByteString& document, bool matchCase) {
    PlainNode root;
    PlainParser{document, matchCase}.document(root);
    return root;
}

}  // namespace velmora
