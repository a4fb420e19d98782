#include "xml/xml_parser.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "xml/ascii_case.h"
#include "xml/entities.h"
#include "xml/xml_node.h"

namespace velmora {
namespace {

constexpr std::string_view kCdataStart = "<![CDATA[";
constexpr std::string_view kCdataEnd = "]]>";
constexpr std::string_view kCommentStart = "<!--";
constexpr std::string_view kCommentEnd = "-->";
constexpr std::string_view kInstructionStart = "<?";
constexpr std::string_view kInstructionEnd = "?>";
constexpr std::string_view kEndTagStart = "</";
constexpr std::string_view kTagStart = "<";
constexpr std::string_view kTagEnd = ">";
constexpr std::string_view kEmptyTagEnd = "/>";
constexpr std::string_view kWhitespace = " \t\r\n";

constexpr size_t kUsualDepth = 16;

bool isNameStart(char byte) {
    return (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') || byte == ':' || byte == '_';
}

bool isNameByte(char byte) {
    return isNameStart(byte) || (byte >= '0' && byte <= '9') || byte == '-' || byte == '.';
}

bool isWhitespace(char byte) {
    return byte == ' ' || byte == '\t' || byte == '\r' || byte == '\n';
}

void splitName(std::string_view name, bool caseSensitive, ByteString& prefix, ByteString& localName) {
    const size_t colon = name.find(':');
    if (colon == std::string_view::npos) {
        prefix.clear();
        localName = name;
    } else {
        prefix = name.substr(0, colon);
        localName = name.substr(colon + 1);
    }
    if (!caseSensitive) {
        prefix = lowerCase(prefix);
        localName = lowerCase(localName);
    }
}

class Parser {
public:
    explicit Parser(std::string_view document) : input(document) { open.reserve(kUsualDepth); }

    void readDocument(XmlNode& root) {
        for (;;) {
            skipTo(kTagStart);
            if (atEnd() || at(kEndTagStart)) return;
            if (skip(kCommentStart, kCommentEnd) || skip(kInstructionStart, kInstructionEnd)) continue;
            ++position;
            if (readTag(&root)) readContent(root);
        }
    }

private:
    bool atEnd() const { return position == input.size(); }
    bool at(std::string_view token) const { return input.substr(position).starts_with(token); }
    bool take(std::string_view token) {
        if (!at(token)) return false;
        position += token.size();
        return true;
    }
    void skipTo(std::string_view token) { position = std::min(input.find(token, position), input.size()); }
    std::string_view takeUpTo(std::string_view token) {
        const size_t start = position;
        skipTo(token);
        return input.substr(start, position - start);
    }
    std::string_view takeThrough(std::string_view token) {
        const std::string_view before = takeUpTo(token);
        take(token);
        return before;
    }
    bool skip(std::string_view start, std::string_view end) {
        if (!take(start)) return false;
        takeThrough(end);
        return true;
    }
    std::string_view takeName() {
        const size_t start = position;
        if (!atEnd() && isNameStart(input[position])) {
            do ++position;
            while (!atEnd() && isNameByte(input[position]));
        }
        return input.substr(start, position - start);
    }
    void readContent(XmlNode& root) {
        open.push_back(&root);
        while (!open.empty()) {
            XmlNode& element = *open.back();
            const std::string_view run = takeUpTo(kTagStart);
            if (open.size() > 1) appendDecoded(element.text, run);
            if (atEnd()) {
                for (XmlNode* node : open) node->text.clear();
                open.clear();
                return;
            }
            if (take(kEndTagStart)) {
                readTag(nullptr);
                open.pop_back();
            } else if (take(kCdataStart)) {
                const std::string_view cdata = takeThrough(kCdataEnd);
                if (open.size() > 1) element.text += cdata;
            } else if (!skip(kCommentStart, kCommentEnd) && !skip(kInstructionStart, kInstructionEnd)) {
                ++position;
                XmlNode& child = element.children.emplace_back();
                child.caseSensitive = element.caseSensitive;
                if (readTag(&child)) open.push_back(&child);
            }
        }
    }

    bool readTag(XmlNode* element) {
        const std::string_view name = takeName();
        if (element) splitName(name, element->caseSensitive, element->prefix, element->localName);
        for (;;) {
            while (!atEnd() && isWhitespace(input[position])) ++position;
            if (atEnd() || take(kTagEnd)) return true;
            if (take(kEmptyTagEnd)) return false;
            readAttribute(element);
        }
    }

    void readAttribute(XmlNode* element) {
        const std::string_view name = takeName();
        if (name.empty() || !take("=") || atEnd()) {
            position = input.size();
            return;
        }
        const char first = input[position];
        size_t end;
        size_t start;
        if (first == '"' || first == '\'') {
            start = position + 1;
            end = input.find(first, start);
        } else {
            start = position;
            end = input.find_first_of(kWhitespace, start);
        }
        if (end == std::string_view::npos) {
            position = input.size();
            return;
        }
        position = end + 1;
        if (element) {
            XmlAttribute& attribute = element->attributes.emplace_back();
            splitName(name, element->caseSensitive, attribute.prefix, attribute.localName);
            appendDecoded(attribute.value, input.substr(start, end - start));
        }
    }

    std::string_view input;
    size_t position = 0;
    std::vector<XmlNode*> open;
};

}  // namespace

void parseDocument(std::string_view document, XmlNode& root) {
    Parser(document).readDocument(root);
}

}  // namespace velmora
