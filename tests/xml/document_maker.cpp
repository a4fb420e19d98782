#include "tests/xml/document_maker.h"

#include <iterator>
#include <string>
#include <string_view>

namespace velmora {
namespace {

// In UTF-8 (RFC 3629, section 3).
ByteString Utf8(unsigned codePoint) {
    const auto byte = [](unsigned value) { return ByteString(1, static_cast<char>(value)); };
    const auto tail = [&](unsigned shift) { return byte(0x80 | (codePoint >> shift & 0x3F)); };
    if (codePoint < 0x80) return byte(codePoint);
    if (codePoint < 0x800) return byte(0xC0 | codePoint >> 6) + tail(0);
    if (codePoint < 0x10000) return byte(0xE0 | codePoint >> 12) + tail(6) + tail(0);
    return byte(0xF0 | codePoint >> 18) + tail(12) + tail(6) + tail(0);
}

// What XML 1.0 calls a character (production 2).
bool IsXmlCharacter(unsigned codePoint) {
    if (codePoint < 0x20) return codePoint == 9 || codePoint == 10 || codePoint == 13;
    return codePoint < 0xD800 || (codePoint >= 0xE000 && codePoint < 0xFFFE) ||
           (codePoint >= 0x10000 && codePoint < 0x110000);
}

// With a space before the last byte of each mark that would end the construct.
ByteString Without(std::string_view mark, ByteString text) {
    for (size_t at = text.find(mark); at != ByteString::npos; at = text.find(mark, at)) {
        text.insert(at + mark.size() - 1, " ");
    }
    return text;
}

}  // namespace

ByteString DocumentMaker::Document() {
    static const char* const kDeclarations[] = {
        "", "<?xml version='1.0' encoding=\"UTF-8\"?>", "<?xml version=\"1.0\"?>",
        "<?xml version=\"1.0\" encoding='utf-8' standalone='yes'?>", "<?xml version=\"1.0\" standalone=\"no\" ?>"};
    ByteString document = Maybe("\xEF\xBB\xBF");
    document += OneOf(kDeclarations);
    document += Misc();
    document += Element(0);
    document += Misc();
    return document;
}

ByteString DocumentMaker::Several(Part make, size_t atMost) {
    ByteString text;
    for (size_t count = Choose(atMost + 1); count > 0; --count) text += (this->*make)();
    return text;
}

ByteString DocumentMaker::OneMisc() {
    return Choose(3) == 0 ? "\n " : Aside();
}

ByteString DocumentMaker::Aside() {
    static const char* const kAsides[] = {"<!---->",
                                          "<!-- <a>&b; ]]> - > \xC3\xA9 -->",
                                          "<!--x\n- -y-->",
                                          "<?p?>",
                                          "<?p <!-- & </a> ?? > ?>",
                                          "<?x-y >?>",
                                          "<!-->/ \"' ?> -->"};
    switch (Choose(3)) {
        case 0:
            return OneOf(kAsides);
        case 1:
            return Comment();
        default:
            return Instruction();
    }
}

ByteString DocumentMaker::Comment() {
    ByteString text = Without("--", Several(&DocumentMaker::AnyCharacter, 12));
    if (text.ends_with('-')) text += ' ';
    return "<!--" + text + "-->";
}

// No target is "xml".
ByteString DocumentMaker::Instruction() {
    const ByteString target = "p" + Several(&DocumentMaker::NameCharacter, 4);
    const ByteString text = Without("?>", Several(&DocumentMaker::AnyCharacter, 12));
    return "<?" + target + (text.empty() ? "" : " ") + text + "?>";
}

ByteString DocumentMaker::Name() {
    static const char* const kNames[] = {"a",  "B",     "callID", "deviceIdentifier", "_", "a-b.c_9", "Zz",
                                         "x1", "xmlns", ":"};
    static const char* const kPrefixes[] = {"csta:", "p:", "_-.1:", "A:b:", "xmlns:", ":"};
    const ByteString prefix = Maybe(OneOf(kPrefixes));
    const ByteString name = OneOf(kNames);
    return prefix + name + (Choose(3) == 0 ? Several(&DocumentMaker::NameCharacter, 9) : "");
}

ByteString DocumentMaker::NameCharacter() {
    static constexpr std::string_view kCharacters =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_:-.";
    return ByteString(1, kCharacters[Choose(kCharacters.size())]);
}

// Of any XML character: often of ASCII, and often the first or the last of those with as many bytes.
unsigned DocumentMaker::CodePoint() {
    static constexpr unsigned kLimits[] = {9,     10,     13,     0x20,   0x7F,    0x80,    0x7FF,
                                           0x800, 0xD7FF, 0xE000, 0xFFFD, 0x10000, 0x10FFFF};
    const size_t kind = Choose(5);
    if (kind == 4) return kLimits[Choose(std::size(kLimits))];
    size_t codePoint = Choose(256);
    if (kind < 2) codePoint %= 128;
    if (kind >= 2) codePoint += Choose(256) * 0x100;
    if (kind == 3) codePoint += (1 + Choose(16)) * 0x10000;
    return IsXmlCharacter(static_cast<unsigned>(codePoint)) ? static_cast<unsigned>(codePoint) : 'x';
}

// As it stands: no carriage return, which XML would normalize.
ByteString DocumentMaker::AnyCharacter() {
    const unsigned codePoint = CodePoint();
    return codePoint == '\r' ? "\n" : Utf8(codePoint);
}

// One that may stand anywhere in texts and values.
ByteString DocumentMaker::TextCharacter() {
    const ByteString character = AnyCharacter();
    return ByteString("<&>\"'\t\n").find(character) == ByteString::npos ? character : "x";
}

ByteString DocumentMaker::Reference() {
    static const char* const kReferences[] = {"&amp;",    "&lt;",   "&gt;",     "&quot;",   "&apos;",    "&#65;",
                                              "&#x41;",   "&#xe9;", "&#x20aC;", "&#8364;",  "&#x1F4DE;", "&#128222;",
                                              "&#00065;", "&#10;",  "&#xD7FF;", "&#xE000;", "&#x10FFFF;"};
    return Choose(2) == 0 ? OneOf(kReferences) : NumericReference();
}

ByteString DocumentMaker::NumericReference() {
    const unsigned codePoint = CodePoint();
    const ByteString zeros(Choose(4), '0');
    if (Choose(2) == 0) return "&#" + zeros + std::to_string(codePoint) + ";";
    const std::string_view digits = Choose(2) == 0 ? "0123456789abcdef" : "0123456789ABCDEF";
    ByteString hex;
    for (unsigned left = codePoint; left > 0; left /= 16) hex.insert(0, 1, digits[left % 16]);
    return "&#x" + zeros + hex + ";";
}

ByteString DocumentMaker::Characters() {
    static const char* const kCharacters[] = {"x",  " ",  "some text", ";",        "amp;",         "/>",
                                              "?>", "--", "#x",        "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x93\x9E",
                                              "=",  "]",  "0"};
    return Choose(2) == 0 ? OneOf(kCharacters) : Several(&DocumentMaker::TextCharacter, 12);
}

ByteString DocumentMaker::TextPiece() {
    static const char* const kMore[] = {"\n", "\t", "\"", "'", "\n    "};
    switch (Choose(4)) {
        case 0:
            return Reference();
        case 1:
            return OneOf(kMore);
        default:
            return Characters();
    }
}

ByteString DocumentMaker::Cdata() {
    static const char* const kSections[] = {"<![CDATA[]]>",      "<![CDATA[<a>&lt;</a>]]>", "<![CDATA[]] ]>]]>",
                                            "<![CDATA[<!-- ]]>", "<![CDATA[<![CDATA[]]>",   "<![CDATA[\n&]]]]>"};
    if (Choose(2) == 0) return OneOf(kSections);
    return "<![CDATA[" + Without("]]>", Several(&DocumentMaker::AnyCharacter, 12)) + "]]>";
}

// Numbered, for XML allows each name only once.
ByteString DocumentMaker::Attribute(size_t number) {
    static const char* const kSpaces[] = {" ", "\n", "\t", " \r\n  "};
    const bool single = Choose(2) == 0;
    const ByteString quote = single ? "'" : "\"";
    const ByteString other = single ? "\"" : "'";
    ByteString attribute = OneOf(kSpaces);
    attribute += Name();
    attribute += "." + std::to_string(number) + "=" + quote;
    attribute += Several(&DocumentMaker::ValuePiece, 4);
    attribute += Maybe(other);
    return attribute + quote;
}

ByteString DocumentMaker::Attributes() {
    ByteString attributes;
    for (size_t count = Choose(4); count > 0; --count) attributes += Attribute(count);
    return attributes + Maybe(" \n");
}

ByteString DocumentMaker::Element(size_t depth) {
    const ByteString name = Name();
    const ByteString start = "<" + name + Attributes();
    if (Choose(4) == 0) return start + "/>";
    const ByteString content = Content(depth);
    const ByteString space = Maybe(" ");
    return start + ">" + content + "</" + name + space + Maybe("\n") + ">";
}

// Deeper elements have fewer children, so a document comes to an end.
ByteString DocumentMaker::Content(size_t depth) {
    ByteString content;
    for (size_t count = Choose(7); count > 0; --count) {
        switch (Choose(5)) {
            case 0:
                content += Cdata();
                break;
            case 1:
                content += Aside();
                break;
            case 2:
                content += Several(&DocumentMaker::TextPiece, 5);
                break;
            default:
                if (Choose(8) >= depth) content += Element(depth + 1);
        }
    }
    return content;
}

}  // namespace velmora
